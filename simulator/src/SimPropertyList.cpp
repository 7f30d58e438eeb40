// The host framework's property lists and properties, real heap objects the plugin creates,
// copies, walks and destroys through the C interface.
#include <vyrf.h>

#include "SimHostState.h"
#include "SimInternal.h"

using sim::HostFault;
using namespace sim::hostimpl;

extern "C" vyrf_property_list_h vyrf_property_list_create(void) {
    {
        auto& s = State();
        std::lock_guard<std::mutex> lock(s.mutex);
        if (Fails(s, HostFault::ListCreate)) return nullptr;
    }
    return NewList();
}

extern "C" vyrf_property_list_h vyrf_property_list_copy(vyrf_property_list_h list) {
    SimList* source = CheckedList(list, __func__);
    if (source == nullptr) return nullptr;
    {
        auto& s = State();
        std::lock_guard<std::mutex> lock(s.mutex);
        if (Fails(s, HostFault::ListCopy)) return nullptr;
    }
    NoteRead(source);
    SimList* copy = NewList();
    copy->origin = source->origin;
    for (const auto& item : source->items) copy->items.push_back(std::make_unique<SimProperty>(*item));
    return copy;
}

extern "C" void vyrf_property_list_destroy(vyrf_property_list_h list) {
    SimList* target = CheckedList(list, __func__);
    if (target != nullptr) DeleteList(target);
}

extern "C" vyrf_error vyrf_property_list_push_property(vyrf_property_list_h list,
                                                       VYRF_PROPERTY_H property, VYRF_ERROR_E) {
    SimList* target = CheckedList(list, __func__);
    if (target == nullptr || property == nullptr) return -1;
    target->items.emplace_back(static_cast<SimProperty*>(property));
    return 0;
}

extern "C" vyrf_error vyrf_property_list_pop(vyrf_property_list_h list, VYRF_PROPERTY_H* property,
                                             vyrf_error* error) {
    SimList* target = CheckedList(list, __func__);
    NoteRead(target);
    if (property != nullptr) *property = nullptr;
    if (error != nullptr) *error = 0;
    if (target == nullptr || target->items.empty()) return -1;
    SimProperty* front = target->items.front().release();
    target->items.pop_front();
    if (property != nullptr) {
        *property = front;
    } else {
        delete front;
    }
    return 0;
}

extern "C" VYRF_PROPERTY_H vyrf_property_list_find(vyrf_property_list_h list, vyrf_string name) {
    SimList* target = CheckedList(list, __func__);
    NoteRead(target);
    if (target == nullptr) return nullptr;
    const std::string key = Text(name);
    for (const auto& item : target->items) {
        if (item->named && item->name == key) return item.get();
    }
    return nullptr;
}

extern "C" VYRF_PROPERTY_H vyrf_property_list_get_first(vyrf_property_list_h list) {
    SimList* target = CheckedList(list, __func__);
    NoteRead(target);
    if (target == nullptr || target->items.empty()) return nullptr;
    return target->items.front().get();
}

extern "C" VYRF_PROPERTY_H vyrf_property_list_get_next(vyrf_property_list_h list,
                                                       VYRF_PROPERTY_H property) {
    SimList* target = CheckedList(list, __func__);
    NoteRead(target);
    if (target == nullptr || property == nullptr) return nullptr;
    for (std::size_t i = 0; i + 1 < target->items.size(); ++i) {
        if (target->items[i].get() == property) return target->items[i + 1].get();
    }
    return nullptr;
}

extern "C" bool vyrf_property_list_empty(vyrf_property_list_h list) {
    SimList* target = CheckedList(list, __func__);
    NoteRead(target);
    return target == nullptr || target->items.empty();
}

namespace {
SimProperty* NewProperty(vyrf_string name, sim::HostProperty::Kind kind) {
    auto* p = new SimProperty();
    p->name = Text(name);
    p->named = name.data != nullptr && name.length > 0;
    p->kind = kind;
    return p;
}

vyrf_error Lend(vyrf_string* out, const std::string* text) {
    if (out == nullptr) return -1;
    if (text == nullptr) {
        *out = vyrf_string{nullptr, 0};
        return -1;
    }
    *out = vyrf_string{text->data(), text->size()};
    return 0;
}
}  // namespace

extern "C" VYRF_PROPERTY_H vyrf_property_create_string(vyrf_string name, vyrf_string value) {
    SimProperty* p = NewProperty(name, sim::HostProperty::Kind::String);
    p->text = Text(value);
    return p;
}

extern "C" VYRF_PROPERTY_H vyrf_property_create_int(vyrf_string name, int value) {
    SimProperty* p = NewProperty(name, sim::HostProperty::Kind::Int);
    p->intValue = value;
    return p;
}

extern "C" VYRF_PROPERTY_H vyrf_property_create_bool(vyrf_string name, bool value) {
    SimProperty* p = NewProperty(name, sim::HostProperty::Kind::Bool);
    p->boolValue = value;
    return p;
}

extern "C" vyrf_error vyrf_property_get_name(vyrf_string* out, VYRF_PROPERTY_H property) {
    auto* p = static_cast<SimProperty*>(property);
    return Lend(out, p != nullptr && p->named ? &p->name : nullptr);
}

extern "C" vyrf_error vyrf_property_get_string(vyrf_string* out, VYRF_PROPERTY_H property) {
    auto* p = static_cast<SimProperty*>(property);
    return Lend(out, p != nullptr && p->kind == sim::HostProperty::Kind::String ? &p->text : nullptr);
}

extern "C" vyrf_error vyrf_property_get_json_string(vyrf_string* out, VYRF_PROPERTY_H property) {
    auto* p = static_cast<SimProperty*>(property);
    return Lend(out, p != nullptr && p->kind == sim::HostProperty::Kind::Json ? &p->text : nullptr);
}

extern "C" vyrf_error vyrf_property_get_int(VYRF_PROPERTY_H property, int* out) {
    auto* p = static_cast<SimProperty*>(property);
    if (p == nullptr || out == nullptr || p->kind != sim::HostProperty::Kind::Int) return -1;
    *out = p->intValue;
    return 0;
}

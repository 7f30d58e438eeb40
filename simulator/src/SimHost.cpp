// The host framework: services with their registered properties and callbacks, property lists
// and properties as real heap objects, transactions and the results the plugin sends back.
#include <vyrf.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>

#include "SimInternal.h"
#include "sim/Simulator.h"

namespace sim {
namespace {

std::atomic<std::size_t> gLiveLists{0};
std::atomic<std::size_t> gLiveProperties{0};

struct SimProperty {
    std::string name;
    bool named = true;
    HostProperty::Kind kind = HostProperty::Kind::String;
    std::string text;
    int intValue = 0;
    bool boolValue = false;

    SimProperty() { ++gLiveProperties; }
    SimProperty(const SimProperty& other)
        : name(other.name), named(other.named), kind(other.kind), text(other.text),
          intValue(other.intValue), boolValue(other.boolValue) {
        ++gLiveProperties;
    }
    ~SimProperty() { --gLiveProperties; }
};

struct SimList {
    std::deque<std::unique_ptr<SimProperty>> items;
    SimList() { ++gLiveLists; }
    ~SimList() { --gLiveLists; }
};

struct SimService {
    std::string name;
    std::string description;
    vyrf_protocol_status_cb onProtocolStatus;
    vyrf_get_request_cb onGet;
    vyrf_set_request_cb onSet;
    vyrf_cancel_request_cb onCancel;
    void* userData;
    std::vector<RegisteredProperty> properties;
    bool alive = true;
};

struct HostState {
    std::mutex mutex;
    std::condition_variable resultArrived;
    // Services are never freed, so a handle used after destruction is recognised as such.
    std::vector<std::unique_ptr<SimService>> services;
    std::set<const SimList*> lists;
    std::vector<SetResult> results;
    bool keepResults = true;
    std::function<void(const SetResult&)> listener;
    std::map<HostFault, int> faults;
    uint64_t nextTransaction = 1;
    std::size_t badServiceCalls = 0;
};

HostState& State() {
    static HostState* state = new HostState();  // never destroyed: plugin threads may answer late
    return *state;
}

bool Fails(HostState& s, HostFault fault) {
    auto it = s.faults.find(fault);
    if (it == s.faults.end() || it->second == 0) return false;
    if (it->second > 0) --it->second;
    return true;
}

std::string Text(vyrf_string s) {
    return s.data != nullptr ? std::string(s.data, s.length) : std::string();
}

// A live service for the handle, or null (counted as a call with a bad service). Under lock.
SimService* LiveService(HostState& s, vyrf_service_h handle) {
    for (auto& service : s.services) {
        if (service.get() == handle && service->alive) return service.get();
    }
    ++s.badServiceCalls;
    return nullptr;
}

// Using a list that does not exist (never made, or already destroyed) is a bug in the caller:
// stop loudly rather than corrupt memory.
SimList* CheckedList(vyrf_property_list_h handle, const char* function) {
    auto* list = static_cast<SimList*>(handle);
    if (list == nullptr) return nullptr;
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.lists.count(list) == 0) {
        std::fprintf(stderr, "vyrsim: %s called with a dead property list %p\n", function, handle);
        std::abort();
    }
    return list;
}

SimList* NewList() {
    auto* list = new SimList();
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.lists.insert(list);
    return list;
}

void DeleteList(SimList* list) {
    {
        auto& s = State();
        std::lock_guard<std::mutex> lock(s.mutex);
        s.lists.erase(list);
    }
    delete list;
}

SimList* BuildList(const std::vector<HostProperty>& properties) {
    SimList* list = NewList();
    for (const auto& p : properties) {
        auto item = std::make_unique<SimProperty>();
        item->name = p.name;
        item->named = !p.name.empty();
        item->kind = p.kind;
        item->text = p.text;
        item->intValue = p.intValue;
        item->boolValue = p.boolValue;
        list->items.push_back(std::move(item));
    }
    return list;
}

HostProperty ToHostProperty(const SimProperty& p) {
    HostProperty out;
    out.name = p.name;
    out.kind = p.kind;
    out.text = p.text;
    out.intValue = p.intValue;
    out.boolValue = p.boolValue;
    return out;
}

// Finds a live service by name and copies what a call into it needs. Throws if there is none.
SimService FindByName(const std::string& name) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    for (auto& service : s.services) {
        if (service->alive && service->name == name) return *service;
    }
    throw std::runtime_error("no live host service named '" + name + "'");
}

void* HandleOf(const std::string& name) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    for (auto& service : s.services) {
        if (service->alive && service->name == name) return service.get();
    }
    return nullptr;
}

}  // namespace

HostProperty HostProperty::String(const std::string& name, const std::string& value) {
    HostProperty p;
    p.name = name;
    p.kind = Kind::String;
    p.text = value;
    return p;
}

HostProperty HostProperty::Int(const std::string& name, int value) {
    HostProperty p;
    p.name = name;
    p.kind = Kind::Int;
    p.intValue = value;
    return p;
}

HostProperty HostProperty::Bool(const std::string& name, bool value) {
    HostProperty p;
    p.name = name;
    p.kind = Kind::Bool;
    p.boolValue = value;
    return p;
}

HostProperty HostProperty::Json(const std::string& name, const std::string& text) {
    HostProperty p;
    p.name = name;
    p.kind = Kind::Json;
    p.text = text;
    return p;
}

std::vector<ServiceInfo> Host::Services() {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    std::vector<ServiceInfo> out;
    for (auto& service : s.services) {
        if (service->alive) {
            out.push_back({service.get(), service->name, service->description, service->properties});
        }
    }
    return out;
}

std::optional<ServiceInfo> Host::FindService(const std::string& name) {
    for (auto& info : Services()) {
        if (info.name == name) return info;
    }
    return std::nullopt;
}

namespace {
// What a host-side call into a service needs, looked up under the lock and used without it.
struct Target {
    SimService service;
    void* handle;
    uint64_t transaction;
};

Target Prepare(const std::string& name) {
    Target target{FindByName(name), HandleOf(name), 0};
    std::lock_guard<std::mutex> lock(State().mutex);
    target.transaction = State().nextTransaction++;
    return target;
}
}  // namespace

uint64_t Host::SendSet(const std::string& service, const std::vector<HostProperty>& properties) {
    Target t = Prepare(service);
    SimList* list = BuildList(properties);
    if (t.service.onSet != nullptr) {
        t.service.onSet(t.handle, reinterpret_cast<vyrf_transaction_h>(t.transaction), list,
                        t.service.userData);
    }
    DeleteList(list);  // the host's list lives only for the callback
    return t.transaction;
}

void Host::SendGet(const std::string& service, const std::vector<HostProperty>& properties) {
    Target t = Prepare(service);
    SimList* list = BuildList(properties);
    if (t.service.onGet != nullptr) {
        t.service.onGet(t.handle, reinterpret_cast<vyrf_transaction_h>(t.transaction), list,
                        t.service.userData);
    }
    DeleteList(list);
}

void Host::SendCancel(const std::string& service) {
    Target t = Prepare(service);
    if (t.service.onCancel != nullptr) {
        t.service.onCancel(t.handle, reinterpret_cast<vyrf_transaction_h>(t.transaction), t.service.userData);
    }
}

void Host::SendProtocolStatus(const std::string& service, const std::string& protocol, int status) {
    Target t = Prepare(service);
    if (t.service.onProtocolStatus != nullptr) {
        t.service.onProtocolStatus(t.handle, vyrf_string{protocol.data(), protocol.size()}, status,
                                   t.service.userData);
    }
}

std::optional<SetResult> Host::WaitResult(uint64_t transaction, std::chrono::milliseconds timeout) {
    auto& s = State();
    std::unique_lock<std::mutex> lock(s.mutex);
    std::optional<SetResult> found;
    s.resultArrived.wait_for(lock, timeout, [&] {
        for (const auto& r : s.results) {
            if (r.transaction == transaction) {
                found = r;
                return true;
            }
        }
        return false;
    });
    return found;
}

std::vector<SetResult> Host::Results() {
    std::lock_guard<std::mutex> lock(State().mutex);
    return State().results;
}

std::vector<SetResult> Host::ResultsFor(uint64_t transaction) {
    std::vector<SetResult> out;
    for (auto& r : Results()) {
        if (r.transaction == transaction) out.push_back(r);
    }
    return out;
}

void Host::SetKeepResults(bool on) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().keepResults = on;
}

void Host::SetResultListener(std::function<void(const SetResult&)> listener) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().listener = std::move(listener);
}

void Host::InjectFault(HostFault fault, int times) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().faults[fault] = times;
}

void Host::ClearFaults() {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().faults.clear();
}

std::size_t Host::LiveLists() { return gLiveLists.load(); }
std::size_t Host::LiveProperties() { return gLiveProperties.load(); }

std::size_t Host::CallsWithBadService() {
    std::lock_guard<std::mutex> lock(State().mutex);
    return State().badServiceCalls;
}

void internal::ResetHost() {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    for (auto& service : s.services) service->alive = false;
    s.results.clear();
    s.keepResults = true;
    s.listener = nullptr;
    s.faults.clear();
    s.badServiceCalls = 0;
}

}  // namespace sim

using sim::HostFault;
using sim::SimList;
using sim::SimProperty;

extern "C" vyrf_error vyrf_string_new(vyrf_string* out, const char* data, size_t length) {
    if (out == nullptr) return -1;
    out->data = data;
    out->length = data != nullptr ? length : 0;
    return 0;
}

extern "C" vyrf_service_h vyrf_service_create(vyrf_string name, vyrf_string description,
                                              vyrf_protocol_status_cb on_protocol_status,
                                              vyrf_get_request_cb on_get, vyrf_set_request_cb on_set,
                                              vyrf_cancel_request_cb on_cancel, void* user_data) {
    auto& s = sim::State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (sim::Fails(s, HostFault::ServiceCreate)) return nullptr;
    auto service = std::make_unique<sim::SimService>();
    service->name = sim::Text(name);
    service->description = sim::Text(description);
    service->onProtocolStatus = on_protocol_status;
    service->onGet = on_get;
    service->onSet = on_set;
    service->onCancel = on_cancel;
    service->userData = user_data;
    s.services.push_back(std::move(service));
    return s.services.back().get();
}

extern "C" vyrf_error vyrf_service_destroy(vyrf_service_h service) {
    auto& s = sim::State();
    std::lock_guard<std::mutex> lock(s.mutex);
    sim::SimService* target = sim::LiveService(s, service);
    if (target == nullptr) return -1;
    target->alive = false;
    return 0;
}

extern "C" vyrf_error vyrf_service_register_property(vyrf_service_h service, vyrf_string name,
                                                     int type, int64_t first, int64_t second,
                                                     vyrf_string description) {
    auto& s = sim::State();
    std::lock_guard<std::mutex> lock(s.mutex);
    sim::SimService* target = sim::LiveService(s, service);
    if (target == nullptr) return -1;
    if (sim::Fails(s, HostFault::RegisterProperty)) return -2;
    target->properties.push_back({sim::Text(name), type, first, second, sim::Text(description)});
    return 0;
}

extern "C" vyrf_error vyrf_service_unregister_property(vyrf_service_h service, vyrf_string name) {
    auto& s = sim::State();
    std::lock_guard<std::mutex> lock(s.mutex);
    sim::SimService* target = sim::LiveService(s, service);
    if (target == nullptr) return -1;
    auto& props = target->properties;
    const std::string key = sim::Text(name);
    auto it = std::find_if(props.begin(), props.end(), [&](const auto& p) { return p.name == key; });
    if (it == props.end()) return -2;
    props.erase(it);
    return 0;
}

extern "C" vyrf_error vyrf_service_send_set_property_result(vyrf_service_h service,
                                                            vyrf_transaction_h transaction,
                                                            vyrf_property_list_h list,
                                                            vyrf_error error) {
    SimList* taken = sim::CheckedList(list, __func__);
    sim::SetResult result;
    result.transaction = reinterpret_cast<uint64_t>(transaction);
    result.service = service;
    result.error = error;
    if (taken != nullptr) {
        for (const auto& item : taken->items) result.properties.push_back(sim::ToHostProperty(*item));
        sim::DeleteList(taken);
    }
    std::function<void(const sim::SetResult&)> listener;
    bool failed;
    {
        auto& s = sim::State();
        std::lock_guard<std::mutex> lock(s.mutex);
        result.serviceAlive = sim::LiveService(s, service) != nullptr;
        failed = sim::Fails(s, HostFault::SendResult);
        if (s.keepResults) s.results.push_back(result);
        listener = s.listener;
    }
    sim::State().resultArrived.notify_all();
    if (listener) listener(result);
    return (!result.serviceAlive || failed || taken == nullptr) ? -1 : 0;
}

extern "C" vyrf_property_list_h vyrf_property_list_create(void) {
    {
        auto& s = sim::State();
        std::lock_guard<std::mutex> lock(s.mutex);
        if (sim::Fails(s, HostFault::ListCreate)) return nullptr;
    }
    return sim::NewList();
}

extern "C" vyrf_property_list_h vyrf_property_list_copy(vyrf_property_list_h list) {
    SimList* source = sim::CheckedList(list, __func__);
    if (source == nullptr) return nullptr;
    {
        auto& s = sim::State();
        std::lock_guard<std::mutex> lock(s.mutex);
        if (sim::Fails(s, HostFault::ListCopy)) return nullptr;
    }
    SimList* copy = sim::NewList();
    for (const auto& item : source->items) copy->items.push_back(std::make_unique<SimProperty>(*item));
    return copy;
}

extern "C" void vyrf_property_list_destroy(vyrf_property_list_h list) {
    SimList* target = sim::CheckedList(list, __func__);
    if (target != nullptr) sim::DeleteList(target);
}

extern "C" vyrf_error vyrf_property_list_push_property(vyrf_property_list_h list,
                                                       VYRF_PROPERTY_H property, VYRF_ERROR_E) {
    SimList* target = sim::CheckedList(list, __func__);
    if (target == nullptr || property == nullptr) return -1;
    target->items.emplace_back(static_cast<SimProperty*>(property));
    return 0;
}

extern "C" vyrf_error vyrf_property_list_pop(vyrf_property_list_h list, VYRF_PROPERTY_H* property,
                                             vyrf_error* error) {
    SimList* target = sim::CheckedList(list, __func__);
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
    SimList* target = sim::CheckedList(list, __func__);
    if (target == nullptr) return nullptr;
    const std::string key = sim::Text(name);
    for (const auto& item : target->items) {
        if (item->named && item->name == key) return item.get();
    }
    return nullptr;
}

extern "C" VYRF_PROPERTY_H vyrf_property_list_get_first(vyrf_property_list_h list) {
    SimList* target = sim::CheckedList(list, __func__);
    if (target == nullptr || target->items.empty()) return nullptr;
    return target->items.front().get();
}

extern "C" VYRF_PROPERTY_H vyrf_property_list_get_next(vyrf_property_list_h list,
                                                       VYRF_PROPERTY_H property) {
    SimList* target = sim::CheckedList(list, __func__);
    if (target == nullptr || property == nullptr) return nullptr;
    for (std::size_t i = 0; i + 1 < target->items.size(); ++i) {
        if (target->items[i].get() == property) return target->items[i + 1].get();
    }
    return nullptr;
}

extern "C" bool vyrf_property_list_empty(vyrf_property_list_h list) {
    SimList* target = sim::CheckedList(list, __func__);
    return target == nullptr || target->items.empty();
}

namespace {
SimProperty* NewProperty(vyrf_string name, sim::HostProperty::Kind kind) {
    auto* p = new SimProperty();
    p->name = sim::Text(name);
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
    p->text = sim::Text(value);
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

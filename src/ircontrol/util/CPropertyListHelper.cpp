#include "util/CPropertyListHelper.h"

#include <stdexcept>

#include "common/CException.h"
#include "common/ServiceLog.h"
#include "util/VyrfString.h"

namespace ircontrol {
void CPropertyListHelper::ListDeleter::operator()(void* list) const noexcept {
    vyrf_property_list_destroy(list);
}

CPropertyListHelper::CPropertyListHelper(void* list) : list_(vyrf_property_list_copy(list)) {
    if (!list_) {
        IRC_LOGE("failed to copy list");
        throw std::invalid_argument("failed to create list");
    }
}

CPropertyListHelper::CPropertyListHelper() : list_(vyrf_property_list_create()) {
    if (!list_) {
        IRC_LOGE("failed to copy list");
        throw std::invalid_argument("failed to create list");
    }
}

CPropertyListHelper::~CPropertyListHelper() = default;

vyrf_property_list_h CPropertyListHelper::GetHandle() { return list_.get(); }

void CPropertyListHelper::Push(VYRF_PROPERTY_H property, VYRF_ERROR_E error) {
    if (vyrf_property_list_push_property(list_.get(), property, error) != 0) {
        IRC_LOGE("failed to set data in Push!");
    }
}

void CPropertyListHelper::PushStringData(const std::string& name, const std::string& value) {
    if (name.empty() || value.empty()) return;
    VYRF_PROPERTY_H property = vyrf_property_create_string(ToVyrfString(name), ToVyrfString(value));
    if (vyrf_property_list_push_property(list_.get(), property, 0) != 0) {
        IRC_LOGE("failed to set data in PushStringData!");
    }
}

void CPropertyListHelper::PushIntData(const std::string& name, int value) {
    if (name.empty()) return;
    VYRF_PROPERTY_H property = vyrf_property_create_int(ToVyrfString(name), value);
    if (vyrf_property_list_push_property(list_.get(), property, 0) != 0) {
        IRC_LOGE("failed to set data in PushIntData!");
    }
}

void CPropertyListHelper::PushBooleanData(const std::string& name, bool value) {
    if (name.empty()) return;
    VYRF_PROPERTY_H property = vyrf_property_create_bool(ToVyrfString(name), value);
    if (vyrf_property_list_push_property(list_.get(), property, 0) != 0) {
        IRC_LOGE("failed to set data in PushBooleanData!");
    }
}

vyrf_error CPropertyListHelper::Pop(void** property, vyrf_error* error) {
    return vyrf_property_list_pop(list_.get(), property, error);
}

VYRF_PROPERTY_H CPropertyListHelper::Find(const std::string& name) {
    if (name.empty()) return nullptr;
    return vyrf_property_list_find(list_.get(), ToVyrfString(name));
}

VYRF_PROPERTY_H CPropertyListHelper::GetFirst() const {
    return vyrf_property_list_get_first(list_.get());
}

VYRF_PROPERTY_H CPropertyListHelper::GetNext(void* property) const {
    return vyrf_property_list_get_next(list_.get(), property);
}

bool CPropertyListHelper::Empty() const { return vyrf_property_list_empty(list_.get()); }

std::string CPropertyListHelper::GetString(const std::string& name) {
    vyrf_string out{nullptr, 0};
    vyrf_property_get_string(&out, Find(name));
    return FromVyrfString(out);
}

std::string CPropertyListHelper::GetJsonString(const std::string& name) {
    vyrf_string out{nullptr, 0};
    vyrf_property_get_json_string(&out, Find(name));
    return FromVyrfString(out);
}

int CPropertyListHelper::GetInt(const std::string& name) {
    int value = 0;  // a failed read answers 0 rather than an indeterminate value
    if (vyrf_property_get_int(Find(name), &value) != 0) IRC_LOGE("failed to GetInt");
    return value;
}

std::vector<std::string> CPropertyListHelper::GetPropertyNameList() {
    std::vector<std::string> names;
    for (VYRF_PROPERTY_H p = vyrf_property_list_get_first(list_.get()); p != nullptr;
         p = vyrf_property_list_get_next(list_.get(), p)) {
        vyrf_string name{nullptr, 0};
        vyrf_property_get_name(&name, p);
        if (name.data == nullptr || name.length == 0) throw CException("invalid property name!", 5);
        names.emplace_back(name.data, name.length);
    }
    return names;
}

VYRF_PROPERTY_H CPropertyListHelper::CreateBoolProperty(const std::string& name, bool value) {
    return vyrf_property_create_bool(ToVyrfString(name), value);
}

VYRF_PROPERTY_H CPropertyListHelper::CreateStringProperty(const std::string& name,
                                                          const std::string& value) {
    return vyrf_property_create_string(ToVyrfString(name), ToVyrfString(value));
}

}  // namespace ircontrol

// An IPropertyListHelper that answers from a name -> JSON text map, so handlers can be tested
// without host lists. Only the reading operations do anything.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "util/IPropertyListHelper.h"

namespace irctest {

class FakePropertyList : public ircontrol::IPropertyListHelper {
public:
    explicit FakePropertyList(std::map<std::string, std::string> json) : json_(std::move(json)) {}

    vyrf_property_list_h GetHandle() override { return nullptr; }
    void Push(VYRF_PROPERTY_H, VYRF_ERROR_E) override {}
    void PushStringData(const std::string&, const std::string&) override {}
    void PushIntData(const std::string&, int) override {}
    void PushBooleanData(const std::string&, bool) override {}
    vyrf_error Pop(void**, vyrf_error*) override { return -1; }
    VYRF_PROPERTY_H Find(const std::string&) override { return nullptr; }
    VYRF_PROPERTY_H GetFirst() const override { return nullptr; }
    VYRF_PROPERTY_H GetNext(void*) const override { return nullptr; }
    bool Empty() const override { return json_.empty(); }
    std::string GetString(const std::string&) override { return {}; }
    std::string GetJsonString(const std::string& name) override {
        auto it = json_.find(name);
        return it == json_.end() ? std::string() : it->second;
    }
    int GetInt(const std::string&) override { return 0; }
    std::vector<std::string> GetPropertyNameList() override {
        std::vector<std::string> names;
        for (const auto& entry : json_) names.push_back(entry.first);
        return names;
    }
    VYRF_PROPERTY_H CreateBoolProperty(const std::string&, bool) override { return nullptr; }
    VYRF_PROPERTY_H CreateStringProperty(const std::string&, const std::string&) override {
        return nullptr;
    }

private:
    std::map<std::string, std::string> json_;
};

}  // namespace irctest

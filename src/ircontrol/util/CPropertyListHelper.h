// IPropertyListHelper over a host list that it owns: a copy of the host's list (so it may
// outlive the host callback that delivered it) or a new empty one; destroyed with the helper.
// Push operations never throw; failures are logged.
#pragma once

#include <memory>

#include "util/IPropertyListHelper.h"

namespace ircontrol {

class CPropertyListHelper : public IPropertyListHelper {
public:
    explicit CPropertyListHelper(void* list);  // throws std::invalid_argument
    CPropertyListHelper();                     // throws std::invalid_argument
    ~CPropertyListHelper() override;

    vyrf_property_list_h GetHandle() override;
    void Push(VYRF_PROPERTY_H property, VYRF_ERROR_E error) override;
    void PushStringData(const std::string& name, const std::string& value) override;
    void PushIntData(const std::string& name, int value) override;
    void PushBooleanData(const std::string& name, bool value) override;
    vyrf_error Pop(void** property, vyrf_error* error) override;
    VYRF_PROPERTY_H Find(const std::string& name) override;
    VYRF_PROPERTY_H GetFirst() const override;
    VYRF_PROPERTY_H GetNext(void* property) const override;
    bool Empty() const override;
    std::string GetString(const std::string& name) override;
    std::string GetJsonString(const std::string& name) override;
    int GetInt(const std::string& name) override;
    std::vector<std::string> GetPropertyNameList() override;
    VYRF_PROPERTY_H CreateBoolProperty(const std::string& name, bool value) override;
    VYRF_PROPERTY_H CreateStringProperty(const std::string& name,
                                         const std::string& value) override;

private:
    struct ListDeleter {
        void operator()(void* list) const noexcept;
    };

    std::unique_ptr<void, ListDeleter> list_;
};

}  // namespace ircontrol

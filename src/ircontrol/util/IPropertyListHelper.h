// The service's view of one host property list, so nothing else calls the host's list
// functions. Implementations own their list. Not thread-safe; one thread at a time.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <vyrf.h>

#include "common/CNoncopyable.h"

namespace ircontrol {

class IPropertyListHelper : private CNoncopyable {
public:
    virtual ~IPropertyListHelper() = default;

    virtual vyrf_property_list_h GetHandle() = 0;
    virtual void Push(VYRF_PROPERTY_H property, VYRF_ERROR_E error) = 0;
    virtual void PushStringData(const std::string& name, const std::string& value) = 0;
    virtual void PushIntData(const std::string& name, int value) = 0;
    virtual void PushBooleanData(const std::string& name, bool value) = 0;
    virtual vyrf_error Pop(void** property, vyrf_error* error) = 0;
    virtual VYRF_PROPERTY_H Find(const std::string& name) = 0;
    virtual VYRF_PROPERTY_H GetFirst() const = 0;
    virtual VYRF_PROPERTY_H GetNext(void* property) const = 0;
    virtual bool Empty() const = 0;
    virtual std::string GetString(const std::string& name) = 0;
    virtual std::string GetJsonString(const std::string& name) = 0;
    virtual int GetInt(const std::string& name) = 0;
    // Names in list order; throws CException (code 5) for a property without a name.
    virtual std::vector<std::string> GetPropertyNameList() = 0;
    virtual VYRF_PROPERTY_H CreateBoolProperty(const std::string& name, bool value) = 0;
    virtual VYRF_PROPERTY_H CreateStringProperty(const std::string& name,
                                                 const std::string& value) = 0;

    // A helper over a copy of the host's `list` (the host keeps its own); throws
    // std::invalid_argument when the copy cannot be made.
    static std::shared_ptr<IPropertyListHelper> Create(void* list);
    // A helper over a new empty list; throws std::invalid_argument on failure.
    static std::shared_ptr<IPropertyListHelper> Create();
};

}  // namespace ircontrol

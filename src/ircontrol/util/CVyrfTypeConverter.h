// Maps the service's value types to the host's property types for registration.
#pragma once

#include "property/CProperty.h"

namespace ircontrol {

class CVyrfTypeConverter {
public:
    CVyrfTypeConverter() = delete;
    // Both integer kinds share the host's integer type, objects and arrays its JSON type;
    // null and unknown values give -1.
    static int GetVyrfPropertyType(CProperty::_Type type);
};

}  // namespace ircontrol

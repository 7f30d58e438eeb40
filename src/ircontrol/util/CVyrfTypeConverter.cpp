#include "util/CVyrfTypeConverter.h"

#include <vyrf.h>

namespace ircontrol {

int CVyrfTypeConverter::GetVyrfPropertyType(CProperty::_Type type) {
    switch (type) {
        case CProperty::kBoolType: return VYRF_PROPERTY_TYPE_BOOL;
        case CProperty::kIntType:
        case CProperty::kUIntType: return VYRF_PROPERTY_TYPE_INT;
        case CProperty::kDoubleType: return VYRF_PROPERTY_TYPE_DOUBLE;
        case CProperty::kStringType: return VYRF_PROPERTY_TYPE_STRING;
        case CProperty::kObjectType:
        case CProperty::kArrayType: return VYRF_PROPERTY_TYPE_JSON;
        default: return -1;
    }
}

}  // namespace ircontrol

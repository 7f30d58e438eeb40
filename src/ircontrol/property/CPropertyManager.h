// The fixed table of the properties the service offers to the host, built once on first use
// and read afterwards only through copies (no lock needed).
#pragma once

#include <string>
#include <unordered_map>

#include "common/Types.h"
#include "property/CProperty.h"

namespace ircontrol {

struct PropertyDefinition {
    std::string name;
    std::string description;
    CProperty::_Type type = CProperty::kNullType;
    int32_t lowerBound = 0;   // the host register call's first integer
    int32_t upperBound = 0;   // the host register call's second integer
    bool flags[5] = {false, false, false, false, false};  // kept with the definition; unused here
    int32_t extra = 0;        // kept with the definition; unused here
};

class CPropertyManager {
public:
    using DefinitionMap = std::unordered_map<PropertyName, PropertyDefinition>;

    static CPropertyManager& GetInstance();
    virtual ~CPropertyManager();
    CPropertyManager(const CPropertyManager&) = delete;
    CPropertyManager& operator=(const CPropertyManager&) = delete;

    DefinitionMap GetAllPropertyInfo();  // a copy of the whole table

private:
    CPropertyManager();
    void createAllProperties();
    void createKeyEventProperty();

    DefinitionMap definitions_;
};

}  // namespace ircontrol

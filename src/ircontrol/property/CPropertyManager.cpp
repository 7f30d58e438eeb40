#include "property/CPropertyManager.h"

#include "common/Constants.h"
#include "common/ServiceLog.h"

namespace ircontrol {

CPropertyManager& CPropertyManager::GetInstance() {
    static CPropertyManager instance;
    return instance;
}

CPropertyManager::CPropertyManager() {
    IRC_ENTER();
    createAllProperties();
    IRC_LEAVE();
}

CPropertyManager::~CPropertyManager() = default;

CPropertyManager::DefinitionMap CPropertyManager::GetAllPropertyInfo() {
    IRC_ENTER();
    DefinitionMap copy = definitions_;
    IRC_LEAVE();
    return copy;
}

void CPropertyManager::createAllProperties() { createKeyEventProperty(); }

void CPropertyManager::createKeyEventProperty() {
    // Both are JSON objects the host may set.
    auto define = [this](const char* name, const char* description) {
        PropertyDefinition definition;
        definition.name = name;
        definition.description = description;
        definition.type = CProperty::kObjectType;
        definition.flags[1] = true;
        definitions_[definition.name] = definition;
    };
    define(kPropSetKeyEvent, kPropSetKeyEventDesc);
    define(kPropSetDeviceEvent, kPropSetDeviceEventDesc);
}

}  // namespace ircontrol

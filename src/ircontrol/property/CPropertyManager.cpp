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
    PropertyDefinition keyEvent;
    keyEvent.name = kPropSetKeyEvent;
    keyEvent.description = kPropSetKeyEventDesc;
    keyEvent.type = CProperty::kObjectType;
    keyEvent.flags[1] = true;
    definitions_[keyEvent.name] = keyEvent;

    PropertyDefinition deviceEvent;
    deviceEvent.name = kPropSetDeviceEvent;
    deviceEvent.description = kPropSetDeviceEventDesc;
    deviceEvent.type = CProperty::kObjectType;
    deviceEvent.flags[1] = true;
    definitions_[deviceEvent.name] = deviceEvent;
}

}  // namespace ircontrol

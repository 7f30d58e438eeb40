#include "ir/CIRDevice.h"

#include "JsonValue.h"
#include "common/CException.h"
#include "common/Constants.h"
#include "common/ServiceLog.h"
#include "ir/CIRInterface.h"

namespace ircontrol {

using common::json::JsonValue;

IRDeviceInfo CIRDevice::GetParsedDeviceInfo(const std::string& json) {
    IRC_ENTER_DEBUG();
    IRDeviceInfo info = parseDeviceInfo(json);
    IRC_LEAVE_DEBUG();
    return info;
}

IRDeviceInfo CIRDevice::parseDeviceInfo(const std::string& json) {
    const JsonValue root = JsonValue::Create(json);
    if (root.isNull()) throw CException("json value null!", 4);

    const JsonValue& name = root[kAttrCodesetName];
    const JsonValue& key = root[kAttrCodesetKey];
    const JsonValue& type = root[kAttrDeviceType];
    // One message for all three on purpose: the callers only log it.
    if (name.isNull() || key.isNull() || type.isNull()) throw CException("codeset_name obj null", 5);

    info_.codesetName = name.asString();
    info_.codesetKey = key.asInt();
    info_.deviceType = type.asString();
    IRC_LOGI("codset_name: %s, codset_key: %d, oic_device_type: %s", info_.codesetName.c_str(),
             info_.codesetKey, info_.deviceType.c_str());

    const bool airConditioner = info_.deviceType == kOcfAirConditioner;
    if (airConditioner) {
        const JsonValue& state = root[kAttrAcState];
        if (state.isNull()) throw CException("ac_state_obj null", 5);
        const JsonValue& power = state[kAttrPower];
        const JsonValue& mode = state[kAttrMode];
        const JsonValue& setpoint = state[kAttrCoolingSetpoint];
        const JsonValue& fan = state[kAttrFanSpeed];
        if (power.isNull()) throw CException("power obj null", 5);
        if (mode.isNull()) throw CException("mode obj null", 5);
        if (setpoint.isNull()) throw CException("coolingSetpoint obj null", 5);
        if (fan.isNull()) throw CException("fan speed obj null", 5);
        info_.acState.power = power.asString();
        info_.acState.mode = mode.asString();
        info_.acState.coolingSetpoint = setpoint.asInt();
        info_.acState.fanSpeed = fan.asString();
    }

    // Air conditioners are Z-codeset appliances; every other type is an H-codeset one.
    auto& ir = CIRInterface::GetInstance();
    info_.keyMap = airConditioner ? ir.GetSupportedKeyMapZCodeset(info_.codesetName, false)
                                  : ir.GetSupportedKeyMapHCodeset(info_.codesetName, false);
    IRC_LOGI("key_map: %s", info_.keyMap.c_str());
    return info_;
}

void CIRDevice::blastAllowedKey(const std::string& json, const std::unordered_set<int>& allowed,
                                bool robotCleanerWording) {
    const IRDeviceInfo info = GetParsedDeviceInfo(json);
    if (allowed.count(info.codesetKey) == 0) throw CException("unsupported key", 5);
    if (robotCleanerWording) {
        IRC_LOGI("key to be IRBlastered : %d", info.codesetKey);
    } else {
        IRC_LOGI("key to be IRBlasted : %d", info.codesetKey);
    }
    CIRInterface::GetInstance().SendCommandHDevice(info.codesetName, info.codesetKey, false);
}

}  // namespace ircontrol

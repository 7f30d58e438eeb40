// Constant strings shared by several parts of the service.
#pragma once

namespace ircontrol {

// OCF device types of the appliances the service drives.
inline constexpr char kOcfAirConditioner[] = "oic.d.airconditioner";
inline constexpr char kOcfAirPurifier[] = "oic.d.airpurifier";
inline constexpr char kOcfRobotCleaner[] = "oic.d.robotcleaner";
inline constexpr char kOcfFan[] = "oic.d.fan";
inline constexpr char kOcfHumidifier[] = "x.com.zq.d.humidifier";

// Vendor attributes of a device-info payload.
inline constexpr char kAttrDeviceType[] = "x.com.korvan.deviceType";
inline constexpr char kAttrCodesetName[] = "x.com.korvan.codesetName";
inline constexpr char kAttrCodesetKey[] = "x.com.korvan.codesetKey";
inline constexpr char kAttrAcState[] = "x.com.korvan.acState";
inline constexpr char kAttrPower[] = "x.com.korvan.power";
inline constexpr char kAttrMode[] = "x.com.korvan.mode";
inline constexpr char kAttrCoolingSetpoint[] = "x.com.korvan.coolingSetpoint";
inline constexpr char kAttrFanSpeed[] = "x.com.korvan.fanSpeed";

// The service's two host properties.
inline constexpr char kPropSetKeyEvent[] = "setKeyEvent";
inline constexpr char kPropSetKeyEventDesc[] = "set ir key event";
inline constexpr char kPropSetDeviceEvent[] = "setDeviceEvent";
inline constexpr char kPropSetDeviceEventDesc[] = "set ir device event";

// Host service identity.
inline constexpr char kServiceName[] = "ircontrol";
inline constexpr char kServiceDescription[] = "ir control service plugin";

// Settings-store key of the paired IR devices list, written by another component.
inline constexpr char kVconfIrDevices[] = "db/tavrell/irplugin/devices";

// Answer property names.
inline constexpr char kAnswerErrorCode[] = "errorCode";
inline constexpr char kAnswerDescription[] = "description";

}  // namespace ircontrol

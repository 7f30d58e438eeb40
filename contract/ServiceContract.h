// The words and names the IR control service shares with whoever talks to it: the settings key
// its pairing list is read from, the service and property names, the attributes of a key or
// air-conditioner payload, the answer's members and the AC state words it accepts. For the tools
// and the fake platform, which must not include the plugin's own headers; a host test checks
// that these agree with the plugin. Constants only.
#pragma once

namespace ircontrol::contract {

// Settings-store key of the paired IR devices list {"dev_info":[{"codeset","device_index"}]}.
inline constexpr char kDevicesKey[] = "db/tavrell/irplugin/devices";

// The host service and its properties.
inline constexpr char kServiceName[] = "ircontrol";
inline constexpr char kPropSetKeyEvent[] = "setKeyEvent";
inline constexpr char kPropSetDeviceEvent[] = "setDeviceEvent";

// OCF device types of the appliances the service drives.
inline constexpr char kOcfFan[] = "oic.d.fan";
inline constexpr char kOcfAirPurifier[] = "oic.d.airpurifier";
inline constexpr char kOcfHumidifier[] = "x.com.zq.d.humidifier";
inline constexpr char kOcfRobotCleaner[] = "oic.d.robotcleaner";
inline constexpr char kOcfAirConditioner[] = "oic.d.airconditioner";

// Attributes of a setKeyEvent payload.
inline constexpr char kAttrDeviceType[] = "x.com.korvan.deviceType";
inline constexpr char kAttrCodesetName[] = "x.com.korvan.codesetName";
inline constexpr char kAttrCodesetKey[] = "x.com.korvan.codesetKey";
inline constexpr char kAttrAcState[] = "x.com.korvan.acState";
inline constexpr char kAttrPower[] = "x.com.korvan.power";
inline constexpr char kAttrMode[] = "x.com.korvan.mode";
inline constexpr char kAttrCoolingSetpoint[] = "x.com.korvan.coolingSetpoint";
inline constexpr char kAttrFanSpeed[] = "x.com.korvan.fanSpeed";

// Members of an answer.
inline constexpr char kAnswerErrorCode[] = "errorCode";
inline constexpr char kAnswerDescription[] = "description";

// The words an air-conditioner state may carry; the service takes them in upper case only.
inline constexpr const char* kAcPowerWords[] = {"ON", "OFF"};
inline constexpr const char* kAcModeWords[] = {"AUTO", "COLD", "DEHUMI", "VENT", "HEAT"};
inline constexpr const char* kAcFanWords[] = {"LOW", "MEDIUM", "HIGH", "AUTO"};

}  // namespace ircontrol::contract

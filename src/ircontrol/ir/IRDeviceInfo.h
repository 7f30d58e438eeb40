// The parsed description of one appliance, copied by value.
#pragma once

#include <cstdint>
#include <string>

namespace ircontrol {

// An air-conditioner state. As parsed: the request's words; as handed to the IR interface:
// the IR library's words, with the setpoint as decimal text in coolingSetpoint.
typedef struct _IRAcState {
    std::string power;
    std::string mode;
    int32_t coolingSetpoint = 0;
    std::string fanSpeed;
} IRAcState;

struct IRDeviceInfo {
    std::string codesetName;
    int32_t codesetKey = 0;
    std::string deviceType;
    std::string keyMap;
    IRAcState acState;
};

// The state in the IR library's words, as the blaster interface receives it.
struct IRAcCommand {
    std::string power;
    std::string mode;
    std::string coolingSetpoint;
    std::string fanSpeed;
};

}  // namespace ircontrol

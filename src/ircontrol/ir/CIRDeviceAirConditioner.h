// An air conditioner: takes a whole target state, translates its words into the IR library's
// words (exact, case-sensitive) and sends it as one state command.
#pragma once

#include "ir/CIRDevice.h"

namespace ircontrol {

class CIRDeviceAirConditioner : public CIRDevice {
public:
    ~CIRDeviceAirConditioner() override;
    void BlastIR(const std::string& json) override;
};

}  // namespace ircontrol

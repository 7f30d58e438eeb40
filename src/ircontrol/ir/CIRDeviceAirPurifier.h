// An air purifier: accepts the key codes of its allow-list, sent as H-codeset commands.
#pragma once

#include "ir/CIRDevice.h"

namespace ircontrol {

class CIRDeviceAirPurifier : public CIRDevice {
public:
    ~CIRDeviceAirPurifier() override;
    void BlastIR(const std::string& json) override;
};

}  // namespace ircontrol

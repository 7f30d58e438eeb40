// An air fan: accepts the key codes of its allow-list, sent as H-codeset commands.
#pragma once

#include "ir/CIRDevice.h"

namespace ircontrol {

class CIRDeviceFan : public CIRDevice {
public:
    ~CIRDeviceFan() override;
    void BlastIR(const std::string& json) override;
};

}  // namespace ircontrol

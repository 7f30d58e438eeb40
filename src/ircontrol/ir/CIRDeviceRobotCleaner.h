// A robot cleaner: accepts the key codes of its allow-list, sent as H-codeset commands.
#pragma once

#include "ir/CIRDevice.h"

namespace ircontrol {

class CIRDeviceRobotCleaner : public CIRDevice {
public:
    ~CIRDeviceRobotCleaner() override;
    void BlastIR(const std::string& json) override;
};

}  // namespace ircontrol

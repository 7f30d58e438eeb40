// Picks the appliance class for an OCF device type (exact match).
#pragma once

#include <memory>
#include <string>

#include "ir/IIRDevice.h"

namespace ircontrol {

class CIRDeviceFactory {
public:
    CIRDeviceFactory() = delete;
    // Throws CException("not supported type", 6) for any other type.
    static std::shared_ptr<IIRDevice> CreateDevice(const std::string& type);
};

}  // namespace ircontrol

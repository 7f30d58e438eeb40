#include "ir/CIRDeviceFactory.h"

#include "common/CException.h"
#include "common/Constants.h"
#include "common/ServiceLog.h"
#include "ir/CIRDeviceAirConditioner.h"
#include "ir/CIRDeviceAirPurifier.h"
#include "ir/CIRDeviceFan.h"
#include "ir/CIRDeviceHumidifier.h"
#include "ir/CIRDeviceRobotCleaner.h"

namespace ircontrol {

std::shared_ptr<IIRDevice> CIRDeviceFactory::CreateDevice(const std::string& type) {
    IRC_LOGE("oic_device_type : %s", type.c_str());
    if (type == kOcfHumidifier) return std::make_shared<CIRDeviceHumidifier>();
    if (type == kOcfAirPurifier) return std::make_shared<CIRDeviceAirPurifier>();
    if (type == kOcfFan) return std::make_shared<CIRDeviceFan>();
    if (type == kOcfRobotCleaner) return std::make_shared<CIRDeviceRobotCleaner>();
    if (type == kOcfAirConditioner) return std::make_shared<CIRDeviceAirConditioner>();
    throw CException("not supported type", 6);
}

}  // namespace ircontrol

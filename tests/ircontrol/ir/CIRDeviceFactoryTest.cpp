#include "ir/CIRDeviceFactory.h"

#include <gtest/gtest.h>

#include <string>
#include <typeindex>
#include <typeinfo>
#include <vector>

#include "ir/CIRDeviceAirConditioner.h"
#include "ir/CIRDeviceAirPurifier.h"
#include "ir/CIRDeviceFan.h"
#include "ir/CIRDeviceHumidifier.h"
#include "ir/CIRDeviceRobotCleaner.h"

namespace ircontrol {
namespace {

// The four key appliances share their code and three share an allow-list, so a swapped branch
// would pass every request-level test; only the class tells them apart.
TEST(CIRDeviceFactoryTest, EachKnownTypeGetsItsOwnClassAndAFreshObject) {
    const std::vector<std::pair<std::string, std::type_index>> classes = {
        {"x.com.zq.d.humidifier", typeid(CIRDeviceHumidifier)}, {"oic.d.airpurifier", typeid(CIRDeviceAirPurifier)},
        {"oic.d.fan", typeid(CIRDeviceFan)}, {"oic.d.robotcleaner", typeid(CIRDeviceRobotCleaner)},
        {"oic.d.airconditioner", typeid(CIRDeviceAirConditioner)},
    };
    for (const auto& [type, expected] : classes) {
        const auto device = CIRDeviceFactory::CreateDevice(type);
        ASSERT_NE(device, nullptr) << type;
        const IIRDevice& made = *device;
        EXPECT_EQ(std::type_index(typeid(made)), expected) << type;
        // One object per request: nothing of an earlier request can leak into the next.
        EXPECT_NE(CIRDeviceFactory::CreateDevice(type), device);
    }
}

}  // namespace
}  // namespace ircontrol

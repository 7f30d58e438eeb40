#include "ir/CIRDeviceFactory.h"

#include <gtest/gtest.h>

#include <typeindex>
#include <typeinfo>
#include <string>
#include <vector>

#include <dlog.h>

#include "common/CException.h"
#include "ir/CIRDeviceAirConditioner.h"
#include "ir/CIRDeviceAirPurifier.h"
#include "ir/CIRDeviceFan.h"
#include "ir/CIRDeviceHumidifier.h"
#include "ir/CIRDeviceRobotCleaner.h"
#include "sim/Simulator.h"

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

// Exact types only; log readers find the type a request named even when it was refused.
TEST(CIRDeviceFactoryTest, AnyOtherTypeIsRefusedWithCode6AndTheTypeLogged) {
    sim::ResetAll();
    for (const std::string type : {"OIC.D.FAN", "oic.d.tv"}) {
        try {
            CIRDeviceFactory::CreateDevice(type);
            ADD_FAILURE() << "created " << type;
        } catch (const CException& e) {
            EXPECT_STREQ(e.what(), "not supported type(error:6)");
        }
    }
    std::vector<int> priorities;
    for (const auto& line : sim::Log::Lines()) {
        if (line.text.find("oic_device_type : oic.d.tv") != std::string::npos) priorities.push_back(line.priority);
    }
    EXPECT_EQ(priorities, std::vector<int>{DLOG_ERROR});
}

}  // namespace
}  // namespace ircontrol

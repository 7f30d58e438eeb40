#include "ir/CIRDeviceAirConditioner.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PlatformState.h"
#include "common/CException.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

std::string State(int key, const std::string& power, const std::string& mode, int setpoint,
                  const std::string& fan) {
    return R"({"x.com.korvan.deviceType":"oic.d.airconditioner","x.com.korvan.codesetName":"ZAC",)"
           R"("x.com.korvan.codesetKey":)" + std::to_string(key) +
           R"(,"x.com.korvan.acState":{"x.com.korvan.power":")" + power +
           R"(","x.com.korvan.mode":")" + mode + R"(","x.com.korvan.coolingSetpoint":)" +
           std::to_string(setpoint) + R"(,"x.com.korvan.fanSpeed":")" + fan + R"("}})";
}

class CIRDeviceAirConditionerTest : public ::testing::Test {
protected:
    void SetUp() override {
        irctest::ResetWithPairing(R"({"dev_info":[{"codeset":"ZAC","device_index":7}]})");
    }
};

// Words are looked up exactly: the library's own words, other cases and blanks are refused
// (code 2), power before mode before fan speed, and nothing is sent.
TEST_F(CIRDeviceAirConditionerTest, FirstUnknownWordInPowerModeFanOrderIsRefused) {
    struct Case { std::string power, mode, fan, message; };
    const std::vector<Case> cases = {
        {"on", "COLD", "LOW", "invalid power state"},
        {"On", "cool", "low", "invalid power state"},
        {"ON ", "COLD", "LOW", "invalid power state"},
        {"", "COLD", "LOW", "invalid power state"},
        {"OFF", "auto", "LOW", "invalid mode state"},
        {"OFF", "COOL", "TURBO", "invalid mode state"},
        {"OFF", "FAN", "LOW", "invalid mode state"},
        {"ON", "HEAT", "low", "invalid fan mode state"},
        {"ON", "HEAT", "Auto", "invalid fan mode state"},
        {"ON", "HEAT", "", "invalid fan mode state"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.power + "/" + c.mode + "/" + c.fan);
        sim::IrBlaster::ClearJournal();
        CIRDeviceAirConditioner device;
        try {
            device.BlastIR(State(1, c.power, c.mode, 24, c.fan));
            ADD_FAILURE() << "sent";
        } catch (const CException& e) {
            EXPECT_EQ(e.GetMessage(), c.message);
            EXPECT_EQ(e.GetErrorCode(), 2);
        }
        EXPECT_TRUE(irctest::Transmissions().empty());
    }
}

// The key code and the set point are not the service's to judge: any key, any set point, one
// state command to the paired transmitter (never a key command).
TEST_F(CIRDeviceAirConditionerTest, KeyAndSetpointAreSentUncheckedAsOneStateCommand) {
    const std::vector<std::pair<int, int>> cases = {{1, 24}, {999, -5}, {-1, 0}, {0, 100}};
    for (const auto& [key, setpoint] : cases) {
        SCOPED_TRACE(std::to_string(key) + "/" + std::to_string(setpoint));
        sim::IrBlaster::ClearJournal();
        CIRDeviceAirConditioner device;
        device.BlastIR(State(key, "OFF", "VENT", setpoint, "MEDIUM"));
        const auto sent = irctest::Transmissions();
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].function, sim::IrCall::Function::Aircon);
        EXPECT_EQ(sent[0].deviceIndex, 7);
        EXPECT_EQ(sent[0].power, "off");
        EXPECT_EQ(sent[0].mode, "fan");
        EXPECT_EQ(sent[0].fanSpeed, "medium");
        EXPECT_EQ(sent[0].coolingSetpoint, std::to_string(setpoint));
    }
}

}  // namespace
}  // namespace ircontrol

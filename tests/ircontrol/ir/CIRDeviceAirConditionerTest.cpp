#include "ir/CIRDeviceAirConditioner.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Payloads.h"
#include "PlatformState.h"
#include "common/CException.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

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
            device.BlastIR(irctest::AcPayload("ZAC", c.power, c.mode, "24", c.fan));
            ADD_FAILURE() << "sent";
        } catch (const CException& e) {
            EXPECT_EQ(e.GetMessage(), c.message);
            EXPECT_EQ(e.GetErrorCode(), 2);
        }
        EXPECT_TRUE(irctest::Transmissions().empty());
    }
}

// Each word becomes the library's word; the key code and the set point are not the service's to
// judge: any key, any set point, one state command to the paired transmitter (never a key command).
TEST_F(CIRDeviceAirConditionerTest, WordsAreTranslatedAndKeyAndSetpointSentUnchecked) {
    struct Case { int key; std::string power, mode, fan; int setpoint; std::string sent[3]; };
    const std::vector<Case> cases = {
        {1, "ON", "COLD", "LOW", 24, {"on", "cool", "low"}},
        {999, "OFF", "AUTO", "AUTO", -5, {"off", "auto", "auto"}},
        {-1, "ON", "DEHUMI", "MEDIUM", 0, {"on", "dry", "medium"}},
        {0, "OFF", "VENT", "HIGH", 2147483647, {"off", "fan", "high"}},
        {1, "ON", "HEAT", "HIGH", -2147483647 - 1, {"on", "heat", "high"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.power + "/" + c.mode + "/" + c.fan + "/" + std::to_string(c.setpoint));
        sim::IrBlaster::ClearJournal();
        CIRDeviceAirConditioner device;
        device.BlastIR(irctest::AcPayload("ZAC", c.power, c.mode, std::to_string(c.setpoint), c.fan, c.key));
        const auto sent = irctest::Transmissions();
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].function, sim::IrCall::Function::Aircon);
        EXPECT_EQ(sent[0].deviceIndex, 7);
        EXPECT_EQ(sent[0].power, c.sent[0]);
        EXPECT_EQ(sent[0].mode, c.sent[1]);
        EXPECT_EQ(sent[0].fanSpeed, c.sent[2]);
        EXPECT_EQ(sent[0].coolingSetpoint, std::to_string(c.setpoint));
    }
}

}  // namespace
}  // namespace ircontrol

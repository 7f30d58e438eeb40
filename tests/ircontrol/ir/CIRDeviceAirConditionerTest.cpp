#include "ir/CIRDeviceAirConditioner.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Payloads.h"
#include "PlatformState.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

// Each word becomes the library's word, looked up exactly (the library's own words, other cases
// and blanks are refused with code 2, power before mode before fan speed). The key code and the
// set point are not the service's to judge: one state command to the paired transmitter, never a
// key command.
TEST(CIRDeviceAirConditionerTest, WordsAreTranslatedOrTheFirstUnknownOneRefused) {
    struct Case { int key; std::string power, mode, fan, setpoint, expected; };
    const std::vector<Case> cases = {
        {1, "ON", "COLD", "LOW", "24", "map Z ZAC; AC on cool 24 low @7"},
        {999, "OFF", "AUTO", "AUTO", "-5", "map Z ZAC; AC off auto -5 auto @7"},
        {-1, "ON", "DEHUMI", "MEDIUM", "0", "map Z ZAC; AC on dry 0 medium @7"},
        {0, "OFF", "VENT", "HIGH", "2147483647", "map Z ZAC; AC off fan 2147483647 high @7"},
        {1, "ON", "HEAT", "HIGH", "-2147483648", "map Z ZAC; AC on heat -2147483648 high @7"},
        {1, "on", "COLD", "LOW", "24", "invalid power state(error:2) after map Z ZAC"},
        {1, "OFF", "FAN", "TURBO", "24", "invalid mode state(error:2) after map Z ZAC"},
        {1, "ON", "HEAT", "Auto", "24", "invalid fan mode state(error:2) after map Z ZAC"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.power + "/" + c.mode + "/" + c.fan);
        irctest::ResetWithPairing(R"({"dev_info":[{"codeset":"ZAC","device_index":7}]})");
        std::string got;
        try {
            CIRDeviceAirConditioner().BlastIR(irctest::AcPayload("ZAC", c.power, c.mode, c.setpoint, c.fan, c.key));
            got = irctest::JournalText();
        } catch (const std::exception& e) {
            got = e.what() + (" after " + irctest::JournalText());
        }
        EXPECT_EQ(got, c.expected);
    }
}

}  // namespace
}  // namespace ircontrol

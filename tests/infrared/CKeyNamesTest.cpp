#include "infrared/import/CKeyNames.h"

#include <gtest/gtest.h>

namespace infrared {
namespace {

// Case, punctuation, a "KEY_" prefix and a trailing +/- do not matter; each kind has its own table.
TEST(CKeyNames, ButtonNamesAndTheirSynonymsGiveTheServicesKeyCodes) {
    const std::tuple<ApplianceKind, const char*, int> cases[] = {
        {ApplianceKind::Fan, "POWER", 10},        {ApplianceKind::Fan, "power_on-off", 10},
        {ApplianceKind::Fan, "KEY_POWER", 10},    {ApplianceKind::Fan, "SPEED+", 11},
        {ApplianceKind::Fan, "Speed-", 12},       {ApplianceKind::Fan, "Light", -1},
        {ApplianceKind::Purifier, "Sleep", 13},   {ApplianceKind::Cleaner, "Dock", 28},
        {ApplianceKind::Cleaner, "Timer", -1},    {ApplianceKind::Aircon, "Power", -1},
        {ApplianceKind::Humidifier, "Mode", 76},  {ApplianceKind::Cleaner, "Start/Pause", 39},
    };
    for (const auto& [kind, button, code] : cases) EXPECT_EQ(CKeyNames::Code(kind, button), code) << button;
}

TEST(CKeyNames, AirConditionerNamesSayStates) {
    const std::tuple<const char*, bool, const char*, const char*, const char*, double> cases[] = {
        {"Off", true, "off", "", "", 0},          {"COOL22", true, "on", "cool", "", 22},
        {"Cool_auto", true, "on", "cool", "auto", 0}, {"Heat 30 high", true, "on", "heat", "high", 30},
        {"TEMP+", false, "", "", "", 0},          {"Fan", false, "", "", "", 0},
        {"On", false, "", "", "", 0},             {"Cool_99", false, "", "", "", 0},
        {"Off_cool", false, "", "", "", 0},       {"Cool_heat", false, "", "", "", 0},
    };
    for (const auto& [name, isState, power, mode, fan, setpoint] : cases) {
        AcStateEntry state;
        ASSERT_EQ(CKeyNames::ReadStateName(name, state), isState) << name;
        if (!isState) continue;
        EXPECT_EQ(std::tie(state.power, state.mode, state.fan, state.hasSetpoint, state.setpoint),
                  std::make_tuple(power, mode, fan, setpoint != 0, setpoint)) << name;
    }
}

}  // namespace
}  // namespace infrared

#include "infrared/import/CKeyNames.h"

#include <gtest/gtest.h>

namespace infrared {
namespace {

TEST(CKeyNames, ButtonNamesAndTheirSynonymsGiveTheServicesKeyCodes) {
    struct Case { ApplianceKind kind; const char* button; int code; };
    const Case cases[] = {
        {ApplianceKind::Fan, "POWER", 10},        {ApplianceKind::Fan, "Power", 10},
        {ApplianceKind::Fan, "power_on-off", 10}, {ApplianceKind::Fan, "KEY_POWER", 10},
        {ApplianceKind::Fan, "SPEED+", 11},       {ApplianceKind::Fan, "FAN_UP", 11},
        {ApplianceKind::Fan, "Speed-", 12},       {ApplianceKind::Fan, "Oscillate", 13},
        {ApplianceKind::Fan, "Timer", 14},        {ApplianceKind::Fan, "Mode", 76},
        {ApplianceKind::Fan, "Light", -1},        {ApplianceKind::Purifier, "Sleep", 13},
        {ApplianceKind::Purifier, "Fan_speed", 11}, {ApplianceKind::Humidifier, "Mist+", 11},
        {ApplianceKind::Humidifier, "Auto", 13},  {ApplianceKind::Cleaner, "Dock", 28},
        {ApplianceKind::Cleaner, "Start/Pause", 39}, {ApplianceKind::Cleaner, "Timer", -1},
        {ApplianceKind::Aircon, "Power", -1},
    };
    for (const auto& c : cases) EXPECT_EQ(CKeyNames::Code(c.kind, c.button), c.code) << c.button;
}

TEST(CKeyNames, TableCodesAreTheOnesTheServiceAccepts) {
    const std::pair<ApplianceKind, std::vector<int>> accepted[] = {
        {ApplianceKind::Fan, {10, 11, 12, 13, 14, 76}}, {ApplianceKind::Purifier, {10, 11, 12, 13, 14, 76}},
        {ApplianceKind::Humidifier, {10, 11, 12, 13, 14, 76}}, {ApplianceKind::Cleaner, {10, 28, 39}}};
    for (const auto& [kind, codes] : accepted) {
        std::vector<int> table;
        for (const auto& entry : CKeyNames::Table(kind)) table.push_back(entry.code);
        EXPECT_EQ(table, codes) << CKeyNames::KindName(kind);
        for (const int code : codes) EXPECT_LT(code, CKeyNames::kFirstFreeCode);
    }
}

TEST(CKeyNames, AirConditionerNamesSayStates) {
    struct Case { const char* name; bool state; const char* power; const char* mode; const char* fan; double setpoint; };
    const Case cases[] = {
        {"Off", true, "off", "", "", 0},          {"Cool_hi", true, "on", "cool", "high", 0},
        {"Heat_lo", true, "on", "heat", "low", 0}, {"Dh", true, "on", "dry", "", 0},
        {"Cool_22", true, "on", "cool", "", 22},  {"COOL22", true, "on", "cool", "", 22},
        {"Cool_auto", true, "on", "cool", "auto", 0}, {"Heat 30 high", true, "on", "heat", "high", 30},
        {"TEMP+", false, "", "", "", 0},          {"Mode", false, "", "", "", 0},
        {"Fan", false, "", "", "", 0},            {"On", false, "", "", "", 0},
        {"Cool_99", false, "", "", "", 0},        {"Off_cool", false, "", "", "", 0},
        {"Cool_heat", false, "", "", "", 0},
    };
    for (const auto& c : cases) {
        AcStateEntry state;
        ASSERT_EQ(CKeyNames::ReadStateName(c.name, state), c.state) << c.name;
        if (!c.state) continue;
        EXPECT_EQ(std::tie(state.power, state.mode, state.fan, state.hasSetpoint),
                  std::make_tuple(c.power, c.mode, c.fan, c.setpoint != 0))
            << c.name;
        EXPECT_TRUE(c.setpoint == 0 || state.setpoint == c.setpoint) << c.name;
    }
}

}  // namespace
}  // namespace infrared

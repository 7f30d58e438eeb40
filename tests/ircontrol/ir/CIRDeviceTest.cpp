// The part the appliance classes share: the device-info record and the allow-listed key send.
#include "ir/CIRDevice.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "Payloads.h"
#include "PlatformState.h"
#include "common/CException.h"
#include "ir/CIRDeviceFactory.h"
#include "ir/CIRDeviceFan.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

using irctest::KeyPayload;

// `text` with the member `name` renamed, so that the request lacks it.
std::string Without(std::string text, const std::string& name) {
    return text.insert(text.find("x.com.korvan." + name), "no-");
}

class CIRDeviceTest : public ::testing::Test {
protected:
    void SetUp() override {
        irctest::ResetWithPairing(R"({"dev_info":[{"codeset":"HX","device_index":3}]})");
        sim::IrBlaster::SetKeyMap("HX", "h-keys");
        sim::IrBlaster::SetKeyMap("ZX", "z-keys");
    }
};

// The record as written, with the key map of its codeset kind: only the air conditioner's exact
// type makes a Z-codeset appliance with a state (the factory refuses unknown types, not this).
// A missing member is refused before any library call, the first missing one named; a text that
// is JSON but no value is the parser's own refusal (code 4).
TEST_F(CIRDeviceTest, RecordHoldsTheRequestAsWrittenOrNamesWhatIsMissing) {
    const std::string h = "HX 11 h-keys ///0 map H HX", missing = "codeset_name obj null(error:5)";
    const std::string fan = KeyPayload("oic.d.fan", "HX", "11");
    const std::string ac = irctest::AcPayload("ZX", "ON", "COLD", "-5", "LOW", 11);
    const std::vector<std::pair<std::string, std::string>> cases = {
        {fan, h},
        {KeyPayload("OIC.D.AIRCONDITIONER", "HX", "11"), h},
        {ac, "ZX 11 z-keys ON/COLD/LOW/-5 map Z ZX"},
        {"null", "json value null!(error:4)"},
        {Without(fan, "codesetName"), missing},
        {Without(fan, "codesetKey"), missing},
        {Without(fan, "deviceType"), missing},
        {KeyPayload("oic.d.airconditioner", "ZX", "1"), "ac_state_obj null(error:5)"},
        // Every state member must be there, even the set point a default could stand for.
        {Without(ac, "power"), "power obj null(error:5)"},
        {Without(ac, "mode"), "mode obj null(error:5)"},
        {Without(ac, "coolingSetpoint"), "coolingSetpoint obj null(error:5)"},
        {Without(ac, "fanSpeed"), "fan speed obj null(error:5)"},
        // A wrong member type is the JSON layer's refusal.
        {KeyPayload("oic.d.fan", "HX", "\"10\""), "cannot convert to int32_t type"},
    };
    for (const auto& [json, expected] : cases) {
        SCOPED_TRACE(json);
        sim::IrBlaster::ClearJournal();
        sim::Log::Clear();
        std::string got;
        try {
            const IRDeviceInfo info = CIRDeviceFan().GetParsedDeviceInfo(json);  // any CIRDevice parses alike
            const auto& ac = info.acState;
            got = info.codesetName + " " + std::to_string(info.codesetKey) + " " + info.keyMap + " " + ac.power +
                  "/" + ac.mode + "/" + ac.fanSpeed + "/" + std::to_string(ac.coolingSetpoint) + " " +
                  irctest::JournalText();
            EXPECT_TRUE(sim::Log::Contains("key_map: " + info.keyMap));
        } catch (const std::exception& e) {
            got = e.what();
            EXPECT_EQ(irctest::JournalText(), "");
        }
        EXPECT_EQ(got, expected);
    }
}

// The four key appliances: an allowed key goes out once, as an H-codeset command to the paired
// transmitter; any other key is refused (code 5) before the library hears of it.
TEST_F(CIRDeviceTest, KeyAppliancesSendExactlyTheirAllowListAsHCodesetCommands) {
    const std::set<int> common = {10, 11, 12, 13, 14, 76};
    const std::vector<std::pair<std::string, std::set<int>>> kinds = {
        {"oic.d.fan", common}, {"oic.d.airpurifier", common}, {"x.com.zq.d.humidifier", common},
        {"oic.d.robotcleaner", {10, 28, 39}}};
    for (const auto& [type, allowed] : kinds) {
        for (int key = -1; key <= 80; ++key) {
            SCOPED_TRACE(type + " key " + std::to_string(key));
            sim::IrBlaster::ClearJournal();
            sim::Log::Clear();
            const std::string k = std::to_string(key);
            try {
                CIRDeviceFactory::CreateDevice(type)->BlastIR(KeyPayload(type, "HX", k));
                EXPECT_EQ(allowed.count(key), 1u) << "sent";
                EXPECT_EQ(irctest::JournalText(), "map H HX; H " + k + " @3");
                // Log readers match these texts; the cleaner's differs on purpose.
                const bool cleaner = type == "oic.d.robotcleaner";
                EXPECT_TRUE(sim::Log::Contains((cleaner ? "key to be IRBlastered : " : "key to be IRBlasted : ") + k));
            } catch (const CException& e) {
                EXPECT_EQ(allowed.count(key), 0u);
                EXPECT_STREQ(e.what(), "unsupported key(error:5)");
                EXPECT_EQ(irctest::JournalText(), "map H HX");
            }
        }
    }
}

}  // namespace
}  // namespace ircontrol

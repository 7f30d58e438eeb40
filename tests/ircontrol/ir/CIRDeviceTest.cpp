// The part the appliance classes share: the device-info record and the allow-listed key send.
#include "ir/CIRDevice.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "common/CException.h"
#include "ir/CIRDeviceFactory.h"
#include "ir/CIRDeviceFan.h"
#include "PlatformState.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

const std::string kAcState =
    R"("x.com.korvan.acState":{"x.com.korvan.power":"ON","x.com.korvan.mode":"COLD",)"
    R"("x.com.korvan.coolingSetpoint":-5,"x.com.korvan.fanSpeed":"LOW"})";

std::string Info(const std::string& type, const std::string& codeset, int key,
                 const std::string& extra = "") {
    return R"({"x.com.korvan.deviceType":")" + type + R"(","x.com.korvan.codesetName":")" + codeset +
           R"(","x.com.korvan.codesetKey":)" + std::to_string(key) + (extra.empty() ? "" : ",") +
           extra + "}";
}

class CIRDeviceTest : public ::testing::Test {
protected:
    void SetUp() override {
        irctest::ResetWithPairing(R"({"dev_info":[{"codeset":"HX","device_index":3}]})");
        sim::IrBlaster::SetKeyMap("HX", "h-keys");
        sim::IrBlaster::SetKeyMap("ZX", "z-keys");
    }
};

// Only the air conditioner's exact type makes a Z-codeset appliance with a state; the type is not
// checked here (the factory refuses unknown ones), and a state given to another type is ignored.
TEST_F(CIRDeviceTest, RecordHoldsTheRequestAsWrittenAndTheKeyMapOfItsCodesetKind) {
    struct Case {
        std::string json;
        bool zCodeset;
        std::string power, mode, fan;
        int setpoint;
    };
    const std::vector<Case> cases = {
        {Info("oic.d.fan", "HX", 11), false, "", "", "", 0},
        {Info("oic.d.fan", "HX", 11, kAcState), false, "", "", "", 0},
        {Info("oic.d.lamp", "HX", 11), false, "", "", "", 0},
        {Info("OIC.D.AIRCONDITIONER", "HX", 11), false, "", "", "", 0},
        {Info("oic.d.airconditioner", "ZX", 11, kAcState), true, "ON", "COLD", "LOW", -5},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.json);
        sim::IrBlaster::ClearJournal();
        sim::Log::Clear();
        CIRDeviceFan device;  // any CIRDevice parses alike
        const IRDeviceInfo info = device.GetParsedDeviceInfo(c.json);
        EXPECT_EQ(info.codesetName, c.zCodeset ? "ZX" : "HX");
        EXPECT_EQ(info.codesetKey, 11);
        EXPECT_EQ(info.keyMap, c.zCodeset ? "z-keys" : "h-keys");
        EXPECT_EQ(info.acState.power, c.power);
        EXPECT_EQ(info.acState.mode, c.mode);
        EXPECT_EQ(info.acState.fanSpeed, c.fan);
        EXPECT_EQ(info.acState.coolingSetpoint, c.setpoint);
        const auto queries = irctest::KeyMapQueries();
        ASSERT_EQ(queries.size(), 1u);
        EXPECT_EQ(queries[0].function,
                  c.zCodeset ? sim::IrCall::Function::KeyMapZ : sim::IrCall::Function::KeyMapH);
        EXPECT_EQ(queries[0].codeset, info.codesetName);
        EXPECT_FALSE(queries[0].online);
        EXPECT_TRUE(irctest::Transmissions().empty());
        EXPECT_TRUE(sim::Log::Contains("key_map: " + info.keyMap));
    }
}

// A text that is JSON but no value is the parser's own refusal (code 4); a request handler
// refuses non-JSON text before it gets here.
TEST_F(CIRDeviceTest, NullTextIsRefusedWithCode4BeforeAnyLibraryCall) {
    CIRDeviceFan device;
    try {
        device.GetParsedDeviceInfo("null");
        ADD_FAILURE() << "parsed";
    } catch (const CException& e) {
        EXPECT_EQ(e.GetMessage(), "json value null!");
        EXPECT_EQ(e.GetErrorCode(), 4);
    }
    EXPECT_TRUE(sim::IrBlaster::Journal().empty());
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
            const auto device = CIRDeviceFactory::CreateDevice(type);
            if (allowed.count(key)) {
                device->BlastIR(Info(type, "HX", key));
                const auto sent = irctest::Transmissions();
                ASSERT_EQ(sent.size(), 1u);
                EXPECT_EQ(sent[0].function, sim::IrCall::Function::SendH);
                EXPECT_EQ(sent[0].key, key);
                EXPECT_EQ(sent[0].deviceIndex, 3);
                EXPECT_FALSE(sent[0].online);
                // Log readers match these texts; the cleaner's differs on purpose.
                EXPECT_TRUE(sim::Log::Contains((type == "oic.d.robotcleaner" ? "key to be IRBlastered : "
                                                                             : "key to be IRBlasted : ") +
                                               std::to_string(key)));
                continue;
            }
            try {
                device->BlastIR(Info(type, "HX", key));
                ADD_FAILURE() << "sent";
            } catch (const CException& e) {
                EXPECT_EQ(e.GetMessage(), "unsupported key");
                EXPECT_EQ(e.GetErrorCode(), 5);
            }
            EXPECT_TRUE(irctest::Transmissions().empty());
        }
    }
}

}  // namespace
}  // namespace ircontrol

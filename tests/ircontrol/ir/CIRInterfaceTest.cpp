#include "ir/CIRInterface.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "PlatformState.h"
#include "common/CException.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

class CIRInterfaceTest : public ::testing::Test {
protected:
    void SetUp() override { sim::ResetAll(); }

    static void Pair(const std::string& list) { sim::Settings::SetString(irctest::kPairingKey, list); }

    // A refusal's text: "<message>(error:<code>)" for the service's own, the JSON layer's as is.
    static void ExpectThrows(const std::function<void()>& call, const std::string& reason) {
        try {
            call();
            ADD_FAILURE() << "no exception";
        } catch (const std::exception& e) {
            EXPECT_EQ(std::string(e.what()), reason);
        }
    }

    static CIRInterface& Ir() { return CIRInterface::GetInstance(); }
};

// The index lookup reads the pairing list as it stands: first exact match wins, a negative index
// is handed back as it is, no match is -1 rather than an error.
TEST_F(CIRInterfaceTest, IndexIsTheFirstExactMatchOrMinusOne) {
    struct Case { std::string list, codeset; int index; };
    const std::vector<Case> cases = {
        {R"({"dev_info":[{"codeset":"A","device_index":2},{"codeset":"B","device_index":5}]})", "B", 5},
        {R"({"dev_info":[{"codeset":"A","device_index":2},{"codeset":"A","device_index":5}]})", "A", 2},
        {R"({"dev_info":[{"codeset":"A","device_index":0}]})", "A", 0},
        {R"({"dev_info":[{"codeset":"A","device_index":-3}]})", "A", -3},
        {R"({"dev_info":[{"codeset":"A","device_index":2}]})", "a", -1},
        {R"({"dev_info":[{"codeset":"A","device_index":2}]})", "A ", -1},
        {R"({"dev_info":[]})", "A", -1},
        // Entries after the match are never looked at, broken or not.
        {R"({"dev_info":[{"codeset":"A","device_index":4},{"device_index":1}],"x":1})", "A", 4},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.list + " " + c.codeset);
        Pair(c.list);
        EXPECT_EQ(Ir().getD2DDeviceIndex(c.codeset), c.index);
    }
}

TEST_F(CIRInterfaceTest, UnusablePairingListsRefuseEverySendWithTheirReason) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", "d2d_irdevices_json empty!(error:2)"},
        {"{}", "device_array_obj null(error:2)"},
        {R"({"devices":[]})", "device_array_obj null(error:2)"},
        {"not json", "device_array_obj null(error:2)"},
        {std::string(100000, '{'), "device_array_obj null(error:2)"},
        {"[1]", "invalid type"},
        {R"({"dev_info":{"codeset":"A"}})", "invalid type"},
        {R"({"dev_info":[7]})", "invalid type"},
        {R"({"dev_info":[{"device_index":1},{"codeset":"A","device_index":2}]})", "codeset_obj null(error:2)"},
        {R"({"dev_info":[{"codeset":"A"}]})", "device_index_obj null(error:2)"},
        {R"({"dev_info":[{"codeset":"A","device_index":"one"}]})", "cannot convert to int32_t type"},
        {R"({"dev_info":[{"codeset":"A","device_index":2147483648}]})", "int64_t value exceed int32_t range"},
        {R"({"dev_info":[{"codeset":"B","device_index":1}]})", "d2d_device_index < 0 !!!!!(error:2)"},
        {R"({"dev_info":[{"codeset":"A","device_index":-1}]})", "d2d_device_index < 0 !!!!!(error:2)"},
        {R"({"dev_info":[{"codeset":"A","device_index":-2147483648}]})", "d2d_device_index < 0 !!!!!(error:2)"},
    };
    const IRAcCommand state{"on", "cool", "24", "low"};
    for (const auto& [list, reason] : cases) {
        SCOPED_TRACE(list.substr(0, 120));
        Pair(list);
        sim::IrBlaster::ClearJournal();
        ExpectThrows([] { Ir().SendCommandHDevice("A", 10, false); }, reason);
        ExpectThrows([] { Ir().SendCommandZDevice("A", 10, false); }, reason);
        ExpectThrows([&] { Ir().SetAirconStateAndSendCommand("A", state); }, reason);
        EXPECT_TRUE(sim::IrBlaster::Journal().empty());
    }
    // A key the store does not hold at all is the store's own failure.
    sim::Settings::Remove(irctest::kPairingKey);
    ExpectThrows([] { Ir().SendCommandHDevice("A", 10, false); }, "vconf get str returned null!(error:8)");
}

// What reaches the library: the right function, the paired index, the online flag as given, the
// air conditioner's mode before its power, and the library's result handed back unchanged.
TEST_F(CIRInterfaceTest, SendsReachTheRightLibraryCallAndReturnItsResult) {
    // Transmitter 0 is a real one: only negative indexes are refused.
    for (const auto& [stored, index] : std::vector<std::pair<std::string, int>>{
             {"6", 6}, {"0", 0}, {"-0", 0}, {"2147483647", 2147483647}}) {
        SCOPED_TRACE("device_index " + stored);
        Pair(R"({"dev_info":[{"codeset":"A","device_index":)" + stored + "}]}");
        for (bool result : {true, false}) {
            for (bool online : {false, true}) {
                SCOPED_TRACE(std::to_string(result) + std::to_string(online));
                sim::IrBlaster::ClearJournal();
                sim::IrBlaster::SetSendResult(result);
                EXPECT_EQ(Ir().SendCommandHDevice("A", 12, online), result);
                EXPECT_EQ(Ir().SendCommandZDevice("A", 76, online), result);
                const auto journal = sim::IrBlaster::Journal();
                ASSERT_EQ(journal.size(), 2u);
                EXPECT_EQ(journal[0].function, sim::IrCall::Function::SendH);
                EXPECT_EQ(journal[1].function, sim::IrCall::Function::SendZ);
                EXPECT_EQ(journal[0].key, 12);
                EXPECT_EQ(journal[1].key, 76);
                for (const auto& call : journal) {
                    EXPECT_EQ(call.deviceIndex, index);
                    EXPECT_EQ(call.online, online);
                }
            }
        }
        for (int code : {0, 1, -7}) {
            sim::IrBlaster::ClearJournal();
            sim::IrBlaster::SetAirconResult(code);
            EXPECT_EQ(Ir().SetAirconStateAndSendCommand("A", IRAcCommand{"off", "dry", "-5", "high"}), code);
            const auto journal = sim::IrBlaster::Journal();
            ASSERT_EQ(journal.size(), 1u);
            EXPECT_EQ(journal[0].function, sim::IrCall::Function::Aircon);
            EXPECT_EQ(journal[0].deviceIndex, index);
            EXPECT_EQ(journal[0].mode, "dry");
            EXPECT_EQ(journal[0].power, "off");
            EXPECT_EQ(journal[0].coolingSetpoint, "-5");
            EXPECT_EQ(journal[0].fanSpeed, "high");
        }
    }
}

// Key maps need no pairing; a codeset the library does not know gives "" and an error line.
TEST_F(CIRInterfaceTest, KeyMapsAreTheLibraryTextOrEmpty) {
    sim::IrBlaster::SetKeyMap("H1", R"({"power":10})");
    sim::IrBlaster::SetKeyMap("Z1", "");
    for (bool online : {false, true}) {
        sim::IrBlaster::ClearJournal();
        EXPECT_EQ(Ir().GetSupportedKeyMapHCodeset("H1", online), R"({"power":10})");
        EXPECT_EQ(Ir().GetSupportedKeyMapZCodeset("H1", online), R"({"power":10})");
        EXPECT_EQ(Ir().GetSupportedKeyMapZCodeset("Z1", online), "");
        const auto journal = sim::IrBlaster::Journal();
        ASSERT_EQ(journal.size(), 3u);
        EXPECT_EQ(journal[0].function, sim::IrCall::Function::KeyMapH);
        EXPECT_EQ(journal[1].function, sim::IrCall::Function::KeyMapZ);
        EXPECT_EQ(journal[2].codeset, "Z1");
        for (const auto& call : journal) EXPECT_EQ(call.online, online);
    }
    sim::Log::Clear();
    EXPECT_EQ(Ir().GetSupportedKeyMapHCodeset("none", false), "");
    EXPECT_EQ(Ir().GetSupportedKeyMapZCodeset("none", false), "");
    EXPECT_EQ(sim::Log::Count("irbl_get_supported_keymap_hcodeset returnd NULL!!"), 2u);
}

}  // namespace
}  // namespace ircontrol

#include "ir/CIRInterface.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PlatformState.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

class CIRInterfaceTest : public ::testing::Test {
protected:
    void SetUp() override { sim::ResetAll(); }

    static void Pair(const std::string& list) { sim::Settings::SetString(irctest::kPairingKey, list); }
    static CIRInterface& Ir() { return CIRInterface::GetInstance(); }
};

// The pairing list is read as it stands on every send: the first exact codeset match names the
// transmitter (0 is a real one, entries after the match are never looked at); no match or a
// negative index refuses the send, as does an unusable list, each with its reason and before
// the library hears of it. All three sends look it up alike and pass the online flag as given.
TEST_F(CIRInterfaceTest, PairingListPicksTheTransmitterOrRefusesEverySendWithItsReason) {
    const std::string unpaired = "d2d_device_index < 0 !!!!!(error:2)";
    struct Case { std::string list, codeset, expected; };  // expected: the index, or the reason
    const std::vector<Case> cases = {
        {R"({"dev_info":[{"codeset":"A","device_index":2},{"codeset":"B","device_index":5},{"device_index":1}]})", "B",
         "5"},
        {R"({"dev_info":[{"codeset":"A","device_index":0},{"codeset":"A","device_index":5}]})", "A", "0"},
        {R"({"dev_info":[{"codeset":"A","device_index":-1}]})", "A", unpaired},
        {R"({"dev_info":[{"codeset":"A","device_index":2}]})", "a", unpaired},
        {"", "A", "d2d_irdevices_json empty!(error:2)"},
        {"{}", "A", "device_array_obj null(error:2)"},
        {R"({"dev_info":[{"device_index":1},{"codeset":"A","device_index":2}]})", "A", "codeset_obj null(error:2)"},
        {R"({"dev_info":[{"codeset":"A"}]})", "A", "device_index_obj null(error:2)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.list + " " + c.codeset);
        Pair(c.list);
        sim::IrBlaster::ClearJournal();
        std::vector<std::string> outcomes;
        for (int send = 0; send < 3; ++send) {
            try {
                if (send == 0) Ir().SendCommandHDevice(c.codeset, 12, true);
                if (send == 1) Ir().SendCommandZDevice(c.codeset, 76, false);
                if (send == 2) Ir().SetAirconStateAndSendCommand(c.codeset, IRAcCommand{"off", "dry", "-5", "high"});
                outcomes.push_back("sent");
            } catch (const std::exception& e) {
                outcomes.push_back(e.what());
            }
        }
        const bool paired = c.expected.find_first_not_of("-0123456789") == std::string::npos;
        EXPECT_EQ(outcomes, std::vector<std::string>(3, paired ? "sent" : c.expected));
        const std::string at = " @" + c.expected;
        const std::string sent = "H 12" + at + " online; Z 76" + at + "; AC off dry -5 high" + at;
        EXPECT_EQ(irctest::JournalText(), paired ? sent : "");
    }
    // A key the store does not hold at all is the store's own failure.
    sim::Settings::Remove(irctest::kPairingKey);
    try {
        Ir().SendCommandHDevice("A", 10, false);
        ADD_FAILURE() << "sent without a pairing list";
    } catch (const std::exception& e) {
        EXPECT_STREQ(e.what(), "vconf get str returned null!(error:8)");
    }
}

// Key maps need no pairing; a codeset the library does not know gives "" and an error line.
TEST_F(CIRInterfaceTest, KeyMapsAreTheLibraryTextOrEmpty) {
    sim::IrBlaster::SetKeyMap("H1", R"({"power":10})");
    EXPECT_EQ(Ir().GetSupportedKeyMapZCodeset("H1", true), R"({"power":10})");
    EXPECT_EQ(Ir().GetSupportedKeyMapHCodeset("none", false), "");
    EXPECT_EQ(irctest::JournalText(), "map Z H1 online; map H none");
    EXPECT_EQ(sim::Log::Count("irbl_get_supported_keymap_hcodeset returnd NULL!!"), 1u);
}

}  // namespace
}  // namespace ircontrol

// The simulator's own contract, which the plugin's tests rely on. The blaster's journal and the
// getters' kind checks are pinned by the plugin's IR and property-list tests, which read them.
#include <gtest/gtest.h>
#include <irkt_irbl.h>
#include <vyrf.h>

#include <climits>
#include <cstdio>
#include <fstream>
#include <utility>

#include "PlatformState.h"
#include "sim/Simulator.h"

namespace {

using sim::HostProperty;

class SimulatorTest : public ::testing::Test {
protected:
    void SetUp() override { sim::ResetAll(); }
};

vyrf_string S(const char* text) { return vyrf_string{text, std::char_traits<char>::length(text)}; }

void OnSet(void*, void* transaction, void*, void* captured) { *static_cast<void**>(captured) = transaction; }

// What the plugin's tests do not see for themselves: the request's list gone with the callback,
// no result before an answer, and an answer to a destroyed service recorded as such (the stop
// race tests count on it).
TEST_F(SimulatorTest, SetRequestsReachTheCallbackAndResultsAreRecorded) {
    void* transaction = nullptr;
    void* service = vyrf_service_create(S("svc"), S("desc"), nullptr, nullptr, &OnSet, nullptr, &transaction);
    ASSERT_NE(service, nullptr);
    const auto lists = sim::Host::LiveLists();
    const uint64_t tx = sim::Host::SendSet("svc", {HostProperty::Json("a", "{}")});
    EXPECT_EQ(sim::Host::LiveLists(), lists);
    EXPECT_FALSE(sim::Host::WaitResult(tx, std::chrono::milliseconds(10)).has_value());
    vyrf_service_destroy(service);
    EXPECT_NE(vyrf_service_send_set_property_result(service, transaction, vyrf_property_list_create(), 0), 0);
    ASSERT_EQ(sim::Host::ResultsFor(tx).size(), 1u);
    EXPECT_FALSE(sim::Host::ResultsFor(tx)[0].serviceAlive);
}

// Values an int cannot hold are refused alike on 32- and 64-bit builds, never wrapped, and a
// refused file changes nothing.
TEST_F(SimulatorTest, SettingsSeedFromAFile) {
    const std::string path = std::string(IRC_BINARY_DIR) + "/simulator_seed.txt";
    std::ofstream(path) << "# seed\nint db/year 23\nstring db/devices {\"dev_info\":[]}\nint db/low -2147483648\n";
    std::string error;
    ASSERT_TRUE(sim::Settings::SeedFromFile(path, &error)) << error;
    EXPECT_EQ(sim::Settings::GetString("db/devices"), "{\"dev_info\":[]}");
    EXPECT_EQ(sim::Settings::GetInt("db/low"), INT_MIN);
    const std::pair<const char*, const char*> refused[] = {
        {"int db/year soon\n", ":1: not an integer"},
        {"int db/year 2147483648\n", ":1: out of int range"},
        {"int db/year 99999999999999999999\n", ":1: out of int range"},
    };
    for (const auto& [line, reason] : refused) {
        std::ofstream(path) << line;
        EXPECT_FALSE(sim::Settings::SeedFromFile(path, &error)) << line;
        EXPECT_NE(error.find(path + reason), std::string::npos) << error;
        EXPECT_EQ(sim::Settings::GetInt("db/year"), 23) << line;
    }
    std::remove(path.c_str());
}

}  // namespace

namespace {

class SimulatorTransmitterTest : public ::testing::Test {
protected:
    void SetUp() override {
        irctest::ResetWithPairing(
            R"({"dev_info":[{"codeset":"HFAN0001","device_index":1},{"codeset":"ZAC00005","device_index":5}]})");
    }
    void TearDown() override { sim::ResetAll(); }
    // One file per test: ctest runs the tests of this fixture in parallel processes.
    std::string file_ = std::string(IRC_BINARY_DIR) + "/test_simulator_transmitter_" +
                        ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".txt";
};

// A transmitter attached gives each journal entry its waveform or its failure; codesets replace
// the catalogue until a reset goes back to the built-in one, journal only.
TEST_F(SimulatorTransmitterTest, TransmissionsCarryTheirWaveformUntilResetDetaches) {
    std::string error;
    ASSERT_TRUE(sim::IrBlaster::SetTransmitter("mode2:" + file_, error)) << error;
    EXPECT_TRUE(irkt_irbl_send_command_hdevice(10, 1, false));
    EXPECT_NE(irkt_irbl_set_aircon_states_and_send_command(5, "cool", "on", "99", "auto"), 0);
    ASSERT_TRUE(sim::IrBlaster::SetCodesets(
        R"({"codesets":[{"name":"HFAN0001","protocol":"nec","keys":{"power":{"code":10,"scancode":1}}}]})", error));
    EXPECT_FALSE(irkt_irbl_send_command_hdevice(11, 1, false));  // the file's codeset has no key 11
    const auto journal = sim::IrBlaster::Journal();
    ASSERT_EQ(journal.size(), 3u);
    EXPECT_EQ(journal[0].waveform.size(), 67u);  // NEC: header, 32 bits, trailer
    EXPECT_EQ(journal[0].carrier, 38000u);
    EXPECT_EQ(journal[0].transmitError, "");
    EXPECT_NE(journal[1].transmitError.find("outside"), std::string::npos);
    EXPECT_NE(journal[2].transmitError.find("has no key 11"), std::string::npos);
    sim::IrBlaster::Reset();
    EXPECT_TRUE(irkt_irbl_send_command_hdevice(11, 1, false));
    EXPECT_TRUE(sim::IrBlaster::Journal().back().waveform.empty());
    EXPECT_EQ(sim::IrBlaster::Catalogue().size(), 3u);
}

}  // namespace

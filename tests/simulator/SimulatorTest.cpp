// The simulator's own contract, which the plugin's tests rely on. The blaster's journal and the
// getters' kind checks are pinned by the plugin's IR and property-list tests, which read them.
#include <gtest/gtest.h>
#include <irkt_irbl.h>
#include <vyrf.h>

#include <climits>
#include <cstdio>
#include <fstream>

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

// A refused file names the line and the reason and changes nothing.
TEST_F(SimulatorTest, SettingsSeedFromAFile) {
    const std::string path = std::string(IRC_BINARY_DIR) + "/simulator_seed.txt";
    std::ofstream(path) << "# seed\nint db/low -2147483648\nstring db/devices {\"dev_info\":[]}\n";
    std::string error;
    ASSERT_TRUE(sim::Settings::SeedFromFile(path, &error)) << error;
    EXPECT_EQ(sim::Settings::GetString("db/devices"), "{\"dev_info\":[]}");
    EXPECT_EQ(sim::Settings::GetInt("db/low"), INT_MIN);
    std::ofstream(path) << "int db/low 2147483648\n";
    EXPECT_FALSE(sim::Settings::SeedFromFile(path, &error));
    EXPECT_EQ(error, path + ":1: out of int range: 2147483648");
    EXPECT_EQ(sim::Settings::GetInt("db/low"), INT_MIN);
    std::remove(path.c_str());
}

// A transmitter attached gives each journal entry its waveform or its failure, until a reset
// goes back to the journal only.
TEST_F(SimulatorTest, TransmissionsCarryTheirWaveformUntilResetDetaches) {
    irctest::ResetWithPairing(
        R"({"dev_info":[{"codeset":"HFAN0001","device_index":1},{"codeset":"ZAC00005","device_index":5}]})");
    std::string error;
    ASSERT_TRUE(sim::IrBlaster::SetTransmitter("mode2:" + std::string(IRC_BINARY_DIR) + "/sim_mode2.txt", error));
    EXPECT_TRUE(irkt_irbl_send_command_hdevice(10, 1, false));
    EXPECT_NE(irkt_irbl_set_aircon_states_and_send_command(5, "cool", "on", "99", "auto"), 0);
    EXPECT_FALSE(irkt_irbl_send_command_hdevice(99, 1, false));
    const auto journal = sim::IrBlaster::Journal();
    ASSERT_EQ(journal.size(), 3u);
    EXPECT_EQ(journal[0].waveform.size(), 67u);  // NEC: header, 32 bits, trailer
    EXPECT_EQ(journal[0].carrier, 38000u);
    EXPECT_EQ(journal[0].transmitError, "");
    EXPECT_NE(journal[1].transmitError.find("outside"), std::string::npos);
    EXPECT_NE(journal[2].transmitError.find("has no key 99"), std::string::npos);
    sim::IrBlaster::Reset();
    EXPECT_TRUE(irkt_irbl_send_command_hdevice(10, 1, false));
    EXPECT_TRUE(sim::IrBlaster::Journal().back().waveform.empty());
}

}  // namespace

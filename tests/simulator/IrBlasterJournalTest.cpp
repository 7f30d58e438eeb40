// The IR journal's bound: newest calls kept, transmissions still counted, sequence numbers steady.
#include <gtest/gtest.h>
#include <irkt_irbl.h>

#include <cstdlib>
#include <vector>

#include "PlatformState.h"
#include "sim/Simulator.h"

namespace {

// Sends keys first..last (one transmission each) through the hdevice entry.
void SendKeys(int first, int last) {
    for (int key = first; key <= last; ++key) ASSERT_TRUE(irkt_irbl_send_command_hdevice(key, 1, false));
}

// A bound of zero keeps nothing; lowering the bound drops the oldest at once; key-map queries
// take room without counting as transmissions, which count whether kept or not; a reset restores
// the default bound, and sequence numbers go on across it.
TEST(IrBlasterJournalTest, KeepsTheNewestCallsWithinItsBoundAndCountsEveryTransmission) {
    sim::ResetAll();
    sim::IrBlaster::SetJournalLimit(0);
    SendKeys(1, 2);
    EXPECT_TRUE(sim::IrBlaster::Journal().empty());
    sim::IrBlaster::SetJournalLimit(100);
    SendKeys(3, 10);
    sim::IrBlaster::SetJournalLimit(4);
    std::free(irkt_irbl_get_supported_keymap_zcodeset("ZAC00005", true));
    EXPECT_EQ(irctest::JournalText(), "H 8 @1; H 9 @1; H 10 @1; map Z ZAC00005 online");
    EXPECT_TRUE(sim::IrBlaster::WaitForTransmissions(10, std::chrono::milliseconds(1)));
    EXPECT_FALSE(sim::IrBlaster::WaitForTransmissions(11, std::chrono::milliseconds(1)));
    const uint64_t before = sim::IrBlaster::Journal().back().sequence;
    sim::ResetAll();
    const int limit = static_cast<int>(sim::IrBlaster::kDefaultJournalLimit);
    SendKeys(1, limit + 1);
    const auto journal = sim::IrBlaster::Journal();
    ASSERT_EQ(journal.size(), sim::IrBlaster::kDefaultJournalLimit);
    EXPECT_EQ(journal.front().key, 2);
    EXPECT_GT(journal.front().sequence, before);
    EXPECT_EQ(journal.back().sequence, journal.front().sequence + limit - 1);
    sim::ResetAll();
}

}  // namespace

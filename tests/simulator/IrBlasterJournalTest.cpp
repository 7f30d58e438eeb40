// The IR journal's bound: newest calls kept, transmissions still counted, sequence numbers steady.
#include <gtest/gtest.h>
#include <irkt_irbl.h>

#include <cstdlib>

#include "sim/Simulator.h"

namespace {

// Past the bound the oldest calls go, while every transmission still counts and key-map queries
// take room without counting; sequence numbers go on across a reset.
TEST(IrBlasterJournalTest, KeepsTheNewestCallsWithinItsBoundAndCountsEveryTransmission) {
    std::free(irkt_irbl_get_supported_keymap_zcodeset("ZAC00005", true));
    const uint64_t before = sim::IrBlaster::Journal().back().sequence;
    sim::ResetAll();
    const int limit = static_cast<int>(sim::IrBlaster::kDefaultJournalLimit);
    for (int key = 1; key <= limit + 1; ++key) ASSERT_TRUE(irkt_irbl_send_command_hdevice(key, 1, false));
    std::free(irkt_irbl_get_supported_keymap_hcodeset("HFAN0001", false));
    const auto journal = sim::IrBlaster::Journal();
    ASSERT_EQ(journal.size(), sim::IrBlaster::kDefaultJournalLimit);
    EXPECT_EQ(journal.front().key, 3);
    EXPECT_GT(journal.front().sequence, before);
    EXPECT_EQ(journal.back().sequence, journal.front().sequence + limit - 1);
    EXPECT_TRUE(sim::IrBlaster::WaitForTransmissions(limit + 1, std::chrono::milliseconds(1)));
    EXPECT_FALSE(sim::IrBlaster::WaitForTransmissions(limit + 2, std::chrono::milliseconds(1)));
    sim::ResetAll();
}

}  // namespace

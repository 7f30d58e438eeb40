// The IR journal's bound: newest calls kept, transmissions still counted, sequence numbers steady.
#include <gtest/gtest.h>
#include <irkt_irbl.h>

#include <cstdlib>
#include <vector>

#include "PlatformState.h"
#include "sim/Simulator.h"

namespace {

std::vector<int> Keys(const std::vector<sim::IrCall>& calls) {
    std::vector<int> keys;
    for (const auto& call : calls) keys.push_back(call.key);
    return keys;
}

// Sends keys first..last (one transmission each) through the hdevice entry.
void SendKeys(int first, int last) {
    for (int key = first; key <= last; ++key) ASSERT_TRUE(irkt_irbl_send_command_hdevice(key, 1, false));
}

// Keys 1..sent against each bound; a transmission counts whether or not the journal keeps it.
TEST(IrBlasterJournalTest, KeepsTheNewestCallsAndCountsEveryTransmission) {
    struct Case { std::size_t limit; int sent; std::vector<int> keptKeys; };
    const std::vector<Case> cases = {{5, 5, {1, 2, 3, 4, 5}}, {5, 6, {2, 3, 4, 5, 6}}, {0, 4, {}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.sent);
        sim::ResetAll();
        sim::IrBlaster::SetJournalLimit(c.limit);
        SendKeys(1, c.sent);
        EXPECT_EQ(Keys(sim::IrBlaster::Journal()), c.keptKeys);
        EXPECT_TRUE(sim::IrBlaster::WaitForTransmissions(c.sent, std::chrono::milliseconds(1)));
        EXPECT_FALSE(sim::IrBlaster::WaitForTransmissions(c.sent + 1, std::chrono::milliseconds(1)));
    }
}

// Lowering the bound drops the oldest at once; key-map queries take room without counting as
// transmissions; a reset restores the default bound, and sequence numbers go on across it.
TEST(IrBlasterJournalTest, BoundChangesTrimAtOnceAndSequenceNumbersGoOn) {
    sim::ResetAll();
    SendKeys(1, 10);
    sim::IrBlaster::SetJournalLimit(4);
    EXPECT_EQ(Keys(sim::IrBlaster::Journal()), (std::vector<int>{7, 8, 9, 10}));
    std::free(irkt_irbl_get_supported_keymap_zcodeset("ZAC00005", true));
    EXPECT_EQ(irctest::JournalText(), "H 8 @1; H 9 @1; H 10 @1; map Z ZAC00005 online");
    EXPECT_FALSE(sim::IrBlaster::WaitForTransmissions(11, std::chrono::milliseconds(1)));
    const uint64_t before = sim::IrBlaster::Journal().back().sequence;
    sim::ResetAll();
    const int limit = static_cast<int>(sim::IrBlaster::kDefaultJournalLimit);
    SendKeys(1, limit + 2);
    const auto journal = sim::IrBlaster::Journal();
    ASSERT_EQ(journal.size(), sim::IrBlaster::kDefaultJournalLimit);
    EXPECT_EQ(journal.front().key, 3);
    EXPECT_GT(journal.front().sequence, before);
    EXPECT_EQ(journal.back().sequence, journal.front().sequence + limit - 1);
    sim::ResetAll();
}

}  // namespace

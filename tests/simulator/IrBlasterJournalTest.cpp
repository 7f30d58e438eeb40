// The IR journal's bound: newest calls kept, transmissions still counted, sequence numbers steady.
#include <gtest/gtest.h>
#include <irkt_irbl.h>

#include <cstdlib>
#include <vector>

#include "PlatformState.h"
#include "sim/Simulator.h"

namespace {

using std::chrono::milliseconds;

class IrBlasterJournalTest : public ::testing::Test {
protected:
    void SetUp() override { sim::ResetAll(); }
    void TearDown() override { sim::ResetAll(); }
};

std::vector<int> Keys(const std::vector<sim::IrCall>& calls) {
    std::vector<int> keys;
    for (const auto& call : calls) keys.push_back(call.key);
    return keys;
}

// Sends keys first..last (one transmission each) through the hdevice entry.
void SendKeys(int first, int last) {
    for (int key = first; key <= last; ++key) ASSERT_TRUE(irkt_irbl_send_command_hdevice(key, 1, false));
}

// True if exactly `count` transmissions were made (kept in the journal or not).
bool Transmitted(std::size_t count) {
    return sim::IrBlaster::WaitForTransmissions(count, milliseconds(1)) &&
           !sim::IrBlaster::WaitForTransmissions(count + 1, milliseconds(1));
}

TEST_F(IrBlasterJournalTest, KeepsTheNewestCallsAndCountsEveryTransmission) {
    struct Case { const char* name; std::size_t limit; int sent; std::vector<int> keptKeys; };  // keys 1..sent
    const std::vector<Case> cases = {
        {"exactly the bound", 5, 5, {1, 2, 3, 4, 5}},
        {"one past the bound", 5, 6, {2, 3, 4, 5, 6}},
        {"bound of zero keeps nothing", 0, 4, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        sim::ResetAll();
        sim::IrBlaster::SetJournalLimit(c.limit);
        SendKeys(1, c.sent);
        const auto journal = sim::IrBlaster::Journal();
        EXPECT_EQ(Keys(journal), c.keptKeys);
        EXPECT_EQ(Keys(sim::IrBlaster::JournalFor(0)), c.keptKeys) << "calls outside a request";
        for (std::size_t i = 1; i < journal.size(); ++i) EXPECT_EQ(journal[i].sequence, journal[i - 1].sequence + 1);
        EXPECT_TRUE(Transmitted(static_cast<std::size_t>(c.sent)));
    }
}

// Lowering the bound drops the oldest at once; key-map queries take room without counting as
// transmissions; a reset restores the default bound, and sequence numbers go on across it.
TEST_F(IrBlasterJournalTest, BoundChangesTrimAtOnceAndSequenceNumbersGoOn) {
    SendKeys(1, 10);
    sim::IrBlaster::SetJournalLimit(4);
    EXPECT_EQ(Keys(sim::IrBlaster::Journal()), (std::vector<int>{7, 8, 9, 10}));
    std::free(irkt_irbl_get_supported_keymap_zcodeset("ZAC00005", true));
    EXPECT_EQ(irctest::JournalText(), "H 8 @1; H 9 @1; H 10 @1; map Z ZAC00005 online");
    EXPECT_TRUE(Transmitted(10));
    const uint64_t before = sim::IrBlaster::Journal().back().sequence;
    sim::ResetAll();
    const int limit = static_cast<int>(sim::IrBlaster::kDefaultJournalLimit);
    SendKeys(1, limit + 2);
    const auto journal = sim::IrBlaster::Journal();
    ASSERT_EQ(journal.size(), sim::IrBlaster::kDefaultJournalLimit);
    EXPECT_EQ(journal.front().key, 3);
    EXPECT_GT(journal.front().sequence, before);
}

}  // namespace

// The simulated log's listeners: a tool's echo and the web remote's recorder listen side by side.
#include <dlog.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/Simulator.h"

namespace {

// SetListener's slot is one more listener, not a replacement of the added ones; a reset forgets
// every listener, and capture goes on without any.
TEST(SimLogTest, EveryListenerHearsEachLineUntilItIsRemovedOrReset) {
    sim::ResetAll();
    std::vector<std::string> added, slot;
    const uint64_t id = sim::Log::AddListener([&](const sim::LogLine& line) { added.push_back(line.text); });
    sim::Log::AddListener([&](const sim::LogLine& line) { added.push_back("2:" + line.text); });
    sim::Log::SetListener([&](const sim::LogLine& line) { slot.push_back(line.text); });
    dlog_print(DLOG_INFO, "T", "one");
    sim::Log::RemoveListener(id);
    sim::Log::SetListener(nullptr);
    dlog_print(DLOG_ERROR, "T", "two");
    sim::ResetAll();
    dlog_print(DLOG_ERROR, "T", "three");
    EXPECT_EQ(added, (std::vector<std::string>{"one", "2:one", "2:two"}));
    EXPECT_EQ(slot, std::vector<std::string>{"one"});
    EXPECT_TRUE(sim::Log::Contains("three"));
}

}  // namespace

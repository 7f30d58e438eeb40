// The simulated log's listeners: a tool's echo and the web remote's recorder listen side by side.
#include <dlog.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/Simulator.h"

namespace {

// SetListener's slot is one more listener, not a replacement of the added ones; a reset forgets
// every listener.
TEST(SimLogTest, EveryListenerHearsEachLineUntilItIsRemovedOrReset) {
    sim::ResetAll();
    std::vector<std::string> heard;
    const uint64_t id = sim::Log::AddListener([&](const sim::LogLine& line) { heard.push_back("a:" + line.text); });
    sim::Log::SetListener([&](const sim::LogLine& line) { heard.push_back("s:" + line.text); });
    dlog_print(DLOG_INFO, "T", "one");
    sim::Log::RemoveListener(id);
    dlog_print(DLOG_ERROR, "T", "two");
    sim::ResetAll();
    dlog_print(DLOG_ERROR, "T", "three");
    EXPECT_EQ(heard, (std::vector<std::string>{"s:one", "a:one", "s:two"}));
}

}  // namespace

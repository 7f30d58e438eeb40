// The simulated log's listeners: a tool's echo and the web remote's recorder listen side by side.
#include <dlog.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/Simulator.h"

namespace {

class SimLogTest : public ::testing::Test {
protected:
    void SetUp() override { sim::ResetAll(); }
    void TearDown() override { sim::ResetAll(); }
};

// A reset forgets every listener.
TEST_F(SimLogTest, EveryListenerHearsEachLineUntilItIsRemovedOrReset) {
    std::vector<std::string> first, second, slot;
    const uint64_t a = sim::Log::AddListener([&](const sim::LogLine& line) { first.push_back(line.text); });
    const uint64_t b = sim::Log::AddListener([&](const sim::LogLine& line) { second.push_back(line.text); });
    EXPECT_NE(a, b);
    EXPECT_NE(a, 0u);
    // SetListener's slot is one more listener, not a replacement of the added ones.
    sim::Log::SetListener([&](const sim::LogLine& line) { slot.push_back(line.text); });
    dlog_print(DLOG_INFO, "T", "one");
    sim::Log::RemoveListener(a);
    sim::Log::SetListener(nullptr);
    dlog_print(DLOG_ERROR, "T", "two");
    sim::Log::RemoveListener(0);  // not an id AddListener gives: nothing happens
    sim::Log::RemoveListener(b);
    dlog_print(DLOG_ERROR, "T", "three");

    EXPECT_EQ(first, std::vector<std::string>{"one"});
    EXPECT_EQ(second, (std::vector<std::string>{"one", "two"}));
    EXPECT_EQ(slot, std::vector<std::string>{"one"});
    EXPECT_TRUE(sim::Log::Contains("three")) << "capture goes on without listeners";
    sim::Log::AddListener([&](const sim::LogLine& line) { first.push_back(line.text); });
    sim::ResetAll();
    dlog_print(DLOG_INFO, "T", "after reset");
    EXPECT_EQ(first, std::vector<std::string>{"one"});
}

}  // namespace

#include "interface/CIRControlCore.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "sim/Simulator.h"

namespace ircontrol {
namespace {

// Host threads may start the service at the same moment: exactly one start happens, the others
// see it done, and one stop takes it all down again.
TEST(CIRControlCoreTest, ConcurrentStartsMakeOneServiceAndOneStopEndsIt) {
    sim::ResetAll();
    CIRControlCore core;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back([&core] { core.Init(); });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(sim::Host::Services().size(), 1u);
    EXPECT_EQ(sim::Log::Count("\033[33minitialized\033[0m"), 1u);
    EXPECT_EQ(sim::Log::Count("\033[31malready initialized\033[0m"), 7u);
    threads.clear();
    for (int i = 0; i < 4; ++i) threads.emplace_back([&core] { core.Deinit(); });
    for (auto& thread : threads) thread.join();
    EXPECT_TRUE(sim::Host::Services().empty());
    EXPECT_EQ(sim::Log::Count("DEINIT!"), 1u);
    EXPECT_EQ(sim::Host::CallsWithBadService(), 0u);
}

}  // namespace
}  // namespace ircontrol

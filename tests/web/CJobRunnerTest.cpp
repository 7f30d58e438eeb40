#include "CJobRunner.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace ircontrol::host {
namespace {

using namespace std::chrono_literals;

TEST(CJobRunnerTest, RunsJobsInArrivalOrderAndSurvivesAThrowingJob) {
    std::vector<int> order;
    std::promise<void> finished;
    {
        CJobRunner runner(100);
        for (int i = 0; i < 20; ++i) {
            ASSERT_TRUE(runner.Post([&order, i] {
                if (i == 5) throw std::runtime_error("a job that fails");
                order.push_back(i);
            }));
        }
        ASSERT_TRUE(runner.Post([&] { finished.set_value(); }));
        ASSERT_EQ(finished.get_future().wait_for(30s), std::future_status::ready);
    }
    std::vector<int> expected;
    for (int i = 0; i < 20; ++i) {
        if (i != 5) expected.push_back(i);
    }
    EXPECT_EQ(order, expected);
}

TEST(CJobRunnerTest, RefusesBeyondItsQueueAndAfterStop) {
    std::promise<void> release;
    std::shared_future<void> gate = release.get_future().share();
    std::promise<void> started;
    std::atomic<int> ran{0};
    CJobRunner runner(2);
    ASSERT_TRUE(runner.Post([&] {
        started.set_value();
        gate.wait();
        ++ran;
    }));
    ASSERT_EQ(started.get_future().wait_for(30s), std::future_status::ready);  // the worker holds it now
    EXPECT_TRUE(runner.Post([&] { ++ran; }));
    EXPECT_TRUE(runner.Post([&] { ++ran; }));
    EXPECT_FALSE(runner.Post([&] { ++ran; })) << "two queued is the limit";
    // Stop lets the running job finish and drops the queued ones.
    auto stopping = std::async(std::launch::async, [&] { runner.Stop(); });
    EXPECT_EQ(stopping.wait_for(100ms), std::future_status::timeout) << "Stop waits for the running job";
    release.set_value();
    ASSERT_EQ(stopping.wait_for(30s), std::future_status::ready);
    EXPECT_EQ(ran.load(), 1);
    EXPECT_FALSE(runner.Post([&] { ++ran; }));
}

}  // namespace
}  // namespace ircontrol::host

#include "queue/CMsgQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "sim/Simulator.h"

namespace ircontrol {
namespace {

using namespace std::chrono_literals;

class CMsgQueueTest : public ::testing::Test {
protected:
    void SetUp() override { sim::ResetAll(); }

    // Enqueues a job that signals when it has run, and waits for it (generous deadline).
    static bool Drain(CMsgQueue& queue) {
        auto done = std::make_shared<std::promise<void>>();
        auto future = done->get_future();
        ThreadJob job = [done] { done->set_value(); };
        queue.EnqueueData(job);
        return future.wait_for(10s) == std::future_status::ready;
    }
};

TEST_F(CMsgQueueTest, AThrowingJobIsLoggedAndTheNextOneRuns) {
    CMsgQueue queue;
    ThreadJob throwsStd = [] { throw std::runtime_error("boom"); };
    ThreadJob throwsInt = [] { throw 42; };
    ThreadJob empty;
    queue.EnqueueData(throwsStd);
    queue.EnqueueData(throwsInt);
    queue.EnqueueData(empty);
    ASSERT_TRUE(Drain(queue));
    EXPECT_TRUE(sim::Log::Contains("exception from job : boom"));
    EXPECT_TRUE(sim::Log::Contains("[ircontrolQ] unknown exception from job"));
}

TEST_F(CMsgQueueTest, EnqueueAfterQuitThrowsAndQueuedJobsAreDiscarded) {
    auto queue = std::make_unique<CMsgQueue>();
    std::promise<void> started;
    std::promise<void> release;
    auto releasedFuture = release.get_future().share();
    std::atomic<bool> runningFinished{false};
    std::atomic<bool> queuedRan{false};
    ThreadJob running = [&] {
        started.set_value();
        releasedFuture.wait();
        runningFinished = true;
    };
    ThreadJob queued = [&] { queuedRan = true; };
    queue->EnqueueData(running);
    ASSERT_EQ(started.get_future().wait_for(10s), std::future_status::ready);
    queue->EnqueueData(queued);
    queue->Quit();
    try {
        ThreadJob late = [] {};
        queue->EnqueueData(late);
        ADD_FAILURE() << "enqueue after Quit succeeded";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Thread already finished! Can not do enqueue!!");
    }
    release.set_value();
    queue.reset();  // joins the worker
    EXPECT_TRUE(runningFinished);
    EXPECT_FALSE(queuedRan);
    EXPECT_TRUE(sim::Log::Contains("[ircontrolQ] ESCAPE!"));
    EXPECT_TRUE(sim::Log::Contains("[ircontrolQ] before join"));
    EXPECT_TRUE(sim::Log::Contains("[ircontrolQ] after join"));
    EXPECT_TRUE(sim::Log::Contains("[ircontrolQ] Finished thread running"));
}

// A long job must not hold up producers: enqueueing while the worker is busy still completes
// (and a job run on the producer's own thread would hang here).
TEST_F(CMsgQueueTest, ProducersAreNotBlockedByARunningJob) {
    CMsgQueue queue;
    std::promise<void> started;
    std::promise<void> release;
    auto releasedFuture = release.get_future().share();
    ThreadJob blocker = [&] {
        started.set_value();
        releasedFuture.wait();
    };
    queue.EnqueueData(blocker);
    ASSERT_EQ(started.get_future().wait_for(10s), std::future_status::ready);
    auto producer = std::async(std::launch::async, [&] {
        for (int i = 0; i < 100; ++i) {
            ThreadJob job = [] {};
            queue.EnqueueData(job);
        }
    });
    EXPECT_EQ(producer.wait_for(10s), std::future_status::ready);
    release.set_value();
    ASSERT_TRUE(Drain(queue));
}

TEST_F(CMsgQueueTest, ConcurrentProducersKeepTheirOwnOrderAndEveryJobRunsOnce) {
    CMsgQueue queue;
    constexpr int kProducers = 4;
    constexpr int kJobs = 500;
    std::mutex mutex;
    std::vector<std::vector<int>> seen(kProducers);
    std::atomic<int> concurrent{0};
    std::atomic<bool> overlapped{false};
    std::vector<std::thread> producers;
    for (int p = 0; p < kProducers; ++p) {
        producers.emplace_back([&, p] {
            for (int i = 0; i < kJobs; ++i) {
                ThreadJob job = [&, p, i] {
                    if (++concurrent > 1) overlapped = true;
                    {
                        std::lock_guard<std::mutex> lock(mutex);
                        seen[p].push_back(i);
                    }
                    --concurrent;
                };
                queue.EnqueueData(job);
            }
        });
    }
    for (auto& t : producers) t.join();
    ASSERT_TRUE(Drain(queue));
    EXPECT_FALSE(overlapped);
    for (int p = 0; p < kProducers; ++p) {
        ASSERT_EQ(seen[p].size(), static_cast<size_t>(kJobs));
        for (int i = 0; i < kJobs; ++i) ASSERT_EQ(seen[p][i], i);
    }
}

// A producer that passed the running check just before the stop can reach the container after
// the worker's final clear; its job must then be refused, not left queued until process exit.
TEST_F(CMsgQueueTest, StressPushesRacingTheStopAreRefusedOrDiscardedAtOnce) {
    constexpr int kProducers = 4;
    const auto deadline = std::chrono::steady_clock::now() + 3s;
    int rounds = 0;
    int leftBehind = 0;
    for (; rounds < 400 && std::chrono::steady_clock::now() < deadline; ++rounds) {
        auto queue = std::make_unique<CMsgQueue>();
        std::atomic<int> ready{0};
        std::vector<std::thread> producers;
        for (int p = 0; p < kProducers; ++p) {
            producers.emplace_back([&] {
                ++ready;
                for (;;) {
                    ThreadJob job = [] {};
                    try {
                        queue->EnqueueData(job);
                    } catch (const std::runtime_error&) {
                        return;
                    }
                }
            });
        }
        while (ready < kProducers) std::this_thread::yield();
        queue->Quit();
        for (auto& t : producers) t.join();
        const auto finishDeadline = std::chrono::steady_clock::now() + 10s;
        while (sim::Log::Count("[ircontrolQ] Finished thread running") < static_cast<size_t>(rounds + 1) &&
               std::chrono::steady_clock::now() < finishDeadline) {
            std::this_thread::sleep_for(1ms);
        }
        ASSERT_EQ(sim::Log::Count("[ircontrolQ] Finished thread running"), static_cast<size_t>(rounds + 1));
        if (!queue->isEmptyQueue()) ++leftBehind;
    }
    EXPECT_EQ(leftBehind, 0) << "of " << rounds << " stops";
}

// The worker's container: a job runs once and leaves; a clear empties it and a close also refuses
// every later push (the stop relies on that difference).
TEST_F(CMsgQueueTest, InnerQueueRunsEachJobOnceAndRefusesPushesOnlyOnceClosed) {
    CMsgQueue::MsgQueue inner("q");
    int ran = 0;
    ThreadJob a = [&] { ran += 1; };
    ThreadJob b = [&] { ran += 10; };
    inner.Push(a);
    inner.Push(b);
    inner.RunFirstJob();
    inner.RunFirstJob();
    EXPECT_EQ(ran, 11);
    EXPECT_TRUE(inner.IsEmpty());
    inner.RunFirstJob();  // empty: nothing happens
    inner.Push(a);
    inner.Clear();
    EXPECT_TRUE(inner.IsEmpty());
    EXPECT_TRUE(inner.Push(a));  // a clear is not a close
    inner.Close();
    EXPECT_TRUE(inner.IsEmpty());
    EXPECT_FALSE(inner.Push(b));
    EXPECT_TRUE(inner.IsEmpty());
    EXPECT_EQ(ran, 11);
}

}  // namespace
}  // namespace ircontrol

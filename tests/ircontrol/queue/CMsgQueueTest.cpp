#include "queue/CMsgQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>

#include "sim/Simulator.h"

namespace ircontrol {
namespace {

using namespace std::chrono_literals;

class CMsgQueueTest : public ::testing::Test {
protected:
    void SetUp() override { sim::ResetAll(); }
};

// A throwing job is logged and the next one runs. A long job holds up no producer (a job run on
// the producer's own thread would hang here); the stop lets it finish, discards what is queued
// behind it and refuses later pushes.
TEST_F(CMsgQueueTest, ThrowingJobsAreLoggedProducersGoOnAndQuitDiscardsTheQueuedOnes) {
    auto queue = std::make_unique<CMsgQueue>();
    std::promise<void> started, release;
    std::future<void> released = release.get_future();
    std::atomic<bool> runningFinished{false};
    std::atomic<int> queuedRan{0};
    ThreadJob running = [&] {
        started.set_value();
        released.wait();
        runningFinished = true;
    };
    ThreadJob throwsStd = [] { throw std::runtime_error("boom"); };
    ThreadJob throwsInt = [] { throw 42; };
    ThreadJob empty;
    for (ThreadJob* job : {&throwsStd, &throwsInt, &empty, &running}) queue->EnqueueData(*job);
    ASSERT_EQ(started.get_future().wait_for(10s), std::future_status::ready);
    ThreadJob queued = [&] { ++queuedRan; };
    for (int i = 0; i < 3; ++i) queue->EnqueueData(queued);
    queue->Quit();
    ThreadJob late = [] {};
    EXPECT_THROW(queue->EnqueueData(late), std::runtime_error);
    release.set_value();
    queue.reset();  // joins the worker
    EXPECT_TRUE(runningFinished);
    EXPECT_EQ(queuedRan, 0);
    EXPECT_TRUE(sim::Log::Contains("exception from job : boom"));
    for (const char* line : {"unknown exception from job", "ESCAPE!", "after join", "Finished thread running"}) {
        EXPECT_TRUE(sim::Log::Contains(std::string("[ircontrolQ] ") + line)) << line;
    }
}

// A producer that passed the running check just before the stop can reach the container after
// the worker's final clear; its job must then be refused, not left queued until process exit.
TEST_F(CMsgQueueTest, StressPushesRacingTheStopAreRefusedOrDiscardedAtOnce) {
    const auto deadline = std::chrono::steady_clock::now() + 3s;
    int rounds = 0;
    int leftBehind = 0;
    for (; rounds < 400 && std::chrono::steady_clock::now() < deadline; ++rounds) {
        CMsgQueue queue;
        std::atomic<bool> ready{false};
        std::thread producer([&] {
            ThreadJob job = [] {};
            ready = true;
            try {
                for (;;) queue.EnqueueData(job);
            } catch (const std::runtime_error&) {
            }
        });
        while (!ready) std::this_thread::yield();
        queue.Quit();
        producer.join();
        const auto finished = static_cast<size_t>(rounds + 1);
        for (int i = 0; i < 10000 && sim::Log::Count("[ircontrolQ] Finished thread running") < finished; ++i) {
            std::this_thread::sleep_for(1ms);
        }
        if (!queue.isEmptyQueue()) ++leftBehind;
    }
    EXPECT_EQ(leftBehind, 0) << "of " << rounds << " stops";
}

}  // namespace
}  // namespace ircontrol

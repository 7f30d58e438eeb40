// Many host threads sending a random mix of good and bad requests while the plugin is created
// and destroyed around them: no crash, no deadlock, and every request answered at most once
// (exactly once when it was taken in before the stop and is not one of the silent kinds).
#include <atomic>
#include <map>
#include <random>
#include <set>
#include <thread>
#include <tuple>

#include "E2eFixture.h"

namespace irctest {
namespace {

using sim::HostProperty;

class PluginStressTest : public PluginTest {};

// A property name and text, and whether the plugin answers it (the last three it never does).
const std::tuple<std::string, std::string, bool> kRequests[] = {
    {"setKeyEvent", KeyPayload("oic.d.fan", "HFAN0001", 10), true},
    {"setKeyEvent", KeyPayload("oic.d.fan", "HFAN0001", 39), true},
    {"setDeviceEvent", "{}", true},
    {"setKeyEvent", "{\"broken", true},
    {"setKeyEvent", R"({"x.com.korvan.codesetKey":1})", false},
    {"unknownProperty", "{}", false},
    {"", "{}", false},  // unnamed: dropped
};

TEST_F(PluginStressTest, ConcurrentRequestsAcrossCreateAndDestroyAreAnsweredAtMostOnce) {
    sim::Log::SetCapture(false);
    constexpr int kThreads = 4;
    constexpr int kCycles = 3;
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        if (cycle > 0) plugin_ = std::make_unique<PluginLoader>(IRC_PLUGIN_PATH);
        std::atomic<bool> stop{false};
        std::mutex mutex;
        std::vector<std::pair<uint64_t, bool>> sent;  // transaction, expects an answer
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] {
                std::mt19937 rng(static_cast<unsigned>(cycle * 100 + t));
                while (!stop) {
                    const auto& [name, text, answered] = kRequests[rng() % std::size(kRequests)];
                    try {
                        const uint64_t tx = sim::Host::SendSet(kService, {HostProperty::Json(name, text)});
                        std::lock_guard<std::mutex> lock(mutex);
                        sent.emplace_back(tx, answered);
                    } catch (const std::runtime_error&) {
                        std::this_thread::yield();  // no live service right now
                    }
                }
            });
        }
        plugin_->Create();
        // Wait for progress rather than a fixed time: under valgrind the senders can starve the
        // worker for a long while.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (sim::Host::Results().size() < 20 && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        plugin_->Create();  // a second start while requests flow: logged and ignored
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        plugin_->Destroy();
        stop = true;
        for (auto& thread : threads) thread.join();
        ASSERT_TRUE(plugin_->Unload()) << "cycle " << cycle;  // joins the queue's worker

        std::map<uint64_t, int> answers;
        for (const auto& result : sim::Host::Results()) ++answers[result.transaction];
        std::set<uint64_t> expectAnswer;
        for (const auto& [tx, answered] : sent) {
            if (answered) expectAnswer.insert(tx);
        }
        std::size_t answeredCount = 0;
        for (const auto& [tx, count] : answers) {
            EXPECT_EQ(count, 1) << "transaction " << tx;
            EXPECT_TRUE(expectAnswer.count(tx)) << "a silent request was answered: " << tx;
            ++answeredCount;
        }
        EXPECT_GT(answeredCount, 0u) << "cycle " << cycle;
        ResetWithPairing(R"({"dev_info":[{"codeset":"HFAN0001","device_index":3}]})");
        sim::Log::SetCapture(false);
    }
    plugin_.reset();
}

}  // namespace
}  // namespace irctest

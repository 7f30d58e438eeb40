#include "CRequestRecorder.h"

#include <gtest/gtest.h>

#include <dlog.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace ircontrol::host {
namespace {

using common::json::JsonValue;
using namespace std::chrono_literals;

// A plugin thread may be inside the recorder's log listener when the web server goes away; the
// event hub it publishes to goes right after the recorder, so the recorder must not finish its
// destruction while that line is still being published.
TEST(CRequestRecorderTest, ThreadSafeTeardownWaitsForALineBeingPublished) {
    sim::ResetAll();
    std::mutex mutex;
    std::condition_variable changed;
    bool inside = false, release = false;
    std::atomic<int> published{0};
    auto recorder = std::make_unique<CRequestRecorder>(
        [&](const std::string&) {
            ++published;
            std::unique_lock<std::mutex> lock(mutex);
            inside = true;
            changed.notify_all();
            changed.wait_for(lock, 10s, [&] { return release; });
        });
    std::thread plugin([] { dlog_print(DLOG_INFO, "IRCONTROL", "a line on its way"); });
    {
        std::unique_lock<std::mutex> lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, 10s, [&] { return inside; }));
    }
    std::atomic<bool> destroyed{false};
    std::thread owner([&] {
        recorder.reset();
        destroyed = true;
    });
    std::this_thread::sleep_for(200ms);
    EXPECT_FALSE(destroyed) << "the recorder was gone while its listener was still publishing";
    {
        std::lock_guard<std::mutex> lock(mutex);
        release = true;
    }
    changed.notify_all();
    owner.join();
    plugin.join();
    EXPECT_TRUE(destroyed);
    dlog_print(DLOG_INFO, "IRCONTROL", "a line after the recorder");
    EXPECT_EQ(published, 1);
}

// What the page shows of a result is CResultJson's with the web's own id (test_api.py follows a
// request through the server); the plugin's bytes in it reach the page as UTF-8.
TEST(CRequestRecorderTest, DescribeMakesThePluginsBytesValidUtf8) {
    RequestResult result;
    result.summary = "key \xfe";
    result.log.push_back({6, "IRCONTROL", "A.cpp : F(1)  bad byte \xff", 1});
    const JsonValue described = CRequestRecorder::Describe(42, result);
    EXPECT_EQ(described["id"].asInt(), 42);
    EXPECT_EQ(described["summary"].asString(), "key \xef\xbf\xbd");
    EXPECT_EQ(described["log"].toString(),
              "[{\"priority\":6,\"tag\":\"IRCONTROL\",\"text\":\"A.cpp : F(1)  bad byte \xef\xbf\xbd\"}]");
}

}  // namespace
}  // namespace ircontrol::host

// The edges of the lifecycle where a host thread stops or unloads the plugin while the queue's
// worker is still inside a request. The worker is held at a chosen point through the
// simulator's log and result listeners, so each interleaving happens every run; every wait has
// a deadline, so a regression fails instead of hanging.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <future>
#include <memory>
#include <thread>

#include "E2eFixture.h"

namespace irctest {
namespace {

using namespace std::chrono_literals;

// What a test shares with the listeners: one-shot flags, each waited for with a deadline. Held
// by the listeners too: the worker may still be inside one (or start another call) after the
// test body has returned.
struct Signals {
    std::atomic<bool> first{false}, second{false}, third{false};
    std::atomic<int> phase{0};
};

bool Wait(const std::atomic<bool>& flag, std::chrono::milliseconds timeout = kAnswerDeadline) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!flag && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(1ms);
    return flag;
}

bool Has(const sim::LogLine& line, const char* text) { return line.text.find(text) != std::string::npos; }

class PluginStopConcurrencyTest : public PluginTest {
protected:
    void TearDown() override {
        sim::Log::SetListener(nullptr);
        sim::Host::SetResultListener(nullptr);
        PluginTest::TearDown();
    }
};

// The host may serialise its calls into the plugin with a lock that its own send-result also
// takes; a stop that waited for an answer in the host's hands would then never return.
TEST_F(PluginStopConcurrencyTest, StopDoesNotWaitForAnAnswerTheHostIsStillTaking) {
    plugin_->Create();
    auto s = std::make_shared<Signals>();  // first: in the send; second: let it return
    sim::Host::SetResultListener([s](const sim::SetResult&) {
        s->first = true;
        Wait(s->second);
    });
    const uint64_t tx = SendFanKey();
    ASSERT_TRUE(Wait(s->first));
    auto stop = std::async(std::launch::async, [&] { plugin_->Destroy(); });
    const bool stoppedAlone = stop.wait_for(3s) == std::future_status::ready;
    s->second = true;
    stop.wait();
    EXPECT_TRUE(stoppedAlone) << "DestroyPlugin waited for the host's send-result call";
    ASSERT_EQ(sim::Host::ResultsFor(tx).size(), 1u);
    EXPECT_TRUE(sim::Host::ResultsFor(tx)[0].serviceAlive);
}

// A job of the first start finishes while a second start (doomed at the stopped queue) has a new
// service up: its answer must not go out with the first service's destroyed handle.
TEST_F(PluginStopConcurrencyTest, JobOfTheFirstStartStaysSilentDuringAFailedRestart) {
    plugin_->Create();
    // phase 1: the first job is under way; 2: the restart is registering its properties.
    // first: job held; second: job may answer; third: it tried to.
    auto s = std::make_shared<Signals>();
    sim::Log::SetListener([s](const sim::LogLine& line) {
        if (s->phase == 1 && Has(line, "key to be IRBlasted")) {
            s->first = true;
            Wait(s->second);
        } else if (s->phase == 2 && Has(line, "name: setKeyEvent")) {
            s->second = true;
            Wait(s->third);
        } else if (Has(line, "[resp_handler] vyrf_service_send_set_property_result") ||
                   Has(line, "[resp_handler] service stopped")) {
            s->third = true;
        }
    });
    s->phase = 1;
    const uint64_t tx = SendFanKey();
    ASSERT_TRUE(Wait(s->first));
    plugin_->Destroy();
    s->phase = 2;
    plugin_->Create();
    EXPECT_TRUE(Wait(s->third)) << "the held job never tried to answer";
    EXPECT_TRUE(sim::Host::ResultsFor(tx).empty()) << "answered with a destroyed service";
    EXPECT_TRUE(sim::Log::Contains("[resp_handler] service stopped, answer dropped: ok"));
}

// The host unloads the library right after the stop while a key is still being handled: the
// job's JSON work must find the JSON layer's values alive until the worker has been joined.
TEST_F(PluginStopConcurrencyTest, UnloadRightAfterTheStopLetsTheRunningJobFinishItsJsonWork) {
    // No "dev_info": each lookup of it gives the JSON layer's shared null value.
    sim::Settings::SetString(kPairingKey, R"({"paired":[]})");
    plugin_->Create();
    ASSERT_EQ(AnswerOf(SendFanKey())->first, "key_error");

    auto s = std::make_shared<Signals>();  // first: job held; second: unload is joining
    sim::Log::SetListener([s](const sim::LogLine& line) {
        if (s->phase == 1 && Has(line, "irdevices : ")) {
            s->first = true;
            Wait(s->second);
        } else if (Has(line, "before join")) {
            s->second = true;
        }
    });
    s->phase = 1;
    // json-glib reports a released node on stderr; valgrind reports the read itself.
    ::testing::internal::CaptureStderr();
    SendFanKey(11);
    ASSERT_TRUE(Wait(s->first));
    plugin_->Destroy();
    auto unload = std::async(std::launch::async, [&] { return plugin_->Unload(); });
    ASSERT_EQ(unload.wait_for(kAnswerDeadline), std::future_status::ready) << "unload hangs";
    EXPECT_TRUE(unload.get());
    plugin_.reset();
    const std::string errors = ::testing::internal::GetCapturedStderr();
    std::fputs(errors.c_str(), stderr);  // a sanitizer's report stays visible
    EXPECT_EQ(errors.find("CRITICAL"), std::string::npos);
    EXPECT_TRUE(Wait(s->second, 0ms)) << "the worker was not joined at unload";
    EXPECT_EQ(sim::Log::Count("error occured: device_array_obj null(error:2)"), 2u);
}

}  // namespace
}  // namespace irctest

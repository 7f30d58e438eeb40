#include "CRequestRecorder.h"

#include <gtest/gtest.h>

#include <dlog.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "CApplianceTypes.h"
#include "CPlatformSetup.h"
#include "CPluginLibrary.h"
#include "CRequestParser.h"
#include "CSession.h"

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

TEST(CRequestRecorderTest, DescribeAddsWhatThePageShowsToTheToolsResult) {
    RequestResult result;
    result.request.kind = RequestKind::Key;
    result.label = "fan";
    result.summary = "key 10 (HFAN0001)";
    result.property = "setKeyEvent";
    result.payload = "{}";
    result.sent = std::chrono::steady_clock::now();
    result.answer = std::make_pair(std::string("key_error"), std::string("refused"));
    result.outcome = Outcome::Refused;
    result.reason = "unsupported key (code 5)";
    sim::IrCall call{};
    call.function = sim::IrCall::Function::SendH;
    call.key = 10;
    call.deviceIndex = 1;
    call.time = result.sent + std::chrono::milliseconds(3);
    call.onAirEnd = call.time + std::chrono::milliseconds(70);
    result.transmissions.push_back({call, false});
    result.log.push_back({6, "IRCONTROL", "A.cpp : F(1)  bad byte \xff", 1});
    const JsonValue described = CRequestRecorder::Describe(42, result);
    EXPECT_EQ(described["id"].asInt(), 42);
    EXPECT_EQ(described["outcome"].asString(), "refused");
    EXPECT_EQ(described["reason"].asString(), "unsupported key (code 5)");
    EXPECT_EQ(described["summary"].asString(), "key 10 (HFAN0001)");
    ASSERT_EQ(described["ir"].size(), 1u);
    EXPECT_EQ(described["ir"][0u]["text"].asString(), "hdevice #1 key 10");
    EXPECT_EQ(described["ir"][0u]["onAirStartUs"].asInt(), 3000);
    EXPECT_EQ(described["ir"][0u]["onAirEndUs"].asInt(), 73000);
    ASSERT_EQ(described["log"].size(), 1u);
    EXPECT_EQ(described["log"][0u]["text"].asString(), "A.cpp : F(1)  bad byte \xef\xbf\xbd") << "made valid UTF-8";
}

// One plugin lifecycle: requests through the recorder publish request, log lines, transmissions
// and answer in that order under the web id, and a request the parser refuses is not sent.
TEST(CRequestRecorderTest, PublishesEachStepOfARequestInOrder) {
    sim::ResetAll();
    CPlatformSetup setup;
    setup.Apply();
    CPluginLibrary plugin;
    std::string error;
    ASSERT_TRUE(plugin.Load(IRC_PLUGIN_PATH, error)) << error;
    plugin.Create();
    CSession session(5000);
    std::mutex mutex;
    std::vector<JsonValue> events;
    CRequestRecorder recorder([&](const std::string& json) {
        std::lock_guard<std::mutex> lock(mutex);
        events.push_back(JsonValue::Create(json));
    });
    const CRequestParser parser(setup, CRequestParser::Style::Json);
    auto line = [&](const std::string& text) {
        return [&parser, &session, text](RequestResult& out, std::string& why) {
            Request request;
            if (!parser.ParseLine(text, 0, request, why)) return false;
            out = session.Send(request);
            return true;
        };
    };
    struct Case {
        std::string line;
        std::string outcome;        // "" when the parser refuses it
        unsigned transmissions;
    };
    const Case cases[] = {
        {R"({"command":"key","type":"fan","key":11})", "ok", 1},
        {R"({"command":"key","type":"cleaner","key":11})", "refused", 0},
        {R"({"command":"ac","mode":"HEAT"})", "ok", 1},
        {R"({"command":"key","type":"toaster","key":1})", "", 0},
    };
    for (const auto& c : cases) {
        {
            std::lock_guard<std::mutex> lock(mutex);
            events.clear();
        }
        const uint64_t id = recorder.NextId();
        const JsonValue result = recorder.Run(id, JsonValue(c.line), line(c.line));
        std::lock_guard<std::mutex> lock(mutex);
        SCOPED_TRACE(c.line);
        if (c.outcome.empty()) {
            EXPECT_EQ(result["status"].asInt(), 400);
            EXPECT_FALSE(result["error"].asString().empty());
        } else {
            EXPECT_EQ(result["outcome"].asString(), c.outcome);
            EXPECT_EQ(result["ir"].size(), c.transmissions);
            EXPECT_GT(result["log"].size(), 0u);
        }
        std::vector<std::string> mine;
        for (const auto& event : events) {
            if (event["id"].asInt64() == static_cast<int64_t>(id)) mine.push_back(event["type"].asString());
        }
        ASSERT_FALSE(mine.empty());
        EXPECT_EQ(mine.front(), "request");
        EXPECT_EQ(mine.back(), "answer");
        const auto transmissions = std::count(mine.begin(), mine.end(), "transmission");
        EXPECT_EQ(static_cast<unsigned>(transmissions), c.transmissions);
        if (!c.outcome.empty()) {
            EXPECT_GT(std::count(mine.begin(), mine.end(), "log"), 0);
        }
    }
    plugin.Destroy();
}

}  // namespace
}  // namespace ircontrol::host

#include "CRequestRecorder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <vector>

#include "CApplianceTypes.h"
#include "CPlatformSetup.h"
#include "CPluginLibrary.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;
using Clock = std::chrono::steady_clock;

TEST(CRequestRecorderTest, LastErrorIsTheMessageOfTheNewestErrorLine) {
    struct Case {
        std::vector<sim::LogLine> lines;
        std::string why;
    };
    const Case cases[] = {
        {{}, ""},
        {{{4, "IRCONTROL", "A.cpp : F(1)  fine"}}, ""},
        {{{6, "IRCONTROL", "A.cpp : F(1)  first"}, {6, "IRCONTROL", "B.cpp : G(2)  error occured: unsupported key(error:5)"},
          {4, "IRCONTROL", "C.cpp : H(3)  later info"}},
         "error occured: unsupported key(error:5)"},
        {{{6, "IRCONTROL", "no location here\n"}}, "no location here"},
        {{{6, "IRCONTROL", "A.cpp : F(1)  bad byte \xff"}}, "bad byte \xef\xbf\xbd"},  // made valid UTF-8
    };
    for (const auto& c : cases) EXPECT_EQ(CRequestRecorder::LastError(c.lines), c.why);
}

TEST(CRequestRecorderTest, DescribesTransmissionsRelativeToTheRequest) {
    const Clock::time_point start = Clock::now();
    Exchange exchange;
    exchange.label = "fan";
    exchange.summary = "key 10 (HFAN0001)";
    exchange.property = "setKeyEvent";
    exchange.payload = "{}";
    exchange.transaction = 7;
    exchange.answer = std::make_pair(std::string("key_error"), std::string("refused"));
    sim::IrCall call{};
    call.function = sim::IrCall::Function::SendH;
    call.key = 10;
    call.deviceIndex = 1;
    call.time = start + std::chrono::milliseconds(3);
    exchange.transmissions.push_back(call);
    const JsonValue result = CRequestRecorder::Describe(exchange, start, start + std::chrono::milliseconds(80), 70);
    EXPECT_EQ(result["reason"].asString(), "key_error: refused");
    EXPECT_DOUBLE_EQ(result["answer_ms"].asDouble(), 80.0);
    ASSERT_EQ(result["transmissions"].size(), 1u);
    const JsonValue& tx = result["transmissions"][0u];
    EXPECT_DOUBLE_EQ(tx["start_ms"].asDouble(), 3.0);
    EXPECT_DOUBLE_EQ(tx["end_ms"].asDouble(), 73.0);
    EXPECT_EQ(tx["text"].asString(), "hdevice #1 key 10");
    exchange.answer.reset();
    EXPECT_TRUE(CRequestRecorder::Describe(exchange, start, start, 0)["answer"].isNull());
}

// The page greys out keys from the tool's copy of the allow-lists; the plugin must agree with
// it on every key code, for every kind, or the page would disable keys that work.
TEST(CRequestRecorderTest, ToolsAllowListsMatchWhatThePluginAccepts) {
    sim::ResetAll();
    CPlatformSetup setup;
    setup.Apply();
    CPluginLibrary plugin;
    std::string error;
    ASSERT_TRUE(plugin.Load(IRC_PLUGIN_PATH, error)) << error;
    plugin.Create();
    CSession session(5000);
    std::mutex mutex;
    std::vector<std::string> published;
    CRequestRecorder recorder(0, 5000, [&](const std::string& json) {
        std::lock_guard<std::mutex> lock(mutex);
        published.push_back(json);
    }, nullptr, false);
    for (const auto& [name, type] : CApplianceTypes::All()) {
        if (type == "oic.d.airconditioner") continue;
        std::vector<int> accepted;
        for (int key = 0; key <= 100; ++key) {
            const JsonValue result = recorder.Run(recorder.NextId(), JsonValue(name), [&](Exchange& out, std::string&) {
                out = session.Key(type, setup.PairedCodeset(type), key);
                return true;
            });
            ASSERT_FALSE(result["answer"].isNull()) << name << " key " << key;
            if (result["answer"]["errorCode"].asString() == "ok") accepted.push_back(key);
        }
        EXPECT_EQ(accepted, CApplianceTypes::AllowedKeys(type)) << name;
    }
    // Each request was published as request ... answer, with its log lines in between.
    {
        std::lock_guard<std::mutex> lock(mutex);
        EXPECT_EQ(JsonValue::Create(published.front())["type"].asString(), "request");
        EXPECT_EQ(JsonValue::Create(published.back())["type"].asString(), "answer");
    }
    plugin.Destroy();
}

}  // namespace
}  // namespace ircontrol::host

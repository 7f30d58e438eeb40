#include "CResultJson.h"

#include <gtest/gtest.h>

#include <chrono>

namespace ircontrol::host {
namespace {

using common::json::JsonValue;
using namespace std::chrono_literals;

RequestResult Sent(const std::string& payload) {
    RequestResult result;
    result.request.kind = RequestKind::Set;
    result.property = "setKeyEvent";
    result.payload = payload;
    result.payloadJson = JsonValue::Create(payload);
    result.transaction = 9;
    result.sent = std::chrono::steady_clock::now();
    return result;
}

TEST(CResultJsonTest, PayloadIsShownAsJsonOrKeptAsText) {
    struct Case {
        std::string payload;
        std::string shown;   // "payload" as JSON text
        bool textKept;       // "payloadText" present
    };
    const Case cases[] = {
        {R"({"a":1})", R"({"a":1})", false},
        {"null", "null", false},  // JSON null is a payload, not a missing one
        {"7", "7", false},
        {"{not json", "null", true},
        {"", "null", true},
    };
    for (const auto& c : cases) {
        const JsonValue object = CResultJson::Build(Sent(c.payload));
        EXPECT_EQ(object["payload"].toString(), c.shown) << c.payload;
        EXPECT_EQ(object.isMember("payloadText"), c.textKept) << c.payload;
        if (c.textKept) {
            EXPECT_EQ(object["payloadText"].asString(), c.payload);
        }
    }
}

TEST(CResultJsonTest, AnswerLineIdAndOptionalMembersAppearOnlyWhenThereIsSomethingToSay) {
    RequestResult unanswered = Sent("{}");
    unanswered.outcome = Outcome::NoAnswer;
    unanswered.reason = "no answer within 100 ms";
    const JsonValue silent = CResultJson::Build(unanswered);
    EXPECT_TRUE(silent["answer"].isNull());
    EXPECT_EQ(silent["outcome"].asString(), "no answer");
    EXPECT_EQ(silent["reason"].asString(), "no answer within 100 ms");
    EXPECT_FALSE(silent.isMember("elapsedUs"));
    EXPECT_FALSE(silent.isMember("line"));
    EXPECT_FALSE(silent.isMember("id"));
    EXPECT_EQ(silent["ir"].toString(), "[]");

    RequestResult answered = Sent("{}");
    answered.request.line = 4;
    answered.request.id = "x";
    answered.answer = std::make_pair(std::string("ok"), std::string("done"));
    answered.answerLate = true;
    answered.outcome = Outcome::Ok;
    answered.elapsed = 1500us;
    const JsonValue ok = CResultJson::Build(answered);
    EXPECT_EQ(ok["answer"]["errorCode"].asString(), "ok");
    EXPECT_EQ(ok["answer"]["description"].asString(), "done");
    EXPECT_TRUE(ok["answer"]["late"].asBool());
    EXPECT_FALSE(ok.isMember("reason"));
    EXPECT_EQ(ok["elapsedUs"].asInt(), 1500);
    EXPECT_EQ(ok["line"].asInt(), 4);
    EXPECT_EQ(ok["id"].asString(), "x");
    EXPECT_EQ(ok["command"].asString(), "set");
    EXPECT_EQ(ok["transaction"].asInt(), 9);
}

TEST(CResultJsonTest, TransmissionsCarryTheirWordsAndTimesFromTheSetCallback) {
    RequestResult result = Sent("{}");
    sim::IrCall key{};
    key.function = sim::IrCall::Function::SendZ;
    key.key = 12;
    key.deviceIndex = 3;
    key.time = result.sent + 2ms;
    key.onAirEnd = key.time + 5ms;
    sim::IrCall ac{};
    ac.function = sim::IrCall::Function::Aircon;
    ac.deviceIndex = 5;
    ac.mode = "heat";
    ac.power = "on";
    ac.coolingSetpoint = "22";
    ac.fanSpeed = "low";
    ac.time = result.sent + 10ms;
    ac.onAirEnd = ac.time + 1ms;
    ac.waveform = {9000, 4500, 560};
    ac.carrier = 38000;
    ac.transmitError = "device gone";
    result.transmissions = {{key, false}, {ac, true}};

    const JsonValue ir = CResultJson::Build(result)["ir"];
    ASSERT_EQ(ir.size(), 2u);
    EXPECT_EQ(ir[0u]["function"].asString(), sim::ToString(sim::IrCall::Function::SendZ));
    EXPECT_EQ(ir[0u]["key"].asInt(), 12);
    EXPECT_EQ(ir[0u]["deviceIndex"].asInt(), 3);
    EXPECT_EQ(ir[0u]["onAirStartUs"].asInt(), 2000);
    EXPECT_EQ(ir[0u]["onAirEndUs"].asInt(), 7000);
    EXPECT_EQ(ir[0u]["onAirUs"].asInt(), 5000);
    EXPECT_FALSE(ir[0u]["late"].asBool());
    EXPECT_FALSE(ir[0u].isMember("mode"));
    EXPECT_FALSE(ir[0u].isMember("waveform"));
    EXPECT_EQ(ir[1u]["mode"].asString(), "heat");
    EXPECT_EQ(ir[1u]["coolingSetpoint"].asString(), "22");
    EXPECT_FALSE(ir[1u].isMember("key"));
    EXPECT_TRUE(ir[1u]["late"].asBool());
    EXPECT_EQ(ir[1u]["waveform"].toString(), "[9000,4500,560]");
    EXPECT_EQ(ir[1u]["carrier"].asInt(), 38000);
    EXPECT_EQ(ir[1u]["transmitError"].asString(), "device gone");
}

}  // namespace
}  // namespace ircontrol::host

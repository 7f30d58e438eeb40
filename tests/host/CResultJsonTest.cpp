#include "CResultJson.h"

#include <chrono>

#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

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
        std::string shown;  // "payload" as JSON text
        bool textKept;      // "payloadText" present
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
        EXPECT_EQ(object["payloadText"].toString(), c.textKept ? JsonValue(c.payload).toString() : "null") << c.payload;
    }
}

TEST(CResultJsonTest, LineIdAnswerAndTimesAppearOnlyWhenThereIsSomethingToSay) {
    RequestResult unanswered = Sent("{}");
    unanswered.outcome = Outcome::NoAnswer;
    unanswered.reason = "no answer within 100 ms";
    EXPECT_EQ(CResultJson::Build(unanswered).toString(),
              R"({"command":"set","property":"setKeyEvent","payload":{},"transaction":9,"answer":null,)"
              R"("outcome":"no answer","reason":"no answer within 100 ms","ir":[]})");
    RequestResult answered = Sent("{}");
    answered.request.line = 4;
    answered.request.id = "x";
    answered.answer = std::make_pair(std::string("ok"), std::string("done"));
    answered.answerLate = true;
    answered.outcome = Outcome::Ok;
    answered.elapsed = 1500us;
    EXPECT_EQ(CResultJson::Build(answered).toString(),
              R"({"line":4,"id":"x","command":"set","property":"setKeyEvent","payload":{},"transaction":9,)"
              R"("answer":{"errorCode":"ok","description":"done","late":true},"outcome":"ok","elapsedUs":1500,)"
              R"("ir":[]})");
}

TEST(CResultJsonTest, TransmissionsCarryTheirWordsAndTimesFromTheSendCall) {
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
    EXPECT_EQ(CResultJson::Build(result)["ir"].toString(),
              R"([{"function":"send_command_zdevice","deviceIndex":3,"key":12,"online":false,)"
              R"("onAirStartUs":2000,"onAirEndUs":7000,"onAirUs":5000,"late":false},)"
              R"({"function":"set_aircon_states_and_send_command","deviceIndex":5,"mode":"heat","power":"on",)"
              R"("coolingSetpoint":"22","fanSpeed":"low","onAirStartUs":10000,"onAirEndUs":11000,"onAirUs":1000,)"
              R"("late":true,"carrier":38000,"waveform":[9000,4500,560],"transmitError":"device gone"}])");
}

}  // namespace
}  // namespace ircontrol::host

#include "CSession.h"

#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

using CSessionTest = LoadedPluginTest;

std::vector<int> Keys(const RequestResult& result) {
    std::vector<int> keys;
    for (const auto& t : result.transmissions) keys.push_back(t.call.key);
    return keys;
}

TEST_F(CSessionTest, TransmissionsStayWithTheirRequestWhenTheyOutlastTheTimeout) {
    // On air longer than the tool waits: the worker falls behind, each request times out.
    sim::IrBlaster::SetTransmitDelay(std::chrono::milliseconds(300));
    CSession session(100);
    std::vector<RequestResult> results;
    for (const char* key : {"10", "11", "12", "39"}) {
        results.push_back(session.Send(Parse("key", {{"type", "fan"}, {"key", key}})));
    }
    for (auto& result : results) session.Refresh(result, std::chrono::seconds(10));

    // Key 39 is refused, so it transmits nothing.
    EXPECT_EQ((std::vector<std::vector<int>>{Keys(results[0]), Keys(results[1]), Keys(results[2]), Keys(results[3])}),
              (std::vector<std::vector<int>>{{10}, {11}, {12}, {}}));
    // The first went on air at once; the third only after the two before it, well past its wait.
    EXPECT_FALSE(results[0].transmissions[0].late);
    EXPECT_TRUE(results[2].transmissions[0].late);
    for (const auto& result : results) {
        ASSERT_TRUE(result.answer.has_value());
        EXPECT_TRUE(result.answerLate);
    }
    EXPECT_EQ(results[2].outcome, Outcome::Ok);
    EXPECT_EQ(std::tie(results[3].outcome, results[3].reason),
              std::make_tuple(Outcome::Refused, "unsupported key (code 5)"));
}

TEST_F(CSessionTest, LateTransmissionsAreFoundAfterTheJournalDroppedTheOnesAlreadyTaken) {
    // One set request with two key events makes two transmissions; the first is taken before
    // the wait ends, the second comes late and pushes the first out of a one-call journal.
    sim::IrBlaster::SetTransmitDelay(std::chrono::milliseconds(400));
    sim::IrBlaster::SetJournalLimit(1);
    CSession session(150);
    RequestResult described = CSession::Describe(Parse("key", {{"type", "fan"}, {"key", "10"}}));
    const auto keyEvent = sim::HostProperty::Json("setKeyEvent", described.payload);
    RequestResult result = session.SendProperties(std::move(described), {keyEvent, keyEvent});
    ASSERT_EQ(result.outcome, Outcome::NoAnswer) << "the first key is still on air when the wait ends";
    ASSERT_EQ(result.transmissions.size(), 1u);
    ASSERT_TRUE(sim::IrBlaster::WaitForTransmissions(2, std::chrono::seconds(10)));
    ASSERT_EQ(sim::IrBlaster::Journal().size(), 1u);

    EXPECT_TRUE(session.Refresh(result, std::chrono::seconds(10)));
    ASSERT_EQ(Keys(result), (std::vector<int>{10, 10}));
    EXPECT_FALSE(result.transmissions[0].late);
    EXPECT_TRUE(result.transmissions[1].late);
    EXPECT_LT(result.transmissions[0].call.sequence, result.transmissions[1].call.sequence)
        << "two calls, not one taken twice";
}

TEST_F(CSessionTest, ResultsCarryTimesAndTheRequestsOwnLogLines) {
    sim::IrBlaster::SetTransmitDelay(std::chrono::milliseconds(30));
    CSession session(5000);
    const RequestResult result = session.Send(Parse("ac", {{"mode", "HEAT"}, {"setpoint", "22"}}));
    ASSERT_EQ(result.outcome, Outcome::Ok) << result.reason;
    ASSERT_EQ(result.transmissions.size(), 1u);
    const sim::IrCall& call = result.transmissions[0].call;
    EXPECT_EQ(call.onAirEnd - call.time, std::chrono::milliseconds(30));
    EXPECT_GE(call.time, result.sent);
    ASSERT_TRUE(result.elapsed.has_value());
    EXPECT_GE(*result.elapsed, std::chrono::milliseconds(30)) << "the answer follows the transmission";
    bool payloadLogged = false;
    for (const auto& line : result.log) {
        EXPECT_EQ(line.transaction, result.transaction);
        payloadLogged = payloadLogged || line.text.find("\"x.com.korvan.mode\":\"HEAT\"") != std::string::npos;
    }
    EXPECT_TRUE(payloadLogged);
    // The next request's lines are its own.
    const RequestResult next = session.Send(Parse("key", {{"type", "fan"}, {"key", "39"}}));
    for (const auto& line : next.log) EXPECT_EQ(line.text.find("HEAT"), std::string::npos) << line.text;
}

TEST_F(CSessionTest, EveryValueKindReachesTheServiceAsThatKind) {
    CSession session(2000);
    const std::vector<std::tuple<NamedValues, Outcome, std::string>> cases = {
        {{{"name", "setDeviceEvent"}, {"value", "{\"paired\":true}"}}, Outcome::Ok, ""},
        // A setKeyEvent that is not JSON-typed reads as empty on the service's side.
        {{{"kind", "string"}, {"value", "{}"}}, Outcome::Refused, "setKeyEvent property Empty!! (code 5)"},
        {{{"kind", "int"}, {"value", "7"}}, Outcome::Refused, "setKeyEvent property Empty!! (code 5)"},
        {{{"name", "volume"}, {"kind", "bool"}, {"value", "true"}}, Outcome::Unanswered,
         "the service has no property \"volume\": it sends no answer"},
    };
    for (const auto& [values, outcome, reason] : cases) {
        const RequestResult result = session.Send(Parse("set", values));
        EXPECT_EQ(std::tie(result.outcome, result.reason), std::tie(outcome, reason)) << values.at("value");
    }
}

}  // namespace
}  // namespace ircontrol::host

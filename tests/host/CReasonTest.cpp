#include "CReason.h"

#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

// A result with the plugin's log lines as it writes them ("File.cpp : Function(line)  message").
RequestResult With(std::optional<std::string> errorCode, const std::vector<std::string>& messages) {
    RequestResult result;
    if (errorCode) result.answer = std::make_pair(*errorCode, std::string("a ir key event request got error"));
    for (const auto& message : messages) result.log.push_back({6, "IRCONTROL", "X.cpp : F(1)  " + message + "\n", 1});
    return result;
}

TEST(CReasonTest, EveryRefusalAndMissingAnswerGetsOneLineFromThePluginsLog) {
    struct Case {
        std::optional<std::string> errorCode;
        std::vector<std::string> log;
        Outcome outcome;
        std::string reason;
        RequestKind kind = RequestKind::Key;
    };
    const std::vector<Case> cases = {
        {"ok", {"error occured: stale line of no interest(error:1)"}, Outcome::Ok, ""},
        {"key_error", {"key event str: {}", "error occured: unsupported key(error:5)"}, Outcome::Refused,
         "unsupported key (code 5)"},
        {"key_error", {"error occured: first(error:1)", "error occured: invalid mode state(error:2)"},
         Outcome::Refused, "invalid mode state (code 2)"},
        {"key_error", {"error occured: no code here"}, Outcome::Refused, "no code here"},
        {"device_error", {}, Outcome::Refused, "device_error: a ir key event request got error"},
        {std::nullopt, {"key event str: {}", "there is no deviceType obj. wrong data"}, Outcome::Unanswered,
         "no \"x.com.korvan.deviceType\" in the payload: the service sends no answer to that"},
        {std::nullopt, {"set request dropped: invalid property name!(error_code:5)"}, Outcome::Unanswered,
         "the service dropped the request (invalid property name!(error_code:5)): it sends no answer"},
        {std::nullopt, {"property_name: volume", "volume not found in map"}, Outcome::Unanswered,
         "the service has no property \"volume\": it sends no answer"},
        {std::nullopt, {"key event str: {}"}, Outcome::NoAnswer, "no answer within 250 ms"},
        {std::nullopt, {}, Outcome::Listed, "", RequestKind::Devices},  // listing devices needs no answer
    };
    for (const auto& c : cases) {
        RequestResult result = With(c.errorCode, c.log);
        result.request.kind = c.kind;
        CReason::Explain(result, 250);
        EXPECT_EQ(std::tie(result.outcome, result.reason), std::tie(c.outcome, c.reason));
    }
}

}  // namespace
}  // namespace ircontrol::host

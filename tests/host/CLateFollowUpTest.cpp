#include "CLateFollowUp.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "CRequestParser.h"
#include "LoadedPluginTest.h"

namespace ircontrol::host {
namespace {

using namespace std::chrono_literals;

class CLateFollowUpTest : public LoadedPluginTest {
protected:
    RequestResult Send(CSession& session, const std::string& key) {
        Request request;
        std::string error;
        EXPECT_TRUE(CRequestParser(setup_, CRequestParser::Style::CommandLine)
                        .Parse("key", {{"type", "fan"}, {"key", key}}, request, error))
            << error;
        return session.Send(request);
    }
    struct Shown {
        uint64_t tag;
        std::size_t transmissions;
        std::size_t firstNew;
        bool answered;
    };
};

TEST_F(CLateFollowUpTest, ShowsWhatCameLateUnderItsTagAndDropsTheAnswered) {
    // On air longer than the wait: both requests time out, their answers come later.
    sim::IrBlaster::SetTransmitDelay(300ms);
    CSession session(50);
    CLateFollowUp followUp(session);
    const RequestResult first = Send(session, "10");
    const RequestResult second = Send(session, "11");
    ASSERT_EQ(first.outcome, Outcome::NoAnswer);
    ASSERT_EQ(second.outcome, Outcome::NoAnswer);
    followUp.Follow(first, 1);
    followUp.Follow(second, 2);
    std::vector<Shown> shown;
    followUp.Look(10s, [&](uint64_t tag, const RequestResult& result, std::size_t firstNew) {
        shown.push_back({tag, result.transmissions.size(), firstNew, result.answer.has_value()});
    });
    ASSERT_EQ(shown.size(), 2u);
    EXPECT_EQ(shown[0].tag, 1u);
    EXPECT_EQ(shown[1].tag, 2u);
    for (const auto& s : shown) {
        EXPECT_TRUE(s.answered);
        EXPECT_EQ(s.transmissions, 1u);
    }
    EXPECT_EQ(shown[0].firstNew, first.transmissions.size()) << "what was shown before is not new";
    EXPECT_TRUE(followUp.Empty()) << "answered requests are no longer followed";
}

TEST_F(CLateFollowUpTest, FollowsOnlyUnansweredRequestsAndGivesUpAfterItsLooks) {
    CSession session(2000);
    CLateFollowUp followUp(session, 2);
    followUp.Follow(Send(session, "10"));  // answered ok in time
    EXPECT_TRUE(followUp.Empty());
    RequestResult neverSent;
    neverSent.outcome = Outcome::NoAnswer;  // no transaction: nothing can come of it
    followUp.Follow(neverSent);
    EXPECT_TRUE(followUp.Empty());

    // A transaction nobody answers: two looks, then it is given up.
    RequestResult silent;
    silent.outcome = Outcome::NoAnswer;
    silent.transaction = 999999;
    followUp.Follow(silent, 7);
    int calls = 0;
    const auto count = [&](uint64_t, const RequestResult&, std::size_t) { ++calls; };
    followUp.Look(0ms, count);
    EXPECT_FALSE(followUp.Empty());
    followUp.Look(0ms, count);
    EXPECT_TRUE(followUp.Empty());
    EXPECT_EQ(calls, 0) << "nothing came, so nothing was shown";
}

}  // namespace
}  // namespace ircontrol::host

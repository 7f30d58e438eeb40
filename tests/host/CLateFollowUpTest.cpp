#include "CLateFollowUp.h"

#include <chrono>

#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

using namespace std::chrono_literals;
using CLateFollowUpTest = LoadedPluginTest;

TEST_F(CLateFollowUpTest, ShowsWhatCameLateUnderItsTagAndDropsTheAnswered) {
    // On air longer than the wait: both requests time out, their answers come later.
    sim::IrBlaster::SetTransmitDelay(300ms);
    CSession session(50);
    CLateFollowUp followUp(session);
    const RequestResult first = session.Send(Parse("key", {{"type", "fan"}, {"key", "10"}}));
    const RequestResult second = session.Send(Parse("key", {{"type", "fan"}, {"key", "11"}}));
    ASSERT_EQ(std::make_pair(first.outcome, second.outcome), std::make_pair(Outcome::NoAnswer, Outcome::NoAnswer));
    followUp.Follow(first, 1);
    followUp.Follow(second, 2);
    std::vector<std::string> shown;  // tag, transmissions, the first not shown before, answered
    followUp.Look(10s, [&](uint64_t tag, const RequestResult& result, std::size_t firstNew) {
        shown.push_back(std::to_string(tag) + " " + std::to_string(result.transmissions.size()) + " " +
                        std::to_string(firstNew) + (result.answer ? " answered" : ""));
    });
    // What was shown with the result before is not new.
    EXPECT_EQ(shown, (std::vector<std::string>{"1 1 " + std::to_string(first.transmissions.size()) + " answered",
                                               "2 1 " + std::to_string(second.transmissions.size()) + " answered"}));
    EXPECT_TRUE(followUp.Empty()) << "answered requests are no longer followed";
}

TEST_F(CLateFollowUpTest, FollowsOnlyUnansweredRequestsAndGivesUpAfterItsLooks) {
    CSession session(2000);
    CLateFollowUp followUp(session, 2);
    followUp.Follow(session.Send(Parse("key", {{"type", "fan"}, {"key", "10"}})));  // answered ok in time
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

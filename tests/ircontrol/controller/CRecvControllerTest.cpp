#include "controller/CRecvController.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>

#include "FakePropertyList.h"
#include "Payloads.h"
#include "PlatformState.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

using namespace std::chrono_literals;
using Answer = std::shared_future<std::string>;

// The service's queue stops for good with Deinit; ctest runs each test in its own process.
class CRecvControllerTest : public ::testing::Test {
protected:
    void SetUp() override {
        irctest::ResetWithPairing(R"({"dev_info":[{"codeset":"HFAN","device_index":1}]})");
        controller_.Init();
    }

    // A fan-key request; `answer` gets the error code of its first answer.
    static RequestSharedPtr MakeRequest(int key, Answer* answer = nullptr) {
        auto answered = std::make_shared<std::promise<std::string>>();
        if (answer != nullptr) *answer = answered->get_future().share();
        auto list = std::make_shared<irctest::FakePropertyList>(std::map<std::string, std::string>{
            {"setKeyEvent", irctest::KeyPayload("oic.d.fan", "HFAN", key)}});
        return CRequest::Create(RequestType::Set, list, [answered](const std::string& code, const std::string&) {
            answered->set_value(code);
        });
    }

    CRecvController controller_;
};

TEST_F(CRecvControllerTest, QueueRunsTheInitJobFirstAndEventsInArrivalOrder) {
    sim::IrBlaster::SetTransmitDelay(20ms);  // the first key is still on air when the second arrives
    Answer first, second;
    controller_.HandleKeyEvent(MakeRequest(11, &first));
    controller_.HandleKeyEvent(MakeRequest(12, &second));
    ASSERT_EQ(second.wait_for(10s), std::future_status::ready);
    ASSERT_EQ(first.wait_for(0s), std::future_status::ready);
    EXPECT_EQ(first.get() + second.get(), "okok");
    EXPECT_EQ(irctest::JournalText(), "map H HFAN; H 11 @1; map H HFAN; H 12 @1");
    std::vector<std::string> jobs;
    for (const auto& line : sim::Log::Lines()) {
        for (const char* job : {"  Init job", "  HandleKeyEvent"}) {
            if (line.text.find(job) != std::string::npos) jobs.push_back(job + 2);
        }
    }
    EXPECT_EQ(jobs, (std::vector<std::string>{"Init job", "HandleKeyEvent", "HandleKeyEvent"}));
}

TEST_F(CRecvControllerTest, AfterDeinitEnqueueingThrowsAndIsLogged) {
    controller_.Deinit();
    auto request = MakeRequest(10);
    try {
        controller_.HandleKeyEvent(request);
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Thread already finished! Can not do enqueue!!");
    }
    EXPECT_THROW(controller_.HandleDeviceEvent(request), std::runtime_error);
    EXPECT_EQ(sim::Log::Count("Exception !! - Thread already finished! Can not do enqueue!!"), 2u);
    EXPECT_EQ(request.use_count(), 1);  // nothing kept it: it was never queued
}

// A request queued behind a running job when the queue stops is discarded and released unanswered.
TEST_F(CRecvControllerTest, DiscardedRequestIsReleasedWithoutAnAnswer) {
    sim::IrBlaster::SetTransmitDelay(300ms);
    controller_.HandleKeyEvent(MakeRequest(10));
    ASSERT_TRUE(sim::IrBlaster::WaitForTransmissions(1, 10s));
    Answer answer;
    auto queued = MakeRequest(11, &answer);
    std::weak_ptr<CRequest> watch = queued;
    controller_.HandleKeyEvent(std::move(queued));
    controller_.Deinit();
    // The worker drops the queued job within its next loop; the request then has no owner.
    for (int i = 0; i < 500 && !watch.expired(); ++i) std::this_thread::sleep_for(10ms);
    EXPECT_TRUE(watch.expired());
    EXPECT_THROW(answer.get(), std::future_error);  // its promise went unkept with it
}

}  // namespace
}  // namespace ircontrol

#include "controller/CRecvController.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>

#include "FakePropertyList.h"
#include "Payloads.h"
#include "PlatformState.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

using namespace std::chrono_literals;

// A fan-key request; `answer` gets the error code of its answer.
RequestSharedPtr MakeRequest(const std::string& key, std::future<std::string>* answer) {
    auto answered = std::make_shared<std::promise<std::string>>();
    *answer = answered->get_future();
    auto list = std::make_shared<irctest::FakePropertyList>(
        std::map<std::string, std::string>{{"setKeyEvent", irctest::KeyPayload("oic.d.fan", "HFAN", key)}});
    return CRequest::Create(RequestType::Set, list, [answered](const std::string& code, const std::string&) {
        answered->set_value(code);
    });
}

// A request queued behind a running job when the queue stops is discarded and released
// unanswered; the running one, queued after the init job, finishes and answers.
TEST(CRecvControllerTest, DiscardedRequestIsReleasedWithoutAnAnswer) {
    irctest::ResetWithPairing(R"({"dev_info":[{"codeset":"HFAN","device_index":1}]})");
    CRecvController controller;  // its queue stops for good: ctest runs each test in its own process
    controller.Init();
    sim::IrBlaster::SetTransmitDelay(300ms);
    std::future<std::string> first, second;
    controller.HandleKeyEvent(MakeRequest("10", &first));
    ASSERT_TRUE(sim::IrBlaster::WaitForTransmissions(1, 10s));
    auto queued = MakeRequest("11", &second);
    std::weak_ptr<CRequest> watch = queued;
    controller.HandleKeyEvent(std::move(queued));
    controller.Deinit();
    EXPECT_EQ(first.get(), "ok");
    // The worker drops the queued job within its next loop; the request then has no owner.
    for (int i = 0; i < 500 && !watch.expired(); ++i) std::this_thread::sleep_for(10ms);
    EXPECT_TRUE(watch.expired());
    EXPECT_THROW(second.get(), std::future_error);  // its promise went unkept with it
    std::vector<std::string> jobs;  // the init job ran first, then the one event that ran
    for (const auto& line : sim::Log::Lines()) {
        for (const char* job : {"  Init job", "  HandleKeyEvent"}) {
            if (line.text.find(job) != std::string::npos) jobs.push_back(job + 2);
        }
    }
    EXPECT_EQ(jobs, (std::vector<std::string>{"Init job", "HandleKeyEvent"}));
}

}  // namespace
}  // namespace ircontrol

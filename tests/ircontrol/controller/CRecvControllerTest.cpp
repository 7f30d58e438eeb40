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

// The init job runs first; each event is a job of its own.
TEST_F(CRecvControllerTest, QueueRunsTheInitJobFirstAndEachEventAsAJob) {
    Answer answer;
    controller_.HandleKeyEvent(MakeRequest(11, &answer));
    ASSERT_EQ(answer.wait_for(10s), std::future_status::ready);
    EXPECT_EQ(answer.get(), "ok");
    std::vector<std::string> jobs;
    for (const auto& line : sim::Log::Lines()) {
        for (const char* job : {"  Init job", "  HandleKeyEvent"}) {
            if (line.text.find(job) != std::string::npos) jobs.push_back(job + 2);
        }
    }
    EXPECT_EQ(jobs, (std::vector<std::string>{"Init job", "HandleKeyEvent"}));
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

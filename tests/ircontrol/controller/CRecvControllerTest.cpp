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

// The service's queue stops for good with Deinit; ctest runs each test in its own process.
class CRecvControllerTest : public ::testing::Test {
protected:
    void SetUp() override {
        irctest::ResetWithPairing(R"({"dev_info":[{"codeset":"HFAN","device_index":1}]})");
    }

    // A key-event request whose answers are recorded, with a promise set by the first answer.
    RequestSharedPtr MakeRequest(int key, std::shared_ptr<std::promise<std::string>> answered) {
        auto list = std::make_shared<irctest::FakePropertyList>(std::map<std::string, std::string>{
            {"setKeyEvent", irctest::KeyPayload("oic.d.fan", "HFAN", key)}});
        return CRequest::Create(RequestType::Set, list,
                                [answered](const std::string& code, const std::string&) {
                                    answered->set_value(code);
                                });
    }
};

TEST_F(CRecvControllerTest, QueueRunsTheInitJobFirstAndEventsInArrivalOrder) {
    CRecvController controller;
    controller.Init();
    sim::IrBlaster::SetTransmitDelay(20ms);  // the first key is still on air when the second arrives
    auto first = std::make_shared<std::promise<std::string>>();
    auto second = std::make_shared<std::promise<std::string>>();
    auto firstAnswer = first->get_future();
    auto secondAnswer = second->get_future();
    controller.HandleKeyEvent(MakeRequest(11, first));
    controller.HandleKeyEvent(MakeRequest(12, second));
    ASSERT_EQ(secondAnswer.wait_for(10s), std::future_status::ready);
    ASSERT_EQ(firstAnswer.wait_for(0s), std::future_status::ready);
    EXPECT_EQ(firstAnswer.get(), "ok");
    EXPECT_EQ(secondAnswer.get(), "ok");
    auto journal = sim::IrBlaster::Journal();
    std::vector<int> keys;
    for (const auto& call : journal) {
        if (call.function == sim::IrCall::Function::SendH) keys.push_back(call.key);
    }
    EXPECT_EQ(keys, (std::vector<int>{11, 12}));
    auto lines = sim::Log::Lines();
    std::size_t init = lines.size(), handle = lines.size();
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (init == lines.size() && lines[i].text.find("Init job") != std::string::npos) init = i;
        if (handle == lines.size() && lines[i].text.find("  HandleKeyEvent") != std::string::npos) handle = i;
    }
    EXPECT_LT(init, handle);
    EXPECT_LT(handle, lines.size());
}

TEST_F(CRecvControllerTest, AfterDeinitEnqueueingThrowsAndIsLogged) {
    CRecvController controller;
    controller.Init();
    controller.Deinit();
    auto answered = std::make_shared<std::promise<std::string>>();
    auto request = MakeRequest(10, answered);
    try {
        controller.HandleKeyEvent(request);
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Thread already finished! Can not do enqueue!!");
    }
    EXPECT_THROW(controller.HandleDeviceEvent(request), std::runtime_error);
    EXPECT_TRUE(sim::Log::Contains("Exception !! - Thread already finished! Can not do enqueue!!"));
    EXPECT_EQ(request.use_count(), 1);  // nothing kept it: it was never queued
}

// A request queued behind a running job when the queue stops is discarded and released unanswered.
TEST_F(CRecvControllerTest, DiscardedRequestIsReleasedWithoutAnAnswer) {
    CRecvController controller;
    controller.Init();
    sim::IrBlaster::SetTransmitDelay(300ms);
    auto first = std::make_shared<std::promise<std::string>>();
    auto second = std::make_shared<std::promise<std::string>>();
    auto secondAnswer = second->get_future();
    controller.HandleKeyEvent(MakeRequest(10, first));
    ASSERT_TRUE(sim::IrBlaster::WaitForTransmissions(1, 10s));
    auto queued = MakeRequest(11, second);
    std::weak_ptr<CRequest> watch = queued;
    controller.HandleKeyEvent(std::move(queued));
    controller.Deinit();
    // The worker drops the queued job within its next loop; the request then has no owner.
    for (int i = 0; i < 500 && !watch.expired(); ++i) std::this_thread::sleep_for(10ms);
    EXPECT_TRUE(watch.expired());
    EXPECT_EQ(secondAnswer.wait_for(0s), std::future_status::timeout);
}

}  // namespace
}  // namespace ircontrol

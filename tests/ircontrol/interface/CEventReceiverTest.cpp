#include "interface/CEventReceiver.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "FakePropertyList.h"
#include "common/CRequest.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

// Dispatch by exact name in list order is the end-to-end mixed-list test's. Deinit stops the
// controller but keeps the handlers, so a late request reaches the stopped queue and is refused
// there, loudly, instead of vanishing.
TEST(CEventReceiverTest, AfterDeinitARequestReachesTheStoppedQueueAndIsRefused) {
    sim::ResetAll();
    CEventReceiver receiver;  // its queue stops for good: ctest runs each test in its own process
    receiver.Init();
    receiver.Deinit();
    auto list = std::make_shared<irctest::FakePropertyList>(std::map<std::string, std::string>{{"setKeyEvent", "{}"}});
    EXPECT_THROW(receiver.HandleEvent(CRequest::Create(RequestType::Set, list, nullptr)), std::runtime_error);
    EXPECT_TRUE(sim::Log::Contains("recv_controller_ SET_KEY_EVENT"));
    EXPECT_TRUE(sim::Log::Contains("Exception !! - Thread already finished! Can not do enqueue!!"));
}

}  // namespace
}  // namespace ircontrol

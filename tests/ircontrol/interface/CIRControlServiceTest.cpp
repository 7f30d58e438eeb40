#include "interface/CIRControlService.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "Payloads.h"
#include "PlatformState.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

using namespace std::chrono_literals;

// The host refusing parts of an answer costs that answer (or that property), never the worker,
// and every list and property the service made is either taken by the host or released.
TEST(CIRControlServiceTest, RefusedAnswerPartsAreLoggedAndNothingLeaks) {
    irctest::ResetWithPairing(R"({"dev_info":[{"codeset":"HFAN","device_index":1}]})");
    CIRControlService service;  // its queue stops for good: ctest runs each test in its own process
    service.Init();
    const auto sendFanKey = [] {
        return sim::Host::SendSet("ircontrol", {sim::HostProperty::Json(
                                                   "setKeyEvent", irctest::KeyPayload("oic.d.fan", "HFAN", "10"))});
    };
    struct Case { sim::HostFault fault; std::string logged; std::size_t delivered; };
    const std::vector<Case> cases = {
        {sim::HostFault::ListCreate, "[resp_handler] failed to create answer list", 0},
        {sim::HostFault::SendResult, "[resp_handler] vyrf_service_send_set_property_result: -1", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.logged);
        sim::Log::Clear();
        sim::Host::InjectFault(c.fault, 1);
        const uint64_t transaction = sendFanKey();
        for (int i = 0; i < 1000 && !sim::Log::Contains(c.logged); ++i) std::this_thread::sleep_for(10ms);
        EXPECT_TRUE(sim::Log::Contains(c.logged));
        EXPECT_EQ(sim::Host::ResultsFor(transaction).size(), c.delivered);
        EXPECT_EQ(sim::Host::LiveLists(), 0u);
        EXPECT_EQ(sim::Host::LiveProperties(), 0u);
    }
    // The worker is still there for the next request.
    const auto next = sim::Host::WaitResult(sendFanKey(), 10s);
    ASSERT_TRUE(next.has_value());
    EXPECT_EQ(next->properties.at(0).text, "ok");
    service.Deinit();
}

}  // namespace
}  // namespace ircontrol

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

bool WaitForLog(const std::string& needle) {
    for (int i = 0; i < 1000; ++i) {
        if (sim::Log::Contains(needle)) return true;
        std::this_thread::sleep_for(10ms);
    }
    return false;
}

// The service's queue stops for good with Deinit; ctest runs each test in its own process.
class CIRControlServiceTest : public ::testing::Test {
protected:
    void SetUp() override {
        irctest::ResetWithPairing(R"({"dev_info":[{"codeset":"HFAN","device_index":1}]})");
        service_.Init();
        ASSERT_TRUE(sim::Host::FindService("ircontrol").has_value());
    }
    void TearDown() override { service_.Deinit(); }

    static uint64_t SendFanKey() {
        return sim::Host::SendSet("ircontrol", {sim::HostProperty::Json(
                                                  "setKeyEvent", irctest::KeyPayload("oic.d.fan", "HFAN", 10))});
    }

    CIRControlService service_;
};

// The host refusing parts of an answer costs that answer (or that property), never the worker,
// and every list and property the service made is either taken by the host or released.
TEST_F(CIRControlServiceTest, RefusedAnswerPartsAreLoggedAndNothingLeaks) {
    struct Case {
        sim::HostFault fault;
        std::string logged;
        bool delivered;
    };
    const std::vector<Case> cases = {
        {sim::HostFault::ListCreate, "[resp_handler] failed to create answer list", false},
        {sim::HostFault::SendResult, "[resp_handler] vyrf_service_send_set_property_result: -1", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.logged);
        sim::Log::Clear();
        sim::Host::InjectFault(c.fault, 1);
        const uint64_t transaction = SendFanKey();
        ASSERT_TRUE(WaitForLog(c.logged));
        EXPECT_EQ(sim::Host::ResultsFor(transaction).size(), c.delivered ? 1u : 0u);
        EXPECT_EQ(sim::Host::LiveLists(), 0u);
        EXPECT_EQ(sim::Host::LiveProperties(), 0u);
    }
    // The worker is still there for the next request.
    const auto next = sim::Host::WaitResult(SendFanKey(), 10s);
    ASSERT_TRUE(next.has_value());
    ASSERT_EQ(next->properties.size(), 2u);
    EXPECT_EQ(next->properties[0].name, "errorCode");
    EXPECT_EQ(next->properties[0].text, "ok");
    EXPECT_EQ(next->properties[1].name, "description");
}

}  // namespace
}  // namespace ircontrol

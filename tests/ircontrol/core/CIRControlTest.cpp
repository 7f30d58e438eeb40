#include "core/CIRControl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>
#include <vector>

#include "FakePropertyList.h"
#include "Payloads.h"
#include "PlatformState.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

using irctest::KeyPayload;
using Codes = std::vector<std::string>;

class CIRControlTest : public ::testing::Test {
protected:
    void SetUp() override {
        irctest::ResetWithPairing(
            R"({"dev_info":[{"codeset":"HFAN","device_index":1},{"codeset":"ZAC","device_index":5}]})");
    }

    // The error codes answered, in order; `list` false sends a request without a property list.
    static Codes Handle(const std::string& name, const std::string& payload, bool list = true) {
        Codes answers;
        auto request = CRequest::Create(
            RequestType::Set, list ? std::make_shared<irctest::FakePropertyList>(
                                         std::map<std::string, std::string>{{name, payload}})
                                   : nullptr,
            [&](const std::string& code, const std::string&) { answers.push_back(code); });
        CIRControl control;
        if (name == "setKeyEvent") {
            control.HandleKeyEvent(request);
        } else {
            control.HandleDeviceEvent(request);
        }
        return answers;
    }
};

// A refusal answers key_error with the caught exception's text logged; the device layers'
// refusals come through alike. A library failure without an exception still answers ok, and a
// request that does not say what it is for is never answered.
TEST_F(CIRControlTest, EachKeyEventIsAnsweredAndLoggedWithItsOutcome) {
    sim::IrBlaster::SetSendResult(false);
    sim::IrBlaster::SetAirconResult(-7);
    struct Case { std::string payload; Codes answers; std::string logged, sent; };
    const Codes error = {"key_error"};
    const std::vector<Case> cases = {
        {"", error, "error occured: setKeyEvent property Empty!!(error:5)", ""},
        {"not json", error, "error occured: json obj null(error:2)", ""},
        {KeyPayload("oic.d.airconditioner", "ZAC", "1"), error, "error occured: ac_state_obj null(error:5)", ""},
        {KeyPayload("OIC.D.FAN", "HFAN", "10"), error, "error occured: not supported type(error:6)", ""},
        {R"({"x.com.korvan.codesetName":"HFAN","x.com.korvan.codesetKey":10})", {},
         "there is no deviceType obj. wrong data", ""},
        {KeyPayload("oic.d.fan", "HFAN", "10"), {"ok"}, "ret of irbl_send_command_hdevice: 0", "map H HFAN; H 10 @1"},
        {irctest::AcPayload("ZAC", "ON", "COLD", "24", "LOW"), {"ok"},
         "ret of irbl_set_aircon_states_and_send_command : -7", "map Z ZAC; AC on cool 24 low @5"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.payload);
        sim::Log::Clear();
        sim::IrBlaster::ClearJournal();
        EXPECT_EQ(Handle("setKeyEvent", c.payload), c.answers);
        EXPECT_EQ(irctest::JournalText(), c.sent);
        EXPECT_TRUE(sim::Log::Contains(c.logged, "IRCONTROL"));
    }
}

TEST_F(CIRControlTest, DeviceEventsAnswerOkWhateverTheirTextAndListlessRequestsTheirKindsError) {
    for (const std::string text : {"", "{}", "garbage", "[1]"}) EXPECT_EQ(Handle("setDeviceEvent", text), Codes{"ok"});
    EXPECT_TRUE(sim::Log::Contains("device_event_json: garbage"));
    EXPECT_EQ(Handle("setKeyEvent", "", false), Codes{"key_error"});
    EXPECT_EQ(Handle("setDeviceEvent", "", false), Codes{"device_error"});
    EXPECT_EQ(sim::Log::Count("error occured: property_list null!(error:5)"), 2u);
}

// Log readers on the TV filter by tag and priority and parse "<file> : <function>(<line>)  "; a
// key event's enter/leave trace is at debug priority (3), below its info and error lines.
TEST_F(CIRControlTest, TraceLinesAreDebugWithTheFileFunctionAndLinePrefix) {
    sim::Log::Clear();
    Handle("setKeyEvent", KeyPayload("oic.d.fan", "HFAN", "10"));
    const std::regex entered(R"(CIRControl\.cpp : HandleKeyEvent\(\d+\) > Entered\n)");
    const auto lines = sim::Log::Lines();
    const auto line = std::find_if(lines.begin(), lines.end(), [&](const sim::LogLine& l) {
        return std::regex_match(l.text, entered);
    });
    ASSERT_NE(line, lines.end());
    EXPECT_EQ(line->tag + std::to_string(line->priority), "IRCONTROL3");
}

}  // namespace
}  // namespace ircontrol

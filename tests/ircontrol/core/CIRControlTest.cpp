#include "core/CIRControl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "FakePropertyList.h"
#include "Payloads.h"
#include "PlatformState.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

using irctest::AcPayload;
using irctest::KeyPayload;

const std::string kPairing =
    R"({"dev_info":[{"codeset":"HFAN","device_index":1},{"codeset":"HRBC","device_index":4},)"
    R"({"codeset":"ZAC","device_index":5}]})";

// An air conditioner request with one member left out: a root member ("codesetKey") or one of
// the state's members ("power", "mode", "coolingSetpoint", "fanSpeed").
std::string AcWithout(const std::string& missing) {
    const std::vector<std::pair<std::string, std::string>> state = {
        {"power", R"("ON")"}, {"mode", R"("COLD")"}, {"coolingSetpoint", "24"}, {"fanSpeed", R"("LOW")"}};
    std::string members;
    for (const auto& [name, value] : state) {
        if (name == missing) continue;
        members += std::string(members.empty() ? "" : ",") + R"("x.com.korvan.)" + name + R"(":)" + value;
    }
    std::string root = R"({"x.com.korvan.deviceType":"oic.d.airconditioner","x.com.korvan.codesetName":"ZAC")";
    if (missing != "codesetKey") root += R"(,"x.com.korvan.codesetKey":1)";
    return root + R"(,"x.com.korvan.acState":{)" + members + "}}";
}

struct Outcome {
    std::vector<std::string> answers;  // error code texts, in order
    std::vector<sim::IrCall> sent;     // transmissions only
};

class CIRControlTest : public ::testing::Test {
protected:
    void SetUp() override { irctest::ResetWithPairing(kPairing); }

    static Outcome KeyEvent(const std::string& payload) { return Run(payload, true); }

    static Outcome Run(const std::string& payload, bool keyEvent) {
        sim::IrBlaster::ClearJournal();
        Outcome outcome;
        auto list = std::make_shared<irctest::FakePropertyList>(std::map<std::string, std::string>{
            {keyEvent ? "setKeyEvent" : "setDeviceEvent", payload}});
        auto request = CRequest::Create(RequestType::Set, list,
                                        [&](const std::string& code, const std::string&) {
                                            outcome.answers.push_back(code);
                                        });
        CIRControl control;
        if (keyEvent) {
            control.HandleKeyEvent(request);
        } else {
            control.HandleDeviceEvent(request);
        }
        outcome.sent = irctest::Transmissions();
        return outcome;
    }
};

// Every refusal answers key_error with the caught exception's text in the log, and sends nothing.
TEST_F(CIRControlTest, FailuresAnswerKeyErrorWithTheReasonLogged) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", "setKeyEvent property Empty!!(error:5)"},
        {"not json", "json obj null(error:2)"},
        {KeyPayload("oic.d.tv", "HFAN", "10"), "not supported type(error:6)"},
        {KeyPayload("oic.d.robotcleaner", "HRBC", "11"), "unsupported key(error:5)"},
        {KeyPayload("oic.d.fan", "NOPE", "10"), "d2d_device_index < 0 !!!!!(error:2)"},
        {R"({"x.com.korvan.deviceType":"oic.d.fan","x.com.korvan.codesetKey":10})",
         "codeset_name obj null(error:5)"},
        {KeyPayload("oic.d.airconditioner", "ZAC", "1"), "ac_state_obj null(error:5)"},
        // Every member of an air conditioner's request must be there, even those it never
        // sends (the key) and those a default could stand for (the set point).
        {AcWithout("power"), "power obj null(error:5)"},
        {AcWithout("mode"), "mode obj null(error:5)"},
        {AcWithout("coolingSetpoint"), "coolingSetpoint obj null(error:5)"},
        {AcWithout("fanSpeed"), "fan speed obj null(error:5)"},
        {AcWithout("codesetKey"), "codeset_name obj null(error:5)"},
        {R"({"x.com.korvan.deviceType":"oic.d.fan","x.com.korvan.codesetName":"HFAN"})",
         "codeset_name obj null(error:5)"},
        // Wrong member types and shapes.
        {KeyPayload("oic.d.fan", "HFAN", "\"10\""), "cannot convert to int32_t type"},
        {KeyPayload("oic.d.fan", "HFAN", "3000000000"), "int64_t value exceed int32_t range"},
        {R"({"x.com.korvan.deviceType":["oic.d.fan"]})", "cannot convert to string type"},
        {"[1,2,3]", "invalid type"},
        {"42", "invalid type"},
        {AcPayload("ZAC", "ON", "COLD", "\"warm\"", "LOW"), "cannot convert to int32_t type"},
        {AcPayload("ZAC", "ON", "COLD", "2147483648", "LOW"), "int64_t value exceed int32_t range"},
        {AcPayload("ZAC", "ON", "COLD", "null", "LOW"), "coolingSetpoint obj null(error:5)"},
        {std::string(100000, '[') + std::string(100000, ']'), "json obj null(error:2)"},
    };
    for (const auto& [payload, reason] : cases) {
        SCOPED_TRACE(payload.substr(0, 120));
        sim::Log::Clear();
        const Outcome out = KeyEvent(payload);
        EXPECT_EQ(out.answers, std::vector<std::string>{"key_error"});
        EXPECT_TRUE(out.sent.empty());
        EXPECT_TRUE(sim::Log::Contains("error occured: " + reason, "IRCONTROL"));
    }
}

// Log readers on the TV filter by tag and priority and parse "<file> : <function>(<line>)  ";
// each kind of line keeps its priority: 6 error, 4 info, 3 debug.
TEST_F(CIRControlTest, ServiceLinesKeepTheirPriorityTagAndPrefix) {
    sim::Log::Clear();
    KeyEvent(KeyPayload("oic.d.fan", "HFAN", "39"));
    KeyEvent(KeyPayload("oic.d.fan", "HFAN", "10"));
    Run("{}", false);
    struct Case { std::string location, message; int priority; };
    const std::vector<Case> cases = {
        {"CIRControl.cpp : HandleKeyEvent(", "  error occured: unsupported key(error:5)", 6},
        {"CIRDevice.cpp : blastAllowedKey(", "  key to be IRBlasted : 10", 4},
        {"CIRControl.cpp : HandleDeviceEvent(", "  device_event_json: {}", 4},
        {"CIRControl.cpp : HandleDeviceEvent(", " > Entered\n", 4},
        {"CIRControl.cpp : HandleKeyEvent(", " > Entered\n", 3},
        {"CIRDevice.cpp : GetParsedDeviceInfo(", " > Left\n", 3},
    };
    const auto lines = sim::Log::Lines();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.location + c.message);
        auto line = std::find_if(lines.begin(), lines.end(), [&](const sim::LogLine& l) {
            const std::size_t close = l.text.find(')');
            return l.text.rfind(c.location, 0) == 0 && close != std::string::npos &&
                   l.text.compare(close + 1, std::string::npos, c.message) == 0;
        });
        ASSERT_NE(line, lines.end());
        EXPECT_EQ(line->tag, "IRCONTROL");
        EXPECT_EQ(line->priority, c.priority);
        const std::string number = line->text.substr(c.location.size(), line->text.find(')') - c.location.size());
        EXPECT_FALSE(number.empty());
        EXPECT_EQ(number.find_first_not_of("0123456789"), std::string::npos) << number;
    }
}

TEST_F(CIRControlTest, LibraryFailureWithoutExceptionStillAnswersOk) {
    sim::IrBlaster::SetSendResult(false);
    sim::IrBlaster::SetAirconResult(-7);
    EXPECT_EQ(KeyEvent(KeyPayload("oic.d.fan", "HFAN", "10")).answers, std::vector<std::string>{"ok"});
    EXPECT_EQ(KeyEvent(AcPayload("ZAC", "ON", "COLD", "24", "LOW")).answers, std::vector<std::string>{"ok"});
    EXPECT_TRUE(sim::Log::Contains("ret of irbl_send_command_hdevice: 0"));
    EXPECT_TRUE(sim::Log::Contains("ret of irbl_set_aircon_states_and_send_command : -7"));
}

TEST_F(CIRControlTest, MissingDeviceTypeIsLoggedAndNeverAnswered) {
    const Outcome out = KeyEvent(R"({"x.com.korvan.codesetName":"HFAN","x.com.korvan.codesetKey":10})");
    EXPECT_TRUE(out.answers.empty());
    EXPECT_TRUE(sim::Log::Contains("there is no deviceType obj. wrong data"));
}

TEST_F(CIRControlTest, DeviceEventsAnswerOkWhateverTheirText) {
    for (const std::string text : {"", "{}", "garbage", "[1]"}) {
        EXPECT_EQ(Run(text, false).answers, std::vector<std::string>{"ok"}) << text;
    }
    EXPECT_TRUE(sim::Log::Contains("device_event_json: garbage"));
}

TEST_F(CIRControlTest, RequestsWithoutAListAnswerTheirKindsError) {
    std::vector<std::string> answers;
    auto request = CRequest::Create(RequestType::Set, nullptr,
                                    [&](const std::string& code, const std::string&) { answers.push_back(code); });
    CIRControl control;
    control.HandleKeyEvent(request);
    control.HandleDeviceEvent(request);
    EXPECT_EQ(answers, (std::vector<std::string>{"key_error", "device_error"}));
    EXPECT_EQ(sim::Log::Count("error occured: property_list null!(error:5)"), 2u);
}

}  // namespace
}  // namespace ircontrol

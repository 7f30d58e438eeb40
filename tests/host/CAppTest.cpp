#include "CApp.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "JsonValue.h"
#include "sim/Simulator.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

Outcome RunApp(std::vector<std::string> args, const std::string& input = "") {
    args.insert(args.begin(), {"--plugin", IRC_PLUGIN_PATH});
    Options options = CCommandLine::Parse(args);
    EXPECT_EQ(options.error, "");
    std::istringstream in(input);
    std::ostringstream out, err;
    const int status = CApp(options, in, out, err).Run();
    return {status, out.str(), err.str()};
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(CAppTest, DemoMatchesTheGoldenOutput) {
    const Outcome run = RunApp({"demo"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, ReadFile(std::string(IRC_SOURCE_DIR) + "/tests/host/golden/demo.txt"));
}

TEST(CAppTest, KeyReportsWhatTheBlasterSent) {
    const Outcome run = RunApp({"--json", "key", "--type", "oic.d.robotcleaner", "--key", "28"});
    EXPECT_EQ(run.status, 0) << run.err;
    const JsonValue line = JsonValue::Create(run.out);
    EXPECT_EQ(line["answer"]["errorCode"].asString(), "ok");
    EXPECT_EQ(line["ir"].size(), 1u);
    EXPECT_EQ(line["ir"][0u]["key"].asInt(), 28);
    EXPECT_EQ(line["ir"][0u]["deviceIndex"].asInt(), 4);
    // The simulator's journal agrees with what was printed.
    bool seen = false;
    for (const auto& call : sim::IrBlaster::Journal()) {
        seen = seen || (call.function == sim::IrCall::Function::SendH && call.key == 28 && call.deviceIndex == 4);
    }
    EXPECT_TRUE(seen);
}

TEST(CAppTest, RefusedAndUnansweredRequestsExitNonZero) {
    EXPECT_EQ(RunApp({"key", "--type", "fan", "--key", "39"}).status, 1);
    const Outcome silent = RunApp({"--timeout", "200", "set", "--value", R"({"x.com.korvan.codesetKey":1})"});
    EXPECT_EQ(silent.status, 1);
    EXPECT_NE(silent.out.find("no answer"), std::string::npos);
    const Outcome ac = RunApp({"ac", "--mode", "HEAT", "--setpoint", "-5"});
    EXPECT_EQ(ac.status, 0);
    EXPECT_NE(ac.out.find("aircon  #5 mode=heat power=on setpoint=-5 fan=auto"), std::string::npos);
}

TEST(CAppTest, UserMistakesGetAClearMessage) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"key", "--type", "toaster", "--key", "1"}, "key: unknown --type 'toaster'"},
        {{"key", "--type", "fan"}, "key: --key needs a key code"},
        {{"key", "--type", "oic.d.lamp", "--key", "1"}, "key: no paired oic.d.lamp; give --codeset"},
        {{"set", "--kind", "bool", "--value", "maybe"}, "set: --value must be true or false for --kind bool"},
        {{"--devices", "/no/such/file", "demo"}, "cannot read --devices file /no/such/file"},
    };
    for (const auto& [args, message] : cases) {
        const Outcome run = RunApp(args);
        EXPECT_NE(run.status, 0);
        EXPECT_EQ(run.err, "ircontrol-host: " + message + "\n");
    }
    Options options = CCommandLine::Parse({"--plugin", "/no/plugin.so", "demo"});
    std::istringstream in;
    std::ostringstream out, err;
    EXPECT_EQ(CApp(options, in, out, err).Run(), 1);
    EXPECT_EQ(err.str(), "ircontrol-host: plugin library not found: /no/plugin.so\n");
}

TEST(CAppTest, PairingFileReplacesTheDefaults) {
    const std::string path = std::string(IRC_BINARY_DIR) + "/test_host_pairing.json";
    std::ofstream(path) << R"({"dev_info":[{"codeset":"MYFAN","device_index":9,"type":"oic.d.fan"}]})";
    const Outcome run = RunApp({"--devices", path, "key", "--type", "fan", "--key", "10"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("hdevice #9 key 10"), std::string::npos);
    std::ofstream(path) << "[]";
    EXPECT_EQ(RunApp({"--devices", path, "demo"}).status, 1);
    std::remove(path.c_str());
}

TEST(CAppTest, ServeAnswersEachLineInOrder) {
    const Outcome run = RunApp({"serve"}, "{\"command\":\"key\",\"type\":\"purifier\",\"key\":13}\n"
                                      "not json\n\n"
                                      "{\"command\":\"ac\",\"fan\":\"TURBO\"}\n"
                                      "{\"command\":\"set\",\"name\":\"setDeviceEvent\",\"value\":\"{}\"}\n"
                                      "{\"command\":\"key\",\"type\":\"fan\",\"key\":\"x\"}\n");
    EXPECT_EQ(run.status, 0);
    std::istringstream lines(run.out);
    std::vector<JsonValue> answers;
    for (std::string line; std::getline(lines, line);) answers.push_back(JsonValue::Create(line));
    ASSERT_EQ(answers.size(), 5u);
    EXPECT_EQ(answers[0]["answer"]["errorCode"].asString(), "ok");
    EXPECT_EQ(answers[0]["ir"][0u]["key"].asInt(), 13);
    EXPECT_EQ(answers[1]["error"].asString(), "not a JSON object");
    EXPECT_EQ(answers[2]["answer"]["errorCode"].asString(), "key_error");
    EXPECT_EQ(answers[2]["ir"].size(), 0u);
    EXPECT_EQ(answers[3]["property"].asString(), "setDeviceEvent");
    EXPECT_EQ(answers[3]["answer"]["errorCode"].asString(), "ok");
    EXPECT_EQ(answers[4]["error"].asString(), "key: \"key\" needs a key code");
    EXPECT_EQ(answers[4]["line"].asInt(), 6);
}

TEST(CAppTest, DevicesListsThePairingWithKeyMaps) {
    const Outcome run = RunApp({"--json", "devices"});
    std::istringstream lines(run.out);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const JsonValue device = JsonValue::Create(line);
        EXPECT_FALSE(device["keyMap"].asString().empty());
        EXPECT_EQ(device["deviceIndex"].asInt(), count + 1);
    }
    EXPECT_EQ(count, 5);
}

TEST(CAppTest, JsonOutputIsOneObjectPerLineForEveryCommand) {
    const std::vector<std::pair<std::vector<std::string>, std::size_t>> cases = {
        {{"--json", "demo"}, 10},  // service, nine exchanges
        {{"--json", "key", "--type", "fan", "--key", "10"}, 1},
        {{"--json", "ac", "--power", "OFF", "--fan", "HIGH"}, 1},
        {{"--json", "set", "--name", "setDeviceEvent", "--value", "{}"}, 1},
        {{"--json", "devices"}, 5},
    };
    for (const auto& [args, lines] : cases) {
        const Outcome run = RunApp(args);
        EXPECT_EQ(run.status, 0) << args[1] << ": " << run.err;
        std::istringstream text(run.out);
        std::size_t count = 0;
        for (std::string line; std::getline(text, line); ++count) {
            EXPECT_EQ(JsonValue::Create(line).type(), common::json::kObject) << args[1] << ": " << line;
        }
        EXPECT_GE(count, lines) << args[1];
    }
    const Outcome ac = RunApp({"--json", "ac", "--power", "OFF", "--fan", "HIGH"});
    const JsonValue line = JsonValue::Create(ac.out);
    EXPECT_EQ(line["ir"][0u]["function"].asString(), "set_aircon_states_and_send_command");
    EXPECT_EQ(line["ir"][0u]["power"].asString(), "off");
    EXPECT_EQ(line["ir"][0u]["fanSpeed"].asString(), "high");
}

TEST(CAppTest, VerboseShowsThePluginsOwnLogLines) {
    const Outcome quiet = RunApp({"key", "--type", "fan", "--key", "10"});
    EXPECT_EQ(quiet.err, "");
    const Outcome verbose = RunApp({"--verbose", "key", "--type", "fan", "--key", "10"});
    EXPECT_EQ(verbose.status, 0);
    EXPECT_NE(verbose.err.find("/IRCONTROL"), std::string::npos) << verbose.err;
    EXPECT_EQ(verbose.err.find('\x1b'), std::string::npos) << "no colour sequences when not a terminal";
    EXPECT_EQ(verbose.out, quiet.out) << "the answer table is the same";
}

}  // namespace
}  // namespace ircontrol::host

namespace ircontrol::host {
namespace {

std::string Scratch(const std::string& name) { return std::string(IRC_BINARY_DIR) + "/test_host_" + name; }

std::size_t Transmissions(const std::string& mode2File) {
    std::size_t count = 0;
    std::istringstream lines(ReadFile(mode2File));
    std::string line;
    while (std::getline(lines, line)) count += line.rfind("# transmission ", 0) == 0 ? 1 : 0;
    return count;
}

TEST(CAppTest, IrDeviceCarriesEveryCommandToTheTransmitter) {
    const std::string file = Scratch("ir.mode2");
    struct Case {
        std::vector<std::string> args;
        std::string input;
        std::size_t sent;
    } cases[] = {
        {{"key", "--type", "fan", "--key", "11"}, "", 1},
        {{"ac", "--power", "ON", "--mode", "HEAT", "--setpoint", "22", "--fan", "LOW"}, "", 1},
        {{"serve"}, "{\"command\":\"key\",\"type\":\"cleaner\",\"key\":39}\n{\"command\":\"key\",\"type\":\"humidifier\",\"key\":76}\n", 2},
        {{"demo"}, "", 5},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args[0]);
        std::vector<std::string> args = {"--json", "--ir-device", "mode2:" + file};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const Outcome run = RunApp(args, c.input);
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(Transmissions(file), c.sent);
        // What went on air is reported with the answer.
        std::istringstream lines(run.out);
        std::string line;
        std::size_t reported = 0;
        while (std::getline(lines, line)) {
            const JsonValue answer = JsonValue::Create(line);
            if (answer["ir"].size() == 0) continue;
            ++reported;
            EXPECT_GT(answer["ir"][0u]["waveform"].size(), 10u) << line;
            EXPECT_GT(answer["ir"][0u]["onAirUs"].asInt(), 10000) << line;
        }
        EXPECT_EQ(reported, c.sent);
    }
}

TEST(CAppTest, UnusableTransmitterOrCodesetsStopAtStartWithTheReason) {
    const std::string badCodesets = Scratch("bad_codesets.json");
    std::ofstream(badCodesets) << R"({"codesets":[{"name":"X","protocol":"nec","keys":{"power":{"code":10}}}]})";
    struct Case {
        std::vector<std::string> args;
        std::string says;
    } cases[] = {
        {{"--ir-device", "/nonexistent/lirc7"}, "--ir-device /nonexistent/lirc7: cannot open /nonexistent/lirc7: no such device"},
        {{"--ir-device", "/dev/null"}, "/dev/null is not a lirc device"},
        {{"--ir-device", "mode2:/nonexistent/dir/x"}, "cannot write /nonexistent/dir/x"},
        {{"--codesets", "/nonexistent/codesets.json"}, "cannot read --codesets file /nonexistent/codesets.json"},
        {{"--codesets", badCodesets}, badCodesets + ": codesets[0].keys.power.scancode: must be a number"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.says);
        std::vector<std::string> args = c.args;
        args.insert(args.end(), {"key", "--type", "fan", "--key", "10"});
        const Outcome run = RunApp(args);
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find(c.says), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "");
    }
}

TEST(CAppTest, KeyMapsComeFromTheCodesetsFile) {
    const std::string codesets = Scratch("codesets.json");
    std::ofstream(codesets) << R"({"codesets":[{"name":"HFAN0001","protocol":"nec",)"
                               R"("keys":{"on_off":{"code":10,"scancode":"0x0101"},"oscillate":{"code":13,"scancode":"0x0102"}}}]})";
    const Outcome run = RunApp({"--codesets", codesets, "devices"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find(R"({"on_off":10,"oscillate":13})"), std::string::npos) << run.out;
    // A codeset the file does not define has no key map.
    EXPECT_EQ(run.out.find("HPUR0002    #2     {"), std::string::npos) << run.out;
}

}  // namespace
}  // namespace ircontrol::host

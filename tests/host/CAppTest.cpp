#include "CApp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <fstream>
#include <sstream>

#include "JsonValue.h"
#include "RunApp.h"
#include "sim/Simulator.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

std::string ReadFile(const std::string& path) {
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(CAppTest, DemoMatchesTheGoldenOutput) {
    const ToolRun run = RunApp({"demo"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, ReadFile(std::string(IRC_SOURCE_DIR) + "/tests/host/golden/demo.txt"));
}

TEST(CAppTest, KeyReportsWhatTheBlasterSent) {
    const ToolRun run = RunApp({"--json", "key", "--type", "oic.d.robotcleaner", "--key", "28"});
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

TEST(CAppTest, RefusedAndUnansweredRequestsExitNonZeroWithTheirReason) {
    const ToolRun refused = RunApp({"key", "--type", "fan", "--key", "39"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.out.find("reason: unsupported key (code 5)"), std::string::npos) << refused.out;
    EXPECT_EQ(refused.err, "ircontrol-host: refused: unsupported key (code 5)\n");
    const ToolRun json = RunApp({"--json", "key", "--type", "fan", "--key", "39"});
    EXPECT_EQ(JsonValue::Create(json.out)["reason"].asString(), "unsupported key (code 5)");
    // Left unanswered on purpose: said so, not blamed on the timeout.
    const ToolRun silent = RunApp({"--timeout", "200", "set", "--value", R"({"x.com.korvan.codesetKey":1})"});
    EXPECT_EQ(silent.status, 1);
    EXPECT_NE(silent.out.find("unanswered reason: no \"x.com.korvan.deviceType\" in the payload"), std::string::npos)
        << silent.out;
    EXPECT_EQ(silent.out.find("within"), std::string::npos) << silent.out;
    const ToolRun ac = RunApp({"ac", "--mode", "HEAT", "--setpoint", "-5"});
    EXPECT_EQ(ac.status, 0);
    EXPECT_NE(ac.out.find("aircon  #5 mode=heat power=on setpoint=-5 fan=auto"), std::string::npos);
}

TEST(CAppTest, UserMistakesGetAClearMessage) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"key", "--type", "fan", "--key", "99999999999999999999"},
         "key: --key 99999999999999999999 is out of range (a key code is at most 2147483647)"},
        {{"key", "--type", "fan", "--key", "boost"},
         "key: 'boost' is neither a key code nor a key name in HFAN0001's key map "
         "(power, speed_up, speed_down, swing, timer, mode)"},
        {{"set", "--kind", "bool", "--value", "maybe"}, "set: --value must be true or false for --kind bool"},
        {{"--devices", "/no/such/file", "demo"}, "cannot read --devices file /no/such/file: no such file"},
        {{"--devices", IRC_BINARY_DIR, "demo"},
         std::string("cannot read --devices file ") + IRC_BINARY_DIR + ": it is a directory"},
    };
    for (const auto& [args, message] : cases) {
        const ToolRun run = RunApp(args);
        EXPECT_EQ(run.status, 2) << message;
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
    const ToolRun run = RunApp({"--devices", path, "key", "--type", "fan", "--key", "10"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("hdevice #9 key 10"), std::string::npos);
    std::ofstream(path) << "[]";
    EXPECT_EQ(RunApp({"--devices", path, "demo"}).status, 1);
    std::remove(path.c_str());
}

std::vector<JsonValue> Lines(const std::string& out) {
    std::istringstream lines(out);
    std::vector<JsonValue> objects;
    for (std::string line; std::getline(lines, line);) objects.push_back(JsonValue::Create(line));
    return objects;
}

TEST(CAppTest, ServeAnswersEachLineInOrderWithItsNumberAndId) {
    const ToolRun run = RunApp({"serve"}, "{\"command\":\"key\",\"type\":\"purifier\",\"key\":13,\"id\":\"p\"}\n"
                                      "not json\n\n"
                                      "{\"command\":\"ac\",\"fan\":\"TURBO\",\"id\":7}\n"
                                      "{\"command\":\"set\",\"name\":\"setDeviceEvent\",\"value\":\"{}\"}\n"
                                      "{\"command\":\"key\",\"type\":\"fan\",\"key\":\"x\",\"id\":\"q\"}\n"
                                      "{\"command\":\"ac\",\"setpoint\":22.0,\"mode\":\"HEAT\"}\n"
                                      "{\"command\":\"devices\",\"id\":\"d\"}\n");
    EXPECT_EQ(run.status, 1) << "a line was unusable and one was refused";
    const std::vector<JsonValue> answers = Lines(run.out);
    ASSERT_EQ(answers.size(), 7u) << run.out;
    EXPECT_EQ(answers[0]["answer"]["errorCode"].asString(), "ok");
    EXPECT_EQ(answers[0]["ir"][0u]["key"].asInt(), 13);
    EXPECT_EQ(answers[0]["line"].asInt(), 1);
    EXPECT_EQ(answers[0]["id"].asString(), "p");
    EXPECT_EQ(answers[0]["payload"]["x.com.korvan.codesetKey"].asInt(), 13) << "the payload as an object";
    EXPECT_EQ(answers[1]["error"].asString(), "not valid JSON");
    EXPECT_EQ(answers[1]["line"].asInt(), 2);
    EXPECT_EQ(answers[2]["answer"]["errorCode"].asString(), "key_error");
    EXPECT_EQ(answers[2]["reason"].asString(), "invalid fan mode state (code 2)");
    EXPECT_EQ(answers[2]["ir"].size(), 0u);
    EXPECT_EQ(answers[2]["line"].asInt(), 4);
    EXPECT_EQ(answers[2]["id"].asString(), "7");
    EXPECT_EQ(answers[3]["property"].asString(), "setDeviceEvent");
    EXPECT_EQ(answers[3]["answer"]["errorCode"].asString(), "ok");
    EXPECT_EQ(answers[4]["error"].asString(),
              "key: 'x' is neither a key code nor a key name in HFAN0001's key map "
              "(power, speed_up, speed_down, swing, timer, mode)");
    EXPECT_EQ(answers[4]["line"].asInt(), 6);
    EXPECT_EQ(answers[4]["id"].asString(), "q");
    EXPECT_EQ(answers[5]["outcome"].asString(), "ok") << "22.0 is a whole number";
    EXPECT_EQ(answers[5]["ir"][0u]["coolingSetpoint"].asString(), "22");
    EXPECT_EQ(answers[6]["devices"].size(), 5u);
    EXPECT_EQ(answers[6]["id"].asString(), "d");
}

TEST(CAppTest, ServeExitsZeroOnlyWhenEveryLineWasAnsweredOk) {
    const std::vector<std::pair<std::string, int>> cases = {
        {"", 0},
        {"{\"command\":\"key\",\"type\":\"fan\",\"key\":10}\n\n{\"command\":\"devices\"}\n", 0},
        {"{\"command\":\"key\",\"type\":\"fan\",\"key\":10}\ngarbage\n", 1},
        {"{\"command\":\"key\",\"type\":\"fan\",\"key\":39}\n", 1},
        {"{\"command\":\"set\",\"value\":\"{}\"}\n", 1},
        {"{\"command\":\"key\",\"type\":\"fan\",\"key\":10,\"colour\":1}\n", 1},
    };
    for (const auto& [input, status] : cases) EXPECT_EQ(RunApp({"--timeout", "300", "serve"}, input).status, status) << input;
}

TEST(CAppTest, ServeShowsALateTransmissionUnderItsOwnRequest) {
    // On air longer than the timeout: every answer is late and the third key goes on air only
    // after its request timed out.
    const ToolRun run = RunApp({"--ir-delay", "300", "--timeout", "100", "serve"},
                               "{\"command\":\"key\",\"type\":\"fan\",\"key\":10}\n"
                               "{\"command\":\"key\",\"type\":\"fan\",\"key\":11}\n"
                               "{\"command\":\"key\",\"type\":\"fan\",\"key\":12}\n"
                               "{\"command\":\"key\",\"type\":\"fan\",\"key\":39}\n");
    EXPECT_EQ(run.status, 1);
    std::map<long long, std::vector<int>> keys;  // line -> keys shown under it
    std::map<long long, std::string> answers;
    for (const JsonValue& object : Lines(run.out)) {
        const long long line = object["line"].asInt64();
        for (unsigned i = 0; i < object["ir"].size(); ++i) {
            const int key = object["ir"][i]["key"].asInt();
            if (std::find(keys[line].begin(), keys[line].end(), key) == keys[line].end()) keys[line].push_back(key);
            if (line == 3) {
                EXPECT_TRUE(object["ir"][i]["late"].asBool());
            }
        }
        if (!object["answer"].isNull()) answers[line] = object["answer"]["errorCode"].asString();
    }
    EXPECT_EQ(keys[1], std::vector<int>{10});
    EXPECT_EQ(keys[2], std::vector<int>{11});
    EXPECT_EQ(keys[3], std::vector<int>{12});
    EXPECT_EQ(keys[4], std::vector<int>{});
    EXPECT_EQ(answers[3], "ok");
    EXPECT_EQ(answers[4], "key_error");
}

TEST(CAppTest, ASingleRequestWaitsForWhatComesLateAndStillFails) {
    const ToolRun run = RunApp({"--ir-delay", "300", "--timeout", "50", "key", "--type", "fan", "--key", "11"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("no answer hdevice #1 key 11"), std::string::npos) << run.out;
    const std::size_t late = run.out.find("late for transaction ");
    ASSERT_NE(late, std::string::npos) << run.out;
    EXPECT_NE(run.out.find(" (fan key 11 (HFAN0001)): answer ok", late), std::string::npos) << run.out;
    EXPECT_EQ(run.err, "ircontrol-host: no answer within 50 ms\n");
}

TEST(CAppTest, DevicesShowsTheAcceptedKeysBesideTheKeyMaps) {
    const ToolRun run = RunApp({"--json", "devices"});
    const std::vector<JsonValue> devices = Lines(run.out);
    ASSERT_EQ(devices.size(), 5u);
    for (std::size_t i = 0; i < devices.size(); ++i) EXPECT_EQ(devices[i]["deviceIndex"].asInt(), static_cast<int>(i + 1));
    EXPECT_EQ(devices[0]["acceptedKeys"].toString(), "[10,11,12,13,14,76]");
    EXPECT_EQ(devices[0]["keyMap"]["speed_up"].asInt(), 11);
    EXPECT_EQ(devices[3]["acceptedKeys"].toString(), "[10,28,39]");
    EXPECT_EQ(devices[4]["acceptedKeys"].size(), 0u);
    const ToolRun human = RunApp({"devices"});
    EXPECT_NE(human.out.find("accepts (service)"), std::string::npos);
    EXPECT_NE(human.out.find("key map (IR library)"), std::string::npos);
    EXPECT_NE(human.out.find("cleaner     HRBC0004    #4     10,28,39"), std::string::npos) << human.out;
}

TEST(CAppTest, KeyNamesAreLookedUpInTheCodesetsKeyMap) {
    const ToolRun run = RunApp({"key", "--type", "cleaner", "--key", "home"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("key 28 home (HRBC0004)"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("hdevice #4 key 28"), std::string::npos) << run.out;
}

TEST(CAppTest, OutputHeaderShowsWhatThePlatformReports) {
    const ToolRun run = RunApp({"--year", "19", "--mbr-support", "off", "key", "--type", "fan", "--key", "10"});
    EXPECT_EQ(run.out.rfind("platform  model year 19, IR service flag off;", 0), 0u) << run.out;
    const ToolRun json = RunApp({"--json", "--year", "24", "demo"});
    const JsonValue header = JsonValue::Create(json.out.substr(0, json.out.find('\n')));
    EXPECT_EQ(header["platform"]["year"].asInt(), 24);
    EXPECT_TRUE(header["platform"]["mbrSupport"].asBool());
    // The plugin itself reports the year it read.
    const ToolRun verbose = RunApp({"--verbose", "--year", "19", "key", "--type", "fan", "--key", "10"});
    EXPECT_NE(verbose.err.find("year(19)"), std::string::npos);
}

TEST(CAppTest, JsonOutputIsOneObjectPerLineForEveryCommand) {
    const std::vector<std::pair<std::vector<std::string>, std::size_t>> cases = {
        {{"--json", "demo"}, 13},  // platform, service, ten requests, summary
        {{"--json", "key", "--type", "fan", "--key", "10"}, 1},
        {{"--json", "ac", "--power", "OFF", "--fan", "HIGH"}, 1},
        {{"--json", "set", "--name", "setDeviceEvent", "--value", "{}"}, 1},
        {{"--json", "devices"}, 5},
    };
    for (const auto& [args, lines] : cases) {
        const ToolRun run = RunApp(args);
        EXPECT_EQ(run.status, 0) << args[1] << ": " << run.err;
        std::istringstream text(run.out);
        std::size_t count = 0;
        for (std::string line; std::getline(text, line); ++count) {
            EXPECT_EQ(JsonValue::Create(line).type(), common::json::kObject) << args[1] << ": " << line;
        }
        EXPECT_GE(count, lines) << args[1];
    }
    const ToolRun ac = RunApp({"--json", "ac", "--power", "OFF", "--fan", "HIGH"});
    const JsonValue line = JsonValue::Create(ac.out);
    EXPECT_EQ(line["ir"][0u]["function"].asString(), "set_aircon_states_and_send_command");
    EXPECT_EQ(line["ir"][0u]["power"].asString(), "off");
    EXPECT_EQ(line["ir"][0u]["fanSpeed"].asString(), "high");
}

TEST(CAppTest, VerboseShowsThePluginsOwnLogLines) {
    const ToolRun quiet = RunApp({"key", "--type", "fan", "--key", "10"});
    EXPECT_EQ(quiet.err, "");
    const ToolRun verbose = RunApp({"--verbose", "key", "--type", "fan", "--key", "10"});
    EXPECT_EQ(verbose.status, 0);
    EXPECT_NE(verbose.err.find("/IRCONTROL"), std::string::npos) << verbose.err;
    EXPECT_EQ(verbose.err.find('\x1b'), std::string::npos) << "no colour sequences when not a terminal";
    EXPECT_EQ(verbose.out, quiet.out) << "the answer table is the same";
    const ToolRun errors = RunApp({"--log-level", "error", "key", "--type", "fan", "--key", "10"});
    EXPECT_NE(errors.err.find("E/IRCONTROL"), std::string::npos);
    EXPECT_EQ(errors.err.find("I/IRCONTROL"), std::string::npos);
    EXPECT_EQ(errors.err.find("D/IRCONTROL"), std::string::npos);
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
        const ToolRun run = RunApp(args, c.input);
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
    // A file name that does not exist is a mistake on the command line (2), like --devices'.
    struct Case {
        std::vector<std::string> args;
        std::string says;
        int status;
    } cases[] = {
        {{"--ir-device", "/nonexistent/lirc7"}, "--ir-device /nonexistent/lirc7: cannot open /nonexistent/lirc7: no such device", 1},
        {{"--ir-device", "/dev/null"}, "/dev/null is not a lirc device", 1},
        {{"--ir-device", "mode2:/nonexistent/dir/x"}, "cannot write /nonexistent/dir/x", 1},
        {{"--codesets", "/nonexistent/codesets.json"}, "cannot read --codesets file /nonexistent/codesets.json: no such file", 2},
        {{"--codesets", badCodesets}, badCodesets + ": codesets[0].keys.power.scancode: must be a number", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.says);
        std::vector<std::string> args = c.args;
        args.insert(args.end(), {"key", "--type", "fan", "--key", "10"});
        const ToolRun run = RunApp(args);
        EXPECT_EQ(run.status, c.status);
        EXPECT_NE(run.err.find(c.says), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "");
    }
}

TEST(CAppTest, KeyMapsComeFromTheCodesetsFile) {
    const std::string codesets = Scratch("codesets.json");
    std::ofstream(codesets) << R"({"codesets":[{"name":"HFAN0001","protocol":"nec",)"
                               R"("keys":{"on_off":{"code":10,"scancode":"0x0101"},"oscillate":{"code":13,"scancode":"0x0102"}}}]})";
    const ToolRun run = RunApp({"--codesets", codesets, "devices"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find(R"({"on_off":10,"oscillate":13})"), std::string::npos) << run.out;
    // A codeset the file does not define has no key map.
    EXPECT_EQ(run.out.find("HPUR0002    #2     {"), std::string::npos) << run.out;
}

}  // namespace
}  // namespace ircontrol::host

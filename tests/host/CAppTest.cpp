// The tool as a user runs it, one scenario per fixture: what each command prints and the exit
// status it gives. The parser's, the session's and the reasons' own cases have their own tests;
// here each behaviour of the run as a whole is checked once.
#include "CApp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include "JsonValue.h"
#include "RunApp.h"
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

std::string Scratch(const std::string& name) { return std::string(IRC_BINARY_DIR) + "/test_host_" + name; }

std::vector<JsonValue> Lines(const std::string& out) {
    std::istringstream lines(out);
    std::vector<JsonValue> objects;
    for (std::string line; std::getline(lines, line);) objects.push_back(JsonValue::Create(line));
    return objects;
}

// --- demo ---------------------------------------------------------------------------------

TEST(CAppDemoTest, MatchesTheGoldenOutput) {
    const ToolRun run = RunApp({"demo"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, ReadFile(std::string(IRC_SOURCE_DIR) + "/tests/host/golden/demo.txt"));
}

// --- one request from the command line ------------------------------------------------------

TEST(CAppSingleRequestTest, ReportsWhatTheBlasterSent) {
    const ToolRun run = RunApp({"--json", "key", "--type", "oic.d.robotcleaner", "--key", "28"});
    EXPECT_EQ(run.status, 0) << run.err;
    const JsonValue line = JsonValue::Create(run.out);
    EXPECT_EQ(line["answer"]["errorCode"].asString(), "ok");
    ASSERT_EQ(line["ir"].size(), 1u);
    EXPECT_EQ(line["ir"][0u]["key"].asInt(), 28);
    EXPECT_EQ(line["ir"][0u]["deviceIndex"].asInt(), 4);
    // The simulator's journal agrees with what was printed.
    const auto journal = sim::IrBlaster::Journal();
    EXPECT_TRUE(std::any_of(journal.begin(), journal.end(), [](const sim::IrCall& call) {
        return call.function == sim::IrCall::Function::SendH && call.key == 28 && call.deviceIndex == 4;
    }));
}

TEST(CAppSingleRequestTest, ExitStatusAndErrorLineFollowTheOutcome) {
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string err;   // the whole of stderr
        std::string row;   // in the printed row
    };
    const Case cases[] = {
        {{"ac", "--mode", "HEAT", "--setpoint", "-5"}, 0, "", "aircon  #5 mode=heat power=on setpoint=-5 fan=auto"},
        {{"key", "--type", "fan", "--key", "39"}, 1, "ircontrol-host: refused: unsupported key (code 5)\n",
         "reason: unsupported key (code 5)"},
        // Left unanswered on purpose: said so, not blamed on the timeout.
        {{"--timeout", "200", "set", "--value", R"({"x.com.korvan.codesetKey":1})"}, 1,
         "ircontrol-host: no \"x.com.korvan.deviceType\" in the payload: the service sends no answer to that\n",
         "unanswered reason: no \"x.com.korvan.deviceType\""},
        // A mistake in the command's values: nothing is sent.
        {{"set", "--kind", "bool", "--value", "maybe"}, 2,
         "ircontrol-host: set: --value must be true or false for --kind bool\n", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args[0] + " " + c.args.back());
        const ToolRun run = RunApp(c.args);
        EXPECT_EQ(run.status, c.status);
        EXPECT_EQ(run.err, c.err);
        EXPECT_NE(run.out.find(c.row), std::string::npos) << run.out;
    }
}

TEST(CAppSingleRequestTest, WaitsForWhatComesLateAndStillFails) {
    const ToolRun run = RunApp({"--ir-delay", "300", "--timeout", "50", "key", "--type", "fan", "--key", "11"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("no answer hdevice #1 key 11"), std::string::npos) << run.out;
    const std::size_t late = run.out.find("late for transaction ");
    ASSERT_NE(late, std::string::npos) << run.out;
    EXPECT_NE(run.out.find(" (fan key 11 (HFAN0001)): answer ok", late), std::string::npos) << run.out;
    EXPECT_EQ(run.err, "ircontrol-host: no answer within 50 ms\n");
}

// --- serve --------------------------------------------------------------------------------

TEST(CAppServeTest, AnswersEachLineInOrderWithItsNumberAndId) {
    const ToolRun run = RunApp({"serve"}, "{\"command\":\"key\",\"type\":\"purifier\",\"key\":13,\"id\":\"p\"}\n"
                                      "not json\n\n"
                                      "{\"command\":\"ac\",\"fan\":\"TURBO\",\"id\":7}\n"
                                      "{\"command\":\"key\",\"type\":\"fan\",\"key\":\"x\",\"id\":\"q\"}\n"
                                      "{\"command\":\"devices\",\"id\":\"d\"}\n");
    EXPECT_EQ(run.status, 1) << "a line was unusable and one was refused";
    const std::vector<JsonValue> answers = Lines(run.out);
    ASSERT_EQ(answers.size(), 5u) << run.out;
    // Line, id (as text) and what each line got, blank lines counted but not answered.
    const std::vector<std::tuple<int, std::string, std::string>> expected = {
        {1, "p", "ok"}, {2, "", "error"}, {4, "7", "refused"}, {5, "q", "error"}, {6, "d", "devices"}};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const auto& [line, id, what] = expected[i];
        SCOPED_TRACE(answers[i].toString());
        EXPECT_EQ(answers[i]["line"].asInt(), line);
        EXPECT_EQ(answers[i].isMember("id") ? answers[i]["id"].asString() : "", id);
        const std::string got = answers[i].isMember("error")     ? "error"
                                : answers[i].isMember("devices") ? "devices"
                                                                 : answers[i]["outcome"].asString();
        EXPECT_EQ(got, what);
    }
    EXPECT_EQ(answers[0]["payload"]["x.com.korvan.codesetKey"].asInt(), 13) << "the payload as an object";
    EXPECT_EQ(answers[1]["error"].asString(), "not valid JSON");
    EXPECT_EQ(answers[4]["devices"].size(), 5u);
}

TEST(CAppServeTest, ExitsZeroOnlyWhenEveryLineWasAnsweredOk) {
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

TEST(CAppServeTest, ShowsALateTransmissionUnderItsOwnRequest) {
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

// --- devices ------------------------------------------------------------------------------

TEST(CAppDevicesTest, ShowsTheAcceptedKeysBesideTheKeyMaps) {
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

TEST(CAppDevicesTest, KeyMapsComeFromTheCodesetsFile) {
    const std::string codesets = Scratch("codesets.json");
    std::ofstream(codesets) << R"({"codesets":[{"name":"HFAN0001","protocol":"nec",)"
                               R"("keys":{"on_off":{"code":10,"scancode":"0x0101"},"oscillate":{"code":13,"scancode":"0x0102"}}}]})";
    const ToolRun run = RunApp({"--codesets", codesets, "devices"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find(R"({"on_off":10,"oscillate":13})"), std::string::npos) << run.out;
    // A codeset the file does not define has no key map.
    EXPECT_EQ(run.out.find("HPUR0002    #2     {"), std::string::npos) << run.out;
}

// --- what the platform is set up from -----------------------------------------------------

TEST(CAppSetupTest, PairingFileReplacesTheDefaults) {
    const std::string path = Scratch("pairing.json");
    std::ofstream(path) << R"({"dev_info":[{"codeset":"MYFAN","device_index":9,"type":"oic.d.fan"}]})";
    const ToolRun run = RunApp({"--devices", path, "key", "--type", "fan", "--key", "10"});
    std::remove(path.c_str());
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("hdevice #9 key 10"), std::string::npos);
}

// A path to no file is a mistake on the command line (2); a file that cannot be used, a
// transmitter that cannot be opened or a plugin that cannot be loaded is an unusable input (1).
// Either way nothing is printed on stdout and stderr says why in one line.
TEST(CAppSetupTest, UnusableInputsStopAtStartWithTheReason) {
    const std::string badCodesets = Scratch("bad_codesets.json");
    std::ofstream(badCodesets) << R"({"codesets":[{"name":"X","protocol":"nec","keys":{"power":{"code":10}}}]})";
    const std::string badPairing = Scratch("bad_pairing.json");
    std::ofstream(badPairing) << "[]";
    struct Case {
        std::vector<std::string> args;
        std::string says;
        int status;
    } cases[] = {
        {{"--devices", "/no/such/file"}, "cannot read --devices file /no/such/file: no such file", 2},
        {{"--devices", IRC_BINARY_DIR}, std::string("cannot read --devices file ") + IRC_BINARY_DIR + ": it is a directory", 2},
        {{"--devices", badPairing}, badPairing + ": the pairing list must be a JSON object", 1},
        {{"--codesets", "/nonexistent/codesets.json"}, "cannot read --codesets file /nonexistent/codesets.json: no such file", 2},
        {{"--codesets", badCodesets}, badCodesets + ": codesets[0].keys.power.scancode: must be a number", 1},
        {{"--ir-device", "/nonexistent/lirc7"}, "--ir-device /nonexistent/lirc7: cannot open /nonexistent/lirc7: no such device", 1},
        {{"--ir-device", "/dev/null"}, "/dev/null is not a lirc device", 1},
        {{"--ir-device", "mode2:/nonexistent/dir/x"}, "cannot write /nonexistent/dir/x", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.says);
        std::vector<std::string> args = c.args;
        args.insert(args.end(), {"key", "--type", "fan", "--key", "10"});
        const ToolRun run = RunApp(args);
        EXPECT_EQ(run.status, c.status);
        EXPECT_EQ(run.err.rfind("ircontrol-host: ", 0), 0u) << run.err;
        EXPECT_NE(run.err.find(c.says), std::string::npos) << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1);
        EXPECT_EQ(run.out, "");
    }
    std::remove(badCodesets.c_str());
    std::remove(badPairing.c_str());
    Options options = CCommandLine::Parse({"--plugin", "/no/plugin.so", "demo"});
    std::istringstream in;
    std::ostringstream out, err;
    EXPECT_EQ(CApp(options, in, out, err).Run(), 1);
    EXPECT_EQ(err.str(), "ircontrol-host: plugin library not found: /no/plugin.so\n");
}

// --- output forms ------------------------------------------------------------------------

TEST(CAppOutputTest, HeaderShowsWhatThePlatformReports) {
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

TEST(CAppOutputTest, JsonIsOneObjectPerLineForEveryCommand) {
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
}

TEST(CAppOutputTest, VerboseShowsThePluginsOwnLogLines) {
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

// --- a transmitter attached ---------------------------------------------------------------

std::size_t Transmissions(const std::string& mode2File) {
    std::size_t count = 0;
    std::istringstream lines(ReadFile(mode2File));
    for (std::string line; std::getline(lines, line);) count += line.rfind("# transmission ", 0) == 0 ? 1 : 0;
    return count;
}

TEST(CAppTransmitterTest, EveryCommandCarriesItsTransmissionsToIt) {
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
        std::size_t reported = 0;
        for (const JsonValue& answer : Lines(run.out)) {
            if (answer["ir"].size() == 0) continue;
            ++reported;
            EXPECT_GT(answer["ir"][0u]["waveform"].size(), 10u) << answer.toString();
            EXPECT_GT(answer["ir"][0u]["onAirUs"].asInt(), 10000) << answer.toString();
        }
        EXPECT_EQ(reported, c.sent);
    }
    std::remove(file.c_str());
}

}  // namespace
}  // namespace ircontrol::host

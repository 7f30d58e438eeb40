// The tool as a user runs it: what each command prints and the exit status it gives. The
// parser's, the session's and the reasons' own cases have their own tests; here each behaviour
// of the run as a whole is checked once.
#include "CApp.h"

#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

const std::string kFanKey10 = "{\"command\":\"key\",\"type\":\"fan\",\"key\":10}\n";

TEST(CAppTest, DemoMatchesTheGoldenOutput) {
    const ToolRun run = RunApp({"demo"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, ReadText(std::string(IRC_SOURCE_DIR) + "/tests/host/golden/demo.txt"));
}

TEST(CAppTest, ExitStatusAndErrorLineFollowTheOutcome) {
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string err;  // the whole of stderr
        std::string row;  // in the printed output
    };
    const Case cases[] = {
        {{"ac", "--mode", "HEAT", "--setpoint", "-5"}, 0, "", "aircon  #5 mode=heat power=on setpoint=-5 fan=auto"},
        {{"key", "--type", "fan", "--key", "39"}, 1, "ircontrol-host: refused: unsupported key (code 5)\n",
         "reason: unsupported key (code 5)"},
        // Left unanswered on purpose: said so, not blamed on the timeout.
        {{"--timeout", "200", "set", "--value", R"({"x.com.korvan.codesetKey":1})"}, 1,
         "ircontrol-host: no \"x.com.korvan.deviceType\" in the payload: the service sends no answer to that\n",
         "unanswered reason: no \"x.com.korvan.deviceType\""},
        // On air longer than the wait: what comes late is shown, the status stays the timeout's.
        {{"--ir-delay", "300", "--timeout", "50", "key", "--type", "fan", "--key", "11"}, 1,
         "ircontrol-host: no answer within 50 ms\n", " (fan key 11 (HFAN0001)): answer ok"},
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

// Each answer carries its line's number and id; blank lines are counted but not answered. The
// status is 0 only when every line was answered ok.
TEST(CAppTest, ServeAnswersEachLineInOrderWithItsNumberAndId) {
    const std::string mixed = "{\"command\":\"key\",\"type\":\"purifier\",\"key\":13,\"id\":\"p\"}\nnot json\n\n"
                              "{\"command\":\"ac\",\"fan\":\"TURBO\",\"id\":7}\n"
                              "{\"command\":\"key\",\"type\":\"fan\",\"key\":\"x\",\"id\":\"q\"}\n"
                              "{\"command\":\"devices\",\"id\":\"d\"}\n";
    const std::tuple<std::string, int, std::vector<std::string>> cases[] = {
        {mixed, 1, {"1 p ok", "2 - not valid JSON", "4 7 refused",
                    "5 q key: 'x' is neither a key code nor a key name in HFAN0001's key map "
                    "(power, speed_up, speed_down, swing, timer, mode)",
                    "6 d 5 devices"}},
        {"", 0, {}},
        {kFanKey10 + "\n{\"command\":\"devices\"}\n", 0, {"1 - ok", "3 - 5 devices"}},
        {"{\"command\":\"key\",\"type\":\"fan\",\"key\":39}\n", 1, {"1 - refused"}},
        {"{\"command\":\"set\",\"value\":\"{}\"}\n", 1, {"1 - unanswered"}},
    };
    for (const auto& [input, status, answers] : cases) {
        const ToolRun run = RunApp({"--timeout", "300", "serve"}, input);
        EXPECT_EQ(run.status, status) << input;
        std::vector<std::string> got;
        for (const JsonValue& a : JsonLines(run.out)) {
            const std::string what = a.isMember("error")     ? a["error"].asString()
                                     : a.isMember("devices") ? std::to_string(a["devices"].size()) + " devices"
                                                             : a["outcome"].asString();
            got.push_back(std::to_string(a["line"].asInt()) + " " + (a.isMember("id") ? a["id"].asString() : "-") +
                          " " + what);
        }
        EXPECT_EQ(got, answers) << input;
    }
}

TEST(CAppTest, DevicesShowTheAcceptedKeysBesideTheCodesetsFilesKeyMaps) {
    const std::string codesets = irtest::TempDir() + "/codesets.json";
    std::ofstream(codesets) << R"({"codesets":[{"name":"HFAN0001","protocol":"nec","keys":{)"
                               R"("on_off":{"code":10,"scancode":"0x0101"},)"
                               R"("oscillate":{"code":13,"scancode":"0x0102"}}}]})";
    std::vector<std::string> rows;
    for (const JsonValue& d : JsonLines(RunApp({"--json", "--codesets", codesets, "devices"}).out)) {
        rows.push_back(std::to_string(d["deviceIndex"].asInt()) + " " + d["codeset"].asString() + " " +
                       d["acceptedKeys"].toString() + " " + d["keyMap"].toString());
    }
    EXPECT_EQ(rows, (std::vector<std::string>{R"(1 HFAN0001 [10,11,12,13,14,76] {"on_off":10,"oscillate":13})",
                                              "2 HPUR0002 [10,11,12,13,14,76] null",
                                              "3 HHUM0003 [10,11,12,13,14,76] null", "4 HRBC0004 [10,28,39] null",
                                              "5 ZAC00005 [] null"}));
    const ToolRun human = RunApp({"devices"});
    EXPECT_NE(human.out.find("cleaner     HRBC0004    #4     10,28,39"), std::string::npos) << human.out;
}

// A path to no file is a mistake on the command line (2); a file that cannot be used, a
// transmitter that cannot be opened or a plugin that cannot be loaded is an unusable input (1).
// Either way nothing is printed on stdout and stderr says why in one line.
TEST(CAppTest, UnusableInputsStopAtStartWithTheReason) {
    const std::string dir = irtest::TempDir();
    std::ofstream(dir + "/codesets.json") << R"({"codesets":[{"name":"X","protocol":"nec",)"
                                             R"("keys":{"power":{"code":10}}}]})";
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--devices", "/no/such/file"}, "cannot read --devices file /no/such/file: no such file"},
        {{"--devices", dir}, "cannot read --devices file " + dir + ": it is a directory"},
        {{"--codesets", dir + "/codesets.json"},
         dir + "/codesets.json: codesets[0].keys.power.scancode: must be a number"},
        {{"--ir-device", "/nonexistent/lirc7"},
         "--ir-device /nonexistent/lirc7: cannot open /nonexistent/lirc7: no such device"},
        {{"--ir-device", "/dev/null"}, "/dev/null is not a lirc device"},
        {{"--ir-device", "mode2:/nonexistent/dir/x"}, "cannot write /nonexistent/dir/x"},
        {{"--plugin", "/no/plugin.so"}, "plugin library not found: /no/plugin.so"},
    };
    for (const auto& [options, says] : cases) {
        SCOPED_TRACE(says);
        std::vector<std::string> args = options;
        args.insert(args.end(), {"key", "--type", "fan", "--key", "10"});
        const ToolRun run = RunApp(args);
        ExpectRefusal(run, says.find("cannot read") == 0 ? 2 : 1, says);
        EXPECT_EQ(run.out, "");
    }
}

TEST(CAppTest, VerboseShowsThePluginsOwnLogLinesAtTheChosenLevel) {
    const auto run = [](std::vector<std::string> args) {
        args.insert(args.end(), {"key", "--type", "fan", "--key", "10"});
        return RunApp(args);
    };
    const ToolRun quiet = run({});
    const ToolRun verbose = run({"--verbose"});
    EXPECT_EQ(quiet.err, "");
    EXPECT_EQ(verbose.status, 0);
    EXPECT_NE(verbose.err.find("I/IRCONTROL"), std::string::npos) << verbose.err;
    EXPECT_EQ(verbose.err.find('\x1b'), std::string::npos) << "no colour sequences when not a terminal";
    EXPECT_EQ(verbose.out, quiet.out) << "the answer table is the same";
    const ToolRun errors = run({"--log-level", "error"});  // the lifecycle lines are errors
    EXPECT_NE(errors.err.find("E/IRCONTROL"), std::string::npos);
    EXPECT_EQ(errors.err.find("I/IRCONTROL"), std::string::npos);
}

// With --json every command prints one object per line; what went on air reaches the attached
// transmitter and is reported with its answer.
TEST(CAppTest, JsonLinesReportWhatEachCommandCarriedToTheTransmitter) {
    const std::string file = irtest::TempDir() + "/ir.mode2";
    struct Case {
        std::vector<std::string> args;
        std::string input;
        std::size_t lines, sent;
    } cases[] = {
        {{"key", "--type", "fan", "--key", "11"}, "", 1, 1},
        {{"ac", "--power", "ON", "--mode", "HEAT", "--setpoint", "22", "--fan", "LOW"}, "", 1, 1},
        {{"devices"}, "", 5, 0},
        {{"serve"}, "{\"command\":\"key\",\"type\":\"cleaner\",\"key\":39}\n" + kFanKey10, 2, 2},
        {{"demo"}, "", 13, 5},  // platform, service, ten requests, summary
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args[0]);
        std::vector<std::string> args = {"--json", "--ir-device", "mode2:" + file};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const ToolRun run = RunApp(args, c.input);
        EXPECT_EQ(run.status, 0) << run.err;
        const std::vector<JsonValue> lines = JsonLines(run.out);
        EXPECT_EQ(lines.size(), c.lines) << run.out;
        std::size_t reported = 0;
        for (const JsonValue& line : lines) {
            ASSERT_EQ(line.type(), common::json::kObject) << run.out;
            if (line["ir"].size() == 0) continue;
            ++reported;
            EXPECT_GT(line["ir"][0u]["waveform"].size(), 10u) << line.toString();
            EXPECT_GT(line["ir"][0u]["onAirUs"].asInt(), 10000) << line.toString();
        }
        EXPECT_EQ(reported, c.sent);
        std::size_t transmissions = 0;
        std::istringstream written(ReadText(file));
        for (std::string line; std::getline(written, line);) transmissions += line.rfind("# transmission ", 0) == 0;
        EXPECT_EQ(transmissions, c.sent);
    }
}

}  // namespace
}  // namespace ircontrol::host

// decode and learn through the host tool's own entry point: what they print, how they refuse.
// The learner's own steps and what it writes have CKeyLearnerTest.
#include "CReceiveCommands.h"

#include "HostTestSupport.h"
#include "infrared/codeset/DefaultCodesets.h"

namespace ircontrol::host {
namespace {

using infrared::Protocol;

TEST(CReceiveCommandsTest, DecodePrintsEachFrameNamedByTheCodesets) {
    // HFAN0001 power and HPUR0002 fan_up of the embedded codesets, then a key no codeset has.
    const std::string file = PressesFile(
        {KeyFrame(Protocol::Nec, 0x0408), KeyFrame(Protocol::Rc5, 0x0c10), KeyFrame(Protocol::Nec, 0x7733)});
    const ToolRun json = RunApp({"--json", "decode", file});
    ASSERT_EQ(json.status, 0) << json.err;
    std::vector<std::string> rows;
    long long lastStart = -1;
    for (const JsonValue& frame : JsonLines(json.out)) {
        std::string row = frame["frame"].toString();
        for (const char* member : {"protocol", "scancode", "key", "code", "toggle", "repeat"}) {
            row += " " + frame[member].toString();
        }
        rows.push_back(row);
        EXPECT_GT(frame["durationUs"].asInt64(), 0);
        EXPECT_GT(frame["startUs"].asInt64(), lastStart);
        lastStart = frame["startUs"].asInt64();
    }
    EXPECT_EQ(rows, (std::vector<std::string>{R"(0 "nec" "0x0408" "power" 10 null false)",
                                              R"(1 "rc5" "0x0c10" "fan_up" 11 false false)",
                                              R"(2 "nec" "0x7733" null null null false)"}));
    EXPECT_NE(RunApp({"decode", file}).out.find("nec 0x0408 (HFAN0001 power, code 10)"), std::string::npos);
    EXPECT_EQ(RunApp({"--json", "--ir-receiver", file, "decode"}).out, json.out) << "the source as --ir-receiver";
}

TEST(CReceiveCommandsTest, DecodeRefusesWithAReasonAndStatus) {
    const std::string dir = irtest::TempDir();
    std::ofstream(dir + "/bad.txt") << "pulse 900\nspace nine\n";
    std::ofstream(dir + "/quiet.txt") << "space 100000\n";
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string words;
    };
    const std::vector<Case> cases = {
        {{"decode"}, 2, "needs a SOURCE"},
        {{"decode", dir + "/missing.txt"}, 1, "cannot be read"},
        {{"decode", dir + "/bad.txt"}, 1, dir + "/bad.txt:2:"},
        {{"decode", dir + "/quiet.txt"}, 1, "no frames"},
        {{"decode", "/dev/null"}, 1, "not a lirc device"},
        {{"--codesets", dir + "/bad.txt", "decode", PressesFile({KeyFrame(Protocol::Nec, 1)})}, 1, dir + "/bad.txt"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args.back());
        ExpectRefusal(RunApp(c.args), c.status, c.words);
    }
}

std::vector<std::string> LearnArgs(const std::string& codesets, const std::string& presses, const std::string& codeset,
                                   const std::string& key, const std::string& code) {
    return {"--codesets", codesets, "--ir-receiver", presses, "learn", "--codeset", codeset, "--key", key,
            "--code", code};
}

TEST(CReceiveCommandsTest, LearnSaysWhatItKeptOrWhyNotAndLeavesTheFileAlone) {
    const std::string dir = irtest::TempDir();
    const std::string shipped = dir + "/codesets.json";
    std::ofstream(shipped) << infrared::DefaultCodesetsText();
    const std::string rc5 = PressesFile({KeyFrame(Protocol::Rc5, 0x0c33), KeyFrame(Protocol::Rc5, 0x0c33)});
    const std::vector<std::string> code = {"learn", "--codeset", "A", "--key", "k", "--code", "1"};
    const auto with = [&code](std::vector<std::string> options) {
        options.insert(options.end(), code.begin(), code.end());
        return options;
    };
    struct Case {
        const char* name;
        std::vector<std::string> args;
        int status;
        std::string words;
    };
    const std::vector<Case> cases = {
        {"presses agree", LearnArgs(dir + "/mine.json", rc5, "LAMP", "light", "77"), 0, "Learned 'light' (code 77)"},
        {"another protocol's codeset", LearnArgs(shipped, rc5, "HFAN0001", "extra", "90"), 1, "--codeset HFAN0001_rc5"},
        {"no codesets file", with({"--ir-receiver", rc5}), 2, "--codesets"},
        {"no receiver", with({"--codesets", shipped}), 2, "--ir-receiver"},
        {"no key", {"--codesets", shipped, "--ir-receiver", rc5, "learn", "--codeset", "A"}, 2, "--key NAME"},
        {"a code that is no number", LearnArgs(shipped, rc5, "A", "k", "ten"), 2, "'ten'"},
        {"a receiver that is no recording", LearnArgs(shipped, shipped, "A", "k", "1"), 1, "neither mode2"},
    };
    const std::string before = ReadText(shipped);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const ToolRun run = RunApp(c.args);
        if (c.status == 0) {
            EXPECT_NE(run.out.find(c.words), std::string::npos) << run.out << run.err;
        } else {
            ExpectRefusal(run, c.status, c.words);
        }
        EXPECT_EQ(ReadText(shipped), before);
    }
}

}  // namespace
}  // namespace ircontrol::host

// import and export as a user runs them: files in, a codesets file out (or left alone), the
// report, and the imported codeset paired and pressed through the dry-run file. The formats'
// own cases are the IR library's.
#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

void Write(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

const char kFan[] = "Filetype: IR signals file\nVersion: 1\n"
                    "name: Power\ntype: parsed\nprotocol: NEC\naddress: 04 00 00 00\ncommand: 08 00 00 00\n"
                    "name: Light\ntype: raw\nfrequency: 38000\nduty_cycle: 0.33\ndata: 900 450 560\n";
const char kRemote[] = "begin remote\n  name lamp\n  bits 8\n  flags SPACE_ENC\n  one 500 1500\n  zero 500 500\n"
                       "  ptrail 500\n  gap 30000\n  begin codes\n    KEY_POWER 0x5A\n  end codes\nend remote\n";

TEST(ImportCommandsTest, ImportedFanIsPairedAndPressed) {
    const std::string dir = irtest::TempDir();
    Write(dir + "/fan.ir", kFan);
    Write(dir + "/lamp.conf", kRemote);
    const ToolRun imported =
        RunApp({"--json", "import", dir + "/fan.ir", dir + "/lamp.conf", "--codesets", dir + "/out.json"});
    ASSERT_EQ(imported.status, 0) << imported.err << imported.out;
    const JsonValue report = JsonValue::Create(imported.out);
    EXPECT_EQ(report["total"]["protocol_keys"].asInt(), 1);
    EXPECT_EQ(report["total"]["raw_keys"].asInt(), 2);
    EXPECT_EQ(report["files"][0u]["codesets"][0u]["free_codes"]["Light"].asInt(), 1000);

    Write(dir + "/pairing.json", R"({"dev_info":[{"codeset":"fan","device_index":1,"type":"oic.d.fan"}]})");
    const ToolRun pressed = RunApp({"--codesets", dir + "/out.json", "--devices", dir + "/pairing.json", "--ir-device",
                                    "mode2:" + dir + "/sent.txt", "key", "--type", "fan", "--key", "10"});
    EXPECT_EQ(pressed.status, 0) << pressed.err << pressed.out;
    EXPECT_NE(ReadText(dir + "/sent.txt").find("codeset fan, key 10 (Power)"), std::string::npos);

    const ToolRun text = RunApp({"export", "--codesets", dir + "/out.json", "--codeset", "lamp", "--format", "lircd"});
    EXPECT_EQ(text.status, 0) << text.err;
    EXPECT_NE(text.out.find("name KEY_POWER"), std::string::npos) << text.out;
}

TEST(ImportCommandsTest, AFileThatCannotBeImportedLeavesTheCodesetsFileAsItWas) {
    const std::string dir = irtest::TempDir();
    Write(dir + "/fan.ir", kFan);
    Write(dir + "/bad.ir", "Filetype: IR signals file\nVersion: 1\nname: X\ntype: parsed\nprotocol: NEC\naddress: 1\n"
                           "command: 02 00 00 00\n");
    Write(dir + "/out.json", R"({"codesets":[]})");
    const ToolRun run = RunApp({"import", dir + "/fan.ir", dir + "/bad.ir", "--codesets", dir + "/out.json"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find(dir + "/bad.ir:6: address must be 4 hex bytes"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("left as it was"), std::string::npos) << run.out;
    EXPECT_EQ(ReadText(dir + "/out.json"), R"({"codesets":[]})");
}

TEST(ImportCommandsTest, UsageMistakesAreRefusedWithStatusTwoAndTheReason) {
    const std::string dir = irtest::TempDir();
    Write(dir + "/fan.ir", kFan);
    const std::pair<std::vector<std::string>, std::string> runs[] = {
        {{"import", "--codesets", dir + "/out.json"}, "import needs at least one FILE"},
        {{"import", dir + "/fan.ir"}, "import needs --codesets OUT"},
        {{"import", dir + "/fan.ir", "--codesets", dir + "/out.json", "--type", "toaster"}, "not 'toaster'"},
        {{"import", dir + "/fan.ir", dir + "/fan.ir", "--codesets", dir + "/out.json", "--name", "X"},
         "--name needs a single FILE"},
        {{"import", dir + "/fan.ir", "--codesets", dir + "/out.json", "--recognise=yes"}, "--recognise takes no value"},
        {{"export", "--codesets", dir + "/out.json", "--codeset", "fan", "--format", "pronto"}, "not 'pronto'"},
        {{"devices", "stray"}, "unexpected argument 'stray'"},
    };
    for (const auto& [args, says] : runs) ExpectRefusal(RunApp(args), 2, says);
}

}  // namespace
}  // namespace ircontrol::host

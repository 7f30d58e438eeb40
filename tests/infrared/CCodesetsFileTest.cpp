// Learned keys and codesets written into a codesets file: created when missing, the rest kept,
// refusals leaving the file byte for byte as it was.
#include "infrared/codeset/CCodesetsFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

#include "ErrorOf.h"
#include "FileTree.h"
#include "IrsimReceive.h"
#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/formats/CFormatError.h"

namespace infrared {
namespace {

using irtest::ReadText;
const std::string kDefault = IRC_SOURCE_DIR "/infrared/codesets/default.json";
const std::string kFan = R"({"name":"FAN","protocol":"nec","keys":{"power":{"code":10,"scancode":"0x0408"}}})";
const std::string kOther = R"({"name":"OTHER","protocol":"rc5","keys":{"power":{"code":10,"scancode":"0x0101"}}})";

LearnedKey Learned(const std::string& name, int code, std::uint32_t scancode, Protocol protocol = Protocol::Nec) {
    return {name, code, protocol, scancode, {}, 0};
}

// A missing file is created; a key learned again replaces its scancode in place, a new one goes
// last, and nothing else in the file changes.
TEST(CCodesetsFileTest, PutsLearnedKeysKeepingEveryOtherCodesetAndKey) {
    const std::string dir = irtest::TempDir();
    const LearnedKey raw{"light", 11, Protocol::Raw, 0, {900, 450, 900}, 36000};
    CCodesetsFile::PutKey(dir + "/new.json", "MYLAMP", raw);
    const auto lamp = CCodesetLibrary::Parse(ReadText(dir + "/new.json"))->Codesets().at(0);
    EXPECT_EQ(std::tie(lamp.name, lamp.carrier, lamp.keys.at(0).raw), std::make_tuple("MYLAMP", 36000u, raw.raw));
    const std::string before = ReadText(kDefault);
    irtest::WriteText(dir + "/codesets.json", before);
    CCodesetsFile::PutKey(dir + "/codesets.json", "HFAN0001", Learned("light", 77, 0x0420));
    CCodesetsFile::PutKey(dir + "/codesets.json", "HFAN0001", Learned("power", 10, 0x0401));
    const std::string after = ReadText(dir + "/codesets.json");
    const auto old = CCodesetLibrary::Parse(before);
    const auto now = CCodesetLibrary::Parse(after);
    for (const Codeset& codeset : now->Codesets()) {
        if (codeset.name == "HFAN0001") continue;
        EXPECT_EQ(CCodesetsFile::CodesetJson(after, codeset.name), CCodesetsFile::CodesetJson(before, codeset.name));
    }
    const Codeset& fan = *now->Find("HFAN0001");
    EXPECT_EQ(CCodesetLibrary::KeyMapText(fan),
              R"({"power":10,"speed_up":11,"speed_down":12,"swing":13,"timer":14,"mode":76,"light":77})");
    EXPECT_EQ(std::make_tuple(fan.FindKey(10)->scancode, fan.FindKey(11)->scancode, fan.FindKey(77)->scancode),
              std::make_tuple(0x0401ull, old->Find("HFAN0001")->FindKey(11)->scancode, 0x0420ull));
    EXPECT_EQ(irtest::FilesUnder(dir, "").size(), 2u) << "no temporary file left";
}

// Imported and copied codesets replace those of the same name in one write.
TEST(CCodesetsFileTest, PutsWholeCodesetsReplacingThoseOfTheSameName) {
    const std::string path = irtest::TempDir() + "/codesets.json";
    EXPECT_EQ(CCodesetsFile::PutCodesets(path, {kFan, kOther}), (std::vector<std::string>{"FAN", "OTHER"}));
    std::string fan2 = kFan;
    CCodesetsFile::PutCodesets(path, {fan2.replace(fan2.find("0x0408"), 6, "0x0409")});
    CCodesetsFile::PutCodeset(path, kOther, "COPY");
    CCodesetsFile::PutCodeset(path, kOther, "COPY");
    const auto library = CCodesetLibrary::Parse(ReadText(path));
    ASSERT_EQ(library->Codesets().size(), 3u);
    EXPECT_EQ(library->Find("FAN")->keys[0].scancode, 0x0409u);
    EXPECT_EQ(library->Find("COPY")->keys[0].scancode, 0x0101u);
}

TEST(CCodesetsFileTest, RefusalsLeaveTheFileAsItWas) {
    const std::string fanFile = "{\"codesets\":[" + kFan + "]}";
    const std::string bad = R"({"name":"BAD","protocol":"nec","keys":{"power":{"code":10,"scancode":"0x10000"}}})";
    const std::tuple<std::string, std::function<void(const std::string&)>, const char*> cases[] = {
        {ReadText(kDefault),
         [](auto& p) { CCodesetsFile::PutKey(p, "HFAN0001", Learned("power", 10, 1, Protocol::Rc5)); },
         "HFAN0001 in"},
        {"{\"codesets\": [", [](auto& p) { CCodesetsFile::PutKey(p, "A", Learned("power", 10, 1)); }, "left alone"},
        {fanFile, [&](auto& p) { CCodesetsFile::PutCodesets(p, {kOther, bad}); }, "does not fit nec"},
        {fanFile, [](auto& p) { CCodesetsFile::PutCodeset(p, "[1]", "X"); }, ""},
    };
    for (const auto& [start, put, says] : cases) {
        const std::string dir = irtest::TempDir();
        const std::string path = dir + "/codesets.json";
        irtest::WriteText(path, start);
        const std::string error = irtest::ErrorOf<CCodesetsFileError>([&] { put(path); });
        EXPECT_NE(error, "(no error)");
        EXPECT_NE(error.find(says), std::string::npos) << error;
        EXPECT_EQ(ReadText(path), start);
        EXPECT_EQ(irtest::FilesUnder(dir, "").size(), 1u) << "no temporary file left";
    }
    EXPECT_THROW(CCodesetsFile::PutCodeset("/nonexistent-dir/x.json", kFan, "X"), CCodesetsFileError);
}

// A huge file (here a sparse 100 MB one) is refused by its size without being read.
TEST(CCodesetsFileTest, ReadersRefuseAHugeFileBeforeReadingIt) {
    const std::string path = irtest::TempDir() + "/huge.ir";
    irtest::WriteText(path, "");
    ASSERT_EQ(truncate(path.c_str(), 100L * 1024 * 1024), 0);
    const std::string error = irtest::ErrorOf<CFormatError>([&] { ReadFormatFile(path, 4 * 1024 * 1024); });
    EXPECT_NE(error.find("huge.ir:0: is larger than 4096 KiB"), std::string::npos) << error;
    EXPECT_THROW(ReadFormatFile("/dev/zero", 1024), CFormatError);
}

}  // namespace
}  // namespace infrared

// Learned keys and codesets written into a codesets file: created when missing, the rest kept,
// refusals leaving the file byte for byte as it was.
// readdir of a 32-bit build under qemu-user fails on a 64-bit host's directory cookies unless
// it is the large-file readdir.
#ifndef _FILE_OFFSET_BITS
#define _FILE_OFFSET_BITS 64
#endif
#include "infrared/codeset/CCodesetsFile.h"

#include <dirent.h>
#include <unistd.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "IrsimReceive.h"
#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/formats/CFormatError.h"

namespace infrared {
namespace {

std::string Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string Copy(const std::string& from, const std::string& dir) {
    const std::string path = dir + "/codesets.json";
    std::ofstream(path, std::ios::binary) << Read(from);
    return path;
}

const std::string kDefault = IRC_SOURCE_DIR "/infrared/codesets/default.json";

LearnedKey NecKey(const std::string& name, int code, std::uint32_t scancode) {
    LearnedKey key;
    key.name = name;
    key.code = code;
    key.protocol = Protocol::Nec;
    key.scancode = scancode;
    return key;
}

std::size_t FilesIn(const std::string& dir) {
    std::size_t count = 0;
    DIR* d = ::opendir(dir.c_str());
    while (const dirent* e = ::readdir(d)) count += e->d_name[0] != '.';
    ::closedir(d);
    return count;
}

TEST(CCodesetsFileTest, CreatesAMissingFileWithTheLearnedCodeset) {
    const std::string path = irtest::TempDir() + "/new.json";
    CCodesetsFile::PutKey(path, "MYFAN", NecKey("power", 10, 0x0408));
    LearnedKey raw;
    raw.name = "light";
    raw.code = 11;
    raw.raw = {900, 450, 900};
    raw.carrier = 36000;
    CCodesetsFile::PutKey(path, "MYLAMP", raw);

    const auto library = CCodesetLibrary::Parse(Read(path));
    const Codeset* fan = library->Find("MYFAN");
    ASSERT_NE(fan, nullptr);
    EXPECT_EQ(fan->protocol, Protocol::Nec);
    ASSERT_NE(fan->FindKey(10), nullptr);
    EXPECT_EQ(fan->FindKey(10)->scancode, 0x0408u);
    const Codeset* lamp = library->Find("MYLAMP");
    ASSERT_NE(lamp, nullptr);
    EXPECT_EQ(lamp->carrier, 36000u);
    EXPECT_EQ(lamp->FindKey(11)->raw, (std::vector<std::uint32_t>{900, 450, 900}));
}

TEST(CCodesetsFileTest, KeepsEveryOtherCodesetAndKey) {
    const std::string dir = irtest::TempDir();
    const std::string path = Copy(kDefault, dir);
    const std::string before = Read(path);
    CCodesetsFile::PutKey(path, "HFAN0001", NecKey("light", 77, 0x0420));
    CCodesetsFile::PutKey(path, "HFAN0001", NecKey("power", 10, 0x0401));  // learned again
    const std::string after = Read(path);

    const auto old = CCodesetLibrary::Parse(before);
    const auto now = CCodesetLibrary::Parse(after);
    ASSERT_EQ(now->Codesets().size(), old->Codesets().size());
    for (const Codeset& codeset : old->Codesets()) {
        SCOPED_TRACE(codeset.name);
        if (codeset.name == "HFAN0001") continue;
        EXPECT_EQ(CCodesetsFile::CodesetJson(after, codeset.name), CCodesetsFile::CodesetJson(before, codeset.name));
    }
    const Codeset* fan = now->Find("HFAN0001");
    ASSERT_EQ(fan->keys.size(), old->Find("HFAN0001")->keys.size() + 1);
    for (const CodesetKey& key : old->Find("HFAN0001")->keys) {
        EXPECT_EQ(fan->keys[&key - old->Find("HFAN0001")->keys.data()].name, key.name) << "order kept";
        if (key.name != "power") {
            EXPECT_EQ(fan->FindKey(key.code)->scancode, key.scancode) << key.name;
        }
    }
    EXPECT_EQ(fan->FindKey(10)->scancode, 0x0401u);
    EXPECT_EQ(fan->FindKey(77)->scancode, 0x0420u);
    EXPECT_EQ(FilesIn(dir), 1u) << "no temporary file left";
}

TEST(CCodesetsFileTest, RefusalsLeaveTheFileAsItWas) {
    struct Case {
        const char* name;
        std::string start;  // "" : the shipped codesets
        std::string codeset;
        LearnedKey key;
        std::string words;
    };
    LearnedKey rc5 = NecKey("power", 10, 0x0c0c);
    rc5.protocol = Protocol::Rc5;
    const std::vector<Case> cases = {
        {"another protocol", "", "HFAN0001", rc5, "HFAN0001 in"},
        {"does not fit the protocol", "", "HPUR0002", [] { auto k = NecKey("x", 90, 0xffff); k.protocol = Protocol::Rc5; return k; }(),
         "not written"},
        {"a file that is not JSON", "{\"codesets\": [", "A", NecKey("power", 10, 1), "left alone"},
        {"a file of bad codesets", "{\"codesets\": [{\"name\": \"A\"}]}", "A", NecKey("power", 10, 1), "left alone"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string dir = irtest::TempDir();
        const std::string path = dir + "/codesets.json";
        if (c.start.empty()) {
            Copy(kDefault, dir);
        } else {
            std::ofstream(path) << c.start;
        }
        const std::string before = Read(path);
        try {
            CCodesetsFile::PutKey(path, c.codeset, c.key);
            ADD_FAILURE() << "written";
        } catch (const CCodesetsFileError& error) {
            EXPECT_NE(std::string(error.what()).find(c.words), std::string::npos) << error.what();
        }
        EXPECT_EQ(Read(path), before);
        EXPECT_EQ(FilesIn(dir), 1u);
    }
}

TEST(CCodesetsFileTest, TheProtocolRefusalSaysWhatToDoInstead) {
    const std::string path = Copy(kDefault, irtest::TempDir());
    LearnedKey key = NecKey("power", 10, 0x0c0c);
    key.protocol = Protocol::Rc5;
    try {
        CCodesetsFile::PutKey(path, "HFAN0001", key);
        FAIL() << "written";
    } catch (const CCodesetsFileError& error) {
        const std::string text = error.what();
        EXPECT_NE(text.find("is nec"), std::string::npos) << text;
        EXPECT_NE(text.find("sends rc5"), std::string::npos) << text;
        EXPECT_NE(text.find("--codeset"), std::string::npos) << text;
    }
}

TEST(CCodesetsFileTest, CopiesAWholeCodesetUnderANewName) {
    const std::string shipped = Read(kDefault);
    const auto library = CCodesetLibrary::Parse(shipped);
    const Codeset* aircon = nullptr;
    for (const Codeset& c : library->Codesets()) {
        if (c.protocol == Protocol::Aircon) aircon = &c;
    }
    ASSERT_NE(aircon, nullptr);
    const std::string json = CCodesetsFile::CodesetJson(shipped, aircon->name);
    ASSERT_FALSE(json.empty());
    const std::string path = irtest::TempDir() + "/ac.json";
    CCodesetsFile::PutCodeset(path, json, "LIVINGROOM");
    CCodesetsFile::PutCodeset(path, json, "LIVINGROOM");  // again: replaced, not doubled
    const auto written = CCodesetLibrary::Parse(Read(path));
    ASSERT_EQ(written->Codesets().size(), 1u);
    EXPECT_EQ(written->Codesets()[0].name, "LIVINGROOM");
    EXPECT_EQ(written->Codesets()[0].frame.bytes, aircon->frame.bytes);
    EXPECT_THROW(CCodesetsFile::PutCodeset(path, "[1]", "X"), CCodesetsFileError);
}

TEST(CCodesetsFileTest, AnUnwritableDirectoryIsAnErrorNotACrash) {
    EXPECT_THROW(CCodesetsFile::PutCodeset("/nonexistent-dir/x.json", R"({"protocol":"nec","keys":{}})", "X"),
                 CCodesetsFileError);
}

const std::string kFan = R"({"name":"FAN","protocol":"nec","keys":{"power":{"code":10,"scancode":"0x0408"}}})";
const std::string kFan2 = R"({"name":"FAN","protocol":"nec","keys":{"power":{"code":10,"scancode":"0x0409"}}})";
const std::string kOther = R"({"name":"OTHER","protocol":"rc5","keys":{"power":{"code":10,"scancode":"0x0101"}}})";

TEST(CCodesetsFileTest, ImportedCodesetsReplaceThoseOfTheSameNameInOneWrite) {
    const std::string path = irtest::TempDir() + "/codesets.json";
    EXPECT_EQ(CCodesetsFile::PutCodesets(path, {kFan, kOther}), (std::vector<std::string>{"FAN", "OTHER"}));
    CCodesetsFile::PutCodesets(path, {kFan2});
    const auto library = CCodesetLibrary::Parse(Read(path));
    ASSERT_EQ(library->Codesets().size(), 2u);
    EXPECT_EQ(library->Find("FAN")->keys[0].scancode, 0x0409u);
}

TEST(CCodesetsFileTest, ARefusedImportLeavesTheFileAsItWas) {
    const std::string dir = irtest::TempDir();
    const std::string path = dir + "/codesets.json";
    CCodesetsFile::PutCodesets(path, {kFan});
    const std::string before = Read(path);
    const std::string bad = R"({"name":"BAD","protocol":"nec","keys":{"power":{"code":10,"scancode":"0x10000"}}})";
    EXPECT_THROW(CCodesetsFile::PutCodesets(path, {kOther, bad}), CCodesetsFileError);
    EXPECT_EQ(Read(path), before);
    std::ofstream(path, std::ios::binary) << "not json";
    EXPECT_THROW(CCodesetsFile::PutCodesets(path, {kOther}), CCodesetsFileError);
    EXPECT_EQ(Read(path), "not json");
    EXPECT_EQ(FilesIn(dir), 1u);  // no temporary file left behind
}

// A huge file (here a sparse 100 MB one) is refused by its size without being read.
TEST(CCodesetsFileTest, ReadersRefuseAHugeFileBeforeReadingIt) {
    const std::string path = irtest::TempDir() + "/huge.ir";
    std::ofstream(path, std::ios::binary) << "";
    ASSERT_EQ(truncate(path.c_str(), 100L * 1024 * 1024), 0);
    try {
        ReadFormatFile(path, 4 * 1024 * 1024);
        ADD_FAILURE() << "read a 100 MB file";
    } catch (const CFormatError& e) {
        EXPECT_EQ(e.Line(), 0u);
        EXPECT_NE(e.Reason().find("larger than 4096 KiB"), std::string::npos) << e.what();
    }
    EXPECT_THROW(ReadFormatFile("/dev/zero", 1024), CFormatError);
}

}  // namespace
}  // namespace infrared

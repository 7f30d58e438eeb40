// Learned keys and codesets written into a codesets file: created when missing, the rest kept,
// refusals leaving the file byte for byte as it was.
#include "infrared/codeset/CCodesetFile.h"

#include <dirent.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "IrsimReceive.h"
#include "infrared/codeset/CCodesetLibrary.h"

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

TEST(CCodesetFileTest, CreatesAMissingFileWithTheLearnedCodeset) {
    const std::string path = irtest::TempDir() + "/new.json";
    CCodesetFile::PutKey(path, "MYFAN", NecKey("power", 10, 0x0408));
    LearnedKey raw;
    raw.name = "light";
    raw.code = 11;
    raw.raw = {900, 450, 900};
    raw.carrier = 36000;
    CCodesetFile::PutKey(path, "MYLAMP", raw);

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

TEST(CCodesetFileTest, KeepsEveryOtherCodesetAndKey) {
    const std::string dir = irtest::TempDir();
    const std::string path = Copy(kDefault, dir);
    const std::string before = Read(path);
    CCodesetFile::PutKey(path, "HFAN0001", NecKey("light", 77, 0x0420));
    CCodesetFile::PutKey(path, "HFAN0001", NecKey("power", 10, 0x0401));  // learned again
    const std::string after = Read(path);

    const auto old = CCodesetLibrary::Parse(before);
    const auto now = CCodesetLibrary::Parse(after);
    ASSERT_EQ(now->Codesets().size(), old->Codesets().size());
    for (const Codeset& codeset : old->Codesets()) {
        SCOPED_TRACE(codeset.name);
        if (codeset.name == "HFAN0001") continue;
        EXPECT_EQ(CCodesetFile::CodesetJson(after, codeset.name), CCodesetFile::CodesetJson(before, codeset.name));
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

TEST(CCodesetFileTest, RefusalsLeaveTheFileAsItWas) {
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
            CCodesetFile::PutKey(path, c.codeset, c.key);
            ADD_FAILURE() << "written";
        } catch (const CCodesetFileError& error) {
            EXPECT_NE(std::string(error.what()).find(c.words), std::string::npos) << error.what();
        }
        EXPECT_EQ(Read(path), before);
        EXPECT_EQ(FilesIn(dir), 1u);
    }
}

TEST(CCodesetFileTest, TheProtocolRefusalSaysWhatToDoInstead) {
    const std::string path = Copy(kDefault, irtest::TempDir());
    LearnedKey key = NecKey("power", 10, 0x0c0c);
    key.protocol = Protocol::Rc5;
    try {
        CCodesetFile::PutKey(path, "HFAN0001", key);
        FAIL() << "written";
    } catch (const CCodesetFileError& error) {
        const std::string text = error.what();
        EXPECT_NE(text.find("is nec"), std::string::npos) << text;
        EXPECT_NE(text.find("sends rc5"), std::string::npos) << text;
        EXPECT_NE(text.find("--codeset"), std::string::npos) << text;
    }
}

TEST(CCodesetFileTest, CopiesAWholeCodesetUnderANewName) {
    const std::string shipped = Read(kDefault);
    const auto library = CCodesetLibrary::Parse(shipped);
    const Codeset* aircon = nullptr;
    for (const Codeset& c : library->Codesets()) {
        if (c.protocol == Protocol::Aircon) aircon = &c;
    }
    ASSERT_NE(aircon, nullptr);
    const std::string json = CCodesetFile::CodesetJson(shipped, aircon->name);
    ASSERT_FALSE(json.empty());
    const std::string path = irtest::TempDir() + "/ac.json";
    CCodesetFile::PutCodeset(path, json, "LIVINGROOM");
    CCodesetFile::PutCodeset(path, json, "LIVINGROOM");  // again: replaced, not doubled
    const auto written = CCodesetLibrary::Parse(Read(path));
    ASSERT_EQ(written->Codesets().size(), 1u);
    EXPECT_EQ(written->Codesets()[0].name, "LIVINGROOM");
    EXPECT_EQ(written->Codesets()[0].frame.bytes, aircon->frame.bytes);
    EXPECT_THROW(CCodesetFile::PutCodeset(path, "[1]", "X"), CCodesetFileError);
}

TEST(CCodesetFileTest, AnUnwritableDirectoryIsAnErrorNotACrash) {
    EXPECT_THROW(CCodesetFile::WriteAtomically("/nonexistent-dir/x.json", "{}"), CCodesetFileError);
}

}  // namespace
}  // namespace infrared

#include "infrared/codeset/CCodesetsFile.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include "ImportSupport.h"
#include "infrared/formats/CFormatError.h"

namespace infrared {
namespace {

const std::string kFan = R"({"name":"FAN","protocol":"nec","keys":{"power":{"code":10,"scancode":"0x0408"}}})";
const std::string kFan2 = R"({"name":"FAN","protocol":"nec","keys":{"power":{"code":10,"scancode":"0x0409"}}})";
const std::string kOther = R"({"name":"OTHER","protocol":"rc5","keys":{"power":{"code":10,"scancode":"0x0101"}}})";

TEST(CCodesetsFile, AddsToAFileAndReplacesCodesetsOfTheSameName) {
    const std::string path = irtest::TempDir() + "/codesets.json";
    EXPECT_EQ(CCodesetsFile::Merge(path, {kFan, kOther}), (std::vector<std::string>{"FAN", "OTHER"}));
    CCodesetsFile::Merge(path, {kFan2});
    const auto library = CCodesetLibrary::Parse(irtest::ReadText(path));
    ASSERT_EQ(library->Codesets().size(), 2u);
    EXPECT_EQ(library->Codesets()[0].name, "OTHER");
    EXPECT_EQ(library->Find("FAN")->keys[0].scancode, 0x0409u);
}

TEST(CCodesetsFile, ARefusedMergeLeavesTheFileAsItWas) {
    const std::string dir = irtest::TempDir();
    const std::string path = dir + "/codesets.json";
    CCodesetsFile::Merge(path, {kFan});
    const std::string before = irtest::ReadText(path);
    const std::string bad = R"({"name":"BAD","protocol":"nec","keys":{"power":{"code":10,"scancode":"0x10000"}}})";
    EXPECT_THROW(CCodesetsFile::Merge(path, {kOther, bad}), std::invalid_argument);
    EXPECT_EQ(irtest::ReadText(path), before);
    // A file that is not a codesets file is not overwritten either.
    irtest::WriteText(path, "not json");
    EXPECT_THROW(CCodesetsFile::Merge(path, {kOther}), std::invalid_argument);
    EXPECT_EQ(irtest::ReadText(path), "not json");
    EXPECT_EQ(irtest::FilesUnder(dir, ".tmp").size(), 0u);  // no temporary file left behind
}

TEST(CCodesetsFile, AnUnwritableFolderFailsWithTheReason) {
    if (geteuid() == 0) GTEST_SKIP() << "root may write anywhere";
    const std::string dir = irtest::TempDir() + "/locked";
    ASSERT_EQ(mkdir(dir.c_str(), 0500), 0);
    try {
        CCodesetsFile::Merge(dir + "/codesets.json", {kFan});
        ADD_FAILURE() << "wrote into a read-only folder";
    } catch (const std::runtime_error& e) {
        EXPECT_NE(std::string(e.what()).find("cannot write"), std::string::npos) << e.what();
    }
}

// A huge file (here a sparse 100 MB one) is refused by its size without being read.
TEST(CCodesetsFile, ReadersRefuseAHugeFileBeforeReadingIt) {
    const std::string path = irtest::TempDir() + "/huge.ir";
    irtest::WriteText(path, "");
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

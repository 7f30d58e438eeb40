// Writing a file atomically when a step fails: the reason names the file, the old content stays
// and no temporary file is left beside it. (A writer killed at each step: the state directory's
// tests, which write through this class.)
#include "infrared/formats/CAtomicFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "FileTree.h"
#include "IrsimReceive.h"

namespace infrared {
namespace {

TEST(AtomicFile, AFailedWriteNamesTheFileAndKeepsTheOldOneAndReadTellsAMissingFile) {
    const std::string dir = irtest::TempDir();
    std::string error, text;
    ASSERT_TRUE(CAtomicFile::Write(dir + "/state.json", "old", error));
    EXPECT_FALSE(CAtomicFile::Write(dir + "/no/such/dir/file.json", "new", error));
    EXPECT_NE(error.find(dir + "/no/such/dir/file.json"), std::string::npos) << error;
    // A directory where the file should be: the rename fails and the temporary file goes.
    ASSERT_EQ(::mkdir((dir + "/taken").c_str(), 0700), 0);
    EXPECT_FALSE(CAtomicFile::Write(dir + "/taken", "new", error));
    ::rmdir((dir + "/taken").c_str());
    EXPECT_EQ(irtest::FilesUnder(dir, ""), std::vector<std::string>{dir + "/state.json"});
    EXPECT_TRUE(CAtomicFile::Read(dir + "/state.json", text));
    EXPECT_EQ(text, "old");
    bool missing = false;
    EXPECT_FALSE(CAtomicFile::Read(dir + "/absent", text, &missing));
    EXPECT_TRUE(missing);
    EXPECT_FALSE(CAtomicFile::Read(dir, text, &missing));
    EXPECT_FALSE(missing);
}

}  // namespace
}  // namespace infrared

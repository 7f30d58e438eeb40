// Writing a file atomically: the old or the new content whole, whatever step a writer is killed
// at, and no temporary file left beside it after a failure.
#include "infrared/formats/CAtomicFile.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <csignal>

#include "FileTree.h"
#include "IrsimReceive.h"

namespace infrared {
namespace {

std::string Content(const std::string& path) {
    std::string text;
    EXPECT_TRUE(CAtomicFile::Read(path, text));
    return text;
}

// A child process writes and is killed by SIGKILL right after one step; whatever the step, the
// file is then the old one or the new one, whole.
TEST(AtomicFile, KilledAtAnyStepLeavesTheOldOrTheNewFile) {
    const std::string path = irtest::TempDir() + "/state.json";
    const std::string before(4096, 'o');
    const std::string after = std::string(8192, 'n') + "\n";
    using S = CAtomicFile::Step;
    for (const S step : {S::Created, S::HalfWritten, S::Written, S::Synced, S::Renamed, S::DirectorySynced}) {
        std::string error;
        ASSERT_TRUE(CAtomicFile::Write(path, before, error)) << error;
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            CAtomicFile::Write(path, after, error, [step](S s) {
                if (s == step) ::kill(::getpid(), SIGKILL);
            });
            ::_exit(3);  // the hook did not stop it: the parent sees the wrong status
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "step " << static_cast<int>(step);
        EXPECT_EQ(Content(path), step >= S::Renamed ? after : before) << "step " << static_cast<int>(step);
    }
}

TEST(AtomicFile, AFailedWriteNamesTheFileAndKeepsTheOldOneAndReadTellsAMissingFile) {
    const std::string dir = irtest::TempDir();
    std::string error;
    ASSERT_TRUE(CAtomicFile::Write(dir + "/state.json", "old", error));
    EXPECT_FALSE(CAtomicFile::Write(dir + "/no/such/dir/file.json", "new", error));
    EXPECT_NE(error.find(dir + "/no/such/dir/file.json"), std::string::npos) << error;
    // A directory where the file should be: the rename fails and the temporary file goes.
    ASSERT_EQ(::mkdir((dir + "/taken").c_str(), 0700), 0);
    EXPECT_FALSE(CAtomicFile::Write(dir + "/taken", "new", error));
    ::rmdir((dir + "/taken").c_str());
    EXPECT_EQ(irtest::FilesUnder(dir, ""), std::vector<std::string>{dir + "/state.json"});
    EXPECT_EQ(Content(dir + "/state.json"), "old");
    bool missing = false;
    EXPECT_FALSE(CAtomicFile::Read(dir + "/absent", error, &missing));
    EXPECT_TRUE(missing);
    EXPECT_FALSE(CAtomicFile::Read(dir, error, &missing));
    EXPECT_FALSE(missing);
}

}  // namespace
}  // namespace infrared

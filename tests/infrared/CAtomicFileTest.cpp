// Writing a file atomically: the old or the new content whole, whatever step a writer is killed
// at, and no temporary file left beside it.
#include "infrared/formats/CAtomicFile.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include "FileTree.h"
#include "IrsimReceive.h"

namespace infrared {
namespace {

class AtomicFile : public ::testing::Test {
protected:
    void TearDown() override {
        for (const std::string& path : Entries()) ::unlink(path.c_str());
        ::rmdir(dir_.c_str());
    }
    std::vector<std::string> Entries() const { return irtest::FilesUnder(dir_, ""); }
    std::string Content() const {
        std::string text;
        EXPECT_TRUE(CAtomicFile::Read(path_, text));
        return text;
    }
    std::string dir_ = irtest::TempDir();
    std::string path_ = dir_ + "/state.json";
};

// A child process writes and is killed by SIGKILL right after one step; whatever the step, the
// file is then the old one or the new one, whole.
TEST_F(AtomicFile, KilledAtAnyStepLeavesTheOldOrTheNewFile) {
    const std::string before(4096, 'o');
    const std::string after = std::string(8192, 'n') + "\n";
    using S = CAtomicFile::Step;
    struct Case {
        S step;
        bool expectNew;
    };
    for (const Case c : {Case{S::Created, false}, Case{S::HalfWritten, false}, Case{S::Written, false},
                         Case{S::Synced, false}, Case{S::Renamed, true}, Case{S::DirectorySynced, true}}) {
        std::string error;
        ASSERT_TRUE(CAtomicFile::Write(path_, before, error)) << error;
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            std::string childError;
            CAtomicFile::Write(path_, after, childError, [&c](S s) {
                if (s == c.step) ::kill(::getpid(), SIGKILL);
            });
            ::_exit(3);  // the hook did not stop it: the parent sees the wrong status
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "step " << static_cast<int>(c.step);
        EXPECT_EQ(Content(), c.expectNew ? after : before) << "step " << static_cast<int>(c.step);
        // A leftover temporary file may stay beside it; it is never the file itself.
        for (const std::string& path : Entries()) {
            if (path != path_) ::unlink(path.c_str());
        }
    }
}

TEST_F(AtomicFile, AFailedWriteSaysWhichFileAndKeepsTheOldOne) {
    std::string error;
    ASSERT_TRUE(CAtomicFile::Write(path_, "old", error));
    const std::string missing = dir_ + "/no/such/dir/file.json";
    EXPECT_FALSE(CAtomicFile::Write(missing, "new", error));
    EXPECT_NE(error.find(missing), std::string::npos) << error;
    // A directory where the file should be: the rename fails and the temporary file goes.
    ASSERT_EQ(::mkdir((dir_ + "/taken").c_str(), 0700), 0);
    EXPECT_FALSE(CAtomicFile::Write(dir_ + "/taken", "new", error));
    ::rmdir((dir_ + "/taken").c_str());
    EXPECT_EQ(Entries(), std::vector<std::string>{path_});
    EXPECT_EQ(Content(), "old");
}

TEST_F(AtomicFile, ReadTellsAMissingFileFromOthers) {
    std::string text;
    bool missing = false;
    EXPECT_FALSE(CAtomicFile::Read(dir_ + "/absent", text, &missing));
    EXPECT_TRUE(missing);
    EXPECT_FALSE(CAtomicFile::Read(dir_, text, &missing));
    EXPECT_FALSE(missing);
}

}  // namespace
}  // namespace infrared

// mode2 text through a named pipe as it arrives: the next writer after one left, and bad text
// refused with pipe:line while reading goes on. A pipe taken as a live receiver and waiting on
// one nobody writes to are driven by the web remote's learn-from-a-pipe tests; how long a press
// under way waits for silence is the lirc receiver's test (the same wait).
#include "infrared/receive/CFifoReceiver.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "ErrorOf.h"
#include "IrsimReceive.h"

namespace infrared {
namespace {

using std::chrono::milliseconds;

// The receiver opens its end first, so a writer opened after it never blocks.
std::string Pipe() {
    const std::string path = irtest::TempDir() + "/presses.fifo";
    EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    return path;
}

const std::string kPress = "pulse 9000\nspace 4500\npulse 560\n";
const std::vector<std::uint32_t> kDurations{9000, 4500, 560};

TEST(CFifoReceiverTest, TheNextWriterIsHeardAfterOneLeft) {
    const std::string path = Pipe();
    CFifoReceiver receiver(path);
    std::ofstream(path) << kPress;
    auto capture = receiver.Next(milliseconds(1000));
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->durations, kDurations);
    std::ofstream(path) << kPress + "timeout 100000\n";
    capture = receiver.Next(milliseconds(1000));
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->durations, kDurations);
}

TEST(CFifoReceiverTest, RefusesBadTextWithPipeAndLineAndReadsOn) {
    const std::pair<std::string, std::string> cases[] = {
        {"pulse 500\nflash 500\n", ":2: 'flash' is not pulse"},
        {std::string(CFifoReceiver::kMaxLine + 10, 'x'), ":1: a line longer than"},
    };
    for (const auto& [text, words] : cases) {
        const std::string path = Pipe();
        CFifoReceiver receiver(path);
        std::ofstream writer(path);
        writer << text << std::flush;
        const std::string error = irtest::ErrorOf<CReceiveError>([&] { receiver.Next(milliseconds(1000)); });
        EXPECT_NE(error.find(path + words), std::string::npos) << error;
        writer << "\n" + kPress;
        writer.close();
        const auto capture = receiver.Next(milliseconds(1000));
        ASSERT_TRUE(capture) << "the press after the bad text is read";
        EXPECT_EQ(capture->durations, kDurations);
    }
}

}  // namespace
}  // namespace infrared

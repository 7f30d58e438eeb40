// mode2 text through a named pipe as it arrives: captures ended by silence or by the writer
// leaving, a pipe nobody writes to, the next writer after one left, and bad text refused with
// pipe:line while reading goes on.
#include "infrared/receive/CFifoReceiver.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "IrsimReceive.h"
#include "infrared/receive/OpenReceiver.h"

namespace infrared {
namespace {

using Durations = std::vector<std::uint32_t>;
using std::chrono::milliseconds;

std::string Pipe() {
    const std::string path = irtest::TempDir() + "/presses.fifo";
    EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    return path;
}

// A writer's end, opened after the receiver's (so it never blocks); closed by the destructor.
class CWriter {
public:
    explicit CWriter(const std::string& path) : fd_(::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) {}
    ~CWriter() { Close(); }
    void Write(const std::string& text) { EXPECT_EQ(::write(fd_, text.data(), text.size()), ssize_t(text.size())); }
    void Close() {
        if (fd_ >= 0) ::close(fd_);
        fd_ = -1;
    }

private:
    int fd_;
};

const std::string kPress = "pulse 9000\nspace 4500\npulse 560\n";
const Durations kDurations{9000, 4500, 560};

TEST(CFifoReceiverTest, OpensAsALiveReceiverWithoutAWriterAndRefusesAMissingPipe) {
    const std::string path = Pipe();
    const auto receiver = OpenReceiver(path);
    EXPECT_TRUE(receiver->Live());
    EXPECT_EQ(receiver->Next(milliseconds(50)), std::nullopt) << "nobody writes: nothing, in time";
    EXPECT_THROW(CFifoReceiver(irtest::TempDir() + "/no-such.fifo"), CReceiveError);
}

TEST(CFifoReceiverTest, CapturesEndBySilenceOrByTheWriterLeaving) {
    const std::string path = Pipe();
    CFifoReceiver receiver(path);
    CWriter writer(path);
    writer.Write("# a press\n" + kPress);
    auto capture = receiver.Next(milliseconds(1000));
    ASSERT_TRUE(capture) << "ended by the silence after it, the pipe still open";
    EXPECT_EQ(capture->durations, kDurations);
    writer.Write("pulse 300\nspace 300\npulse 300\n");
    writer.Close();
    capture = receiver.Next(milliseconds(1000));
    ASSERT_TRUE(capture) << "ended by the writer leaving";
    EXPECT_EQ(capture->durations, (Durations{300, 300, 300}));
    CWriter next(path);  // the next writer is heard
    next.Write(kPress + "timeout 100000\n");
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
        CWriter writer(path);
        writer.Write(text);
        try {
            receiver.Next(milliseconds(1000));
            ADD_FAILURE() << "accepted " << words;
        } catch (const CReceiveError& error) {
            EXPECT_NE(std::string(error.what()).find(path + words), std::string::npos) << error.what();
        }
        writer.Write("\n" + kPress);
        writer.Close();
        const auto capture = receiver.Next(milliseconds(1000));
        ASSERT_TRUE(capture) << "the press after the bad text is read";
        EXPECT_EQ(capture->durations, kDurations);
    }
}

}  // namespace
}  // namespace infrared

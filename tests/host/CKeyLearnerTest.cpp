// The learner the command line and the web share: the steps it tells, in order, for presses from
// a file, and on a device that never sends: the wait running out, and Cancel() from another thread.
#include "CKeyLearner.h"

#include <gtest/gtest.h>
#include <linux/lirc.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "IrsimReceive.h"
#include "infrared/encode/CKeyEncoder.h"
#include "infrared/transmit/CMode2Sink.h"

namespace ircontrol::host {
namespace {

using Kind = LearnStep::Kind;
using infrared::Protocol;

// A receiver that is there and never receives: every read waits its whole time for nothing.
class CSilentReceiver : public infrared::ILircDevice {
public:
    int Open(const std::string&) override { return -ENOSYS; }
    int OpenForReading(const std::string&) override { return 7; }
    int Ioctl(int, unsigned long request, std::uint32_t* argument) override {
        if (request == LIRC_GET_FEATURES) *argument = LIRC_CAN_REC_MODE2;
        return 0;
    }
    std::int64_t Write(int, const void*, std::size_t) override { return -ENOSYS; }
    std::int64_t Read(int, void*, std::size_t, int timeoutMs) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(timeoutMs));
        std::lock_guard<std::mutex> lock(mutex);
        longest = std::max(longest, timeoutMs);
        return 0;
    }
    void Close(int) override {}
    std::string GroupOf(const std::string&) override { return ""; }

    std::mutex mutex;
    int longest = 0;  // the longest single wait asked for
};

struct Seen {
    std::vector<Kind> kinds;
    std::vector<std::string> texts;
};

CKeyLearner::Listener Recorder(Seen& seen) {
    return [&seen](const LearnStep& step) {
        seen.kinds.push_back(step.kind);
        seen.texts.push_back(step.text);
    };
}

std::string Presses(const std::vector<std::uint64_t>& necScancodes) {
    const std::string path = irtest::TempDir() + "/presses.txt";
    infrared::CMode2Sink sink(path);
    for (const std::uint64_t scancode : necScancodes) {
        infrared::Transmission t;
        t.codeset = "T";
        t.what = "press";
        t.emitter = 1;
        t.train = infrared::CKeyEncoder::Encode(Protocol::Nec, scancode, false, 0, 38000, 33);
        sink.Transmit(t);
    }
    return path;
}

LearnJob KeyJob(const std::string& receiver) {
    LearnJob job;
    job.codesetsFile = irtest::TempDir() + "/codesets.json";
    job.receiver = receiver;
    job.codeset = "MINE";
    job.key = "power";
    job.code = 10;
    return job;
}

TEST(CKeyLearnerTest, TellsEachStepInOrder) {
    struct Case {
        const char* name;
        std::vector<std::uint64_t> presses;
        bool aircon;
        std::vector<Kind> kinds;
    };
    const std::vector<Case> cases = {
        {"two agree", {0x0408, 0x0408}, false,
         {Kind::Waiting, Kind::Arrived, Kind::Waiting, Kind::Arrived, Kind::Saved}},
        {"they differ, then two agree", {0x0408, 0x0409, 0x0409, 0x0409}, false,
         {Kind::Waiting, Kind::Arrived, Kind::Waiting, Kind::Arrived, Kind::Differ, Kind::Waiting, Kind::Arrived,
          Kind::Waiting, Kind::Arrived, Kind::Saved}},
        {"one press only", {0x0408}, false, {Kind::Waiting, Kind::Arrived, Kind::Waiting, Kind::Failed}},
        {"a key is no air conditioner", {0x0408}, true, {Kind::Waiting, Kind::Arrived, Kind::Failed}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Seen seen;
        LearnJob job = KeyJob(Presses(c.presses));
        job.aircon = c.aircon;
        const bool saved = CKeyLearner(Recorder(seen)).Run(job);
        EXPECT_EQ(seen.kinds, c.kinds);
        EXPECT_EQ(saved, c.kinds.back() == Kind::Saved);
        EXPECT_EQ(access(job.codesetsFile.c_str(), F_OK) == 0, saved) << "written only when saved";
    }
}

TEST(CKeyLearnerTest, ADeviceThatSendsNothingEndsWithTheWaitInShortReads) {
    const auto device = std::make_shared<CSilentReceiver>();
    Seen seen;
    LearnJob job = KeyJob("/dev/lirc-that-is-faked");
    job.waitMs = 3 * CKeyLearner::kPollMs;
    EXPECT_FALSE(CKeyLearner(Recorder(seen), device).Run(job));
    EXPECT_EQ(seen.kinds, (std::vector<Kind>{Kind::Waiting, Kind::Failed}));
    EXPECT_EQ(seen.texts.back(), "no press within 0.6 s on /dev/lirc-that-is-faked");
    EXPECT_LE(device->longest, CKeyLearner::kPollMs) << "a long read would not notice Cancel()";
    EXPECT_NE(access(job.codesetsFile.c_str(), F_OK), 0);
}

TEST(CKeyLearnerTest, CancelStopsAWaitingLearn) {
    const auto device = std::make_shared<CSilentReceiver>();
    Seen seen;
    std::mutex mutex;
    std::condition_variable waiting;
    bool started = false;
    CKeyLearner learner(
        [&](const LearnStep& step) {
            std::lock_guard<std::mutex> lock(mutex);
            seen.kinds.push_back(step.kind);
            seen.texts.push_back(step.text);
            started = true;
            waiting.notify_all();
        },
        device);
    LearnJob job = KeyJob("/dev/lirc-that-is-faked");
    job.waitMs = 600000;  // far longer than the test may take: only Cancel() ends it
    std::thread canceller([&] {
        std::unique_lock<std::mutex> lock(mutex);
        waiting.wait(lock, [&] { return started; });
        lock.unlock();
        learner.Cancel();
    });
    EXPECT_FALSE(learner.Run(job));
    canceller.join();
    EXPECT_EQ(seen.kinds, (std::vector<Kind>{Kind::Waiting, Kind::Failed}));
    EXPECT_EQ(seen.texts.back(), "cancelled");
}

}  // namespace
}  // namespace ircontrol::host

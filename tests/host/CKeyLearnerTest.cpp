// The learner the command line and the web share: the steps it tells, in order, and what it
// writes, for presses from a file; on a device that never sends, the wait running out and
// Cancel() from another thread.
#include "CKeyLearner.h"

#include <linux/lirc.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "HostTestSupport.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/encode/CAcFrameEncoder.h"

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

// Key "power" (code 10), or an air conditioner, into codeset MINE of a fresh codesets file.
LearnJob Job(const std::string& receiver, bool aircon = false) {
    LearnJob job;
    job.codesetsFile = irtest::TempDir() + "/codesets.json";
    job.receiver = receiver;
    job.codeset = "MINE";
    job.aircon = aircon;
    job.key = "power";
    job.code = 10;
    return job;
}

TEST(CKeyLearnerTest, TellsEachStepAndWritesOnlyWhatThePressesAgreeOn) {
    // A remote one leading bit longer than RC-5 (as the Streamzap's) may read as an RC-5 key, which
    // would send a different frame: whatever the decoder makes of it (so whether KeptRaw is told),
    // the timings that came are kept.
    std::vector<std::uint32_t> longRc5 = {889, 889};
    const auto rc5 = infrared::CKeyEncoder::Encode(Protocol::Rc5, 0x0300, true, 0, 36000, 33).durations;
    longRc5.insert(longRc5.end(), rc5.begin(), rc5.end());
    const auto library = infrared::CCodesetLibrary::Parse(infrared::DefaultCodesetsText());
    const auto aircon = std::find_if(library->Codesets().begin(), library->Codesets().end(),
                                     [](const infrared::Codeset& c) { return c.protocol == Protocol::Aircon; });
    ASSERT_NE(aircon, library->Codesets().end());
    const auto acFrame = infrared::CAcFrameEncoder::BuildFrame(aircon->frame, {"on", "heat", "22", "low"});
    const auto acPress =
        infrared::CAcFrameEncoder::Encode(aircon->frame, acFrame, aircon->carrier, aircon->dutyCycle).durations;
    const auto a = KeyFrame(Protocol::Nec, 0x0408);
    const auto b = KeyFrame(Protocol::Nec, 0x0409);
    constexpr Kind W = Kind::Waiting, A = Kind::Arrived, S = Kind::Saved, F = Kind::Failed;
    struct Case {
        const char* name;
        std::vector<std::vector<std::uint32_t>> presses;
        bool aircon;
        std::vector<Kind> kinds;
        Protocol protocol;  // of the codeset written, when it is
        std::uint64_t scancode;
    };
    const Case cases[] = {
        {"two agree", {a, a}, false, {W, A, W, A, S}, Protocol::Nec, 0x0408},
        {"they differ, then two agree", {a, b, b, b}, false, {W, A, W, A, Kind::Differ, W, A, W, A, S}, Protocol::Nec,
         0x0409},
        {"another protocol the second time", {a, KeyFrame(Protocol::Rc5, 0x0408)}, false,
         {W, A, W, A, Kind::Differ, W, F}, Protocol::Nec, 0},
        {"one press only", {a}, false, {W, A, W, F}, Protocol::Nec, 0},
        {"a key is no air conditioner", {a}, true, {W, A, F}, Protocol::Nec, 0},
        {"an air conditioner", {acPress}, true, {W, A, S}, Protocol::Aircon, 0},
        {"a frame no protocol would send as it came", {longRc5, longRc5}, false, {W, A, W, A, S}, Protocol::Raw, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<Kind> kinds;
        const LearnJob job = Job(PressesFile(c.presses), c.aircon);
        const bool saved = CKeyLearner([&kinds](const LearnStep& step) {
                               if (step.kind != Kind::KeptRaw) kinds.push_back(step.kind);
                           }).Run(job);
        EXPECT_EQ(kinds, c.kinds);
        EXPECT_EQ(saved, c.kinds.back() == S);
        EXPECT_EQ(access(job.codesetsFile.c_str(), F_OK) == 0, saved) << "written only when saved";
        if (!saved) continue;
        const auto written = infrared::CCodesetLibrary::Parse(ReadText(job.codesetsFile));
        const infrared::Codeset* mine = written->Find("MINE");
        ASSERT_NE(mine, nullptr);
        EXPECT_EQ(mine->protocol, c.protocol);
        if (c.aircon) {
            EXPECT_EQ(mine->frame.bytes, aircon->frame.bytes);
            continue;
        }
        ASSERT_NE(mine->FindKey(10), nullptr);
        EXPECT_EQ(mine->FindKey(10)->name, "power");
        EXPECT_EQ(mine->FindKey(10)->scancode, c.scancode);
        if (c.protocol == Protocol::Raw) {
            EXPECT_EQ(mine->FindKey(10)->raw, c.presses.front());
        }
    }
}

// Whatever the decoder says, a key is kept as its scancode only when encoding it gives back what
// came: checked here with the reading a decoder might make of frames that are not quite that key.
TEST(CKeyLearnerTest, AKeyReproducesOnlyTheFrameThatCame) {
    const auto rc5 = infrared::CKeyEncoder::Encode(Protocol::Rc5, 0x0300, true, 0, 36000, 33).durations;
    std::uint64_t rc5Length = 0;
    for (const std::uint32_t d : rc5) rc5Length += d;
    struct Case {
        const char* name;
        std::vector<std::uint32_t> before, after;  // around the RC-5 frame
        bool reproduces;
    };
    const Case cases[] = {
        {"the frame alone", {}, {}, true},
        {"noise well before it", {300, 30000}, {}, true},
        {"its copies after a gap", {}, {90000}, true},
        {"a leading bit it does not have", {889, 889}, {}, false},
        {"a trailing bit it does not have", {}, {889, 889}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        infrared::Capture capture;
        capture.startUs = 5000;
        capture.durations = c.before;
        capture.durations.insert(capture.durations.end(), rc5.begin(), rc5.end());
        capture.durations.insert(capture.durations.end(), c.after.begin(), c.after.end());
        if (c.after.size() % 2 == 1) capture.durations.insert(capture.durations.end(), rc5.begin(), rc5.end());
        infrared::DecodedFrame frame;
        frame.kind = infrared::DecodedFrame::Kind::Key;
        frame.protocol = Protocol::Rc5;
        frame.scancode = 0x0300;
        frame.toggle = true;
        frame.startUs = capture.startUs;
        for (const std::uint32_t d : c.before) frame.startUs += d;
        frame.durationUs = rc5Length;
        EXPECT_EQ(CKeyLearner::Reproduces(capture, frame), c.reproduces);
        frame.scancode = 0x0301;
        EXPECT_FALSE(CKeyLearner::Reproduces(capture, frame)) << "another scancode";
    }
}

TEST(CKeyLearnerTest, ADeviceThatSendsNothingEndsWithTheWaitInShortReads) {
    const auto device = std::make_shared<CSilentReceiver>();
    std::vector<std::string> texts;
    LearnJob job = Job("/dev/lirc-that-is-faked");
    job.waitMs = 3 * CKeyLearner::kPollMs;
    EXPECT_FALSE(CKeyLearner([&texts](const LearnStep& step) { texts.push_back(step.text); }, device).Run(job));
    EXPECT_EQ(texts, (std::vector<std::string>{"", "no press within 0.6 s on /dev/lirc-that-is-faked"}));
    EXPECT_LE(device->longest, CKeyLearner::kPollMs) << "a long read would not notice Cancel()";
    EXPECT_NE(access(job.codesetsFile.c_str(), F_OK), 0);
}

TEST(CKeyLearnerTest, CancelFromAnotherThreadStopsAWaitingLearn) {
    std::mutex mutex;
    std::condition_variable waiting;
    std::vector<std::string> texts;
    CKeyLearner learner(
        [&](const LearnStep& step) {
            std::lock_guard<std::mutex> lock(mutex);
            texts.push_back(step.text);
            waiting.notify_all();
        },
        std::make_shared<CSilentReceiver>());
    LearnJob job = Job("/dev/lirc-that-is-faked");
    job.waitMs = 600000;  // far longer than the test may take: only Cancel() ends it
    std::thread canceller([&] {
        std::unique_lock<std::mutex> lock(mutex);
        waiting.wait(lock, [&] { return !texts.empty(); });
        lock.unlock();
        learner.Cancel();
    });
    EXPECT_FALSE(learner.Run(job));
    canceller.join();
    EXPECT_EQ(texts, (std::vector<std::string>{"", "cancelled"}));
}

}  // namespace
}  // namespace ircontrol::host

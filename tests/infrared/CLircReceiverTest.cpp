// The lirc receiver behind its seam: what it asks of the device when opened, how samples become
// captures, and every failure injected at start and while reading.
#include "infrared/receive/CLircReceiver.h"

#include <gtest/gtest.h>
#include <linux/lirc.h>

#include <cerrno>
#include <cstring>
#include <deque>
#include <functional>
#include <map>

namespace infrared {
namespace {

constexpr int kFd = 9;

// Answers ioctls as configured and hands out scripted reads: a list of samples, or a -errno.
class CFakeReceiveDevice : public ILircDevice {
public:
    struct ReadStep {
        std::vector<std::uint32_t> samples;
        std::int64_t result = 0;  // used when samples is empty: 0 (nothing in time) or -errno
        std::size_t cutBytes = 0; // bytes dropped from the end, for torn reads
    };
    int openResult = kFd;
    std::uint32_t features = LIRC_CAN_REC_MODE2 | LIRC_CAN_SET_REC_TIMEOUT | LIRC_CAN_MEASURE_CARRIER;
    std::uint32_t minTimeout = 1000, maxTimeout = 1250000;
    std::map<unsigned long, int> failing;
    std::deque<ReadStep> reads;
    std::vector<std::string> calls;
    std::vector<int> waits;
    int closed = 0;

    int Open(const std::string&) override {
        ADD_FAILURE() << "a receiver opened for writing";
        return -ENOSYS;
    }
    int OpenForReading(const std::string& path) override {
        calls.push_back("open " + path);
        return openResult;
    }
    int Ioctl(int fd, unsigned long request, std::uint32_t* argument) override {
        EXPECT_EQ(fd, kFd);
        calls.push_back(Name(request) + (IsGet(request) ? "" : " " + std::to_string(*argument)));
        const auto fault = failing.find(request);
        if (fault != failing.end()) return fault->second;
        if (request == LIRC_GET_FEATURES) *argument = features;
        if (request == LIRC_GET_MIN_TIMEOUT) *argument = minTimeout;
        if (request == LIRC_GET_MAX_TIMEOUT) *argument = maxTimeout;
        return 0;
    }
    std::int64_t Write(int, const void*, std::size_t) override {
        ADD_FAILURE() << "a receiver wrote";
        return -ENOSYS;
    }
    std::int64_t Read(int fd, void* data, std::size_t size, int timeoutMs) override {
        EXPECT_EQ(fd, kFd);
        waits.push_back(timeoutMs);
        if (reads.empty()) return 0;
        ReadStep step = std::move(reads.front());
        reads.pop_front();
        if (step.samples.empty()) return step.result;
        // More samples than fit go back for the next read, as the kernel keeps them.
        const std::size_t fit = std::min(step.samples.size(), size / sizeof(std::uint32_t));
        if (fit < step.samples.size()) {
            reads.push_front({std::vector<std::uint32_t>(step.samples.begin() + fit, step.samples.end())});
        }
        std::memcpy(data, step.samples.data(), fit * sizeof(std::uint32_t));
        return static_cast<std::int64_t>(fit * sizeof(std::uint32_t) - step.cutBytes);
    }
    void Close(int fd) override {
        EXPECT_EQ(fd, kFd);
        ++closed;
    }
    std::string GroupOf(const std::string&) override { return "video"; }

    static bool IsGet(unsigned long request) {
        return request == LIRC_GET_FEATURES || request == LIRC_GET_MIN_TIMEOUT || request == LIRC_GET_MAX_TIMEOUT;
    }
    static std::string Name(unsigned long request) {
        switch (request) {
            case LIRC_GET_FEATURES: return "GET_FEATURES";
            case LIRC_SET_REC_MODE: return "SET_REC_MODE";
            case LIRC_GET_MIN_TIMEOUT: return "GET_MIN_TIMEOUT";
            case LIRC_GET_MAX_TIMEOUT: return "GET_MAX_TIMEOUT";
            case LIRC_SET_REC_TIMEOUT: return "SET_REC_TIMEOUT";
            case LIRC_SET_MEASURE_CARRIER_MODE: return "SET_MEASURE_CARRIER_MODE";
            default: return "ioctl?";
        }
    }
};

std::uint32_t P(std::uint32_t us) { return LIRC_PULSE(us); }
std::uint32_t S(std::uint32_t us) { return LIRC_SPACE(us); }
std::uint32_t T(std::uint32_t us) { return LIRC_TIMEOUT(us); }
std::uint32_t F(std::uint32_t hz) { return LIRC_FREQUENCY(hz); }

using Durations = std::vector<std::uint32_t>;
constexpr std::chrono::milliseconds kWait(500);

TEST(CLircReceiverTest, SetsPulseModeTimeoutAndCarrierMeasurementWhenOpened) {
    struct Case {
        const char* name;
        std::uint32_t features;
        std::uint32_t minTimeout, maxTimeout;
        std::vector<std::string> calls;
        std::uint32_t timeoutUs;
    };
    const std::vector<Case> cases = {
        {"everything", LIRC_CAN_REC_MODE2 | LIRC_CAN_SET_REC_TIMEOUT | LIRC_CAN_MEASURE_CARRIER, 1000, 1250000,
         {"open /dev/lirc1", "GET_FEATURES", "SET_REC_MODE 4", "GET_MIN_TIMEOUT", "GET_MAX_TIMEOUT",
          "SET_REC_TIMEOUT 100000", "SET_MEASURE_CARRIER_MODE 1"},
         100000},
        {"timeout capped by the driver", LIRC_CAN_REC_MODE2 | LIRC_CAN_SET_REC_TIMEOUT, 1000, 65000,
         {"open /dev/lirc1", "GET_FEATURES", "SET_REC_MODE 4", "GET_MIN_TIMEOUT", "GET_MAX_TIMEOUT",
          "SET_REC_TIMEOUT 65000"},
         65000},
        {"plain receiver", LIRC_CAN_REC_MODE2, 0, 0, {"open /dev/lirc1", "GET_FEATURES", "SET_REC_MODE 4"}, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto device = std::make_shared<CFakeReceiveDevice>();
        device->features = c.features;
        device->minTimeout = c.minTimeout;
        device->maxTimeout = c.maxTimeout;
        {
            CLircReceiver receiver("/dev/lirc1", device);
            EXPECT_EQ(device->calls, c.calls);
            EXPECT_EQ(receiver.TimeoutUs(), c.timeoutUs);
            EXPECT_EQ(receiver.MeasuresCarrier(), (c.features & LIRC_CAN_MEASURE_CARRIER) != 0);
        }
        EXPECT_EQ(device->closed, 1);
    }
}

TEST(CLircReceiverTest, RefusesAtStartWithAReasonAndClosesWhatItOpened) {
    struct Case {
        const char* name;
        std::function<void(CFakeReceiveDevice&)> setup;
        std::vector<std::string> words;
        int closed;
    };
    const std::vector<Case> cases = {
        {"no device", [](auto& d) { d.openResult = -ENOENT; }, {"no such device", "dtoverlay=gpio-ir"}, 0},
        {"no permission", [](auto& d) { d.openResult = -EACCES; },
         {"permission denied", "'video'", "usermod -aG video", "udev"}, 0},
        {"busy", [](auto& d) { d.openResult = -EBUSY; }, {std::strerror(EBUSY)}, 0},
        {"not lirc", [](auto& d) { d.failing[LIRC_GET_FEATURES] = -ENOTTY; }, {"not a lirc device"}, 1},
        {"transmitter only", [](auto& d) { d.features = LIRC_CAN_SEND_PULSE; }, {"LIRC_CAN_REC_MODE2", "receiver's"}, 1},
        {"mode refused", [](auto& d) { d.failing[LIRC_SET_REC_MODE] = -EINVAL; }, {"LIRC_SET_REC_MODE failed"}, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto device = std::make_shared<CFakeReceiveDevice>();
        c.setup(*device);
        try {
            CLircReceiver receiver("/dev/lirc1", device);
            ADD_FAILURE() << "opened";
        } catch (const CReceiveError& error) {
            for (const auto& word : c.words) EXPECT_NE(std::string(error.what()).find(word), std::string::npos) << error.what();
        }
        EXPECT_EQ(device->closed, c.closed);
    }
}

TEST(CLircReceiverTest, ATimeoutOrCarrierRefusedByTheDriverStillReceives) {
    auto device = std::make_shared<CFakeReceiveDevice>();
    device->failing[LIRC_SET_REC_TIMEOUT] = -EINVAL;
    device->failing[LIRC_SET_MEASURE_CARRIER_MODE] = -EINVAL;
    device->reads = {{{P(500), S(400), P(600), T(100000)}}};
    CLircReceiver receiver("/dev/lirc1", device);
    EXPECT_EQ(receiver.TimeoutUs(), 0u);
    EXPECT_FALSE(receiver.MeasuresCarrier());
    ASSERT_TRUE(receiver.Next(kWait));
}

TEST(CLircReceiverTest, CutsSamplesIntoCaptures) {
    struct Case {
        const char* name;
        std::vector<CFakeReceiveDevice::ReadStep> reads;
        std::vector<Durations> captures;
        std::vector<std::uint32_t> carriers;
    };
    const std::vector<Case> cases = {
        {"timeout sample ends it", {{{S(5000000), P(9000), S(4500), P(560), T(100000)}}}, {{9000, 4500, 560}}, {0}},
        {"long space ends it, the next press follows",
         {{{P(900), S(900), P(900), S(150000), P(300), S(300), P(300), T(100000)}}},
         {{900, 900, 900}, {300, 300, 300}}, {0, 0}},
        {"split samples merged", {{{P(400), P(500), S(100), S(800), P(560), T(100000)}}}, {{900, 900, 560}}, {0}},
        {"samples over several reads", {{{P(900)}}, {{S(450)}}, {{P(560), T(100000)}}}, {{900, 450, 560}}, {0}},
        {"silence without a timeout sample ends it", {{{P(900), S(450), P(560)}}, {{}, 0}}, {{900, 450, 560}}, {0}},
        {"measured carrier", {{{P(900), S(450), P(560), F(36000), T(100000)}}}, {{900, 450, 560}}, {36000}},
        {"unknown sample kinds ignored", {{{P(900), 0x0f000000u, S(450), P(560), T(100000)}}}, {{900, 450, 560}}, {0}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto device = std::make_shared<CFakeReceiveDevice>();
        device->reads.assign(c.reads.begin(), c.reads.end());
        CLircReceiver receiver("/dev/lirc1", device);
        for (std::size_t i = 0; i < c.captures.size(); ++i) {
            const auto capture = receiver.Next(kWait);
            ASSERT_TRUE(capture) << i;
            EXPECT_EQ(capture->durations, c.captures[i]);
            EXPECT_EQ(capture->carrier, c.carriers[i]);
        }
        EXPECT_FALSE(receiver.Next(std::chrono::milliseconds(0)));
    }
}

TEST(CLircReceiverTest, StartTimesCountFromTheFirstSample) {
    auto device = std::make_shared<CFakeReceiveDevice>();
    device->reads = {{{S(1000), P(500), S(200000), P(700), T(100000)}}};
    CLircReceiver receiver("/dev/lirc1", device);
    EXPECT_EQ(receiver.Next(kWait)->startUs, 1000u);
    EXPECT_EQ(receiver.Next(kWait)->startUs, 1000u + 500 + 200000);
}

TEST(CLircReceiverTest, WaitsNoLongerThanAskedAndThenForTheEndOfAPress) {
    auto device = std::make_shared<CFakeReceiveDevice>();
    EXPECT_FALSE(CLircReceiver("/dev/lirc1", device).Next(std::chrono::milliseconds(30)));
    ASSERT_FALSE(device->waits.empty());
    for (const int wait : device->waits) EXPECT_LE(wait, 30);

    device->waits.clear();
    device->reads = {{{P(900)}}, {{}, 0}};
    ASSERT_TRUE(CLircReceiver("/dev/lirc1", device).Next(std::chrono::milliseconds(30)));
    // Once a press began, silence for the end space decides, not the caller's time.
    EXPECT_EQ(device->waits.back(), static_cast<int>(CCaptureBuilder::kEndSpace / 1000));
}

TEST(CLircReceiverTest, FailuresWhileReadingLoseOnlyThePressUnderWay) {
    struct Case {
        const char* name;
        std::vector<CFakeReceiveDevice::ReadStep> reads;
        std::vector<std::string> words;
        bool overflow;
    };
    const std::vector<Case> cases = {
        {"overflow", {{{P(900), S(450), LIRC_MODE2_OVERFLOW}}}, {"overflowed", "press again"}, true},
        {"read error", {{{P(900)}}, {{}, -EIO}}, {"read failed", std::strerror(EIO)}, false},
        {"vanished mid-capture", {{{P(900), S(450)}}, {{}, -ENODEV}}, {"is gone", "in the middle of a press"}, false},
        {"vanished while idle", {{{}, -ENODEV}}, {"is gone"}, false},
        {"torn sample", {{{P(900), S(450)}, 0, 2}}, {"not whole 32-bit samples"}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto device = std::make_shared<CFakeReceiveDevice>();
        device->reads.assign(c.reads.begin(), c.reads.end());
        // The press after the failure arrives whole.
        device->reads.push_back({{P(300), S(300), P(300), T(100000)}});
        CLircReceiver receiver("/dev/lirc1", device);
        try {
            receiver.Next(kWait);
            ADD_FAILURE() << "no error";
        } catch (const CReceiveOverflow& error) {
            EXPECT_TRUE(c.overflow) << error.what();
            for (const auto& word : c.words) EXPECT_NE(std::string(error.what()).find(word), std::string::npos) << error.what();
        } catch (const CReceiveError& error) {
            EXPECT_FALSE(c.overflow) << error.what();
            for (const auto& word : c.words) EXPECT_NE(std::string(error.what()).find(word), std::string::npos) << error.what();
        }
        const auto next = receiver.Next(kWait);
        ASSERT_TRUE(next);
        EXPECT_EQ(next->durations, (Durations{300, 300, 300})) << "nothing of the lost press kept";
    }
}

}  // namespace
}  // namespace infrared

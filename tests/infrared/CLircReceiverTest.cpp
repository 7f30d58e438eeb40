// The lirc receiver behind its seam: what it asks of the device when opened, how samples become
// captures, and each failure it reports at start and while reading.
#include "infrared/receive/CLircReceiver.h"

#include <gtest/gtest.h>
#include <linux/lirc.h>

#include <cerrno>
#include <cstring>
#include <functional>

#include "ErrorOf.h"
#include "FakeLircDevice.h"

namespace infrared {
namespace {

using irtest::CFakeLircDevice;
constexpr std::chrono::milliseconds kWait(500);
constexpr std::uint32_t kAll = LIRC_CAN_REC_MODE2 | LIRC_CAN_SET_REC_TIMEOUT | LIRC_CAN_MEASURE_CARRIER;

std::uint32_t P(std::uint32_t us) { return LIRC_PULSE(us); }
std::uint32_t S(std::uint32_t us) { return LIRC_SPACE(us); }
std::uint32_t T(std::uint32_t us) { return LIRC_TIMEOUT(us); }

std::shared_ptr<CFakeLircDevice> Device(std::uint32_t features = kAll) {
    auto device = std::make_shared<CFakeLircDevice>();
    device->features = features;
    return device;
}

// The end space is asked for as the driver's timeout, within its limits; a driver that refuses
// the timeout or carrier measurement keeps its defaults.
TEST(CLircReceiverTest, SetsPulseModeTimeoutAndCarrierMeasurementWhenOpened) {
    const std::vector<std::string> all = {"SET_REC_MODE 4", "SET_REC_TIMEOUT 100000", "SET_MEASURE_CARRIER_MODE 1"};
    const struct {
        const char* name;
        std::uint32_t features, maxTimeout;
        bool refuse;
        std::vector<std::string> sets;
        std::uint32_t timeoutUs;
    } cases[] = {
        {"everything", kAll, 1250000, false, all, 100000},
        {"timeout capped", kAll & ~LIRC_CAN_MEASURE_CARRIER, 65000, false, {all[0], "SET_REC_TIMEOUT 65000"}, 65000},
        {"plain receiver", LIRC_CAN_REC_MODE2, 0, false, {all[0]}, 0},
        {"both refused", kAll, 1250000, true, all, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto device = Device(c.features);
        device->maxTimeout = c.maxTimeout;
        if (c.refuse) device->failing = {{LIRC_SET_REC_TIMEOUT, -EINVAL}, {LIRC_SET_MEASURE_CARRIER_MODE, -EINVAL}};
        {
            CLircReceiver receiver("/dev/lirc1", device);
            std::vector<std::string> sets;
            for (const auto& call : device->calls) {
                if (call.rfind("SET_", 0) == 0) sets.push_back(call);
            }
            EXPECT_EQ(sets, c.sets);
            EXPECT_EQ(receiver.TimeoutUs(), c.timeoutUs);
            EXPECT_EQ(receiver.MeasuresCarrier(), !c.refuse && (c.features & LIRC_CAN_MEASURE_CARRIER) != 0);
        }
        EXPECT_EQ(device->closed, 1);
    }
}

TEST(CLircReceiverTest, RefusesAtStartWithAReasonAndClosesWhatItOpened) {
    const std::pair<std::function<void(CFakeLircDevice&)>, std::string> cases[] = {
        {[](auto& d) { d.openResult = -ENOENT; }, "dtoverlay=gpio-ir"},
        {[](auto& d) { d.failing[LIRC_GET_FEATURES] = -ENOTTY; }, "not a lirc device"},
        {[](auto& d) { d.features = LIRC_CAN_SEND_PULSE; }, "no LIRC_CAN_REC_MODE2"},
        {[](auto& d) { d.failing[LIRC_SET_REC_MODE] = -EINVAL; }, "LIRC_SET_REC_MODE failed"},
    };
    for (const auto& [setup, words] : cases) {
        auto device = Device();
        setup(*device);
        const std::string error = irtest::ErrorOf<CReceiveError>([&] { CLircReceiver("/dev/lirc1", device); });
        EXPECT_NE(error.find(words), std::string::npos) << error;
        EXPECT_EQ(device->closed, device->openResult < 0 ? 0 : 1) << error;
    }
}

// Waiting on an idle device takes no longer than asked; once a press began, silence for the end
// space ends it, not the caller's time.
TEST(CLircReceiverTest, WaitsNoLongerThanAskedAndThenForTheEndOfAPress) {
    auto device = Device();
    device->reads = {{{P(900)}}, {{}, 0}};
    ASSERT_TRUE(CLircReceiver("/dev/lirc1", device).Next(std::chrono::milliseconds(30)));
    EXPECT_LE(device->waits.front(), 30);
    EXPECT_EQ(device->waits.back(), static_cast<int>(CCaptureBuilder::kEndSpace / 1000));
}

// A timeout sample, or silence without one, ends a capture; each is timed from the first sample
// on the receiver's clock, with the carrier measured in it; sample kinds a newer kernel may add
// are ignored.
TEST(CLircReceiverTest, CutsSamplesIntoCapturesTimedFromTheFirstSample) {
    auto device = Device();
    device->reads = {{{S(5000000), P(9000), S(4500), P(560), T(100000), P(300), 0x0f000000u, S(300)}},
                     {{P(300), LIRC_FREQUENCY(36000)}},
                     {{}, 0}};
    CLircReceiver receiver("/dev/lirc1", device);
    const Capture expected[] = {{{9000, 4500, 560}, 0, 5000000}, {{300, 300, 300}, 36000, 5000000 + 14060 + 100000}};
    for (const Capture& want : expected) {
        const auto capture = receiver.Next(kWait);
        ASSERT_TRUE(capture);
        EXPECT_EQ(std::tie(capture->durations, capture->carrier, capture->startUs),
                  std::tie(want.durations, want.carrier, want.startUs));
    }
    EXPECT_FALSE(receiver.Next(std::chrono::milliseconds(0)));
}

// Each failure has its own message; an overflow is told apart by its type (the caller asks for
// the press again).
TEST(CLircReceiverTest, FailuresWhileReadingLoseOnlyThePressUnderWay) {
    const std::string gone = "/dev/lirc1 is gone (unplugged or its driver unloaded)";
    const struct {
        std::vector<CFakeLircDevice::ReadStep> reads;
        std::string error;
    } cases[] = {
        {{{{P(900), S(450), LIRC_MODE2_OVERFLOW}}},
         "overflow: /dev/lirc1 overflowed and lost samples: that press is gone, press again"},
        {{{{P(900)}}, {{}, -EIO}}, std::string("/dev/lirc1: read failed: ") + std::strerror(EIO)},
        {{{{P(900), S(450)}}, {{}, -ENODEV}}, gone + " in the middle of a press, which is lost"},
        {{{{}, -ENODEV}}, gone},
        {{{{P(900), S(450)}, 0, 2}}, "/dev/lirc1: read 6 bytes, not whole 32-bit samples"},
    };
    for (const auto& c : cases) {
        auto device = Device();
        device->reads.assign(c.reads.begin(), c.reads.end());
        device->reads.push_back({{P(300), S(300), P(300), T(100000)}});  // the press after the failure arrives whole
        CLircReceiver receiver("/dev/lirc1", device);
        std::string error = "(no error)";
        try {
            receiver.Next(kWait);
        } catch (const CReceiveError& e) {
            error = std::string(dynamic_cast<const CReceiveOverflow*>(&e) != nullptr ? "overflow: " : "") + e.what();
        }
        EXPECT_EQ(error, c.error);
        const auto next = receiver.Next(kWait);
        ASSERT_TRUE(next);
        EXPECT_EQ(next->durations, (std::vector<std::uint32_t>{300, 300, 300})) << "nothing of the lost press kept";
    }
}

}  // namespace
}  // namespace infrared

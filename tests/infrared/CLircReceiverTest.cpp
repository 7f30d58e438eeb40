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
using Durations = std::vector<std::uint32_t>;
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
    const struct {
        const char* name;
        std::function<void(CFakeLircDevice&)> setup;
        std::string words;
        int closed;
    } cases[] = {
        {"no device", [](auto& d) { d.openResult = -ENOENT; }, "dtoverlay=gpio-ir", 0},
        {"not lirc", [](auto& d) { d.failing[LIRC_GET_FEATURES] = -ENOTTY; }, "not a lirc device", 1},
        {"transmitter only", [](auto& d) { d.features = LIRC_CAN_SEND_PULSE; }, "no LIRC_CAN_REC_MODE2", 1},
        {"mode refused", [](auto& d) { d.failing[LIRC_SET_REC_MODE] = -EINVAL; }, "LIRC_SET_REC_MODE failed", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto device = Device();
        c.setup(*device);
        const std::string error = irtest::ErrorOf<CReceiveError>([&] { CLircReceiver("/dev/lirc1", device); });
        EXPECT_NE(error.find(c.words), std::string::npos) << error;
        EXPECT_EQ(device->closed, c.closed);
    }
}

// Each capture is timed from the first sample on the receiver's clock.
TEST(CLircReceiverTest, CutsSamplesIntoCapturesTimedFromTheFirstSample) {
    const struct {
        const char* name;
        std::vector<CFakeLircDevice::ReadStep> reads;
        std::vector<Capture> captures;  // durations, carrier, start
    } cases[] = {
        {"timeout sample ends it, the next press follows",
         {{{S(5000000), P(9000), S(4500), P(560), T(100000), P(300), S(300), P(300), T(100000)}}},
         {{{9000, 4500, 560}, 0, 5000000}, {{300, 300, 300}, 0, 5000000 + 14060 + 100000}}},
        {"samples over reads, silence without a timeout sample ends it",
         {{{P(900)}}, {{S(450)}}, {{P(560)}}, {{}, 0}},
         {{{900, 450, 560}, 0, 0}}},
        {"measured carrier kept, unknown sample kinds ignored",
         {{{P(900), 0x0f000000u, S(450), P(560), LIRC_FREQUENCY(36000), T(100000)}}},
         {{{900, 450, 560}, 36000, 0}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto device = Device();
        device->reads.assign(c.reads.begin(), c.reads.end());
        CLircReceiver receiver("/dev/lirc1", device);
        for (const Capture& expected : c.captures) {
            const auto capture = receiver.Next(kWait);
            ASSERT_TRUE(capture);
            EXPECT_EQ(std::tie(capture->durations, capture->carrier, capture->startUs),
                      std::tie(expected.durations, expected.carrier, expected.startUs));
        }
        EXPECT_FALSE(receiver.Next(std::chrono::milliseconds(0)));
    }
}

TEST(CLircReceiverTest, FailuresWhileReadingLoseOnlyThePressUnderWay) {
    const struct {
        const char* name;
        std::vector<CFakeLircDevice::ReadStep> reads;
        std::string words;
        bool overflow;
    } cases[] = {
        {"overflow", {{{P(900), S(450), LIRC_MODE2_OVERFLOW}}}, "overflowed and lost samples", true},
        {"read error", {{{P(900)}}, {{}, -EIO}}, std::string("read failed: ") + std::strerror(EIO), false},
        {"vanished mid-capture", {{{P(900), S(450)}}, {{}, -ENODEV}}, "in the middle of a press", false},
        {"vanished while idle", {{{}, -ENODEV}}, "is gone (unplugged", false},
        {"torn sample", {{{P(900), S(450)}, 0, 2}}, "not whole 32-bit samples", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto device = Device();
        device->reads.assign(c.reads.begin(), c.reads.end());
        device->reads.push_back({{P(300), S(300), P(300), T(100000)}});  // the press after the failure arrives whole
        CLircReceiver receiver("/dev/lirc1", device);
        bool overflow = false;
        std::string error = "(no error)";
        try {
            receiver.Next(kWait);
        } catch (const CReceiveOverflow& e) {
            overflow = true;
            error = e.what();
        } catch (const CReceiveError& e) {
            error = e.what();
        }
        EXPECT_EQ(overflow, c.overflow) << error;
        EXPECT_NE(error.find(c.words), std::string::npos) << error;
        const auto next = receiver.Next(kWait);
        ASSERT_TRUE(next);
        EXPECT_EQ(next->durations, (Durations{300, 300, 300})) << "nothing of the lost press kept";
    }
}

}  // namespace
}  // namespace infrared

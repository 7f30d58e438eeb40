// The lirc transmitter behind its seam: the system calls it makes for each kind of device and
// transmission, and each failure it reports at start and on send.
#include "infrared/transmit/CLircTransmitter.h"

#include <gtest/gtest.h>
#include <linux/lirc.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>

#include "ErrorOf.h"
#include "FakeLircDevice.h"

namespace infrared {
namespace {

using irtest::CFakeLircDevice;
using Calls = std::vector<std::string>;
using Fault = std::function<void(CFakeLircDevice&)>;

const std::vector<std::pair<std::string, std::uint32_t>> kCarriers = {{"HFAN0001", 38000}, {"HPUR0002", 36000}};

constexpr std::uint32_t kAll =
    LIRC_CAN_SEND_PULSE | LIRC_CAN_SET_SEND_CARRIER | LIRC_CAN_SET_SEND_DUTY_CYCLE | LIRC_CAN_SET_TRANSMITTER_MASK;

std::shared_ptr<CFakeLircDevice> Device(std::uint32_t features = kAll) {
    auto device = std::make_shared<CFakeLircDevice>();
    device->features = features;
    return device;
}

Transmission Pulses(int emitter) {
    Transmission t;
    t.emitter = emitter;
    t.train = {40000, 50, {900, 450, 560}, 1000};
    return t;
}

TEST(CLircTransmitterTest, RefusesAtStartWithAReasonAndClosesWhatItOpened) {
    const std::tuple<Fault, const char*, int> cases[] = {
        {[](auto& d) { d.openResult = -ENOENT; }, "no such device", 0},
        {[](auto& d) { d.openResult = -EACCES; }, "usermod -aG video", 0},
        {[](auto& d) { d.openResult = -EBUSY; }, std::strerror(EBUSY), 0},
        {[](auto& d) { d.failing[LIRC_GET_FEATURES] = -ENOTTY; }, "not a lirc device", 1},
        {[](auto& d) { d.features = LIRC_CAN_REC_MODE2; }, "cannot send IR", 1},
        {[](auto& d) { d.failing[LIRC_SET_SEND_CARRIER] = -EINVAL; }, "at 38000 Hz, which codeset HFAN0001", 1},
        {[](auto& d) { d.features = LIRC_CAN_SEND_PULSE; }, "its carrier, and codeset HPUR0002 needs 36000", 1},
    };
    for (const auto& [fault, says, closes] : cases) {
        SCOPED_TRACE(says);
        auto device = Device();
        fault(*device);
        const auto error = irtest::ErrorOf<CTransmitError>([&] { CLircTransmitter("/dev/lirc0", device, kCarriers); });
        EXPECT_NE(error.find(says), std::string::npos) << error;
        EXPECT_EQ(device->closed, closes);
    }
}

// Opening checks every codeset's carrier and probes scancode sending; on send, carrier and duty
// cycle are set only when they change; a device without emitter selection has one emitter.
TEST(CLircTransmitterTest, ChecksTheDeviceWhenOpenedAndSendsPulsesWithCarrierDutyAndEmitterSetFirst) {
    auto device = Device();
    CLircTransmitter transmitter("/dev/lirc0", device, kCarriers);
    EXPECT_EQ(std::make_pair(transmitter.Emitters(), transmitter.SendsScancodes()), std::make_pair(4, true));
    const Transmission t = Pulses(3);
    transmitter.Transmit(t);
    transmitter.Transmit(t);
    EXPECT_EQ(device->calls, (Calls{"open /dev/lirc0", "GET_FEATURES", "SET_SEND_CARRIER 38000",
                                    "SET_SEND_CARRIER 36000", "SET_TRANSMITTER_MASK 4294967295", "SET_SEND_MODE 8",
                                    "SET_SEND_MODE 2", "SET_TRANSMITTER_MASK 4", "SET_SEND_CARRIER 40000",
                                    "SET_SEND_DUTY_CYCLE 50", "write 12", "SET_TRANSMITTER_MASK 4", "write 12"}));
    std::vector<std::uint32_t> sent(3);
    std::memcpy(sent.data(), device->lastWrite.data(), 12);
    EXPECT_EQ(sent, t.train.durations);

    device = Device(LIRC_CAN_SEND_PULSE | LIRC_CAN_SET_SEND_CARRIER);
    CLircTransmitter single("/dev/lirc0", device, kCarriers);
    device->calls.clear();
    single.Transmit(Pulses(1));
    EXPECT_EQ(single.Emitters(), 1);
    EXPECT_EQ(device->calls, (Calls{"SET_SEND_CARRIER 40000", "write 12"}));
}

// The kernel may stand in for the user-space encoder only where it sends the very same train:
// one frame per press, no copies, no toggle bit, and a device that takes scancodes.
TEST(CLircTransmitterTest, LetsTheKernelEncodeOnlySingleFrameScancodes) {
    const std::tuple<Protocol, std::uint32_t, bool, bool> cases[] = {
        {Protocol::Nec, 0, true, true},  {Protocol::Nec, 1, true, false},  {Protocol::Rc5, 0, true, false},
        {Protocol::Sony12, 0, true, false}, {Protocol::Nec, 0, false, false}};
    for (const auto& [protocol, repeats, deviceTakesScancodes, kernel] : cases) {
        SCOPED_TRACE(ProtocolName(protocol));
        auto device = Device();
        device->scancodes = deviceTakesScancodes;
        CLircTransmitter transmitter("/dev/lirc0", device, kCarriers);
        Transmission t = Pulses(1);
        t.hasScancode = true;
        t.protocol = protocol;
        t.scancode = 0x0408;
        t.repeats = repeats;
        transmitter.Transmit(t);
        lirc_scancode sent{};
        ASSERT_EQ(device->lastWrite.size(), kernel ? sizeof sent : 12u);
        if (!kernel) continue;
        std::memcpy(&sent, device->lastWrite.data(), sizeof sent);
        EXPECT_EQ(std::tie(sent.scancode, sent.rc_proto), std::make_tuple(0x0408ull, std::uint16_t{RC_PROTO_NEC}));
    }
}

TEST(CLircTransmitterTest, FailsTransmissionsWithoutRetrying) {
    const std::tuple<int, Fault, const char*, int> cases[] = {
        {0, [](auto&) {}, "has no emitter 0 (it has 4)", 0},
        {5, [](auto&) {}, "has no emitter 5", 0},
        {1, [](auto& d) { d.failing[LIRC_SET_TRANSMITTER_MASK] = -EINVAL; }, "LIRC_SET_TRANSMITTER_MASK failed", 0},
        {1, [](auto& d) { d.writeResult = -EIO; }, "write failed", 1},
        {1, [](auto& d) { d.writeResult = 8; }, "short write (8 of 12 bytes)", 1},
    };
    for (const auto& [emitter, fault, says, writes] : cases) {
        SCOPED_TRACE(says);
        auto device = Device();
        CLircTransmitter transmitter("/dev/lirc0", device, kCarriers);
        fault(*device);
        device->calls.clear();
        const auto error = irtest::ErrorOf<CTransmitError>([&] { transmitter.Transmit(Pulses(emitter)); });
        EXPECT_NE(error.find(says), std::string::npos) << error;
        EXPECT_EQ(std::count(device->calls.begin(), device->calls.end(), "write 12"), writes);
    }
}

}  // namespace
}  // namespace infrared

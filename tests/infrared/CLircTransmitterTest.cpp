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

const std::vector<std::pair<std::string, std::uint32_t>> kCarriers = {{"HFAN0001", 38000}, {"HPUR0002", 36000}};
constexpr std::uint32_t kAll =
    LIRC_CAN_SEND_PULSE | LIRC_CAN_SET_SEND_CARRIER | LIRC_CAN_SET_SEND_DUTY_CYCLE | LIRC_CAN_SET_TRANSMITTER_MASK;

std::shared_ptr<CFakeLircDevice> Device(std::uint32_t features = kAll) {
    auto device = std::make_shared<CFakeLircDevice>();
    device->features = features;
    return device;
}

Transmission Pulses(int emitter) { return {"", "", emitter, {40000, 50, {900, 450, 560}, 1000}}; }

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
    EXPECT_EQ(0, std::memcmp(device->lastWrite.data(), t.train.durations.data(), 12));
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
        {Protocol::Nec, 0, true, true},     {Protocol::Nec, 1, true, false}, {Protocol::Rc5, 0, true, false},
        {Protocol::Sony12, 0, true, false}, {Protocol::Nec, 0, false, false}};
    for (const auto& [protocol, repeats, deviceTakesScancodes, kernel] : cases) {
        auto device = Device();
        device->scancodes = deviceTakesScancodes;
        const Transmission t{"", "", 1, {40000, 50, {900, 450, 560}, 1000}, true, protocol, 0x0408, repeats};
        CLircTransmitter("/dev/lirc0", device, kCarriers).Transmit(t);
        lirc_scancode sent{};
        ASSERT_EQ(device->lastWrite.size(), kernel ? sizeof sent : 12u) << ProtocolName(protocol);
        std::memcpy(&sent, device->lastWrite.data(), kernel ? sizeof sent : 0);
        EXPECT_EQ(sent.scancode, kernel ? 0x0408u : 0u);
        EXPECT_EQ(sent.rc_proto, kernel ? RC_PROTO_NEC : 0);
    }
}

// At start (emitter -1 below) the reason and closing what it opened; on send, the reason and no
// second attempt.
TEST(CLircTransmitterTest, FailsWithAReasonAtStartAndOnSendWithoutRetrying) {
    const std::tuple<int, std::function<void(CFakeLircDevice&)>, const char*, int> cases[] = {
        {-1, [](auto& d) { d.openResult = -ENOENT; }, "no such device", 0},
        {-1, [](auto& d) { d.openResult = -EACCES; }, "usermod -aG video", 0},
        {-1, [](auto& d) { d.openResult = -EBUSY; }, std::strerror(EBUSY), 0},
        {-1, [](auto& d) { d.failing[LIRC_GET_FEATURES] = -ENOTTY; }, "not a lirc device", 1},
        {-1, [](auto& d) { d.features = LIRC_CAN_REC_MODE2; }, "cannot send IR", 1},
        {-1, [](auto& d) { d.failing[LIRC_SET_SEND_CARRIER] = -EINVAL; }, "at 38000 Hz, which codeset HFAN0001", 1},
        {-1, [](auto& d) { d.features = LIRC_CAN_SEND_PULSE; }, "its carrier, and codeset HPUR0002 needs 36000", 1},
        {0, [](auto&) {}, "has no emitter 0 (it has 4)", 0},
        {5, [](auto&) {}, "has no emitter 5", 0},
        {1, [](auto& d) { d.failing[LIRC_SET_TRANSMITTER_MASK] = -EINVAL; }, "LIRC_SET_TRANSMITTER_MASK failed", 0},
        {1, [](auto& d) { d.writeResult = -EIO; }, "write failed", 1},
        {1, [](auto& d) { d.writeResult = 8; }, "short write (8 of 12 bytes)", 1},
    };
    for (const auto& [emitter, fault, says, count] : cases) {
        auto device = Device();
        if (emitter < 0) fault(*device);
        const auto error = irtest::ErrorOf<CTransmitError>([&, &fault = fault, emitter = emitter] {
            CLircTransmitter transmitter("/dev/lirc0", device, kCarriers);
            fault(*device);
            transmitter.Transmit(Pulses(emitter));
        });
        EXPECT_NE(error.find(says), std::string::npos) << error;
        const auto writes = std::count(device->calls.begin(), device->calls.end(), "write 12");
        EXPECT_EQ(emitter < 0 ? device->closed : writes, count) << says;
    }
}

}  // namespace
}  // namespace infrared

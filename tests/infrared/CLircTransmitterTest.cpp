// The lirc transmitter behind its seam: the system calls it makes for each kind of device and
// transmission, and every failure injected at start and on send.
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

std::shared_ptr<CFakeLircDevice> Device() {
    auto device = std::make_shared<CFakeLircDevice>();
    device->features = LIRC_CAN_SEND_PULSE | LIRC_CAN_SET_SEND_CARRIER | LIRC_CAN_SET_SEND_DUTY_CYCLE |
                       LIRC_CAN_SET_TRANSMITTER_MASK;
    return device;
}

Transmission Pulses(int emitter) {
    Transmission t;
    t.codeset = "RAW";
    t.emitter = emitter;
    t.train = {40000, 50, {900, 450, 560}, 1000};
    return t;
}

std::string Error(const std::function<void()>& action) { return irtest::ErrorOf<CTransmitError>(action); }

TEST(CLircTransmitterTest, ChecksTheDeviceWhenOpened) {
    auto device = Device();
    CLircTransmitter transmitter("/dev/lirc0", device, kCarriers);
    EXPECT_EQ(device->calls,
              (Calls{"open /dev/lirc0", "GET_FEATURES", "SET_SEND_CARRIER 38000", "SET_SEND_CARRIER 36000",
                     "SET_TRANSMITTER_MASK 4294967295", "SET_SEND_MODE 8", "SET_SEND_MODE 2"}));
    EXPECT_EQ(transmitter.Emitters(), 4);
    EXPECT_TRUE(transmitter.SendsScancodes());
}

TEST(CLircTransmitterTest, RefusesAtStartWithAReasonAndClosesWhatItOpened) {
    struct Case {
        const char* name;
        std::function<void(CFakeLircDevice&)> setUp;
        std::vector<const char*> says;
        int closes;
    } cases[] = {
        {"no device", [](auto& d) { d.openResult = -ENOENT; }, {"no such device", "gpio-ir-tx"}, 0},
        {"no permission", [](auto& d) { d.openResult = -EACCES; },
         {"permission denied", "'video'", "usermod -aG video", "udev"}, 0},
        {"busy", [](auto& d) { d.openResult = -EBUSY; }, {"cannot open /dev/lirc0", std::strerror(EBUSY)}, 0},
        {"not a lirc device", [](auto& d) { d.failing[LIRC_GET_FEATURES] = -ENOTTY; }, {"not a lirc device"}, 1},
        {"receiver only", [](auto& d) { d.features = LIRC_CAN_REC_MODE2; }, {"cannot send IR"}, 1},
        {"carrier refused", [](auto& d) { d.failing[LIRC_SET_SEND_CARRIER] = -EINVAL; },
         {"cannot send at 38000 Hz", "HFAN0001"}, 1},
        {"fixed carrier", [](auto& d) { d.features = LIRC_CAN_SEND_PULSE; },
         {"cannot set its carrier", "HPUR0002", "36000"}, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto device = Device();
        c.setUp(*device);
        const std::string error = Error([&] { CLircTransmitter("/dev/lirc0", device, kCarriers); });
        for (const char* text : c.says) EXPECT_NE(error.find(text), std::string::npos) << error;
        EXPECT_EQ(device->closed, c.closes);
    }
}

// Carrier and duty cycle are set only when they change; a device without emitter selection has
// one emitter.
TEST(CLircTransmitterTest, SendsPulsesWithCarrierDutyAndEmitterSetFirst) {
    auto device = Device();
    CLircTransmitter transmitter("/dev/lirc0", device, kCarriers);
    device->calls.clear();
    const Transmission t = Pulses(3);
    transmitter.Transmit(t);
    transmitter.Transmit(t);
    EXPECT_EQ(device->calls, (Calls{"SET_TRANSMITTER_MASK 4", "SET_SEND_CARRIER 40000", "SET_SEND_DUTY_CYCLE 50",
                                    "write 12", "SET_TRANSMITTER_MASK 4", "write 12"}));
    std::vector<std::uint32_t> sent(3);
    std::memcpy(sent.data(), device->lastWrite.data(), 12);
    EXPECT_EQ(sent, t.train.durations);

    device = Device();
    device->features = LIRC_CAN_SEND_PULSE | LIRC_CAN_SET_SEND_CARRIER;
    CLircTransmitter single("/dev/lirc0", device, kCarriers);
    EXPECT_EQ(single.Emitters(), 1);
    device->calls.clear();
    single.Transmit(Pulses(1));
    EXPECT_EQ(device->calls, (Calls{"SET_SEND_CARRIER 40000", "write 12"}));
    EXPECT_NE(Error([&] { single.Transmit(Pulses(2)); }).find("has no emitter 2"), std::string::npos);
}

TEST(CLircTransmitterTest, LetsTheKernelEncodeOnlySingleFrameScancodes) {
    struct Case {
        Protocol protocol;
        bool deviceTakesScancodes;
        bool kernel;
    } cases[] = {
        {Protocol::Nec, true, true}, {Protocol::Jvc, true, true}, {Protocol::Sony12, true, false},
        {Protocol::Nec, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(ProtocolName(c.protocol));
        auto device = Device();
        device->scancodes = c.deviceTakesScancodes;
        CLircTransmitter transmitter("/dev/lirc0", device, kCarriers);
        device->calls.clear();
        Transmission t = Pulses(1);
        t.hasScancode = true;
        t.protocol = c.protocol;
        t.scancode = 0x0408;
        transmitter.Transmit(t);
        if (!c.kernel) {
            EXPECT_EQ(device->calls.back(), "write 12");
            continue;
        }
        ASSERT_EQ(device->lastWrite.size(), sizeof(lirc_scancode));
        lirc_scancode sent{};
        std::memcpy(&sent, device->lastWrite.data(), sizeof sent);
        EXPECT_EQ(sent.scancode, 0x0408u);
        EXPECT_EQ(sent.rc_proto, c.protocol == Protocol::Nec ? RC_PROTO_NEC : RC_PROTO_JVC);
        EXPECT_EQ(device->calls.at(1), "SET_SEND_MODE 8");
    }
}

TEST(CLircTransmitterTest, FailsTransmissionsWithoutRetrying) {
    struct Case {
        const char* name;
        int emitter;
        std::function<void(CFakeLircDevice&)> fault;
        const char* says;
        int writes;
    } cases[] = {
        {"emitter 0", 0, [](auto&) {}, "has no emitter 0 (it has 4)", 0},
        {"emitter beyond the device", 5, [](auto&) {}, "has no emitter 5", 0},
        {"mask refused", 1, [](auto& d) { d.failing[LIRC_SET_TRANSMITTER_MASK] = -EINVAL; },
         "LIRC_SET_TRANSMITTER_MASK failed", 0},
        {"write error", 1, [](auto& d) { d.writeResult = -EIO; }, "write failed", 1},
        {"short write", 1, [](auto& d) { d.writeResult = 8; }, "short write (8 of 12 bytes)", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto device = Device();
        CLircTransmitter transmitter("/dev/lirc0", device, kCarriers);
        c.fault(*device);
        device->calls.clear();
        const std::string error = Error([&] { transmitter.Transmit(Pulses(c.emitter)); });
        EXPECT_NE(error.find(c.says), std::string::npos) << error;
        EXPECT_EQ(std::count_if(device->calls.begin(), device->calls.end(),
                                [](const std::string& call) { return call.rfind("write", 0) == 0; }),
                  c.writes);
    }
}

}  // namespace
}  // namespace infrared

// The lirc transmitter behind its seam: the system calls it makes for each kind of device and
// transmission, and every failure injected at start and on send.
#include "infrared/transmit/CLircTransmitter.h"

#include <gtest/gtest.h>
#include <linux/lirc.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <map>

namespace infrared {
namespace {

constexpr int kFd = 7;

// Records every call as a line and answers as configured.
class CFakeLircDevice : public ILircDevice {
public:
    int openResult = kFd;
    std::uint32_t features = LIRC_CAN_SEND_PULSE | LIRC_CAN_SET_SEND_CARRIER | LIRC_CAN_SET_SEND_DUTY_CYCLE |
                             LIRC_CAN_SET_TRANSMITTER_MASK;
    int emitters = 4;
    bool scancodes = true;
    std::map<unsigned long, int> failing;  // request -> -errno
    std::int64_t writeResult = -1;         // -1: everything written
    std::vector<std::string> calls;
    std::vector<std::uint8_t> lastWrite;
    int closed = 0;

    int Open(const std::string& path) override {
        calls.push_back("open " + path);
        return openResult;
    }
    int Ioctl(int fd, unsigned long request, std::uint32_t* argument) override {
        EXPECT_EQ(fd, kFd);
        calls.push_back(Name(request) + (request == LIRC_GET_FEATURES ? "" : " " + std::to_string(*argument)));
        const auto fault = failing.find(request);
        if (fault != failing.end()) return fault->second;
        if (request == LIRC_GET_FEATURES) *argument = features;
        if (request == LIRC_SET_SEND_MODE && *argument == LIRC_MODE_SCANCODE && !scancodes) return -EINVAL;
        if (request == LIRC_SET_TRANSMITTER_MASK && (*argument >> emitters) != 0) return emitters;
        return 0;
    }
    std::int64_t Write(int fd, const void* data, std::size_t size) override {
        EXPECT_EQ(fd, kFd);
        calls.push_back("write " + std::to_string(size));
        lastWrite.assign(static_cast<const std::uint8_t*>(data), static_cast<const std::uint8_t*>(data) + size);
        return writeResult == -1 ? static_cast<std::int64_t>(size) : writeResult;
    }
    void Close(int fd) override {
        EXPECT_EQ(fd, kFd);
        ++closed;
    }
    std::string GroupOf(const std::string&) override { return "video"; }
    // A transmitter never reads.
    int OpenForReading(const std::string&) override {
        ADD_FAILURE() << "the transmitter opened for reading";
        return -ENOSYS;
    }
    std::int64_t Read(int, void*, std::size_t, int) override {
        ADD_FAILURE() << "the transmitter read";
        return -ENOSYS;
    }

    static std::string Name(unsigned long request) {
        switch (request) {
            case LIRC_GET_FEATURES: return "GET_FEATURES";
            case LIRC_SET_SEND_MODE: return "SET_SEND_MODE";
            case LIRC_SET_SEND_CARRIER: return "SET_SEND_CARRIER";
            case LIRC_SET_SEND_DUTY_CYCLE: return "SET_SEND_DUTY_CYCLE";
            case LIRC_SET_TRANSMITTER_MASK: return "SET_TRANSMITTER_MASK";
            default: return "ioctl?";
        }
    }
};

const std::vector<std::pair<std::string, std::uint32_t>> kCarriers = {{"HFAN0001", 38000}, {"HPUR0002", 36000}};

Transmission Pulses(int emitter) {
    Transmission t;
    t.codeset = "RAW";
    t.emitter = emitter;
    t.train.carrier = 40000;
    t.train.dutyCycle = 50;
    t.train.durations = {900, 450, 560};
    t.train.trailingGap = 1000;
    return t;
}

std::string Error(const std::function<void()>& action) {
    try {
        action();
    } catch (const CTransmitError& e) {
        return e.what();
    }
    return "(no error)";
}

TEST(CLircTransmitterTest, ChecksTheDeviceWhenOpened) {
    auto device = std::make_shared<CFakeLircDevice>();
    CLircTransmitter transmitter("/dev/lirc0", device, kCarriers);
    const std::vector<std::string> expected = {
        "open /dev/lirc0", "GET_FEATURES", "SET_SEND_CARRIER 38000", "SET_SEND_CARRIER 36000",
        "SET_TRANSMITTER_MASK 4294967295", "SET_SEND_MODE 8", "SET_SEND_MODE 2"};
    EXPECT_EQ(device->calls, expected);
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
        {"no permission", [](auto& d) { d.openResult = -EACCES; }, {"permission denied", "'video'", "usermod -aG video", "udev"}, 0},
        {"busy", [](auto& d) { d.openResult = -EBUSY; }, {"cannot open /dev/lirc0", std::strerror(EBUSY)}, 0},
        {"not a lirc device", [](auto& d) { d.failing[LIRC_GET_FEATURES] = -ENOTTY; }, {"not a lirc device"}, 1},
        {"receiver only", [](auto& d) { d.features = LIRC_CAN_REC_MODE2; }, {"cannot send IR"}, 1},
        {"carrier refused", [](auto& d) { d.failing[LIRC_SET_SEND_CARRIER] = -EINVAL; },
         {"cannot send at 38000 Hz", "HFAN0001"}, 1},
        {"fixed carrier", [](auto& d) { d.features = LIRC_CAN_SEND_PULSE; }, {"cannot set its carrier", "HPUR0002", "36000"}, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto device = std::make_shared<CFakeLircDevice>();
        c.setUp(*device);
        const std::string error = Error([&] { CLircTransmitter("/dev/lirc0", device, kCarriers); });
        for (const char* text : c.says) EXPECT_NE(error.find(text), std::string::npos) << error;
        EXPECT_EQ(device->closed, c.closes);
    }
}

TEST(CLircTransmitterTest, SendsPulsesWithCarrierDutyAndEmitterSetFirst) {
    auto device = std::make_shared<CFakeLircDevice>();
    CLircTransmitter transmitter("/dev/lirc0", device, kCarriers);
    device->calls.clear();
    const Transmission t = Pulses(3);
    transmitter.Transmit(t);
    const std::vector<std::string> expected = {"SET_TRANSMITTER_MASK 4", "SET_SEND_CARRIER 40000",
                                               "SET_SEND_DUTY_CYCLE 50", "write 12"};
    EXPECT_EQ(device->calls, expected);
    std::vector<std::uint32_t> sent(3);
    std::memcpy(sent.data(), device->lastWrite.data(), 12);
    EXPECT_EQ(sent, t.train.durations);
    // Nothing changed: only the emitter is selected again.
    device->calls.clear();
    transmitter.Transmit(t);
    EXPECT_EQ(device->calls, (std::vector<std::string>{"SET_TRANSMITTER_MASK 4", "write 12"}));
}

TEST(CLircTransmitterTest, LetsTheKernelEncodeOnlySingleFrameScancodes) {
    struct Case {
        Protocol protocol;
        bool deviceTakesScancodes;
        bool kernel;
    } cases[] = {
        {Protocol::Nec, true, true}, {Protocol::Jvc, true, true},
        {Protocol::Rc6Mode0, true, false},  // the toggle bit flips on every press
        {Protocol::Sony12, true, false},  // three frames per press
        {Protocol::Sharp, true, false},   // two frames per press
        {Protocol::Nec, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(ProtocolName(c.protocol));
        auto device = std::make_shared<CFakeLircDevice>();
        device->scancodes = c.deviceTakesScancodes;
        CLircTransmitter transmitter("/dev/lirc0", device, kCarriers);
        device->calls.clear();
        Transmission t = Pulses(1);
        t.hasScancode = true;
        t.protocol = c.protocol;
        t.scancode = 0x0408;
        transmitter.Transmit(t);
        if (c.kernel) {
            ASSERT_EQ(device->lastWrite.size(), sizeof(lirc_scancode));
            lirc_scancode sent{};
            std::memcpy(&sent, device->lastWrite.data(), sizeof sent);
            EXPECT_EQ(sent.scancode, 0x0408u);
            EXPECT_EQ(sent.rc_proto, c.protocol == Protocol::Nec ? RC_PROTO_NEC : RC_PROTO_JVC);
            EXPECT_EQ(device->calls.at(1), "SET_SEND_MODE 8");
        } else {
            EXPECT_EQ(device->lastWrite.size(), 12u);
            EXPECT_EQ(device->calls.back(), "write 12");
        }
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
        {"mask refused", 1, [](auto& d) { d.failing[LIRC_SET_TRANSMITTER_MASK] = -EINVAL; }, "LIRC_SET_TRANSMITTER_MASK failed", 0},
        {"write error", 1, [](auto& d) { d.writeResult = -EIO; }, "write failed", 1},
        {"short write", 1, [](auto& d) { d.writeResult = 8; }, "short write (8 of 12 bytes)", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto device = std::make_shared<CFakeLircDevice>();
        CLircTransmitter transmitter("/dev/lirc0", device, kCarriers);
        c.fault(*device);
        device->calls.clear();
        const std::string error = Error([&] { transmitter.Transmit(Pulses(c.emitter)); });
        EXPECT_NE(error.find(c.says), std::string::npos) << error;
        int writes = 0;
        for (const auto& call : device->calls) writes += call.rfind("write", 0) == 0 ? 1 : 0;
        EXPECT_EQ(writes, c.writes);
    }
}

TEST(CLircTransmitterTest, ADeviceWithoutEmitterSelectionHasOneEmitter) {
    auto device = std::make_shared<CFakeLircDevice>();
    device->features = LIRC_CAN_SEND_PULSE | LIRC_CAN_SET_SEND_CARRIER;
    CLircTransmitter transmitter("/dev/lirc0", device, kCarriers);
    EXPECT_EQ(transmitter.Emitters(), 1);
    device->calls.clear();
    transmitter.Transmit(Pulses(1));
    EXPECT_EQ(device->calls, (std::vector<std::string>{"SET_SEND_CARRIER 40000", "write 12"}));
    EXPECT_NE(Error([&] { transmitter.Transmit(Pulses(2)); }).find("has no emitter 2"), std::string::npos);
}

}  // namespace
}  // namespace infrared

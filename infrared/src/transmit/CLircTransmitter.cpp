#include "infrared/transmit/CLircTransmitter.h"

#include <linux/lirc.h>

#include <cerrno>
#include <cstring>
#include <thread>

#include "infrared/encode/CKeyEncoder.h"

namespace infrared {
namespace {

std::uint16_t KernelProtocol(Protocol protocol) {
    switch (protocol) {
        case Protocol::Nec: return RC_PROTO_NEC;
        case Protocol::NecX: return RC_PROTO_NECX;
        case Protocol::Nec32: return RC_PROTO_NEC32;
        case Protocol::Rc5: return RC_PROTO_RC5;
        case Protocol::Rc6Mode0: return RC_PROTO_RC6_0;
        case Protocol::Sony12: return RC_PROTO_SONY12;
        case Protocol::Sony15: return RC_PROTO_SONY15;
        case Protocol::Sony20: return RC_PROTO_SONY20;
        case Protocol::Jvc: return RC_PROTO_JVC;
        case Protocol::Sanyo: return RC_PROTO_SANYO;
        case Protocol::Sharp: return RC_PROTO_SHARP;
        default: return RC_PROTO_UNKNOWN;
    }
}

std::string Reason(int error) { return std::strerror(error < 0 ? -error : error); }

}  // namespace

CLircTransmitter::CLircTransmitter(const std::string& path, std::shared_ptr<ILircDevice> device,
                                   const std::vector<std::pair<std::string, std::uint32_t>>& carriers)
    : path_(path), device_(std::move(device)) {
    const int fd = device_->Open(path_);
    if (fd < 0) openFailed(fd);
    fd_ = fd;
    try {
        if (device_->Ioctl(fd_, LIRC_GET_FEATURES, &features_) < 0) {
            throw CTransmitError(path_ + " is not a lirc device (LIRC_GET_FEATURES failed)");
        }
        if ((features_ & LIRC_CAN_SEND_PULSE) == 0) {
            throw CTransmitError(path_ + " cannot send IR (it is a receiver only); pick the transmitter's /dev/lircN");
        }
        for (const auto& [codeset, carrier] : carriers) {
            if ((features_ & LIRC_CAN_SET_SEND_CARRIER) == 0) {
                if (carrier == kFixedCarrier) continue;
                throw CTransmitError(path_ + " cannot set its carrier, and codeset " + codeset + " needs " +
                                     std::to_string(carrier) + " Hz");
            }
            std::uint32_t value = carrier;
            if (device_->Ioctl(fd_, LIRC_SET_SEND_CARRIER, &value) < 0) {
                throw CTransmitError(path_ + " cannot send at " + std::to_string(carrier) + " Hz, which codeset " +
                                     codeset + " needs");
            }
            carrier_ = carrier;
        }
        if ((features_ & LIRC_CAN_SET_TRANSMITTER_MASK) != 0) {
            // A mask naming emitters the device lacks is refused with their number.
            std::uint32_t all = 0xffffffffu;
            const int result = device_->Ioctl(fd_, LIRC_SET_TRANSMITTER_MASK, &all);
            emitters_ = result > 0 ? result : 32;
        }
        std::uint32_t scancode = LIRC_MODE_SCANCODE;
        scancodes_ = device_->Ioctl(fd_, LIRC_SET_SEND_MODE, &scancode) == 0;
        mode_ = scancodes_ ? LIRC_MODE_SCANCODE : LIRC_MODE_PULSE;
        setMode(LIRC_MODE_PULSE);
    } catch (...) {
        device_->Close(fd_);
        throw;
    }
}

CLircTransmitter::~CLircTransmitter() { device_->Close(fd_); }

void CLircTransmitter::openFailed(int error) {
    const std::string cannot = "cannot open " + path_ + ": ";
    if (error == -ENOENT || error == -ENODEV || error == -ENXIO) {
        throw CTransmitError(cannot + "no such device. Is the transmitter's driver loaded (on a Raspberry Pi: "
                             "dtoverlay=gpio-ir-tx in config.txt; USB: mceusb, iguanair)? `ls /dev/lirc*` lists them");
    }
    if (error == -EACCES || error == -EPERM) {
        const std::string group = device_->GroupOf(path_);
        const std::string owner = group.empty() ? "its group" : "group '" + group + "'";
        throw CTransmitError(cannot + "permission denied. The device belongs to " + owner +
                             ": add yourself (sudo usermod -aG " + (group.empty() ? "<group>" : group) +
                             " $USER, then log in again) or add a udev rule such as "
                             "KERNEL==\"lirc[0-9]*\", GROUP=\"video\", MODE=\"0660\"");
    }
    throw CTransmitError(cannot + Reason(error));
}

void CLircTransmitter::ioctlOrThrow(unsigned long request, std::uint32_t value, const char* what) {
    const int result = device_->Ioctl(fd_, request, &value);
    if (result < 0) throw CTransmitError(path_ + ": " + what + " failed: " + Reason(result));
}

void CLircTransmitter::setMode(std::uint32_t mode) {
    if (mode_ == mode) return;
    ioctlOrThrow(LIRC_SET_SEND_MODE, mode, "LIRC_SET_SEND_MODE");
    mode_ = mode;
}

void CLircTransmitter::writeAll(const void* data, std::size_t size) {
    const std::int64_t written = device_->Write(fd_, data, size);
    if (written < 0) throw CTransmitError(path_ + ": write failed: " + Reason(static_cast<int>(written)));
    if (static_cast<std::uint64_t>(written) != size) {
        throw CTransmitError(path_ + ": short write (" + std::to_string(written) + " of " + std::to_string(size) +
                             " bytes); nothing is resent");
    }
}

std::chrono::microseconds CLircTransmitter::Transmit(const Transmission& t) {
    if (t.emitter < 1 || t.emitter > emitters_) {
        throw CTransmitError(path_ + " has no emitter " + std::to_string(t.emitter) + " (it has " +
                             std::to_string(emitters_) + ")");
    }
    if ((features_ & LIRC_CAN_SET_TRANSMITTER_MASK) != 0) {
        ioctlOrThrow(LIRC_SET_TRANSMITTER_MASK, 1u << (t.emitter - 1), "LIRC_SET_TRANSMITTER_MASK");
    }
    const bool kernelEncodes = scancodes_ && t.hasScancode && CKeyEncoder::KernelMayEncode(t.protocol, t.repeats);
    const auto start = std::chrono::steady_clock::now();
    if (kernelEncodes) {
        setMode(LIRC_MODE_SCANCODE);
        struct lirc_scancode code {};
        code.rc_proto = KernelProtocol(t.protocol);
        code.scancode = t.scancode;
        writeAll(&code, sizeof code);
    } else {
        setMode(LIRC_MODE_PULSE);
        if ((features_ & LIRC_CAN_SET_SEND_CARRIER) != 0 && carrier_ != t.train.carrier) {
            ioctlOrThrow(LIRC_SET_SEND_CARRIER, t.train.carrier, "LIRC_SET_SEND_CARRIER");
            carrier_ = t.train.carrier;
        }
        if ((features_ & LIRC_CAN_SET_SEND_DUTY_CYCLE) != 0 && duty_ != t.train.dutyCycle) {
            ioctlOrThrow(LIRC_SET_SEND_DUTY_CYCLE, t.train.dutyCycle, "LIRC_SET_SEND_DUTY_CYCLE");
            duty_ = t.train.dutyCycle;
        }
        writeAll(t.train.durations.data(), t.train.durations.size() * sizeof(std::uint32_t));
    }
    // The write returns once the frame is on air; measure that, then keep the protocol's gap.
    const auto onAir = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
    std::this_thread::sleep_for(std::chrono::microseconds(t.train.trailingGap));
    return onAir;
}

}  // namespace infrared

#include "infrared/receive/CLircReceiver.h"

#include <linux/lirc.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "CaptureWait.h"
#include "../transmit/LircOpenFailure.h"

namespace infrared {
namespace {

std::string Reason(std::int64_t error) { return std::strerror(static_cast<int>(error < 0 ? -error : error)); }

}  // namespace

CLircReceiver::CLircReceiver(const std::string& path, std::shared_ptr<ILircDevice> device)
    : path_(path), device_(std::move(device)) {
    const int fd = device_->OpenForReading(path_);
    if (fd < 0) {
        throw CReceiveError(LircOpenFailure(path_, fd, *device_,
                                            "Is the receiver's driver loaded (on a Raspberry Pi: "
                                            "dtoverlay=gpio-ir,gpio_pin=<its GPIO> in config.txt; USB: mceusb, streamzap)?"));
    }
    fd_ = fd;
    try {
        configure();
    } catch (...) {
        device_->Close(fd_);
        throw;
    }
}

CLircReceiver::~CLircReceiver() { device_->Close(fd_); }

void CLircReceiver::configure() {
    std::uint32_t features = 0;
    if (device_->Ioctl(fd_, LIRC_GET_FEATURES, &features) < 0) {
        throw CReceiveError(path_ + " is not a lirc device (LIRC_GET_FEATURES failed)");
    }
    if ((features & LIRC_CAN_REC_MODE2) == 0) {
        throw CReceiveError(path_ + " cannot receive IR as pulses (no LIRC_CAN_REC_MODE2; it may be a transmitter "
                                    "only): pick the receiver's /dev/lircN");
    }
    std::uint32_t mode = LIRC_MODE_MODE2;
    const int result = device_->Ioctl(fd_, LIRC_SET_REC_MODE, &mode);
    if (result < 0) throw CReceiveError(path_ + ": LIRC_SET_REC_MODE failed: " + Reason(result));
    if ((features & LIRC_CAN_SET_REC_TIMEOUT) != 0) setTimeout();
    if ((features & LIRC_CAN_MEASURE_CARRIER) != 0) {
        std::uint32_t on = 1;
        measuresCarrier_ = device_->Ioctl(fd_, LIRC_SET_MEASURE_CARRIER_MODE, &on) == 0;
    }
}

// The driver's own timeout ends a capture with a timeout sample; the builder's end space is
// asked for, within what the driver allows. Drivers that refuse keep their default.
void CLircReceiver::setTimeout() {
    std::uint32_t low = 0, high = 0;
    std::uint32_t wanted = CCaptureBuilder::kEndSpace;
    if (device_->Ioctl(fd_, LIRC_GET_MIN_TIMEOUT, &low) == 0 && device_->Ioctl(fd_, LIRC_GET_MAX_TIMEOUT, &high) == 0 &&
        low <= high) {
        wanted = std::clamp(wanted, low, high);
    }
    std::uint32_t value = wanted;
    if (device_->Ioctl(fd_, LIRC_SET_REC_TIMEOUT, &value) == 0) timeoutUs_ = wanted;
}

bool CLircReceiver::fill(int waitMs) {
    std::uint32_t buffer[256];
    const std::int64_t got = device_->Read(fd_, buffer, sizeof buffer, waitMs);
    if (got < 0) {
        const bool gone = got == -ENODEV;
        const bool midCapture = builder_.Collecting();
        builder_.Discard();
        samples_.clear();
        if (gone) {
            throw CReceiveError(path_ + " is gone (unplugged or its driver unloaded)" +
                                (midCapture ? std::string(" in the middle of a press, which is lost") : std::string()));
        }
        throw CReceiveError(path_ + ": read failed: " + Reason(got));
    }
    if (got % sizeof(std::uint32_t) != 0) {
        builder_.Discard();
        samples_.clear();
        throw CReceiveError(path_ + ": read " + std::to_string(got) + " bytes, not whole 32-bit samples");
    }
    samples_.insert(samples_.end(), buffer, buffer + got / sizeof(std::uint32_t));
    return got > 0;
}

std::optional<Capture> CLircReceiver::consume(std::uint32_t sample) {
    const std::uint32_t value = LIRC_VALUE(sample);
    switch (LIRC_MODE2(sample)) {
        case LIRC_MODE2_PULSE: return builder_.Mark(value);
        case LIRC_MODE2_SPACE: return builder_.Space(value);
        case LIRC_MODE2_TIMEOUT: {
            auto done = builder_.Space(value);  // the silence may already have ended it
            return done ? done : builder_.End();
        }
        case LIRC_MODE2_FREQUENCY: builder_.Carrier(value); return std::nullopt;
        case LIRC_MODE2_OVERFLOW:
            builder_.Discard();
            throw CReceiveOverflow(path_ + " overflowed and lost samples: that press is gone, press again");
        default: return std::nullopt;  // kinds a newer kernel may add
    }
}

std::optional<Capture> CLircReceiver::Next(std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        while (!samples_.empty()) {
            const std::uint32_t sample = samples_.front();
            samples_.pop_front();
            if (auto done = consume(sample)) return done;
        }
        // Under way, a capture ends after the end space of silence (a driver may send no
        // timeout sample); otherwise wait for the caller's time.
        const auto waitMs = CaptureWaitMs(builder_, deadline);
        if (!waitMs) return std::nullopt;
        if (!fill(*waitMs) && builder_.Collecting()) return builder_.End();
    }
}

}  // namespace infrared

// A Linux IR transmitter (/dev/lircN) behind the IR library: checked when opened (can send,
// can use every carrier the codesets need, the user may open it), then sends each transmission
// as a kernel-encoded scancode where that gives the same frame, else as pulses. The device's
// emitters are numbered from 1 by the pairing list's device index.
// Construction throws CTransmitError with a message for people; one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "infrared/transmit/ILircDevice.h"
#include "infrared/transmit/ITransmitter.h"

namespace infrared {

class CLircTransmitter : public ITransmitter {
public:
    // `carriers`: (codeset, carrier in Hz) the device must be able to send.
    CLircTransmitter(const std::string& path, std::shared_ptr<ILircDevice> device,
                     const std::vector<std::pair<std::string, std::uint32_t>>& carriers);
    ~CLircTransmitter() override;
    CLircTransmitter(const CLircTransmitter&) = delete;
    CLircTransmitter& operator=(const CLircTransmitter&) = delete;

    std::chrono::microseconds Transmit(const Transmission& transmission) override;
    std::string Describe() const override { return path_; }

    int Emitters() const { return emitters_; }
    bool SendsScancodes() const { return scancodes_; }
    // The fixed carrier assumed for a device that cannot set one.
    static constexpr std::uint32_t kFixedCarrier = 38000;

private:
    void ioctlOrThrow(unsigned long request, std::uint32_t value, const char* what);
    void setMode(std::uint32_t mode);
    void writeAll(const void* data, std::size_t size);
    [[noreturn]] void openFailed(int error);

    std::string path_;
    std::shared_ptr<ILircDevice> device_;
    int fd_ = -1;
    std::uint32_t features_ = 0;
    int emitters_ = 1;
    bool scancodes_ = false;
    std::uint32_t mode_ = 0;
    std::uint32_t carrier_ = 0;
    std::uint32_t duty_ = 0;
};

}  // namespace infrared

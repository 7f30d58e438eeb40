// The real ILircDevice: open(2), ioctl(2), write(2), poll(2), read(2), close(2) on a /dev/lircN node.
// Stateless and thread-safe.
#pragma once

#include "infrared/transmit/ILircDevice.h"

namespace infrared {

class CLircDevice : public ILircDevice {
public:
    int Open(const std::string& path) override;
    int Ioctl(int fd, unsigned long request, std::uint32_t* argument) override;
    std::int64_t Write(int fd, const void* data, std::size_t size) override;
    int OpenForReading(const std::string& path) override;
    std::int64_t Read(int fd, void* data, std::size_t size, int timeoutMs) override;
    void Close(int fd) override;
    std::string GroupOf(const std::string& path) override;
};

}  // namespace infrared

// The seam between the lirc transmitter and receiver and the kernel: the system calls they
// make, so tests can record them and inject every failure. Results follow the kernel's
// convention: a negative errno on failure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace infrared {

class ILircDevice {
public:
    virtual ~ILircDevice() = default;
    virtual int Open(const std::string& path) = 0;  // a descriptor opened for writing, or -errno
    // LIRC_* requests with a 32-bit argument; the ioctl's result (>= 0) or -errno.
    virtual int Ioctl(int fd, unsigned long request, std::uint32_t* argument) = 0;
    virtual std::int64_t Write(int fd, const void* data, std::size_t size) = 0;  // bytes or -errno
    // A descriptor opened for reading only (a receiver needs no write access), or -errno.
    virtual int OpenForReading(const std::string& path) = 0;
    // Waits up to `timeoutMs` for data, then reads what is there: the bytes read, 0 when nothing
    // came in time, -ENODEV once the device is gone, or another -errno.
    virtual std::int64_t Read(int fd, void* data, std::size_t size, int timeoutMs) = 0;
    virtual void Close(int fd) = 0;
    // The group owning `path`, for the permission hint ("" when unknown).
    virtual std::string GroupOf(const std::string& path) = 0;
};

}  // namespace infrared

#include "infrared/transmit/CLircDevice.h"

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace infrared {

int CLircDevice::Open(const std::string& path) {
    // Non-blocking open would make writes fail with EAGAIN; the writes must wait for the air.
    const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    return fd >= 0 ? fd : -errno;
}

int CLircDevice::Ioctl(int fd, unsigned long request, std::uint32_t* argument) {
    const int result = ::ioctl(fd, request, argument);
    return result >= 0 ? result : -errno;
}

std::int64_t CLircDevice::Write(int fd, const void* data, std::size_t size) {
    ssize_t written;
    do {
        written = ::write(fd, data, size);
    } while (written < 0 && errno == EINTR);
    return written >= 0 ? static_cast<std::int64_t>(written) : -static_cast<std::int64_t>(errno);
}

int CLircDevice::OpenForReading(const std::string& path) {
    // Non-blocking: Read() waits in poll(2), and a read after a spurious wake-up must not block.
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    return fd >= 0 ? fd : -errno;
}

std::int64_t CLircDevice::Read(int fd, void* data, std::size_t size, int timeoutMs) {
    struct pollfd wait {};
    wait.fd = fd;
    wait.events = POLLIN;
    const int ready = ::poll(&wait, 1, timeoutMs);
    if (ready < 0) return errno == EINTR ? 0 : -static_cast<std::int64_t>(errno);
    if (ready == 0) return 0;
    // An unregistered device reports a hang-up or an error instead of data.
    if ((wait.revents & POLLIN) == 0) return -ENODEV;
    const ssize_t got = ::read(fd, data, size);
    if (got < 0) return errno == EAGAIN || errno == EINTR ? 0 : -static_cast<std::int64_t>(errno);
    return got > 0 ? static_cast<std::int64_t>(got) : -ENODEV;
}

void CLircDevice::Close(int fd) { ::close(fd); }

std::string CLircDevice::GroupOf(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return std::string();
    struct group entry {};
    struct group* found = nullptr;
    std::vector<char> buffer(16384);
    if (::getgrgid_r(info.st_gid, &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) {
        return std::to_string(info.st_gid);
    }
    return found->gr_name;
}

}  // namespace infrared

#include "FakeLircDevice.h"

#include <gtest/gtest.h>
#include <linux/lirc.h>

#include <cstring>

namespace irtest {
namespace {

std::string Name(unsigned long request) {
    static const std::map<unsigned long, const char*> names = {
        {LIRC_GET_FEATURES, "GET_FEATURES"}, {LIRC_GET_MIN_TIMEOUT, "GET_MIN_TIMEOUT"},
        {LIRC_GET_MAX_TIMEOUT, "GET_MAX_TIMEOUT"}, {LIRC_SET_REC_MODE, "SET_REC_MODE"},
        {LIRC_SET_REC_TIMEOUT, "SET_REC_TIMEOUT"}, {LIRC_SET_MEASURE_CARRIER_MODE, "SET_MEASURE_CARRIER_MODE"},
        {LIRC_SET_SEND_MODE, "SET_SEND_MODE"}, {LIRC_SET_SEND_CARRIER, "SET_SEND_CARRIER"},
        {LIRC_SET_SEND_DUTY_CYCLE, "SET_SEND_DUTY_CYCLE"}, {LIRC_SET_TRANSMITTER_MASK, "SET_TRANSMITTER_MASK"}};
    const auto found = names.find(request);
    return found != names.end() ? found->second : "ioctl?";
}

}  // namespace

int CFakeLircDevice::Open(const std::string& path) {
    calls.push_back("open " + path);
    return openResult;
}

int CFakeLircDevice::OpenForReading(const std::string& path) {
    calls.push_back("open to read " + path);
    return openResult;
}

int CFakeLircDevice::Ioctl(int fd, unsigned long request, std::uint32_t* argument) {
    EXPECT_EQ(fd, kFd);
    const bool get = request == LIRC_GET_FEATURES || request == LIRC_GET_MIN_TIMEOUT || request == LIRC_GET_MAX_TIMEOUT;
    calls.push_back(Name(request) + (get ? "" : " " + std::to_string(*argument)));
    const auto fault = failing.find(request);
    if (fault != failing.end()) return fault->second;
    if (request == LIRC_GET_FEATURES) *argument = features;
    if (request == LIRC_GET_MIN_TIMEOUT) *argument = minTimeout;
    if (request == LIRC_GET_MAX_TIMEOUT) *argument = maxTimeout;
    if (request == LIRC_SET_SEND_MODE && *argument == LIRC_MODE_SCANCODE && !scancodes) return -EINVAL;
    if (request == LIRC_SET_TRANSMITTER_MASK && (*argument >> emitters) != 0) return emitters;
    return 0;
}

std::int64_t CFakeLircDevice::Write(int fd, const void* data, std::size_t size) {
    EXPECT_EQ(fd, kFd);
    calls.push_back("write " + std::to_string(size));
    lastWrite.assign(static_cast<const std::uint8_t*>(data), static_cast<const std::uint8_t*>(data) + size);
    return writeResult == -1 ? static_cast<std::int64_t>(size) : writeResult;
}

std::int64_t CFakeLircDevice::Read(int fd, void* data, std::size_t size, int timeoutMs) {
    EXPECT_EQ(fd, kFd);
    waits.push_back(timeoutMs);
    if (reads.empty()) return 0;
    ReadStep step = std::move(reads.front());
    reads.pop_front();
    if (step.samples.empty()) return step.result;
    // More samples than fit go back for the next read, as the kernel keeps them.
    const std::size_t fit = std::min(step.samples.size(), size / sizeof(std::uint32_t));
    if (fit < step.samples.size()) {
        reads.push_front(
            {std::vector<std::uint32_t>(step.samples.begin() + static_cast<long>(fit), step.samples.end())});
    }
    std::memcpy(data, step.samples.data(), fit * sizeof(std::uint32_t));
    return static_cast<std::int64_t>(fit * sizeof(std::uint32_t) - step.cutBytes);
}

void CFakeLircDevice::Close(int fd) {
    EXPECT_EQ(fd, kFd);
    ++closed;
}

}  // namespace irtest

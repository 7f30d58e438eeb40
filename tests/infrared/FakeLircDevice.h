// Test helper: a lirc device behind its seam that answers as configured, records every call as a
// line ("open /dev/lirc0", "SET_SEND_CARRIER 38000", "write 12") and hands out scripted reads.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "infrared/transmit/ILircDevice.h"

namespace irtest {

class CFakeLircDevice : public infrared::ILircDevice {
public:
    static constexpr int kFd = 7;
    struct ReadStep {
        std::vector<std::uint32_t> samples;
        std::int64_t result = 0;   // used when samples is empty: 0 (nothing in time) or -errno
        std::size_t cutBytes = 0;  // bytes dropped from the end, for torn reads
    };
    int openResult = kFd;
    std::uint32_t features = 0;
    std::uint32_t minTimeout = 1000, maxTimeout = 1250000;
    int emitters = 4;
    bool scancodes = true;
    std::map<unsigned long, int> failing;  // request -> -errno
    std::int64_t writeResult = -1;         // -1: everything written
    std::deque<ReadStep> reads;
    std::vector<std::string> calls;
    std::vector<std::uint8_t> lastWrite;
    std::vector<int> waits;
    int closed = 0;

    int Open(const std::string& path) override;
    int OpenForReading(const std::string& path) override;
    int Ioctl(int fd, unsigned long request, std::uint32_t* argument) override;
    std::int64_t Write(int fd, const void* data, std::size_t size) override;
    std::int64_t Read(int fd, void* data, std::size_t size, int timeoutMs) override;
    void Close(int fd) override;
    std::string GroupOf(const std::string&) override { return "video"; }
};

}  // namespace irtest

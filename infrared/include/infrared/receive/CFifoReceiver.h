// mode2 text read from a named pipe as it arrives (`mode2 -d /dev/lirc0 > PIPE` on another
// machine's end, or a test feeding presses): a receiver that waits, like a device. A capture
// ends at a long space, a timeout or comment line, or when the pipe stays silent for the
// builder's end space; a writer that closes ends the capture under way, and the next writer
// is waited for. Construction and Next() throw CReceiveError ("pipe:line: reason" for a bad
// line); one thread at a time.
#pragma once

#include <cstddef>
#include <string>

#include "infrared/receive/CCaptureBuilder.h"
#include "infrared/receive/IReceiver.h"

namespace infrared {

class CFifoReceiver : public IReceiver {
public:
    explicit CFifoReceiver(const std::string& path);
    ~CFifoReceiver() override;
    CFifoReceiver(const CFifoReceiver&) = delete;
    CFifoReceiver& operator=(const CFifoReceiver&) = delete;

    std::optional<Capture> Next(std::chrono::milliseconds timeout) override;
    std::string Describe() const override { return path_; }
    bool Live() const override { return true; }

    static constexpr std::size_t kMaxLine = 4096;  // far above any mode2 line

private:
    void open();
    // Waits up to `waitMs` for text and takes it in: false when none came (or the writer left).
    bool fill(int waitMs);
    std::optional<Capture> lines();  // the complete lines taken in so far, into the builder

    std::string path_;
    int fd_ = -1;
    std::string pending_;  // text after the last complete line
    std::size_t number_ = 0;
    CCaptureBuilder builder_;
};

}  // namespace infrared

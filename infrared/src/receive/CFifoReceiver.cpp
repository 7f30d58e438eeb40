#include "infrared/receive/CFifoReceiver.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "CaptureWait.h"
#include "../formats/TextLines.h"
#include "infrared/formats/CFormatError.h"
#include "infrared/receive/CMode2Text.h"

namespace infrared {

CFifoReceiver::CFifoReceiver(const std::string& path) : path_(path) { open(); }

CFifoReceiver::~CFifoReceiver() {
    if (fd_ >= 0) ::close(fd_);
}

// Non-blocking, so opening does not wait for a writer and a closed writer is seen as such.
void CFifoReceiver::open() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd_ < 0) throw CReceiveError(path_ + ": cannot open the pipe: " + std::strerror(errno));
}

bool CFifoReceiver::fill(int waitMs) {
    pollfd watch{fd_, POLLIN, 0};
    const int ready = ::poll(&watch, 1, waitMs);
    if (ready < 0 && errno != EINTR) throw CReceiveError(path_ + ": " + std::strerror(errno));
    if (ready <= 0) return false;
    char buffer[4096];
    const ssize_t got = ::read(fd_, buffer, sizeof buffer);
    if (got < 0) {
        if (errno == EAGAIN || errno == EINTR) return false;
        throw CReceiveError(path_ + ": read failed: " + std::strerror(errno));
    }
    if (got == 0) {
        open();  // the writer left: a fresh end waits quietly for the next one
        return false;
    }
    pending_.append(buffer, static_cast<std::size_t>(got));
    return true;
}

std::optional<Capture> CFifoReceiver::lines() {
    std::size_t end = 0;
    while ((end = pending_.find('\n')) != std::string::npos) {
        const std::string line = Trim(pending_.substr(0, end));
        pending_.erase(0, end + 1);
        ++number_;
        if (line.empty()) continue;
        try {
            if (auto done = CMode2Text::Feed(builder_, line, number_, path_)) return done;
        } catch (const CFormatError& error) {
            builder_.Discard();
            throw CReceiveError(error.what());
        }
    }
    if (pending_.size() > kMaxLine) {
        pending_.clear();
        builder_.Discard();
        throw CReceiveError(path_ + ":" + std::to_string(number_ + 1) + ": a line longer than " +
                            std::to_string(kMaxLine) + " bytes is not mode2 text");
    }
    return std::nullopt;
}

std::optional<Capture> CFifoReceiver::Next(std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        if (auto done = lines()) return done;
        // Under way, a capture ends after the end space of silence (a driver may send no
        // timeout sample); otherwise wait for the caller's time.
        const auto waitMs = CaptureWaitMs(builder_, deadline);
        if (!waitMs) return std::nullopt;
        if (!fill(*waitMs) && builder_.Collecting()) return builder_.End();
    }
}

}  // namespace infrared

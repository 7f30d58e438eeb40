// Where received IR comes from: a Linux IR receiver (/dev/lircN) or a file of recorded
// captures. One thread at a time.
#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>

#include "infrared/decode/Capture.h"

namespace infrared {

// A receiver that cannot be used, a failed read or an unreadable file; the message is for people.
class CReceiveError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class IReceiver {
public:
    virtual ~IReceiver() = default;
    // The next capture, waiting up to `timeout` for it to begin; nullopt when none began in
    // time (a file: when it has no more). Throws CReceiveError.
    virtual std::optional<Capture> Next(std::chrono::milliseconds timeout) = 0;
    virtual std::string Describe() const = 0;  // "/dev/lirc1", "presses.txt"
    virtual bool Live() const = 0;             // true: a device that waits for presses
};

}  // namespace infrared

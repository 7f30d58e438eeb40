// Where encoded IR goes: a file of what would be sent, or a Linux IR transmitter. Called on
// the plugin's worker thread, one transmission at a time (the caller serialises).
#pragma once

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "infrared/codeset/Codeset.h"
#include "infrared/encode/PulseTrain.h"

namespace infrared {

struct Transmission {
    std::string codeset;
    std::string what;             // "key 12 (power)", "ac on cool 24 auto"
    int emitter = 0;              // the pairing list's device index
    PulseTrain train;             // always filled, also when a scancode can be sent
    bool hasScancode = false;     // a key of a scancode protocol: `scancode` is set
    Protocol protocol = Protocol::Nec;
    std::uint32_t scancode = 0;
    std::uint32_t repeats = 0;    // extra copies of the frame in `train`
};

// A transmitter that cannot be used or a transmission that failed; the message is for people.
class CTransmitError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class ITransmitter {
public:
    virtual ~ITransmitter() = default;
    // Sends it and returns the time on air; throws CTransmitError, never retries.
    virtual std::chrono::microseconds Transmit(const Transmission& transmission) = 0;
    virtual std::string Describe() const = 0;  // "mode2:/tmp/ir.txt", "/dev/lirc0"
};

}  // namespace infrared

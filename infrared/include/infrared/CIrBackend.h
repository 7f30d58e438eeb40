// What the IR library does with a transmission when a transmitter is attached: finds the
// codeset paired at the device index, encodes the key or the air-conditioner state, and hands
// the pulses to the transmitter. Thread-safe: transmissions are serialised.
#pragma once

#include <chrono>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/encode/CAcFrameEncoder.h"
#include "infrared/transmit/ITransmitter.h"

namespace infrared {

class CIrBackend {
public:
    struct Result {
        bool ok = false;
        std::string error;          // why not, for the log
        Transmission transmission;  // what was (or would have been) sent
        std::chrono::microseconds onAir{0};
    };

    CIrBackend(std::shared_ptr<const CCodesetLibrary> codesets, std::unique_ptr<ITransmitter> transmitter);

    // `pairing` is the paired-device list's JSON text ({"dev_info":[{"codeset":..,"device_index":..}]}).
    Result SendKey(const std::string& pairing, int key, int deviceIndex);
    Result SendAircon(const std::string& pairing, int deviceIndex, const AcState& state);

    // "mode2:FILE" for the dry-run file, anything else is a lirc device node. Throws
    // CTransmitError when it cannot be used.
    static std::unique_ptr<ITransmitter> OpenTransmitter(const std::string& device, const CCodesetLibrary& codesets);

private:
    const Codeset& pairedCodeset(const std::string& pairing, int deviceIndex) const;
    Result send(Transmission transmission);
    // What could not be encoded for the transmitter: nothing sent, the reason kept.
    static Result refused(Transmission transmission, const std::exception& why);

    std::shared_ptr<const CCodesetLibrary> codesets_;
    std::unique_ptr<ITransmitter> transmitter_;
    std::mutex mutex_;
    std::map<std::string, bool> toggles_;  // per codeset, flipped on every key press
};

}  // namespace infrared

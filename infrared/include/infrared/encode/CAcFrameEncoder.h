// The one air-conditioner encoder: fills a codeset's frame template from a requested state,
// adds the checksums, and sends the bytes section by section with the codeset's timings.
// Driven only by the AcFrameFormat, no per-vendor code. Stateless; throws
// std::invalid_argument for a state the codeset cannot express.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "infrared/codeset/Codeset.h"
#include "infrared/encode/PulseTrain.h"

namespace infrared {

struct AcState {
    std::string power;     // the IR library's words: "on", "off"
    std::string mode;      // "auto", "cool", "dry", "fan", "heat"
    std::string setpoint;  // degrees as text, "24" or "24.5"
    std::string fan;       // "low", "medium", "high", "auto"
};

class CAcFrameEncoder {
public:
    static std::vector<std::uint8_t> BuildFrame(const AcFrameFormat& format, const AcState& state);
    static PulseTrain Encode(const AcFrameFormat& format, const std::vector<std::uint8_t>& bytes,
                             std::uint32_t carrier, std::uint32_t dutyCycle);
    // The rule's bits for these bytes, already shifted and masked into place.
    static std::uint8_t ComputeChecksum(const Checksum& rule, const std::vector<std::uint8_t>& bytes);
};

}  // namespace infrared

// Reads a captured air-conditioner frame back through the same description the encoder uses:
// timings, sections and length must fit, inverted copies must agree, checksums and fixed bits
// must hold. Stateless; never throws for bad input (a frame that does not fit gives nullopt).
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "infrared/codeset/Codeset.h"
#include "infrared/encode/CAcFrameEncoder.h"

namespace infrared {

struct AcDecoded {
    const Codeset* codeset = nullptr;  // the codeset whose description matched
    std::vector<std::uint8_t> bytes;   // all sections' bytes in frame order
    AcState state;                     // power/mode/setpoint/fan in the library's words
};

class CAcFrameDecoder {
public:
    // Matches a captured frame (mark, space, ..., mark in microseconds, one press, possibly
    // with its sections and repeats; durations may be off by +-30 %) against one AC codeset.
    // A field whose code the codeset does not name, or that the frame's mode leaves out (the
    // set point in fan-only mode), reads as an empty word.
    static std::optional<AcDecoded> Decode(const Codeset& codeset, const std::vector<std::uint32_t>& durations);
    // The state words a frame's bytes stand for, or nullopt if a checksum or fixed bit is off.
    static std::optional<AcState> ReadState(const AcFrameFormat& format, const std::vector<std::uint8_t>& bytes);
};

}  // namespace infrared

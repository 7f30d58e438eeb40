// Recognises one key frame at a position of a capture: asks the pulse-distance and the bi-phase
// decoders and keeps the best fit (the carrier, when known, breaks ties such as NEC and Pioneer,
// whose timings differ by only 6 %). Stateless and thread-safe; never throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "infrared/decode/KeyMatch.h"

namespace infrared {

class CKeyDecoder {
public:
    // `carrier` in Hz, 0 when unknown; `previous` the protocol of the frame just before, if any.
    static std::optional<KeyMatch> DecodeAt(const std::vector<std::uint32_t>& durations, std::size_t start,
                                            std::uint32_t carrier, std::optional<Protocol> previous);
    // A whole frame (from its first mark): the key it is, if it is one and nothing else.
    static std::optional<KeyMatch> DecodeFrame(const std::vector<std::uint32_t>& durations);
};

}  // namespace infrared

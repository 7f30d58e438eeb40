// Decodes the pulse-distance and pulse-width key protocols (NEC family, Sanyo, JVC, Sony,
// Sharp, Kaseikyo, RCA, Pioneer) from one table of timings. The timing is calibrated per frame
// (from the header, then from the bits), so a slow or fast remote and a receiver that stretches
// marks are read as well as a clean frame. Stateless and thread-safe; never throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "infrared/decode/KeyMatch.h"

namespace infrared {

class CDistanceDecoder {
public:
    // Every protocol whose frame starts with the mark at `start` (an even index) and ends at a
    // long space or the end of the durations. `afterJvc`: a header-less JVC copy is accepted.
    static std::vector<KeyMatch> DecodeAt(const std::vector<std::uint32_t>& durations, std::size_t start,
                                          bool afterJvc);
};

}  // namespace infrared

// Test helper: reads an air-conditioner frame's pulses back into bytes independently of the
// encoder.
#pragma once

#include <cstdint>
#include <vector>

#include "infrared/codeset/Codeset.h"

namespace irtest {

// The bytes of each copy of the frame (header, a mark and a short or long space per bit, trailer).
std::vector<std::vector<std::uint8_t>> ReadFrames(const std::vector<std::uint32_t>& durations,
                                                  const infrared::FrameTiming& timing);

}  // namespace irtest

// Test helpers: reads back the dry-run file, and reads an air-conditioner frame's pulses back
// into bytes independently of the encoder.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "infrared/codeset/Codeset.h"

namespace irtest {

struct Mode2Block {
    std::string header;                   // the "# ..." line
    std::vector<std::uint32_t> durations; // pulse, space, ..., pulse (the lead-in and closing gaps dropped)
    std::uint32_t gap = 0;
};

std::vector<Mode2Block> ReadMode2(const std::string& path);

// The bytes of each copy of the frame (header, a mark and a short or long space per bit, trailer).
std::vector<std::vector<std::uint8_t>> ReadFrames(const std::vector<std::uint32_t>& durations,
                                                  const infrared::FrameTiming& timing);

}  // namespace irtest

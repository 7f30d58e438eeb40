// The clean-up a capture gets before it is decoded or kept as raw timings: glitches shorter than
// a receiver can mean are merged away, and a burst made of copies of one frame is cut to one.
// Stateless; never throws (std::bad_alloc aside).
#pragma once

#include <cstdint>
#include <vector>

namespace infrared {

class CRawFrame {
public:
    // Mark first, odd count: zero durations and glitches merged into their neighbours, a
    // trailing space dropped.
    static std::vector<std::uint32_t> Clean(const std::vector<std::uint32_t>& durations);
    // The first copy when the frame repeats itself after long spaces, else the whole frame.
    static std::vector<std::uint32_t> OneCopy(const std::vector<std::uint32_t>& frame);
    // Same length, every duration within 25 % of the other's (captures of one frame).
    static bool Similar(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b);
};

}  // namespace infrared

// What a receiver delivered: alternating mark and space durations as measured, with the carrier
// when the device reports it. A plain value.
#pragma once

#include <cstdint>
#include <vector>

namespace infrared {

struct Capture {
    std::vector<std::uint32_t> durations;  // mark, space, ..., mark (us)
    std::uint32_t carrier = 0;             // Hz, 0: unknown
    std::uint64_t startUs = 0;             // when the first mark began, on the receiver's clock
};

}  // namespace infrared

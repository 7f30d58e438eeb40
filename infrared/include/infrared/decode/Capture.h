// What a receiver hands over: one received burst of IR as alternating mark and space durations.
#pragma once

#include <cstdint>
#include <vector>

namespace infrared {

struct Capture { std::vector<std::uint32_t> durations; /* mark, space, ..., mark (us) */ std::uint32_t carrier = 0; std::uint64_t startUs = 0; };

}  // namespace infrared

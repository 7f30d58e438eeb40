// What one transmission puts on air: alternating pulse and space durations, the carrier they
// modulate, and the silence that must follow before anything else is sent.
#pragma once

#include <cstdint>
#include <vector>

namespace infrared {

struct PulseTrain {
    std::uint32_t carrier = 38000;        // Hz; 0: unmodulated
    std::uint32_t dutyCycle = 33;         // percent
    std::vector<std::uint32_t> durations; // microseconds: pulse, space, ..., pulse (odd count)
    std::uint32_t trailingGap = 0;        // microseconds of silence after the last pulse

    std::uint64_t OnAirMicroseconds() const {
        std::uint64_t total = 0;
        for (const std::uint32_t d : durations) total += d;
        return total;
    }
};

}  // namespace infrared

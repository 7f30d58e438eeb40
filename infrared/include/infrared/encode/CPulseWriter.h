// Builds a PulseTrain mark by mark and space by space: neighbours of the same kind merge (as
// Manchester codes need), a leading space is dropped, and the closing space becomes the gap.
// A value type; not shared between threads.
#pragma once

#include <cstdint>

#include "infrared/encode/PulseTrain.h"

namespace infrared {

class CPulseWriter {
public:
    CPulseWriter(std::uint32_t carrier, std::uint32_t dutyCycle);

    void Mark(std::uint32_t microseconds);
    void Space(std::uint32_t microseconds);
    // Pads the space after the last mark so the frame (from its first mark) lasts at least
    // `period`, and at least `minimumGap` of silence follows it.
    void EndFrame(std::uint32_t period, std::uint32_t minimumGap);
    PulseTrain Finish();                                 // the closing space becomes the gap

private:
    PulseTrain train_;
    std::uint64_t frameStart_ = 0;
    std::uint64_t elapsed_ = 0;
    std::uint64_t total_ = 0;
    bool frameOpen_ = false;
};

}  // namespace infrared

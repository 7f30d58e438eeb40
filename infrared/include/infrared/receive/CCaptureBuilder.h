// Cuts a stream of mark/space samples into captures: one capture runs from its first mark to
// the last mark before a long space, a timeout or the end of the input. Consecutive samples of
// the same kind are merged, as drivers split long ones. Leading silence is dropped; startUs
// counts from the first sample the builder saw. One thread at a time; never throws.
#pragma once

#include <cstdint>
#include <optional>

#include "infrared/decode/Capture.h"

namespace infrared {

class CCaptureBuilder {
public:
    // Longer than any gap between the copies of a frame in one press, shorter than the pause
    // between two presses.
    static constexpr std::uint32_t kEndSpace = 100000;  // us
    // Longer than any real capture (the longest air-conditioner frames hold about 600).
    static constexpr std::size_t kMaxDurations = 4096;

    explicit CCaptureBuilder(std::uint32_t endSpace = kEndSpace) : endSpace_(endSpace) {}

    // Each returns the capture the sample completes, if any.
    std::optional<Capture> Mark(std::uint32_t us);
    std::optional<Capture> Space(std::uint32_t us);
    std::optional<Capture> End();  // a timeout sample or the end of the input
    void Carrier(std::uint32_t hz) { carrier_ = hz; }
    void Discard();                // samples were lost: what was collected is unusable
    bool Collecting() const { return !current_.durations.empty(); }

private:
    std::uint32_t endSpace_;
    Capture current_;
    std::uint32_t carrier_ = 0;
    std::uint64_t clock_ = 0;       // us since the first sample
    std::uint32_t pendingSpace_ = 0;
};

}  // namespace infrared

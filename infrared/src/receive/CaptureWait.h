// How long a live receiver waits for more input before its next look: while a capture is under
// way, the builder's end space (silence that long ends it); otherwise what is left of the
// caller's time, nullopt once that is up. Internal to the receive sources.
#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

#include "infrared/receive/CCaptureBuilder.h"

namespace infrared {

inline std::optional<int> CaptureWaitMs(const CCaptureBuilder& builder,
                                        std::chrono::steady_clock::time_point deadline) {
    using Clock = std::chrono::steady_clock;
    const auto now = Clock::now();
    const bool collecting = builder.Collecting();
    if (!collecting && now >= deadline) return std::nullopt;
    const Clock::duration wait =
        collecting ? Clock::duration(std::chrono::microseconds(CCaptureBuilder::kEndSpace)) : deadline - now;
    const auto waitMs = std::chrono::ceil<std::chrono::milliseconds>(wait).count();
    return static_cast<int>(std::clamp<std::int64_t>(waitMs, 1, 60000));
}

}  // namespace infrared

// Decodes the bi-phase key protocols, RC-5 (and its extended commands) and RC-6 mode 0. The
// half-bit time and how much the receiver stretches marks are measured from the frame itself.
// Stateless and thread-safe; never throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "infrared/decode/KeyMatch.h"

namespace infrared {

class CBiphaseDecoder {
public:
    // The frame starting with the mark at `start` (an even index), if it is RC-5 or RC-6 mode 0.
    static std::optional<KeyMatch> DecodeAt(const std::vector<std::uint32_t>& durations, std::size_t start);
};

}  // namespace infrared

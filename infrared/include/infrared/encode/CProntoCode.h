// Pronto hex ("0000 006D 0022 0002 0157 00AC ..."), the learned-code format of most public code
// lists: parsed into pulses. Stateless; throws std::invalid_argument naming what is wrong.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "infrared/encode/PulseTrain.h"

namespace infrared {

class CProntoCode {
public:
    // The once sequence, then the repeat sequence once (a press, not a held key).
    static PulseTrain Parse(const std::string& text, std::uint32_t dutyCycle = 33);
    // A learned code of `durations` (mark first, odd count) followed by `gap` of silence, as a
    // once sequence; carrier 0 writes 38 kHz. Durations are clamped to what a word holds.
    static std::string Format(const std::vector<std::uint32_t>& durations, std::uint32_t carrier, std::uint32_t gap);
};

}  // namespace infrared

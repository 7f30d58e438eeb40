// Pronto hex ("0000 006D 0022 0002 0157 00AC ..."), the learned-code format of most public code
// lists: parsed into pulses. Stateless; throws std::invalid_argument naming what is wrong.
#pragma once

#include <string>

#include "infrared/encode/PulseTrain.h"

namespace infrared {

class CProntoCode {
public:
    // The once sequence, then the repeat sequence once (a press, not a held key).
    static PulseTrain Parse(const std::string& text, std::uint32_t dutyCycle = 33);
};

}  // namespace infrared

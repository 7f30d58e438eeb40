// One key frame recognised inside a capture: the protocol and the scancode its encoder takes.
// A plain value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "infrared/codeset/Codeset.h"

namespace infrared {

struct KeyMatch {
    Protocol protocol = Protocol::Nec;
    std::uint64_t scancode = 0;
    bool repeat = false;          // an NEC repeat frame (scancode 0: it carries none)
    std::optional<bool> toggle;   // RC-5 and RC-6 only; not part of the scancode
    std::size_t end = 0;          // index of the frame's last mark in the durations
    double misfit = 0;            // mean relative distance from the protocol's timing; lower fits better
};

}  // namespace infrared

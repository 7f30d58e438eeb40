// Encodes a key of a scancode protocol into pulses in user space, with the same scancode
// layout as the Linux kernel's encoders (so LIRC_MODE_SCANCODE and LIRC_MODE_PULSE send the
// same frame). Stateless; throws std::invalid_argument for a protocol without scancodes.
#pragma once

#include <cstdint>

#include "infrared/codeset/Codeset.h"
#include "infrared/encode/PulseTrain.h"

namespace infrared {

class CKeyEncoder {
public:
    // `toggle` flips the toggle bit of RC-5 and RC-6 (a new key press); `repeats` adds copies.
    static PulseTrain Encode(Protocol protocol, std::uint32_t scancode, bool toggle, std::uint32_t repeats,
                             std::uint32_t carrier, std::uint32_t dutyCycle);
    // Copies the protocol itself sends of one key press (Sony 3, Sharp 2, others 1).
    static std::uint32_t FramesPerPress(Protocol protocol);
    // Whether a Linux kernel encoder (LIRC_MODE_SCANCODE) may send a key of `protocol` with
    // `repeats` extra copies in place of Encode()'s pulses: it sends exactly one frame per
    // scancode and has no toggle bit to flip, so only a one-frame press of a protocol it encodes,
    // without copies and without a toggle (RC-5, RC-6), gives the same frame.
    static bool KernelMayEncode(Protocol protocol, std::uint32_t repeats);
};

}  // namespace infrared

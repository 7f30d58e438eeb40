// Encodes a key of a scancode protocol into pulses in user space, with the same scancode
// layout as the Linux kernel's encoders (so LIRC_MODE_SCANCODE and LIRC_MODE_PULSE send the
// same frame). Protocols the kernel lacks (nec42, kaseikyo, rca, pioneer) have layouts of their
// own (docs/codesets.md). Stateless; throws std::invalid_argument for a protocol without scancodes.
#pragma once

#include <cstdint>

#include "infrared/codeset/Codeset.h"
#include "infrared/encode/PulseTrain.h"

namespace infrared {

class CKeyEncoder {
public:
    // `toggle` flips the toggle bit of RC-5 and RC-6 (a new key press); `repeats` adds copies.
    static PulseTrain Encode(Protocol protocol, std::uint64_t scancode, bool toggle, std::uint32_t repeats,
                             std::uint32_t carrier, std::uint32_t dutyCycle);
    // Copies the protocol itself sends of one key press (Sony 3, Sharp and Pioneer 2, others 1).
    static std::uint32_t FramesPerPress(Protocol protocol);
};

}  // namespace infrared

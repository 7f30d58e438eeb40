// Writes a codeset in the formats other tools read: a lircd.conf raw_codes remote (every key
// or captured state as the pulses this library sends for it) or a Flipper ".ir" file (parsed
// signals where the protocol has a Flipper counterpart, raw signals otherwise). Stateless;
// throws std::invalid_argument for a codeset that has no keys to write (a frame-format air
// conditioner).
#pragma once

#include <string>

#include "infrared/codeset/Codeset.h"

namespace infrared {

class CCodesetExporter {
public:
    static std::string ToLircd(const Codeset& codeset);
    static std::string ToFlipper(const Codeset& codeset);
};

}  // namespace infrared

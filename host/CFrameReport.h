// What `decode` and `learn` print about a decoded frame: one JSON object (the --json form) and
// the text line made from it, so both always say the same. Stateless; never throws.
#pragma once

#include <cstddef>
#include <string>

#include "JsonValue.h"
#include "infrared/decode/CFrameDecoder.h"

namespace ircontrol::host {

class CFrameReport {
public:
    // {"frame", "startUs", "durationUs", "protocol", ...} as docs/hardware.md shows.
    static common::json::JsonValue Json(const infrared::DecodedFrame& frame, std::size_t index);
    // "frame 0 at 0.000 s: nec 0x0408 (HFAN0001 power, code 10)".
    static std::string Text(const common::json::JsonValue& report);
    // "nec 0x0408", "aircon ZAC00005 on cool 24 auto", "raw 67 durations": a frame in a few words.
    static std::string Summary(const infrared::DecodedFrame& frame);
    static std::string Scancode(std::uint64_t scancode);  // "0x0408": at least four hex digits
};

}  // namespace ircontrol::host

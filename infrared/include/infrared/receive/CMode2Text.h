// lirc's mode2 text ("pulse 9000", "space 4500", "timeout 120000", "carrier 38000", "# ...")
// as written by mode2, irsimsend and the dry-run sink, read into captures. A capture ends at a
// long space, a timeout line, or a comment line after samples (the dry-run sink's header of
// the next transmission). Stateless; throws CFormatError "name:line: reason" for a bad line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "infrared/decode/Capture.h"
#include "infrared/receive/CCaptureBuilder.h"

namespace infrared {

class CMode2Text {
public:
    static std::vector<Capture> Parse(const std::string& text, const std::string& name);
    // One trimmed, non-blank line (number `number` of `name`) into `builder`: the capture it
    // completes, if any. For text that arrives a line at a time.
    static std::optional<Capture> Feed(CCaptureBuilder& builder, const std::string& line, std::size_t number,
                                       const std::string& name);
    // True when the first line that is not blank or a comment is a mode2 sample.
    static bool Looks(const std::string& text);
};

}  // namespace infrared

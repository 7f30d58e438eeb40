// A text of learned Pronto hex codes, one code per line ("0000 006D 0022 0002 0157 ..."),
// blank lines and "#" comments between them, read into one capture per code (its once and
// repeat sequences, the carrier the code names). Stateless; throws CFormatError
// "name:line: reason" for a line that is not a learned Pronto code.
#pragma once

#include <string>
#include <vector>

#include "infrared/decode/Capture.h"

namespace infrared {

class CProntoText {
public:
    static std::vector<Capture> Parse(const std::string& text, const std::string& name);
    // True when the first line that is not blank or a comment starts with a 4-digit hex word.
    static bool Looks(const std::string& text);
};

}  // namespace infrared

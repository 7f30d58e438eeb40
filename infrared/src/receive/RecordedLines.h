// The lines of a text of recorded IR (mode2, Pronto) as the readers take them: trimmed, numbered
// from 1, blank ones skipped. Internal to the receive sources.
#pragma once

#include <cstddef>
#include <string>

#include "../formats/TextLines.h"

namespace infrared {

template <typename Visit>
void ForEachRecordedLine(const std::string& text, Visit&& visit) {
    TextLines lines(text);
    std::string line;
    std::size_t number = 0;
    while (lines.Next(line, number)) {
        line = Trim(line);
        if (!line.empty()) visit(number, line);
    }
}

// The first line that is neither blank nor a "#" comment, trimmed ("" when there is none): what
// tells the kinds of text apart.
inline std::string FirstRecordedLine(const std::string& text) {
    TextLines lines(text);
    std::string line;
    std::size_t number = 0;
    while (lines.Next(line, number)) {
        line = Trim(line);
        if (!line.empty() && line[0] != '#') return line;
    }
    return std::string();
}

}  // namespace infrared

// Walks a text line by line for the capture file parsers: each line trimmed of surrounding
// blanks (and a CR), numbered from 1. Internal to the receive sources.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace infrared::textlines {

template <typename Visit>
void ForEach(std::string_view text, Visit&& visit) {
    std::size_t number = 0;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        ++number;
        const std::size_t first = line.find_first_not_of(" \t\r");
        const std::size_t last = line.find_last_not_of(" \t\r");
        visit(number, first == std::string_view::npos ? std::string_view() : line.substr(first, last - first + 1));
    }
}

// "name:line: reason", the form every refusal of a capture file takes.
inline std::string Where(const std::string& name, std::size_t line, const std::string& reason) {
    return name + ":" + std::to_string(line) + ": " + reason;
}

}  // namespace infrared::textlines

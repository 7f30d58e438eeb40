// Line-by-line reading shared by the file parsers: lines split at '\n' (a '\r' before it is
// dropped), numbered from 1, plus the strict number and trimming helpers they all use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace infrared {

class TextLines {
public:
    explicit TextLines(const std::string& text) : text_(text) {}

    // The next line and its number; false at the end of the text.
    bool Next(std::string& line, std::size_t& number) {
        if (at_ >= text_.size()) return false;
        std::size_t end = text_.find('\n', at_);
        if (end == std::string::npos) end = text_.size();
        std::size_t stop = end;
        if (stop > at_ && text_[stop - 1] == '\r') --stop;
        line.assign(text_, at_, stop - at_);
        at_ = end + 1;
        number = ++line_;
        return true;
    }

private:
    const std::string& text_;
    std::size_t at_ = 0;
    std::size_t line_ = 0;
};

inline std::string Trim(const std::string& text) {
    const char* const blank = " \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(blank);
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(blank) - first + 1);
}

// Digits only (no sign, no spaces), at most 2^63; false otherwise.
inline bool ParseDecimal(const std::string& text, std::uint64_t& out) {
    if (text.empty() || text.size() > 18) return false;
    out = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return false;
        out = out * 10 + static_cast<std::uint64_t>(c - '0');
    }
    return true;
}

// Well-formed UTF-8 (no overlong forms, surrogates or values past U+10FFFF): names become JSON
// text, which must be UTF-8.
inline bool IsUtf8(const std::string& text) {
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    const auto* end = p + text.size();
    while (p < end) {
        const unsigned c = *p++;
        if (c < 0x80) continue;
        int more = 0;
        unsigned value = 0, min = 0;
        if ((c & 0xe0) == 0xc0) more = 1, value = c & 0x1f, min = 0x80;
        else if ((c & 0xf0) == 0xe0) more = 2, value = c & 0x0f, min = 0x800;
        else if ((c & 0xf8) == 0xf0) more = 3, value = c & 0x07, min = 0x10000;
        else return false;
        if (end - p < more) return false;
        for (int i = 0; i < more; ++i, ++p) {
            if ((*p & 0xc0) != 0x80) return false;
            value = value << 6 | (*p & 0x3f);
        }
        if (value < min || value > 0x10ffff || (value >= 0xd800 && value <= 0xdfff)) return false;
    }
    return true;
}

}  // namespace infrared

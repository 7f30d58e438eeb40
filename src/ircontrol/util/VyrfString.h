// Conversions between std::string and the host's non-owning vyrf_string.
#pragma once

#include <string>

#include <vyrf.h>

namespace ircontrol {

// Wraps the string's bytes without copying: valid while `text` lives and is unchanged.
inline vyrf_string ToVyrfString(const std::string& text) {
    vyrf_string out{nullptr, 0};
    vyrf_string_new(&out, text.data(), text.size());
    return out;
}

inline std::string FromVyrfString(const vyrf_string& text) {
    return text.data != nullptr ? std::string(text.data, text.length) : std::string();
}

}  // namespace ircontrol

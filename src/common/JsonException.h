// The only exception of the JSON layer; it carries just its message.
#pragma once

#include <stdexcept>
#include <string>

namespace common::json {

class JsonException : public std::runtime_error {
public:
    explicit JsonException(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace common::json

#include "codeset/JsonFields.h"

#include <cerrno>
#include <cstdlib>
#include <stdexcept>

namespace infrared {
namespace json_fields {

void Fail(const std::string& where, const std::string& what) {
    throw std::invalid_argument(where + ": " + what);
}

std::uint64_t Unsigned(const JsonValue& value, const std::string& where, std::uint64_t max) {
    std::uint64_t number = 0;
    if (value.isInt()) {
        const std::int64_t signedNumber = value.asInt64();
        if (signedNumber < 0) Fail(where, "must not be negative");
        number = static_cast<std::uint64_t>(signedNumber);
    } else if (value.isString()) {
        const std::string text = value.asString();
        char* end = nullptr;
        errno = 0;
        number = std::strtoull(text.c_str(), &end, 0);
        if (text.empty() || text[0] == '-' || end == nullptr || *end != '\0' || errno != 0) {
            Fail(where, "'" + text + "' is not a number");
        }
    } else {
        Fail(where, "must be a number");
    }
    if (number > max) Fail(where, std::to_string(number) + " is larger than " + std::to_string(max));
    return number;
}

std::uint32_t U32(const JsonValue& value, const std::string& where, std::uint32_t max) {
    return static_cast<std::uint32_t>(Unsigned(value, where, max));
}

std::uint8_t Byte(const JsonValue& value, const std::string& where) {
    return static_cast<std::uint8_t>(Unsigned(value, where, 0xff));
}

double Number(const JsonValue& value, const std::string& where) {
    if (value.isInt() || value.isDouble()) return value.asDouble();
    Fail(where, "must be a number");
}

std::string Text(const JsonValue& value, const std::string& where) {
    if (!value.isString()) Fail(where, "must be a string");
    return value.asString();
}

bool Flag(const JsonValue& value, const std::string& where) {
    if (value.isNull()) return false;
    if (!value.isBool()) Fail(where, "must be true or false");
    return value.asBool();
}

const JsonValue& Object(const JsonValue& parent, const std::string& name, const std::string& where) {
    const JsonValue& value = parent[name];
    if (value.type() != common::json::kObject) Fail(where + "." + name, "must be an object");
    return value;
}

const JsonValue& Array(const JsonValue& value, const std::string& where) {
    if (value.type() != common::json::kArray || value.size() == 0) Fail(where, "must be a non-empty array");
    return value;
}

}  // namespace json_fields
}  // namespace infrared

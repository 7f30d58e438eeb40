// Reading members of a codesets file: each helper names the member at fault in the
// std::invalid_argument it throws ("codesets[1].frame.bytes[2]: 256 is larger than 255").
#pragma once

#include <cstdint>
#include <string>

#include "JsonValue.h"

namespace infrared {
namespace json_fields {

using common::json::JsonValue;

[[noreturn]] void Fail(const std::string& where, const std::string& what);

// Numbers may be JSON integers or "0x.." / decimal strings (hex reads better for bytes).
std::uint64_t Unsigned(const JsonValue& value, const std::string& where, std::uint64_t max);
std::uint32_t U32(const JsonValue& value, const std::string& where, std::uint32_t max = UINT32_MAX);
std::uint8_t Byte(const JsonValue& value, const std::string& where);
double Number(const JsonValue& value, const std::string& where);
std::string Text(const JsonValue& value, const std::string& where);
bool Flag(const JsonValue& value, const std::string& where);  // absent: false
const JsonValue& Object(const JsonValue& parent, const std::string& name, const std::string& where);
const JsonValue& Array(const JsonValue& value, const std::string& where);  // non-empty

}  // namespace json_fields
}  // namespace infrared

// Test helpers: the published air-conditioner vectors beside the repository (../shared/ir/),
// read at run time, and their records turned into the library's words and bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "JsonValue.h"
#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/encode/CAcFrameEncoder.h"

namespace irtest {

using common::json::JsonValue;

// The parsed file from ../shared/ir/<name>, or null when the data is not there.
JsonValue SharedIr(const std::string& name);
const infrared::CCodesetLibrary& ShippedLibrary();
// The shipped codeset of a family ("MITSUBISHI_AC"; "A|B" finds either), or nullptr.
const infrared::Codeset* ShippedFamily(const std::string& protocol);

// A record's bytes: its "state" array, or its "value" written big-endian into `size` bytes.
std::vector<std::uint8_t> RecordBytes(const JsonValue& record, std::size_t size);

// Whether the bytes carry the bits the codeset treats as the family's model signature.
bool SameModel(const infrared::AcFrameFormat& format, const std::vector<std::uint8_t>& bytes);

}  // namespace irtest

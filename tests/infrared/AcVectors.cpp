#include "AcVectors.h"

#include <sstream>

#include "FileTree.h"
#include "infrared/codeset/DefaultCodesets.h"

namespace irtest {

JsonValue SharedIr(const std::string& name) {
    const std::string text = ReadText(std::string(IRC_SOURCE_DIR "/../shared/ir/") + name);
    return text.empty() ? JsonValue() : JsonValue::Create(text);
}

const infrared::CCodesetLibrary& ShippedLibrary() {
    static const auto library = infrared::CCodesetLibrary::Parse(infrared::DefaultCodesetsText());
    return *library;
}

const infrared::Codeset* ShippedFamily(const std::string& protocol) {
    std::stringstream names(protocol);
    std::string name;
    while (std::getline(names, name, '|')) {
        for (const auto& codeset : ShippedLibrary().Codesets()) {
            if (!codeset.family.empty() && codeset.family == name) return &codeset;
        }
    }
    return nullptr;
}

std::vector<std::uint8_t> RecordBytes(const JsonValue& record, std::size_t size) {
    std::vector<std::uint8_t> bytes;
    if (record["state"].type() == common::json::kArray) {
        for (unsigned i = 0; i < record["state"].size(); ++i) bytes.push_back(static_cast<std::uint8_t>(record["state"][i].asInt()));
        return bytes;
    }
    if (!record["value"].isString()) return bytes;
    std::uint64_t value = std::stoull(record["value"].asString(), nullptr, 16);
    bytes.assign(size, 0);
    for (std::size_t i = size; i-- > 0; value >>= 8) bytes[i] = static_cast<std::uint8_t>(value & 0xffu);
    return bytes;
}

bool SameModel(const infrared::AcFrameFormat& format, const std::vector<std::uint8_t>& bytes) {
    if (bytes.size() != format.bytes.size()) return bytes == format.offFrame;
    for (const auto& slot : format.fixed) {
        if (((bytes[slot.byte] ^ format.bytes[slot.byte]) & slot.mask) != 0) return false;
    }
    return true;
}

}  // namespace irtest

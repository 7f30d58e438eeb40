#include "AcVectors.h"

#include <cctype>
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

namespace {

std::string Lower(std::string text) {
    for (auto& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string Named(const JsonValue& field, std::initializer_list<const char*> known) {
    if (field.type() != common::json::kObject || !field["name"].isString()) return "";
    std::string name = Lower(field["name"].asString());
    if (name == "auto0") name = "auto";  // a remote's second code for auto fan
    for (const char* word : known) {
        if (name == word) return name;
    }
    return "";
}

}  // namespace

StatedWords Words(const JsonValue& fields) {
    StatedWords out;
    if (fields["power"].isBool()) out.state.power = fields["power"].asBool() ? "on" : "off";
    out.state.mode = Named(fields["mode"], {"auto", "cool", "dry", "fan", "heat"});
    out.state.fan = Named(fields["fan"], {"auto", "low", "medium", "high"});
    const JsonValue& temp = fields["temp"];
    if (temp.type() == common::json::kObject && temp["unit"].isString() && temp["unit"].asString() == "C") {
        const double degrees = temp["value"].asDouble();
        std::ostringstream text;
        text << degrees;
        out.state.setpoint = text.str();
    }
    out.expressible = !out.state.mode.empty() && !out.state.fan.empty() && !out.state.setpoint.empty();
    return out;
}

bool KnownChecksumException(const std::string& family, const JsonValue& record) {
    static const JsonValue facts = SharedIr("ac-protocols.json");
    const JsonValue& protocols = facts["protocols"];
    for (unsigned i = 0; i < protocols.size(); ++i) {
        if (protocols[i]["name"].asString() != family) continue;
        const JsonValue& known = protocols[i]["verification"]["known_exceptions"];
        for (unsigned k = 0; k < known.size(); ++k) {
            for (unsigned s = 0; s < record["sources"].size(); ++s) {
                if (known[k].asString().find(record["sources"][s].asString()) != std::string::npos) return true;
            }
        }
    }
    return false;
}

bool SameModel(const infrared::AcFrameFormat& format, const std::vector<std::uint8_t>& bytes) {
    if (bytes.size() != format.bytes.size()) return bytes == format.offFrame;
    for (const auto& slot : format.fixed) {
        if (((bytes[slot.byte] ^ format.bytes[slot.byte]) & slot.mask) != 0) return false;
    }
    return true;
}

}  // namespace irtest

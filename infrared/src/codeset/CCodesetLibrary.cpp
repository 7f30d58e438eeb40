#include "infrared/codeset/CCodesetLibrary.h"

#include <sstream>
#include <stdexcept>

#include "JsonValue.h"
#include "codeset/CAcFormatReader.h"
#include "codeset/JsonFields.h"
#include "infrared/codeset/CAcStateTable.h"
#include "infrared/encode/CProntoCode.h"

namespace infrared {
namespace {

using namespace json_fields;

std::uint64_t ScancodeLimit(Protocol protocol) {
    switch (protocol) {
        case Protocol::Nec: case Protocol::Rc6Mode0: case Protocol::Jvc: return 0xffff;
        case Protocol::NecX: return 0xffffff;
        case Protocol::Nec32: return 0xffffffff;
        case Protocol::Rc5: case Protocol::Rc5x: return 0x1f7f;  // 5-bit address, 7-bit command
        case Protocol::Sony12: return 0x1f007f;  // address << 16 | command
        case Protocol::Sony15: return 0xff007f;
        case Protocol::Sony20: return 0x1fff7f;  // address << 16 | extension << 8 | command
        case Protocol::Sanyo: return 0x1fffff;   // 13-bit address, 8-bit command
        case Protocol::Sharp: return 0x1fff;     // 5-bit address, 8-bit command
        case Protocol::Nec42: return 0x3ffffffffffULL;    // 26-bit address << 16 | 16-bit command
        case Protocol::Kaseikyo: return 0x3ffffff03ffULL; // id, vendor, genres << 16 | 10-bit command
        case Protocol::Rca: return 0xfff;                 // 4-bit address, 8-bit command
        case Protocol::Pioneer: return 0xffff;
        default: return 0;
    }
}

std::uint32_t DefaultCarrier(Protocol protocol) {
    switch (protocol) {
        case Protocol::Rc5: case Protocol::Rc5x: case Protocol::Rc6Mode0: return 36000;
        case Protocol::Sony12: case Protocol::Sony15: case Protocol::Sony20: case Protocol::Pioneer: return 40000;
        default: return 38000;
    }
}

// What one key (or captured state) sends: the codeset's protocol unless it names its own, so
// that an imported remote can mix protocol keys and raw captures.
void KeyFrame(const JsonValue& value, const Codeset& codeset, const std::string& where, CodesetKey& key) {
    key.protocol = codeset.protocol == Protocol::AcStates ? Protocol::Raw : codeset.protocol;
    if (!value["protocol"].isNull()) {
        const std::string word = Text(value["protocol"], where + ".protocol");
        if (!ProtocolFromName(word, key.protocol) || key.protocol == Protocol::Aircon || key.protocol == Protocol::AcStates) {
            Fail(where + ".protocol", "'" + word + "' is not a key protocol");
        }
        key.carrier = DefaultCarrier(key.protocol);
    }
    if (!value["carrier"].isNull()) key.carrier = U32(value["carrier"], where + ".carrier", 1000000);
    if (key.carrier != 0 && key.carrier < 10000) Fail(where + ".carrier", "must be at least 10000 Hz");
    if (!value["duty_cycle"].isNull()) key.dutyCycle = U32(value["duty_cycle"], where + ".duty_cycle", 100);
    if (!value["duty_cycle"].isNull() && key.dutyCycle == 0) Fail(where + ".duty_cycle", "must be 1..100");
    if (!value["gap"].isNull()) key.gap = U32(value["gap"], where + ".gap", 10000000);
    if (key.protocol == Protocol::Raw) {
        const JsonValue& raw = value["raw"];
        if (raw.type() != common::json::kArray || raw.size() == 0 || raw.size() % 2 == 0 || raw.size() > 4095) {
            Fail(where + ".raw", "must be an odd number (at most 4095) of durations: pulse, space, ..., pulse");
        }
        for (unsigned i = 0; i < raw.size(); ++i) {
            key.raw.push_back(U32(raw[i], where + ".raw", 10000000));
            if (key.raw.back() == 0) Fail(where + ".raw", "durations must not be 0");
        }
    } else if (key.protocol == Protocol::Pronto) {
        key.pronto = Text(value["pronto"], where + ".pronto");
        try {
            CProntoCode::Parse(key.pronto);
        } catch (const std::invalid_argument& e) {
            Fail(where + ".pronto", e.what());
        }
    } else {
        key.scancode = Unsigned(value["scancode"], where + ".scancode", UINT64_MAX);
        if ((key.scancode & ~ScancodeLimit(key.protocol)) != 0) {
            std::ostringstream limit;
            limit << "does not fit " << ProtocolName(key.protocol) << " (bits 0x" << std::hex
                  << ScancodeLimit(key.protocol) << ")";
            Fail(where + ".scancode", limit.str());
        }
    }
}

void Keys(const JsonValue& entry, Codeset& codeset, const std::string& path) {
    const JsonValue& keys = Object(entry, "keys", path);
    for (const auto& name : keys.getMemberNames()) {
        const std::string where = path + ".keys." + name;
        const JsonValue& value = keys[name];
        if (value.type() != common::json::kObject) Fail(where, "must be an object");
        CodesetKey key;
        key.name = name;
        key.code = static_cast<int>(U32(value["code"], where + ".code", INT32_MAX));
        if (codeset.FindKey(key.code) != nullptr) Fail(where + ".code", "is used by another key");
        KeyFrame(value, codeset, where, key);
        codeset.keys.push_back(std::move(key));
    }
    if (codeset.keys.empty()) Fail(path + ".keys", "must name at least one key");
}

// {"Cool_22": {"power": "on", "mode": "cool", "setpoint": 22, "raw": [...]}, ...}
void States(const JsonValue& entry, Codeset& codeset, const std::string& path) {
    const JsonValue& states = Object(entry, "states", path);
    const auto word = [](const JsonValue& value, const std::string& where, std::initializer_list<const char*> allowed) {
        if (value.isNull()) return std::string();
        const std::string text = Text(value, where);
        for (const char* one : allowed) {
            if (text == one) return text;
        }
        Fail(where, "'" + text + "' is not one of the library's words");
    };
    for (const auto& name : states.getMemberNames()) {
        const std::string where = path + ".states." + name;
        const JsonValue& value = states[name];
        if (value.type() != common::json::kObject) Fail(where, "must be an object");
        AcStateEntry state;
        state.frame.name = name;
        state.power = word(value["power"], where + ".power", {"on", "off"});
        state.mode = word(value["mode"], where + ".mode", {"auto", "cool", "dry", "fan", "heat"});
        state.fan = word(value["fan"], where + ".fan", {"low", "medium", "high", "auto"});
        if (state.power.empty()) Fail(where + ".power", "is required");
        state.hasSetpoint = !value["setpoint"].isNull();
        if (state.hasSetpoint) state.setpoint = Number(value["setpoint"], where + ".setpoint");
        KeyFrame(value, codeset, where, state.frame);
        codeset.states.push_back(std::move(state));
    }
    if (codeset.states.empty()) Fail(path + ".states", "must name at least one state");
}

Codeset One(const JsonValue& entry, const std::string& path) {
    if (entry.type() != common::json::kObject) Fail(path, "must be an object");
    Codeset codeset;
    codeset.name = Text(entry["name"], path + ".name");
    if (codeset.name.empty()) Fail(path + ".name", "must not be empty");
    if (!entry["source"].isNull()) codeset.source = Text(entry["source"], path + ".source");
    const std::string protocol = Text(entry["protocol"], path + ".protocol");
    if (!ProtocolFromName(protocol, codeset.protocol)) Fail(path + ".protocol", "'" + protocol + "' is not a known protocol");
    codeset.carrier = DefaultCarrier(codeset.protocol);
    if (!entry["carrier"].isNull()) codeset.carrier = U32(entry["carrier"], path + ".carrier", 1000000);
    if (codeset.carrier < 10000 && codeset.protocol != Protocol::Pronto) Fail(path + ".carrier", "must be at least 10000 Hz");
    if (!entry["duty_cycle"].isNull()) codeset.dutyCycle = U32(entry["duty_cycle"], path + ".duty_cycle", 100);
    if (codeset.dutyCycle == 0) Fail(path + ".duty_cycle", "must be 1..100");
    if (!entry["repeats"].isNull()) codeset.repeats = U32(entry["repeats"], path + ".repeats", 8);
    if (codeset.protocol == Protocol::Aircon) {
        codeset.frame = CAcFormatReader::Read(entry, path);
        if (!entry["family"].isNull()) codeset.family = Text(entry["family"], path + ".family");
    } else if (codeset.protocol == Protocol::AcStates) {
        States(entry, codeset, path);
    } else {
        Keys(entry, codeset, path);
    }
    return codeset;
}

}  // namespace

std::shared_ptr<const CCodesetLibrary> CCodesetLibrary::Parse(const std::string& text) {
    const JsonValue root = JsonValue::Create(text);
    if (root.isNull()) throw std::invalid_argument("the codesets file is not valid JSON");
    if (root.type() != common::json::kObject || root["codesets"].type() != common::json::kArray) {
        throw std::invalid_argument("the codesets file must be an object with a \"codesets\" array");
    }
    auto library = std::make_shared<CCodesetLibrary>();
    const JsonValue& list = root["codesets"];
    for (unsigned i = 0; i < list.size(); ++i) {
        const std::string path = "codesets[" + std::to_string(i) + "]";
        Codeset codeset = One(list[i], path);
        if (library->Find(codeset.name) != nullptr) Fail(path + ".name", "'" + codeset.name + "' is defined twice");
        library->codesets_.push_back(std::move(codeset));
    }
    return library;
}

const Codeset* CCodesetLibrary::Find(const std::string& name) const {
    for (const auto& codeset : codesets_) {
        if (codeset.name == name) return &codeset;
    }
    return nullptr;
}

std::string CCodesetLibrary::KeyMapText(const Codeset& codeset) {
    std::ostringstream out;
    auto quoted = [&](const std::string& word) { out << JsonValue(word).toString(); };
    if (codeset.protocol == Protocol::AcStates) return CAcStateTable::KeyMapText(codeset);
    if (codeset.protocol != Protocol::Aircon) {
        out << '{';
        for (std::size_t i = 0; i < codeset.keys.size(); ++i) {
            if (i > 0) out << ',';
            quoted(codeset.keys[i].name);
            out << ':' << codeset.keys[i].code;
        }
        out << '}';
        return out.str();
    }
    auto words = [&](const EnumField& field) {
        out << '[';
        for (std::size_t i = 0; i < field.values.size(); ++i) {
            if (i > 0) out << ',';
            quoted(field.values[i].first);
        }
        out << ']';
    };
    out << "{\"modes\":";
    words(codeset.frame.mode);
    out << ",\"fan\":";
    words(codeset.frame.fan);
    out << ",\"setpoint\":[" << codeset.frame.setpoint.min << ',' << codeset.frame.setpoint.max << ']';
    // Named only where it is not plain on/off (a unit that only knows a power toggle).
    const std::vector<std::string> power = PowerWords(codeset.frame);
    if (power != std::vector<std::string>{"on", "off"}) {
        out << ",\"power\":[";
        for (std::size_t i = 0; i < power.size(); ++i) {
            if (i > 0) out << ',';
            quoted(power[i]);
        }
        out << ']';
    }
    out << '}';
    return out.str();
}

}  // namespace infrared

#include "infrared/codeset/CCodesetLibrary.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "JsonValue.h"
#include "infrared/codeset/CAcStateTable.h"
#include "infrared/encode/CProntoCode.h"

namespace infrared {
namespace {

using common::json::JsonValue;

[[noreturn]] void Fail(const std::string& where, const std::string& what) {
    throw std::invalid_argument(where + ": " + what);
}

// Numbers may be written as JSON integers or as "0x.." / decimal strings (hex reads better for
// bytes and scancodes).
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

std::uint32_t U32(const JsonValue& value, const std::string& where, std::uint32_t max = UINT32_MAX) {
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

const JsonValue& Object(const JsonValue& parent, const std::string& name, const std::string& where) {
    const JsonValue& value = parent[name];
    if (value.type() != common::json::kObject) Fail(where + "." + name, "must be an object");
    return value;
}

FrameSlot Slot(const JsonValue& field, const std::string& where, std::size_t frameSize) {
    FrameSlot slot;
    slot.byte = U32(field["byte"], where + ".byte");
    if (slot.byte >= frameSize) Fail(where + ".byte", "is outside the frame's bytes");
    if (!field["mask"].isNull()) slot.mask = Byte(field["mask"], where + ".mask");
    if (slot.mask == 0) Fail(where + ".mask", "must not be 0");
    return slot;
}

// {"byte":6,"mask":"0x38","values":{"cool":"0x18"}} or, for a value spread over several bytes,
// {"slots":[{"byte":6,"mask":"0x38"},{"byte":8}],"values":{"cool":["0x18","0x36"]}}.
EnumField Enum(const JsonValue& frame, const std::string& name, const std::string& path, std::size_t frameSize) {
    const std::string where = path + "." + name;
    const JsonValue& field = Object(frame, name, path);
    EnumField out;
    if (field["slots"].isNull()) {
        out.slots.push_back(Slot(field, where, frameSize));
    } else {
        const JsonValue& slots = field["slots"];
        if (slots.type() != common::json::kArray || slots.size() == 0) Fail(where + ".slots", "must be a non-empty array");
        for (unsigned i = 0; i < slots.size(); ++i) {
            out.slots.push_back(Slot(slots[i], where + ".slots[" + std::to_string(i) + "]", frameSize));
        }
    }
    const JsonValue& values = Object(field, "values", where);
    for (const auto& word : values.getMemberNames()) {
        const std::string at = where + ".values." + word;
        const JsonValue& value = values[word];
        std::vector<std::uint8_t> bytes;
        if (value.type() == common::json::kArray) {
            for (unsigned i = 0; i < value.size(); ++i) bytes.push_back(Byte(value[i], at));
        } else {
            bytes.push_back(Byte(value, at));
        }
        if (bytes.size() != out.slots.size()) Fail(at, "needs one byte per slot");
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if ((bytes[i] & ~out.slots[i].mask) != 0) Fail(at, "has bits outside the slot's mask");
        }
        out.values.emplace_back(word, std::move(bytes));
    }
    if (out.values.empty()) Fail(where + ".values", "must name at least one value");
    return out;
}

SetpointField Setpoint(const JsonValue& frame, const std::string& path, std::size_t frameSize) {
    const std::string where = path + ".setpoint";
    const JsonValue& field = Object(frame, "setpoint", path);
    SetpointField out;
    out.slot = Slot(field, where, frameSize);
    if (!field["shift"].isNull()) out.shift = U32(field["shift"], where + ".shift", 7);
    if (!field["offset"].isNull()) out.offset = Number(field["offset"], where + ".offset");
    if (!field["scale"].isNull()) out.scale = Number(field["scale"], where + ".scale");
    out.min = Number(field["min"], where + ".min");
    out.max = Number(field["max"], where + ".max");
    if (out.min > out.max) Fail(where, "min is above max");
    if (out.scale <= 0) Fail(where + ".scale", "must be positive");
    const double top = std::lround((out.max - out.offset) * out.scale);
    if (out.min < out.offset || top > static_cast<double>(out.slot.mask >> out.shift)) {
        Fail(where, "the range does not fit the slot");
    }
    return out;
}

Checksum ChecksumOf(const JsonValue& frame, const std::string& path, std::size_t frameSize) {
    Checksum out;
    const JsonValue& field = frame["checksum"];
    if (field.isNull()) return out;
    const std::string where = path + ".checksum";
    if (field.type() != common::json::kObject) Fail(where, "must be an object");
    const std::string rule = Text(field["rule"], where + ".rule");
    if (rule == "byte_sum") out.rule = ChecksumRule::ByteSum;
    else if (rule == "nibble_sum") out.rule = ChecksumRule::NibbleSum;
    else if (rule == "xor") out.rule = ChecksumRule::Xor;
    else Fail(where + ".rule", "'" + rule + "' is not byte_sum, nibble_sum or xor");
    out.slot = Slot(field, where, frameSize);
    out.first = U32(field["from"], where + ".from");
    out.last = U32(field["to"], where + ".to");
    if (out.first > out.last || out.last >= frameSize) Fail(where, "from..to must lie within the frame");
    if (out.first <= out.slot.byte && out.slot.byte <= out.last) Fail(where, "must not cover its own byte");
    if (!field["add"].isNull()) out.add = Byte(field["add"], where + ".add");
    if (!field["shift"].isNull()) out.shift = U32(field["shift"], where + ".shift", 7);
    return out;
}

std::uint32_t Duration(const JsonValue& timing, const char* name, const std::string& where, bool required) {
    const JsonValue& value = timing[name];
    if (value.isNull()) {
        if (required) Fail(where + "." + name, "is required");
        return 0;
    }
    return U32(value, where + "." + name, 1000000);
}

AcFrameFormat Frame(const JsonValue& entry, const std::string& path) {
    AcFrameFormat out;
    const JsonValue& timing = Object(entry, "timing", path);
    const std::string tw = path + ".timing";
    const JsonValue& header = timing["header"];
    if (!header.isNull()) {
        if (header.type() != common::json::kArray || header.size() != 2) Fail(tw + ".header", "must be [mark, space]");
        out.timing.headerMark = U32(header[0u], tw + ".header", 1000000);
        out.timing.headerSpace = U32(header[1u], tw + ".header", 1000000);
    }
    out.timing.mark = Duration(timing, "mark", tw, true);
    out.timing.oneSpace = Duration(timing, "one", tw, true);
    out.timing.zeroSpace = Duration(timing, "zero", tw, true);
    out.timing.trailer = Duration(timing, "trailer", tw, true);
    out.timing.gap = Duration(timing, "gap", tw, true);
    if (!timing["repeats"].isNull()) out.timing.repeats = U32(timing["repeats"], tw + ".repeats", 8);
    if (out.timing.mark == 0 || out.timing.oneSpace == 0 || out.timing.zeroSpace == 0) Fail(tw, "durations must not be 0");
    const std::string order = entry["bit_order"].isNull() ? "lsb" : Text(entry["bit_order"], path + ".bit_order");
    if (order != "lsb" && order != "msb") Fail(path + ".bit_order", "must be \"lsb\" or \"msb\"");
    out.timing.msbFirst = order == "msb";

    const JsonValue& frame = Object(entry, "frame", path);
    const std::string fw = path + ".frame";
    const JsonValue& bytes = frame["bytes"];
    if (bytes.type() != common::json::kArray || bytes.size() == 0 || bytes.size() > 64) {
        Fail(fw + ".bytes", "must be an array of 1 to 64 bytes");
    }
    for (unsigned i = 0; i < bytes.size(); ++i) out.bytes.push_back(Byte(bytes[i], fw + ".bytes[" + std::to_string(i) + "]"));
    out.power = Enum(frame, "power", fw, out.bytes.size());
    out.mode = Enum(frame, "mode", fw, out.bytes.size());
    out.fan = Enum(frame, "fan", fw, out.bytes.size());
    out.setpoint = Setpoint(frame, fw, out.bytes.size());
    out.checksum = ChecksumOf(frame, fw, out.bytes.size());
    return out;
}

std::uint32_t ScancodeLimit(Protocol protocol) {
    switch (protocol) {
        case Protocol::Nec: case Protocol::Rc6Mode0: case Protocol::Jvc: return 0xffff;
        case Protocol::NecX: return 0xffffff;
        case Protocol::Nec32: return 0xffffffff;
        case Protocol::Rc5: return 0x1f7f;      // 5-bit address, 7-bit command
        case Protocol::Sony12: return 0x1f007f;  // address << 16 | command
        case Protocol::Sony15: return 0xff007f;
        case Protocol::Sony20: return 0x1fff7f;  // address << 16 | extension << 8 | command
        case Protocol::Sanyo: return 0x1fffff;   // 13-bit address, 8-bit command
        case Protocol::Sharp: return 0x1fff;     // 5-bit address, 8-bit command
        default: return 0;
    }
}

std::uint32_t DefaultCarrier(Protocol protocol) {
    switch (protocol) {
        case Protocol::Rc5: case Protocol::Rc6Mode0: return 36000;
        case Protocol::Sony12: case Protocol::Sony15: case Protocol::Sony20: return 40000;
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
        key.scancode = U32(value["scancode"], where + ".scancode");
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
        codeset.frame = Frame(entry, path);
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
    out << ",\"setpoint\":[" << codeset.frame.setpoint.min << ',' << codeset.frame.setpoint.max << "]}";
    return out.str();
}

}  // namespace infrared

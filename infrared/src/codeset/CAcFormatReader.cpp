#include "codeset/CAcFormatReader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "codeset/JsonFields.h"

namespace infrared {
namespace {

using namespace json_fields;
using common::json::kArray;
using common::json::kObject;

std::string At(const std::string& where, unsigned i) { return where + "[" + std::to_string(i) + "]"; }

FrameSlot Slot(const JsonValue& field, const std::string& where, std::size_t frameSize) {
    if (field.type() != kObject) Fail(where, "must be an object");
    FrameSlot slot;
    slot.byte = U32(field["byte"], where + ".byte");
    if (slot.byte >= frameSize) Fail(where + ".byte", "is outside the frame's bytes");
    if (!field["mask"].isNull()) slot.mask = Byte(field["mask"], where + ".mask");
    if (slot.mask == 0) Fail(where + ".mask", "must not be 0");
    return slot;
}

std::vector<std::uint8_t> Bytes(const JsonValue& value, const std::string& where, std::size_t max) {
    const JsonValue& list = Array(value, where);
    if (list.size() > max) Fail(where, "holds more than " + std::to_string(max) + " bytes");
    std::vector<std::uint8_t> out;
    for (unsigned i = 0; i < list.size(); ++i) out.push_back(Byte(list[i], At(where, i)));
    return out;
}

std::vector<WordBytes> Words(const JsonValue& values, const std::string& where, const std::vector<FrameSlot>& slots) {
    std::vector<WordBytes> out;
    for (const auto& word : values.getMemberNames()) {
        const std::string at = where + "." + word;
        const JsonValue& value = values[word];
        std::vector<std::uint8_t> bytes;
        if (value.type() == kArray) {
            for (unsigned i = 0; i < value.size(); ++i) bytes.push_back(Byte(value[i], at));
        } else {
            bytes.push_back(Byte(value, at));
        }
        if (bytes.size() != slots.size()) Fail(at, "needs one byte per slot");
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if ((bytes[i] & ~slots[i].mask) != 0) Fail(at, "has bits outside the slot's mask");
        }
        out.emplace_back(word, std::move(bytes));
    }
    return out;
}

// {"byte":6,"mask":"0x38","values":{"cool":"0x18"}} or, for a value spread over several bytes,
// {"slots":[{"byte":6,"mask":"0x38"},{"byte":8}],"values":{"cool":["0x18","0x36"]}};
// "read_also" lists further codes a receiver takes for a word.
EnumField Enum(const JsonValue& field, const std::string& where, std::size_t frameSize) {
    EnumField out;
    if (field["slots"].isNull()) {
        out.slots.push_back(Slot(field, where, frameSize));
    } else {
        const JsonValue& slots = Array(field["slots"], where + ".slots");
        for (unsigned i = 0; i < slots.size(); ++i) out.slots.push_back(Slot(slots[i], At(where + ".slots", i), frameSize));
    }
    if (field["values"].type() != kObject) Fail(where + ".values", "must be an object");
    out.values = Words(field["values"], where + ".values", out.slots);
    if (out.values.empty()) Fail(where + ".values", "must name at least one value");
    if (!field["read_also"].isNull()) {
        if (field["read_also"].type() != kObject) Fail(where + ".read_also", "must be an object");
        out.readAlso = Words(field["read_also"], where + ".read_also", out.slots);
    }
    return out;
}

// Power is a field, a fixed "off_frame", or both (the field then only says "on").
EnumField Power(const JsonValue& frame, const std::string& fw, AcFrameFormat& out) {
    const std::string where = fw + ".power";
    const JsonValue& field = Object(frame, "power", fw);
    if (!field["off_frame"].isNull()) out.offFrame = Bytes(field["off_frame"], where + ".off_frame", 64);
    if (out.offFrame.empty() || !field["values"].isNull()) return Enum(field, where, out.bytes.size());
    EnumField none;
    none.values = {{"on", {}}, {"off", {}}};
    return none;
}

void SetpointTable(const JsonValue& table, const std::string& where, SetpointField& out) {
    if (table.type() != kObject || table.getMemberNames().empty()) Fail(where, "must be a non-empty object");
    for (const auto& key : table.getMemberNames()) {
        char* end = nullptr;
        const double degrees = std::strtod(key.c_str(), &end);
        if (key.empty() || *end != '\0' || !std::isfinite(degrees)) Fail(where + "." + key, "is not a number of degrees");
        const std::uint8_t code = Byte(table[key], where + "." + key);
        if ((code & ~out.slot.mask) != 0) Fail(where + "." + key, "has bits outside the slot's mask");
        out.table.emplace_back(degrees, code);
    }
    std::sort(out.table.begin(), out.table.end());
    out.min = out.table.front().first;
    out.max = out.table.back().first;
}

SetpointField Setpoint(const JsonValue& frame, const std::string& fw, std::size_t frameSize) {
    const std::string where = fw + ".setpoint";
    const JsonValue& field = Object(frame, "setpoint", fw);
    SetpointField out;
    out.slot = Slot(field, where, frameSize);
    if (!field["table"].isNull()) {
        SetpointTable(field["table"], where + ".table", out);
        return out;
    }
    if (!field["shift"].isNull()) out.shift = U32(field["shift"], where + ".shift", 7);
    if (!field["offset"].isNull()) out.offset = Number(field["offset"], where + ".offset");
    if (!field["scale"].isNull()) out.scale = Number(field["scale"], where + ".scale");
    out.min = Number(field["min"], where + ".min");
    out.max = Number(field["max"], where + ".max");
    if (out.min > out.max) Fail(where, "min is above max");
    if (out.scale == 0) Fail(where + ".scale", "must not be 0");
    const double low = std::lround((out.min - out.offset) * out.scale);
    const double high = std::lround((out.max - out.offset) * out.scale);
    const double top = static_cast<double>(out.slot.mask >> out.shift);
    if (std::min(low, high) < 0 || std::max(low, high) > top) Fail(where, "the range does not fit the slot");
    return out;
}

ChecksumUnit Unit(const JsonValue& value, const std::string& where) {
    if (value.isNull()) return ChecksumUnit::Bytes;
    const std::string word = Text(value, where);
    if (word == "bytes") return ChecksumUnit::Bytes;
    if (word == "nibbles") return ChecksumUnit::Nibbles;
    if (word == "low_nibbles") return ChecksumUnit::LowNibbles;
    if (word == "high_nibbles") return ChecksumUnit::HighNibbles;
    Fail(where, "'" + word + "' is not bytes, nibbles, low_nibbles or high_nibbles");
}

ChecksumRange Range(const JsonValue& field, const std::string& where, std::size_t frameSize, ChecksumUnit unit) {
    if (field.type() != kObject) Fail(where, "must be an object");
    ChecksumRange range;
    range.first = U32(field["from"], where + ".from");
    range.last = U32(field["to"], where + ".to");
    if (range.first > range.last || range.last >= frameSize) Fail(where, "from..to must lie within the frame");
    range.unit = field["of"].isNull() ? unit : Unit(field["of"], where + ".of");
    return range;
}

Checksum OneChecksum(const JsonValue& field, const std::string& where, std::size_t frameSize) {
    if (field.type() != kObject) Fail(where, "must be an object");
    Checksum out;
    const std::string rule = Text(field["rule"], where + ".rule");
    ChecksumUnit unit = Unit(field["of"], where + ".of");
    if (rule == "sum" || rule == "byte_sum") out.rule = ChecksumRule::Sum;
    else if (rule == "nibble_sum") out.rule = ChecksumRule::Sum, unit = ChecksumUnit::Nibbles;
    else if (rule == "xor") out.rule = ChecksumRule::Xor;
    else Fail(where + ".rule", "'" + rule + "' is not sum, byte_sum, nibble_sum or xor");
    out.slot = Slot(field, where, frameSize);
    if (field["ranges"].isNull()) {
        out.ranges.push_back(Range(field, where, frameSize, unit));
    } else {
        const JsonValue& ranges = Array(field["ranges"], where + ".ranges");
        for (unsigned i = 0; i < ranges.size(); ++i) out.ranges.push_back(Range(ranges[i], At(where + ".ranges", i), frameSize, unit));
    }
    if (!field["add"].isNull()) out.add = Byte(field["add"], where + ".add");
    if (!field["shift"].isNull()) out.shift = U32(field["shift"], where + ".shift", 7);
    out.negate = Flag(field["negate"], where + ".negate");
    out.reversed = Flag(field["reversed"], where + ".reversed");
    return out;
}

std::vector<Checksum> Checksums(const JsonValue& frame, const std::string& fw, std::size_t frameSize) {
    const JsonValue& field = frame["checksum"];
    const std::string where = fw + ".checksum";
    std::vector<Checksum> out;
    if (field.isNull()) return out;
    if (field.type() != kArray) return {OneChecksum(field, where, frameSize)};
    for (unsigned i = 0; i < Array(field, where).size(); ++i) out.push_back(OneChecksum(field[i], At(where, i), frameSize));
    return out;
}

// "per_mode": {"fan": {"set": [{"byte":2,"mask":"0xf0","value":"0xe0"}], "ignores": ["setpoint"]}}
std::vector<ModeRule> ModeRules(const JsonValue& frame, const std::string& fw, const AcFrameFormat& format) {
    std::vector<ModeRule> out;
    const JsonValue& rules = frame["per_mode"];
    const std::string where = fw + ".per_mode";
    if (rules.isNull()) return out;
    if (rules.type() != kObject) Fail(where, "must be an object");
    for (const auto& mode : rules.getMemberNames()) {
        const std::string at = where + "." + mode;
        const JsonValue& rule = rules[mode];
        if (rule.type() != kObject) Fail(at, "must be an object");
        const bool known = std::any_of(format.mode.values.begin(), format.mode.values.end(),
                                       [&](const WordBytes& value) { return value.first == mode; });
        if (!known) Fail(at, "is not one of the frame's modes");
        ModeRule out1;
        out1.mode = mode;
        if (!rule["set"].isNull()) {
            const JsonValue& set = Array(rule["set"], at + ".set");
            for (unsigned i = 0; i < set.size(); ++i) {
                SlotValue value{Slot(set[i], At(at + ".set", i), format.bytes.size()), Byte(set[i]["value"], At(at + ".set", i) + ".value")};
                if ((value.value & ~value.slot.mask) != 0) Fail(At(at + ".set", i) + ".value", "has bits outside the slot's mask");
                out1.set.push_back(value);
            }
        }
        if (!rule["ignores"].isNull()) {
            const JsonValue& ignores = Array(rule["ignores"], at + ".ignores");
            for (unsigned i = 0; i < ignores.size(); ++i) {
                const std::string word = Text(ignores[i], At(at + ".ignores", i));
                if (word == "setpoint") out1.ignoresSetpoint = true;
                else if (word == "fan") out1.ignoresFan = true;
                else Fail(At(at + ".ignores", i), "must be \"setpoint\" or \"fan\"");
            }
        }
        out.push_back(std::move(out1));
    }
    return out;
}

std::vector<FrameSlot> Fixed(const JsonValue& frame, const std::string& fw, std::size_t frameSize) {
    std::vector<FrameSlot> out;
    const JsonValue& fixed = frame["fixed"];
    if (fixed.isNull()) return out;
    const JsonValue& list = Array(fixed, fw + ".fixed");
    for (unsigned i = 0; i < list.size(); ++i) {
        if (list[i].type() == kObject) {
            out.push_back(Slot(list[i], At(fw + ".fixed", i), frameSize));
        } else {
            out.push_back(FrameSlot{U32(list[i], At(fw + ".fixed", i)), 0xff});
            if (out.back().byte >= frameSize) Fail(At(fw + ".fixed", i), "is outside the frame's bytes");
        }
    }
    return out;
}

std::uint32_t Duration(const JsonValue& value, const std::string& where) {
    return U32(value, where, 1000000);
}

void MarkSpace(const JsonValue& value, const std::string& where, std::uint32_t& mark, std::uint32_t& space) {
    if (value.isString() && value.asString() == "none") {
        mark = space = 0;
        return;
    }
    if (value.type() != kArray || value.size() != 2) Fail(where, "must be [mark, space] or \"none\"");
    mark = Duration(value[0u], where);
    space = Duration(value[1u], where);
}

bool MsbFirst(const JsonValue& value, const std::string& where, bool fallback) {
    if (value.isNull()) return fallback;
    const std::string order = Text(value, where);
    if (order != "lsb" && order != "msb") Fail(where, "must be \"lsb\" or \"msb\"");
    return order == "msb";
}

std::string Bits(const JsonValue& value, const std::string& where) {
    const std::string bits = Text(value, where);
    if (bits.empty() || bits.size() > 64 || bits.find_first_not_of("01") != std::string::npos) {
        Fail(where, "must be 1 to 64 of the characters 0 and 1");
    }
    return bits;
}

void ReadTiming(const JsonValue& entry, const std::string& path, AcFrameFormat& out) {
    const JsonValue& timing = Object(entry, "timing", path);
    const std::string tw = path + ".timing";
    FrameTiming& t = out.timing;
    if (!timing["leader"].isNull()) MarkSpace(timing["leader"], tw + ".leader", t.leaderMark, t.leaderSpace);
    if (!timing["header"].isNull()) MarkSpace(timing["header"], tw + ".header", t.headerMark, t.headerSpace);
    for (const char* name : {"mark", "one", "zero", "trailer", "gap"}) {
        if (timing[name].isNull()) Fail(tw + "." + name, "is required");
    }
    t.mark = Duration(timing["mark"], tw + ".mark");
    t.oneSpace = Duration(timing["one"], tw + ".one");
    t.zeroSpace = Duration(timing["zero"], tw + ".zero");
    t.trailer = Duration(timing["trailer"], tw + ".trailer");
    t.gap = Duration(timing["gap"], tw + ".gap");
    if (!timing["final_space"].isNull()) t.finalSpace = Duration(timing["final_space"], tw + ".final_space");
    if (!timing["repeats"].isNull()) t.repeats = U32(timing["repeats"], tw + ".repeats", 8);
    if (t.mark == 0 || t.oneSpace == 0 || t.zeroSpace == 0) Fail(tw, "durations must not be 0");
    if (t.oneSpace == t.zeroSpace) Fail(tw, "one and zero must differ");
    t.msbFirst = MsbFirst(entry["bit_order"], path + ".bit_order", false);
}

FrameSection Section(const JsonValue& value, const std::string& where, const FrameTiming& t) {
    if (value.type() != kObject) Fail(where, "must be an object");
    FrameSection s;
    s.headerMark = t.headerMark;
    s.headerSpace = t.headerSpace;
    s.trailer = t.trailer;
    s.gap = t.gap;
    if (!value["header"].isNull()) MarkSpace(value["header"], where + ".header", s.headerMark, s.headerSpace);
    if (!value["trailer"].isNull()) s.trailer = Duration(value["trailer"], where + ".trailer");
    if (!value["gap"].isNull()) s.gap = Duration(value["gap"], where + ".gap");
    if (!value["period"].isNull()) s.period = Duration(value["period"], where + ".period");
    s.msbFirst = MsbFirst(value["bit_order"], where + ".bit_order", t.msbFirst);
    if (!value["bits"].isNull()) {
        s.bits = Bits(value["bits"], where + ".bits");
        return s;
    }
    s.first = U32(value["from"], where + ".from");
    if (!value["to"].isNull()) s.last = U32(value["to"], where + ".to");
    if (s.first > s.last) Fail(where, "from is above to");
    if (!value["tail_bits"].isNull()) s.tailBits = Bits(value["tail_bits"], where + ".tail_bits");
    if (!value["skip_bits"].isNull()) s.skipBits = U32(value["skip_bits"], where + ".skip_bits", 7);
    const std::string invert = value["invert"].isNull() ? "none" : Text(value["invert"], where + ".invert");
    if (invert == "whole") s.inversion = Inversion::Whole;
    else if (invert == "each_byte") s.inversion = Inversion::EachByte;
    else if (invert != "none") Fail(where + ".invert", "must be \"none\", \"whole\" or \"each_byte\"");
    return s;
}

// Every byte of a frame (the template, and the off frame if any) must be sent plainly once,
// or a receiver could never read it back.
void CheckCover(const std::vector<FrameSection>& sections, std::size_t size, const std::string& where, const char* what) {
    std::vector<bool> sent(size, false);
    for (std::size_t i = 0; i < sections.size(); ++i) {
        const FrameSection& s = sections[i];
        if (!s.bits.empty()) continue;
        if (s.first >= size || (s.last != FrameSection::kToEnd && s.last >= size)) {
            Fail(At(where, static_cast<unsigned>(i)), std::string("lies outside ") + what);
        }
        if (s.inversion == Inversion::Whole) continue;
        for (std::size_t b = s.first; b <= std::min<std::size_t>(s.last, size - 1); ++b) sent[b] = true;
    }
    if (std::find(sent.begin(), sent.end(), false) != sent.end()) Fail(where, std::string("do not send every byte of ") + what);
}

void ReadSections(const JsonValue& entry, const std::string& path, AcFrameFormat& out) {
    const std::string where = path + ".sections";
    if (entry["sections"].isNull()) {
        FrameSection whole;
        whole.headerMark = out.timing.headerMark;
        whole.headerSpace = out.timing.headerSpace;
        whole.trailer = out.timing.trailer;
        whole.gap = out.timing.gap;
        whole.msbFirst = out.timing.msbFirst;
        out.sections.push_back(whole);
    } else {
        const JsonValue& list = Array(entry["sections"], where);
        if (list.size() > 16) Fail(where, "holds more than 16 sections");
        for (unsigned i = 0; i < list.size(); ++i) out.sections.push_back(Section(list[i], At(where, i), out.timing));
    }
    CheckCover(out.sections, out.bytes.size(), where, "the frame's bytes");
    if (!out.offFrame.empty()) CheckCover(out.sections, out.offFrame.size(), where, "the off frame");
}

}  // namespace

AcFrameFormat CAcFormatReader::Read(const JsonValue& entry, const std::string& path) {
    AcFrameFormat out;
    ReadTiming(entry, path, out);
    const JsonValue& frame = Object(entry, "frame", path);
    const std::string fw = path + ".frame";
    out.bytes = Bytes(frame["bytes"], fw + ".bytes", 64);
    out.power = Power(frame, fw, out);
    out.mode = Enum(Object(frame, "mode", fw), fw + ".mode", out.bytes.size());
    out.fan = Enum(Object(frame, "fan", fw), fw + ".fan", out.bytes.size());
    out.setpoint = Setpoint(frame, fw, out.bytes.size());
    out.modeRules = ModeRules(frame, fw, out);
    out.checksums = Checksums(frame, fw, out.bytes.size());
    out.fixed = Fixed(frame, fw, out.bytes.size());
    ReadSections(entry, path, out);
    return out;
}

}  // namespace infrared

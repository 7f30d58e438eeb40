#include "infrared/encode/CAcFrameEncoder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include "infrared/encode/CPulseWriter.h"

namespace infrared {
namespace {

void Put(std::vector<std::uint8_t>& bytes, const FrameSlot& slot, std::uint8_t bits) {
    bytes[slot.byte] = static_cast<std::uint8_t>((bytes[slot.byte] & ~slot.mask) | (bits & slot.mask));
}

const WordBytes* Find(const EnumField& field, const std::string& word) {
    for (const auto& value : field.values) {
        if (value.first == word) return &value;
    }
    return nullptr;
}

void PutWord(std::vector<std::uint8_t>& bytes, const EnumField& field, const std::string& word, const char* what) {
    const WordBytes* value = Find(field, word);
    if (value == nullptr) {
        std::string known;
        for (const auto& v : field.values) known += (known.empty() ? "" : ", ") + v.first;
        throw std::invalid_argument(std::string(what) + " '" + word + "' is not one of this codeset's (" + known + ")");
    }
    for (std::size_t i = 0; i < field.slots.size(); ++i) Put(bytes, field.slots[i], value->second[i]);
}

std::uint8_t SetpointCode(const SetpointField& sp, const std::string& text) {
    char* end = nullptr;
    const double degrees = std::strtod(text.c_str(), &end);
    if (text.empty() || end == nullptr || *end != '\0' || !std::isfinite(degrees)) {
        throw std::invalid_argument("set point '" + text + "' is not a number");
    }
    if (degrees < sp.min || degrees > sp.max) {
        throw std::invalid_argument("set point " + text + " is outside this codeset's range");
    }
    if (!sp.table.empty()) {
        for (const auto& [tableDegrees, code] : sp.table) {
            if (std::fabs(tableDegrees - degrees) < 1e-6) return code;
        }
        throw std::invalid_argument("set point " + text + " is finer than this codeset's step");
    }
    const double scaled = (degrees - sp.offset) * sp.scale;
    if (std::fabs(scaled - std::round(scaled)) > 1e-6) {
        throw std::invalid_argument("set point " + text + " is finer than this codeset's step");
    }
    return static_cast<std::uint8_t>(static_cast<std::uint32_t>(std::lround(scaled)) << sp.shift);
}

// Power "on" need not be listed: where only "off" is a code (a mode value meaning off), "on"
// leaves the frame as the other fields made it.
void PutPower(std::vector<std::uint8_t>& bytes, const AcFrameFormat& format, const std::string& word) {
    if (word == "on" && Find(format.power, word) == nullptr && Find(format.power, "off") != nullptr) return;
    PutWord(bytes, format.power, word, "power");
}

std::uint8_t Reverse(std::uint8_t byte) {
    std::uint8_t out = 0;
    for (int i = 0; i < 8; ++i) out = static_cast<std::uint8_t>(out | ((byte >> i) & 1u) << (7 - i));
    return out;
}

}  // namespace

std::uint8_t CAcFrameEncoder::ComputeChecksum(const Checksum& rule, const std::vector<std::uint8_t>& frame) {
    std::vector<std::uint8_t> bytes = frame;
    if (rule.slot.byte < bytes.size()) bytes[rule.slot.byte] = static_cast<std::uint8_t>(bytes[rule.slot.byte] & ~rule.slot.mask);
    std::uint32_t total = 0;
    auto take = [&](std::uint32_t term) { total = rule.rule == ChecksumRule::Xor ? total ^ term : total + term; };
    for (const ChecksumRange& range : rule.ranges) {
        for (std::uint32_t i = range.first; i <= range.last && i < bytes.size(); ++i) {
            const std::uint8_t byte = rule.reversed ? Reverse(bytes[i]) : bytes[i];
            const bool low = range.unit != ChecksumUnit::HighNibbles && range.unit != ChecksumUnit::Bytes;
            const bool high = range.unit != ChecksumUnit::LowNibbles && range.unit != ChecksumUnit::Bytes;
            if (range.unit == ChecksumUnit::Bytes) take(byte);
            if (low) take(byte & 0x0fu);
            if (high) take(byte >> 4);
        }
    }
    if (rule.negate) total = 0u - total;
    std::uint32_t value = rule.rule == ChecksumRule::Xor ? (total ^ rule.add) : (total + rule.add);
    std::uint8_t out = static_cast<std::uint8_t>(value & 0xffu);
    if (rule.reversed) out = Reverse(out);
    return static_cast<std::uint8_t>((out << rule.shift) & rule.slot.mask);
}

std::vector<std::uint8_t> CAcFrameEncoder::BuildFrame(const AcFrameFormat& format, const AcState& state) {
    std::vector<std::uint8_t> bytes = format.bytes;
    PutWord(bytes, format.mode, state.mode, "mode");
    PutWord(bytes, format.fan, state.fan, "fan speed");
    Put(bytes, format.setpoint.slot, SetpointCode(format.setpoint, state.setpoint));
    for (const ModeRule& rule : format.modeRules) {
        if (rule.mode != state.mode) continue;
        for (const SlotValue& set : rule.set) Put(bytes, set.slot, set.value);
    }
    if (state.power == "off" && !format.offFrame.empty()) return format.offFrame;
    PutPower(bytes, format, state.power);
    for (const Checksum& rule : format.checksums) Put(bytes, rule.slot, ComputeChecksum(rule, bytes));
    return bytes;
}

PulseTrain CAcFrameEncoder::Encode(const AcFrameFormat& format, const std::vector<std::uint8_t>& bytes,
                                   std::uint32_t carrier, std::uint32_t dutyCycle) {
    const FrameTiming& t = format.timing;
    CPulseWriter w(carrier, dutyCycle);
    auto bit = [&](bool one) {
        w.Mark(t.mark);
        w.Space(one ? t.oneSpace : t.zeroSpace);
    };
    auto byteBits = [&](std::uint8_t byte, bool msbFirst, std::uint32_t skip) {
        for (std::uint32_t i = skip; i < 8; ++i) bit(((byte >> (msbFirst ? 7 - i : i)) & 1u) != 0);
    };
    for (std::uint32_t copy = 0; copy <= t.repeats; ++copy) {
        w.Mark(t.leaderMark);
        w.Space(t.leaderSpace);
        for (const FrameSection& s : format.sections) {
            w.Mark(s.headerMark);
            w.Space(s.headerSpace);
            for (const char c : s.bits) bit(c == '1');
            const std::size_t last = s.bits.empty() ? std::min<std::size_t>(s.last, bytes.size() - 1) : 0;
            for (std::size_t b = s.first; s.bits.empty() && b <= last && b < bytes.size(); ++b) {
                const std::uint8_t byte = s.inversion == Inversion::Whole ? static_cast<std::uint8_t>(~bytes[b]) : bytes[b];
                byteBits(byte, s.msbFirst, b == s.first ? s.skipBits : 0);
                if (s.inversion == Inversion::EachByte) byteBits(static_cast<std::uint8_t>(~byte), s.msbFirst, 0);
            }
            for (const char c : s.tailBits) bit(c == '1');
            w.Mark(s.trailer);
            w.EndFrame(s.period, s.gap);
        }
    }
    w.Space(t.finalSpace);
    return w.Finish();
}

}  // namespace infrared

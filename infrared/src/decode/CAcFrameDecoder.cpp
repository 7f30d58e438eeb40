#include "infrared/decode/CAcFrameDecoder.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace infrared {
namespace {

// Walks the durations in the order the encoder writes them.
class Walker {
public:
    Walker(const std::vector<std::uint32_t>& d, const FrameTiming& t) : d_(d), t_(t) {}

    bool Mark(std::uint32_t expected) { return expected == 0 || (i_ % 2 == 0 && Take(expected)); }
    bool Space(std::uint32_t expected) { return expected == 0 || (i_ % 2 == 1 && Take(expected)); }

    // A trailer's gap: the capture may end there, or the silence is at least half the gap
    // (some remotes of a family pause for less between copies).
    bool Gap(std::uint32_t gap) {
        if (i_ == d_.size()) return true;
        if (i_ % 2 == 0 || static_cast<std::uint64_t>(d_[i_]) * 2 < gap) return false;
        ++i_;
        return true;
    }

    // A bit's space is told by which side of the midpoint it falls; real captures stretch
    // short spaces by more than 30 %, so only the far bounds are checked.
    bool Bit(bool& one) {
        if (!Mark(t_.mark) || i_ >= d_.size()) return false;
        const std::uint64_t s = d_[i_];
        const std::uint64_t low = std::min(t_.oneSpace, t_.zeroSpace), high = std::max(t_.oneSpace, t_.zeroSpace);
        if (s * 2 < low || s * 2 > high * 3) return false;
        one = (s * 2 >= low + high) == (t_.oneSpace > t_.zeroSpace);
        ++i_;
        return true;
    }

    bool Byte(std::uint8_t& byte, bool msbFirst, std::uint32_t skip) {
        for (std::uint32_t i = skip; i < 8; ++i) {
            bool one = false;
            if (!Bit(one)) return false;
            const std::uint8_t mask = static_cast<std::uint8_t>(1u << (msbFirst ? 7 - i : i));
            byte = static_cast<std::uint8_t>(one ? (byte | mask) : (byte & ~mask));
        }
        return true;
    }

    bool Bits(const std::string& bits) {
        for (const char c : bits) {
            bool one = false;
            if (!Bit(one) || one != (c == '1')) return false;
        }
        return true;
    }

private:
    static std::uint32_t Distance(std::uint32_t a, std::uint32_t b) { return a > b ? a - b : b - a; }
    // +-30 %, and never tighter than 150 us: short marks jitter by a fixed amount.
    static bool Near(std::uint32_t actual, std::uint32_t expected) {
        return Distance(actual, expected) <= std::max<std::uint32_t>(expected / 10 * 3, 150);
    }
    bool Take(std::uint32_t expected) {
        if (i_ >= d_.size() || !Near(d_[i_], expected)) return false;
        ++i_;
        return true;
    }

    const std::vector<std::uint32_t>& d_;
    const FrameTiming& t_;
    std::size_t i_ = 0;
};

bool ReadSection(Walker& w, const FrameSection& s, const std::vector<std::uint8_t>& model, std::vector<std::uint8_t>& bytes,
                 std::vector<bool>& seen) {
    if (!w.Mark(s.headerMark) || !w.Space(s.headerSpace) || !w.Bits(s.bits)) return false;
    const std::size_t last = std::min<std::size_t>(s.last, bytes.size() - 1);
    for (std::size_t b = s.first; s.bits.empty() && b <= last; ++b) {
        std::uint8_t byte = b < model.size() ? model[b] : 0;  // bits not sent keep the template's
        if (!w.Byte(byte, s.msbFirst, b == s.first ? s.skipBits : 0)) return false;
        if (s.inversion == Inversion::EachByte) {
            std::uint8_t inverse = 0;
            if (!w.Byte(inverse, s.msbFirst, 0) || inverse != static_cast<std::uint8_t>(~byte)) return false;
        }
        if (s.inversion == Inversion::Whole) byte = static_cast<std::uint8_t>(~byte);
        if (seen[b] && bytes[b] != byte) return false;
        bytes[b] = byte;
        seen[b] = true;
    }
    return w.Bits(s.tailBits) && w.Mark(s.trailer) && w.Gap(s.gap);
}

std::optional<std::vector<std::uint8_t>> ReadBytes(const AcFrameFormat& format, const std::vector<std::uint32_t>& d,
                                                   std::size_t length) {
    Walker w(d, format.timing);
    if (!w.Mark(format.timing.leaderMark) || !w.Space(format.timing.leaderSpace)) return std::nullopt;
    std::vector<std::uint8_t> bytes(length, 0);
    std::vector<bool> seen(length, false);
    for (const FrameSection& s : format.sections) {
        if (!ReadSection(w, s, format.bytes, bytes, seen)) return std::nullopt;
    }
    if (std::find(seen.begin(), seen.end(), false) != seen.end()) return std::nullopt;
    return bytes;
}

const ModeRule* RuleFor(const AcFrameFormat& format, const std::string& mode) {
    for (const ModeRule& rule : format.modeRules) {
        if (rule.mode == mode) return &rule;
    }
    return nullptr;
}

bool Matches(const std::vector<FrameSlot>& slots, const std::vector<std::uint8_t>& code, const std::vector<std::uint8_t>& bytes) {
    for (std::size_t i = 0; i < slots.size(); ++i) {
        if ((bytes[slots[i].byte] & slots[i].mask) != code[i]) return false;
    }
    return true;
}

std::string Word(const EnumField& field, const std::vector<std::uint8_t>& bytes) {
    for (const auto* list : {&field.values, &field.readAlso}) {
        for (const auto& [word, code] : *list) {
            if (Matches(field.slots, code, bytes)) return word;
        }
    }
    return "";
}

// A mode whose rule writes companion bits matches only where those bits are as written (fan-only
// mode may share its code with dry and differ in the set point bits).
std::string ModeWord(const AcFrameFormat& format, const std::vector<std::uint8_t>& bytes) {
    for (const auto* list : {&format.mode.values, &format.mode.readAlso}) {
        for (const auto& [word, code] : *list) {
            if (!Matches(format.mode.slots, code, bytes)) continue;
            const ModeRule* rule = RuleFor(format, word);
            const bool setHolds = rule == nullptr || std::all_of(rule->set.begin(), rule->set.end(), [&](const SlotValue& set) {
                return (bytes[set.slot.byte] & set.slot.mask) == set.value;
            });
            if (setHolds) return word;
        }
    }
    return "";
}

std::string Degrees(const SetpointField& sp, const std::vector<std::uint8_t>& bytes) {
    const std::uint8_t code = bytes[sp.slot.byte] & sp.slot.mask;
    double degrees = 0;
    if (!sp.table.empty()) {
        const auto found = std::find_if(sp.table.begin(), sp.table.end(), [&](const auto& entry) { return entry.second == code; });
        if (found == sp.table.end()) return "";
        degrees = found->first;
    } else {
        degrees = sp.offset + static_cast<double>(code >> sp.shift) / sp.scale;
    }
    if (degrees < sp.min - 1e-6 || degrees > sp.max + 1e-6) return "";
    char text[32];
    if (std::fabs(degrees - std::round(degrees)) < 1e-6) {
        std::snprintf(text, sizeof text, "%ld", std::lround(degrees));
    } else {
        std::snprintf(text, sizeof text, "%.1f", degrees);
    }
    return text;
}

}  // namespace

std::optional<AcState> CAcFrameDecoder::ReadState(const AcFrameFormat& format, const std::vector<std::uint8_t>& bytes) {
    if (!format.offFrame.empty() && bytes == format.offFrame) return AcState{"off", "", "", ""};
    if (bytes.size() != format.bytes.size()) return std::nullopt;
    for (const Checksum& rule : format.checksums) {
        if ((bytes[rule.slot.byte] & rule.slot.mask) != CAcFrameEncoder::ComputeChecksum(rule, bytes)) return std::nullopt;
    }
    for (const FrameSlot& slot : format.fixed) {
        if (((bytes[slot.byte] ^ format.bytes[slot.byte]) & slot.mask) != 0) return std::nullopt;
    }
    AcState state;
    state.mode = ModeWord(format, bytes);
    const ModeRule* rule = RuleFor(format, state.mode);
    if (rule == nullptr || !rule->ignoresFan) state.fan = Word(format.fan, bytes);
    if (rule == nullptr || !rule->ignoresSetpoint) state.setpoint = Degrees(format.setpoint, bytes);
    state.power = format.power.slots.empty() ? "on" : Word(format.power, bytes);
    const bool onListed = std::any_of(format.power.values.begin(), format.power.values.end(),
                                      [](const WordBytes& value) { return value.first == "on"; });
    if (state.power.empty() && !onListed) state.power = "on";  // only "off" is a code
    return state;
}

std::optional<AcDecoded> CAcFrameDecoder::Decode(const Codeset& codeset, const std::vector<std::uint32_t>& durations) {
    if (codeset.protocol != Protocol::Aircon || durations.size() % 2 == 0 || codeset.frame.bytes.empty()) return std::nullopt;
    const AcFrameFormat& format = codeset.frame;
    std::vector<std::size_t> lengths = {format.bytes.size()};
    if (!format.offFrame.empty() && format.offFrame.size() != format.bytes.size()) lengths.push_back(format.offFrame.size());
    for (const std::size_t length : lengths) {
        auto bytes = ReadBytes(format, durations, length);
        if (!bytes) continue;
        auto state = ReadState(format, *bytes);
        if (!state) continue;
        return AcDecoded{&codeset, std::move(*bytes), std::move(*state)};
    }
    return std::nullopt;
}

}  // namespace infrared

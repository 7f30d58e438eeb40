#include "infrared/encode/CAcFrameEncoder.h"

#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include "infrared/encode/CPulseWriter.h"

namespace infrared {
namespace {

void Put(std::vector<std::uint8_t>& bytes, const FrameSlot& slot, std::uint8_t bits) {
    bytes[slot.byte] = static_cast<std::uint8_t>((bytes[slot.byte] & ~slot.mask) | (bits & slot.mask));
}

void PutWord(std::vector<std::uint8_t>& bytes, const EnumField& field, const std::string& word, const char* what) {
    for (const auto& [name, values] : field.values) {
        if (name != word) continue;
        for (std::size_t i = 0; i < field.slots.size(); ++i) Put(bytes, field.slots[i], values[i]);
        return;
    }
    std::string known;
    for (const auto& value : field.values) known += (known.empty() ? "" : ", ") + value.first;
    throw std::invalid_argument(std::string(what) + " '" + word + "' is not one of this codeset's (" + known + ")");
}

}  // namespace

std::uint8_t CAcFrameEncoder::ComputeChecksum(const Checksum& rule, const std::vector<std::uint8_t>& bytes) {
    std::uint32_t sum = rule.add;
    for (std::uint32_t i = rule.first; i <= rule.last && i < bytes.size(); ++i) {
        switch (rule.rule) {
            case ChecksumRule::ByteSum: sum += bytes[i]; break;
            case ChecksumRule::NibbleSum: sum += (bytes[i] & 0x0fu) + (bytes[i] >> 4); break;
            case ChecksumRule::Xor: sum ^= bytes[i]; break;
            case ChecksumRule::None: break;
        }
    }
    return static_cast<std::uint8_t>(sum & 0xffu);
}

std::vector<std::uint8_t> CAcFrameEncoder::BuildFrame(const AcFrameFormat& format, const AcState& state) {
    std::vector<std::uint8_t> bytes = format.bytes;
    PutWord(bytes, format.power, state.power, "power");
    PutWord(bytes, format.mode, state.mode, "mode");
    PutWord(bytes, format.fan, state.fan, "fan speed");

    const SetpointField& sp = format.setpoint;
    char* end = nullptr;
    const double degrees = std::strtod(state.setpoint.c_str(), &end);
    if (state.setpoint.empty() || end == nullptr || *end != '\0' || !std::isfinite(degrees)) {
        throw std::invalid_argument("set point '" + state.setpoint + "' is not a number");
    }
    if (degrees < sp.min || degrees > sp.max) {
        throw std::invalid_argument("set point " + state.setpoint + " is outside this codeset's range");
    }
    const double scaled = (degrees - sp.offset) * sp.scale;
    if (std::fabs(scaled - std::round(scaled)) > 1e-6) {
        throw std::invalid_argument("set point " + state.setpoint + " is finer than this codeset's step");
    }
    Put(bytes, sp.slot, static_cast<std::uint8_t>(static_cast<std::uint32_t>(std::lround(scaled)) << sp.shift));

    if (format.checksum.rule != ChecksumRule::None) {
        const std::uint8_t sum = ComputeChecksum(format.checksum, bytes);
        Put(bytes, format.checksum.slot, static_cast<std::uint8_t>(sum << format.checksum.shift));
    }
    return bytes;
}

PulseTrain CAcFrameEncoder::Encode(const AcFrameFormat& format, const std::vector<std::uint8_t>& bytes,
                                   std::uint32_t carrier, std::uint32_t dutyCycle) {
    const FrameTiming& t = format.timing;
    CPulseWriter w(carrier, dutyCycle);
    for (std::uint32_t copy = 0; copy <= t.repeats; ++copy) {
        w.Mark(t.headerMark);
        w.Space(t.headerSpace);
        for (const std::uint8_t byte : bytes) {
            for (int bit = 0; bit < 8; ++bit) {
                const int index = t.msbFirst ? 7 - bit : bit;
                w.Mark(t.mark);
                w.Space(((byte >> index) & 1u) != 0 ? t.oneSpace : t.zeroSpace);
            }
        }
        w.Mark(t.trailer);
        w.EndFrame(0, t.gap);
    }
    return w.Finish();
}

}  // namespace infrared

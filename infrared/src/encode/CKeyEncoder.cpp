#include "infrared/encode/CKeyEncoder.h"

#include <stdexcept>

#include "infrared/encode/CPulseWriter.h"

namespace infrared {
namespace {

// Pulse-distance codes (NEC family, JVC, Sanyo, Sharp): every bit is one mark, then a short
// (0) or long (1) space; bits go out least significant first.
struct DistanceCode {
    std::uint32_t headerMark, headerSpace, mark, zero, one, trailer, period, minimumGap;
};

constexpr DistanceCode kNec{9000, 4500, 563, 563, 1688, 563, 108000, 40000};
constexpr DistanceCode kJvc{8400, 4200, 526, 526, 1578, 526, 60000, 20000};
constexpr DistanceCode kSharp{0, 0, 320, 680, 1680, 320, 0, 40000};

void Bits(CPulseWriter& w, const DistanceCode& c, std::uint64_t value, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        w.Mark(c.mark);
        w.Space(((value >> i) & 1u) != 0 ? c.one : c.zero);
    }
}

void DistanceFrame(CPulseWriter& w, const DistanceCode& c, std::uint64_t value, unsigned count) {
    w.Mark(c.headerMark);
    w.Space(c.headerSpace);
    Bits(w, c, value, count);
    w.Mark(c.trailer);
    w.EndFrame(c.period, c.minimumGap);
}

std::uint64_t NecBits(Protocol protocol, std::uint32_t sc) {
    std::uint32_t a, na, cmd, ncmd;
    if (protocol == Protocol::Nec) {
        a = (sc >> 8) & 0xff;
        na = a ^ 0xff;
        cmd = sc & 0xff;
        ncmd = cmd ^ 0xff;
    } else if (protocol == Protocol::NecX) {
        a = (sc >> 16) & 0xff;
        na = (sc >> 8) & 0xff;
        cmd = sc & 0xff;
        ncmd = cmd ^ 0xff;
    } else {  // 32 bits: the address and the command are 16-bit values, low byte first
        a = (sc >> 16) & 0xff;
        na = (sc >> 24) & 0xff;
        cmd = sc & 0xff;
        ncmd = (sc >> 8) & 0xff;
    }
    return a | na << 8 | cmd << 16 | static_cast<std::uint64_t>(ncmd) << 24;
}

// Manchester: RC-5 sends 1 as space-mark, RC-6 as mark-space.
void Manchester(CPulseWriter& w, bool one, std::uint32_t half, bool markFirstForOne) {
    if (one == markFirstForOne) {
        w.Mark(half);
        w.Space(half);
    } else {
        w.Space(half);
        w.Mark(half);
    }
}

void Rc5(CPulseWriter& w, std::uint32_t sc, bool toggle) {
    constexpr std::uint32_t kHalf = 889;
    const std::uint32_t address = (sc >> 8) & 0x1f;
    const std::uint32_t command = sc & 0x7f;
    // S1, S2 (the inverted seventh command bit), toggle, 5 address bits, 6 command bits.
    const std::uint32_t bits = 1u << 13 | ((command & 0x40) != 0 ? 0u : 1u) << 12 | (toggle ? 1u : 0u) << 11 |
                               address << 6 | (command & 0x3f);
    for (int i = 13; i >= 0; --i) Manchester(w, ((bits >> i) & 1u) != 0, kHalf, false);
    w.EndFrame(113778, 20000);
}

void Rc6Mode0(CPulseWriter& w, std::uint32_t sc, bool toggle) {
    constexpr std::uint32_t kUnit = 444;
    w.Mark(6 * kUnit);
    w.Space(2 * kUnit);
    Manchester(w, true, kUnit, true);                                           // start bit
    for (int i = 0; i < 3; ++i) Manchester(w, false, kUnit, true);              // mode 0
    Manchester(w, toggle, 2 * kUnit, true);                                     // toggle, double width
    for (int i = 15; i >= 0; --i) Manchester(w, ((sc >> i) & 1u) != 0, kUnit, true);
    w.EndFrame(107000, 6 * kUnit);
}

// Sony: pulse-width code; a 1 is a long mark. Frames start every 45 ms.
void Sony(CPulseWriter& w, Protocol protocol, std::uint32_t sc) {
    const std::uint32_t command = sc & 0x7f;
    const std::uint32_t address = (sc >> 16) & 0xff;
    const std::uint32_t extension = (sc >> 8) & 0xff;
    std::uint64_t bits = command;
    unsigned count = 7;
    if (protocol == Protocol::Sony12) {
        bits |= (address & 0x1f) << 7;
        count = 12;
    } else if (protocol == Protocol::Sony15) {
        bits |= address << 7;
        count = 15;
    } else {
        bits |= (address & 0x1f) << 7 | extension << 12;
        count = 20;
    }
    w.Mark(2400);
    w.Space(600);
    for (unsigned i = 0; i < count; ++i) {
        w.Mark(((bits >> i) & 1u) != 0 ? 1200 : 600);
        w.Space(600);
    }
    w.EndFrame(45000, 10000);
}

}  // namespace

std::uint32_t CKeyEncoder::FramesPerPress(Protocol protocol) {
    switch (protocol) {
        case Protocol::Sony12: case Protocol::Sony15: case Protocol::Sony20: return 3;
        case Protocol::Sharp: return 2;
        default: return 1;
    }
}

bool CKeyEncoder::KernelMayEncode(Protocol protocol, std::uint32_t repeats) {
    const bool toggles = protocol == Protocol::Rc5 || protocol == Protocol::Rc6Mode0;
    return HasKernelEncoder(protocol) && repeats == 0 && !toggles && FramesPerPress(protocol) == 1;
}

PulseTrain CKeyEncoder::Encode(Protocol protocol, std::uint32_t sc, bool toggle, std::uint32_t repeats,
                               std::uint32_t carrier, std::uint32_t dutyCycle) {
    if (!HasKernelEncoder(protocol)) {
        throw std::invalid_argument(std::string("no scancode encoder for ") + ProtocolName(protocol));
    }
    CPulseWriter w(carrier, dutyCycle);
    const std::uint32_t copies = 1 + repeats;
    for (std::uint32_t copy = 0; copy < copies; ++copy) {
        switch (protocol) {
            case Protocol::Nec: case Protocol::NecX: case Protocol::Nec32:
                DistanceFrame(w, kNec, NecBits(protocol, sc), 32);
                break;
            case Protocol::Sanyo: {
                const std::uint64_t address = (sc >> 8) & 0x1fff;
                const std::uint64_t command = sc & 0xff;
                DistanceFrame(w, kNec, address | (address ^ 0x1fff) << 13 | command << 26 | (command ^ 0xff) << 34, 42);
                break;
            }
            case Protocol::Jvc: {
                // Only the first frame of a press carries the header.
                DistanceCode code = kJvc;
                if (copy > 0) code.headerMark = code.headerSpace = 0;
                DistanceFrame(w, code, ((sc >> 8) & 0xff) | (sc & 0xff) << 8, 16);
                break;
            }
            case Protocol::Sharp: {
                // The second frame repeats the address with the command, expansion and check
                // bits inverted, so a receiver can tell a frame from noise.
                const std::uint32_t address = (sc >> 8) & 0x1f;
                const std::uint32_t command = sc & 0xff;
                DistanceFrame(w, kSharp, address | command << 5 | 1u << 13, 15);
                DistanceFrame(w, kSharp, address | (command ^ 0xff) << 5 | 1u << 14, 15);
                break;
            }
            case Protocol::Rc5: Rc5(w, sc, toggle); break;
            case Protocol::Rc6Mode0: Rc6Mode0(w, sc, toggle); break;
            default:
                for (std::uint32_t i = 0; i < FramesPerPress(protocol); ++i) Sony(w, protocol, sc);
                break;
        }
    }
    return w.Finish();
}

}  // namespace infrared

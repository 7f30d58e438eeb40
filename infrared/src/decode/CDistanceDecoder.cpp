#include "infrared/decode/CDistanceDecoder.h"

#include <algorithm>
#include <cmath>

namespace infrared {
namespace {

// Turns the bits of a frame (first on air = bit 0) into the protocol and scancode its encoder
// takes; false when the frame's own checks fail.
using Interpret = bool (*)(std::uint64_t bits, unsigned count, KeyMatch& out);

struct DistanceProtocol {
    std::uint32_t headerMark, headerSpace;  // 0: no header
    std::uint32_t mark, zero, one;          // pulse distance: the bit mark and the two spaces
    bool pulseWidth;                        // Sony: zero/one are the marks, `mark` the space
    bool continuation;                      // a header-less copy, only right after its frame
    unsigned counts[2];                     // accepted bit counts (0 twice: only a repeat frame)
    Interpret interpret;
};

bool NecFamily(std::uint64_t b, unsigned count, KeyMatch& out) {
    if (count == 32) {
        const std::uint64_t a = b & 0xff, na = b >> 8 & 0xff, c = b >> 16 & 0xff, nc = b >> 24 & 0xff;
        const bool commandChecks = (c ^ nc) == 0xff;
        if (commandChecks && (a ^ na) == 0xff) {
            out.protocol = Protocol::Nec;
            out.scancode = a << 8 | c;
        } else if (commandChecks) {
            out.protocol = Protocol::NecX;
            out.scancode = a << 16 | na << 8 | c;
        } else {
            out.protocol = Protocol::Nec32;
            out.scancode = na << 24 | a << 16 | nc << 8 | c;
        }
        return true;
    }
    // 42 bits: with both complements the kernel's sanyo, else the free nec42 layout.
    const std::uint64_t a = b & 0x1fff, na = b >> 13 & 0x1fff, c = b >> 26 & 0xff, nc = b >> 34 & 0xff;
    if ((a ^ na) == 0x1fff && (c ^ nc) == 0xff) {
        out.protocol = Protocol::Sanyo;
        out.scancode = a << 8 | c;
    } else {
        out.protocol = Protocol::Nec42;
        out.scancode = (b & 0x3ffffff) << 16 | (b >> 26 & 0xffff);
    }
    return true;
}

bool NecRepeat(std::uint64_t, unsigned, KeyMatch& out) {
    out.protocol = Protocol::Nec;
    out.repeat = true;
    return true;
}

bool Jvc(std::uint64_t b, unsigned, KeyMatch& out) {
    out.protocol = Protocol::Jvc;
    out.scancode = (b & 0xff) << 8 | (b >> 8 & 0xff);
    return true;
}

bool Sony(std::uint64_t b, unsigned count, KeyMatch& out) {
    const std::uint64_t command = b & 0x7f;
    if (count == 12) {
        out.protocol = Protocol::Sony12;
        out.scancode = (b >> 7 & 0x1f) << 16 | command;
    } else if (count == 15) {
        out.protocol = Protocol::Sony15;
        out.scancode = (b >> 7 & 0xff) << 16 | command;
    } else {
        out.protocol = Protocol::Sony20;
        out.scancode = (b >> 7 & 0x1f) << 16 | (b >> 12 & 0xff) << 8 | command;
    }
    return true;
}

// The second frame of a Sharp press has the command, expansion and check bits inverted.
bool Sharp(std::uint64_t b, unsigned, KeyMatch& out) {
    const std::uint64_t expansion = b >> 13 & 1, check = b >> 14 & 1;
    if (expansion == check) return false;
    std::uint64_t command = b >> 5 & 0xff;
    if (expansion == 0) command ^= 0xff;
    out.protocol = Protocol::Sharp;
    out.scancode = (b & 0x1f) << 8 | command;
    return true;
}

bool Kaseikyo(std::uint64_t b, unsigned, KeyMatch& out) {
    const std::uint64_t vendor = b & 0xffff;
    const std::uint64_t parity = (vendor ^ vendor >> 4 ^ vendor >> 8 ^ vendor >> 12) & 0xf;
    if ((b >> 16 & 0xf) != parity) return false;
    if ((b >> 40 & 0xff) != ((b >> 16 ^ b >> 24 ^ b >> 32) & 0xff)) return false;
    const std::uint64_t address = (b >> 38 & 3) << 24 | vendor << 8 | (b >> 20 & 0xf) << 4 | (b >> 24 & 0xf);
    out.protocol = Protocol::Kaseikyo;
    out.scancode = address << 16 | (b >> 28 & 0x3ff);
    return true;
}

bool Rca(std::uint64_t b, unsigned, KeyMatch& out) {
    const std::uint64_t a = b & 0xf, c = b >> 4 & 0xff;
    if ((b >> 12 & 0xf) != (a ^ 0xf) || (b >> 16 & 0xff) != (c ^ 0xff)) return false;
    out.protocol = Protocol::Rca;
    out.scancode = a << 8 | c;
    return true;
}

bool Pioneer(std::uint64_t b, unsigned, KeyMatch& out) {
    const std::uint64_t a = b & 0xff, c = b >> 16 & 0xff;
    if ((b >> 8 & 0xff) != (a ^ 0xff) || (b >> 24 & 0xff) != (c ^ 0xff)) return false;
    out.protocol = Protocol::Pioneer;
    out.scancode = a << 8 | c;
    return true;
}

const DistanceProtocol kProtocols[] = {
    {9000, 4500, 563, 563, 1688, false, false, {32, 42}, NecFamily},
    {9000, 2250, 563, 563, 1688, false, false, {0, 0}, NecRepeat},
    {8400, 4200, 526, 526, 1578, false, false, {16, 16}, Jvc},
    {0, 0, 526, 526, 1578, false, true, {16, 16}, Jvc},
    {2400, 600, 600, 600, 1200, true, false, {12, 15}, Sony},
    {2400, 600, 600, 600, 1200, true, false, {20, 20}, Sony},
    {0, 0, 320, 680, 1680, false, false, {15, 15}, Sharp},
    {3456, 1728, 432, 432, 1296, false, false, {48, 48}, Kaseikyo},
    {4000, 4000, 500, 1000, 2000, false, false, {24, 24}, Rca},
    {8500, 4225, 500, 500, 1500, false, false, {32, 32}, Pioneer},
};

constexpr double kMinScale = 0.6, kMaxScale = 1.45;  // a remote's clock, +-30 % and some
constexpr double kBitTolerance = 0.3;                 // of a calibrated bit period
constexpr std::size_t kMaxBits = 64;
constexpr std::uint32_t kSilenceBefore = 2500;
constexpr double kStretch = 250;  // us a receiver may add to marks (and take from spaces)

struct Pair {
    double mark, space;
};

// Bit periods (mark + space) do not change when a receiver stretches marks, so the bits are
// classified by period: zero or one, whichever is nearer in ratio.
bool Classify(const DistanceProtocol& p, double period, double scale, bool& bit, double& misfit) {
    const double zero = (p.pulseWidth ? p.zero + p.mark : p.mark + p.zero) * scale;
    const double one = (p.pulseWidth ? p.one + p.mark : p.mark + p.one) * scale;
    const double toZero = std::fabs(std::log(period / zero)), toOne = std::fabs(std::log(period / one));
    bit = toOne < toZero;
    misfit = bit ? toOne : toZero;
    return misfit <= kBitTolerance;
}

bool CountAccepted(const DistanceProtocol& p, unsigned count) { return count == p.counts[0] || count == p.counts[1]; }

std::optional<KeyMatch> Try(const DistanceProtocol& p, const std::vector<std::uint32_t>& d, std::size_t start) {
    const std::size_t n = d.size();
    std::size_t pos = start;
    double scale = 1;
    // Without a header, a frame must start after silence, not inside another frame's bits.
    if (p.headerMark == 0 && start > 0 && d[start - 1] < kSilenceBefore) return std::nullopt;
    if (p.headerMark != 0) {
        if (pos + 1 >= n) return std::nullopt;
        scale = double(d[pos] + d[pos + 1]) / (p.headerMark + p.headerSpace);
        if (scale < kMinScale || scale > kMaxScale) return std::nullopt;
        // The mark/space split of the header tells NEC (2:1) from its repeat (4:1) and RCA (1:1),
        // allowing for a receiver that stretches the mark at the space's expense.
        const double mark = d[pos], space = d[pos + 1], nominal = double(p.headerMark) / p.headerSpace;
        const double lowest = std::max(mark - kStretch, 1.0) / (space + kStretch);
        const double highest = (mark + kStretch / 4) / std::max(space - kStretch / 4, 1.0);
        if (nominal < lowest * 0.75 || nominal > highest * 1.33) return std::nullopt;
        pos += 2;
    }
    const double headerScale = scale;
    const double longest = (p.pulseWidth ? p.mark : p.one) * (p.headerMark != 0 ? scale : kMaxScale);
    std::vector<Pair> pairs;
    while (pos < n) {
        if (pos + 1 >= n || d[pos + 1] > 1.7 * longest + 200) break;  // the frame's last mark
        pairs.push_back({double(d[pos]), double(d[pos + 1])});
        if (pairs.size() > kMaxBits) return std::nullopt;
        pos += 2;
    }
    if (pos >= n) return std::nullopt;  // a space closed the frame without a mark
    const double last = d[pos];
    const unsigned count = static_cast<unsigned>(pairs.size()) + (p.pulseWidth ? 1 : 0);
    if (!CountAccepted(p, count)) return std::nullopt;

    // Calibrate: classify at the header's scale (or nominal), then rescale from the bits.
    double misfit = 0;
    for (int pass = 0; pass < 2; ++pass) {
        double measured = 0, nominal = 0;
        misfit = 0;
        for (const Pair& pair : pairs) {
            bool bit = false;
            double m = 0;
            if (!Classify(p, pair.mark + pair.space, scale, bit, m) && pass == 1) return std::nullopt;
            misfit += m;
            measured += pair.mark + pair.space;
            nominal += (p.pulseWidth ? (bit ? p.one : p.zero) + p.mark : p.mark + (bit ? p.one : p.zero));
        }
        if (nominal > 0) scale = measured / nominal;
    }
    if (scale < kMinScale || scale > kMaxScale) return std::nullopt;
    if (p.headerMark != 0) misfit += std::fabs(std::log(headerScale / scale)) * (pairs.size() + 1);

    // How much the receiver lengthens marks (and shortens spaces): from the constant part.
    double stretch = 0;
    for (const Pair& pair : pairs) stretch += p.pulseWidth ? p.mark * scale - pair.space : 0;
    if (!pairs.empty()) stretch /= pairs.size();
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        bool bit = false;
        double m = 0;
        Classify(p, pairs[i].mark + pairs[i].space, scale, bit, m);
        if (bit) bits |= std::uint64_t{1} << i;
        // Marks of a pulse-distance code are all short: a long one is not this protocol.
        if (!p.pulseWidth && pairs[i].mark > p.mark * scale * 1.6 + 250) return std::nullopt;
    }
    if (p.pulseWidth) {
        const double width = (last - stretch) / scale;
        const double toZero = std::fabs(std::log(width / p.zero)), toOne = std::fabs(std::log(width / p.one));
        if (std::min(toZero, toOne) > 0.45) return std::nullopt;
        if (toOne < toZero) bits |= std::uint64_t{1} << pairs.size();
    } else if (last > p.mark * scale * 1.6 + 250 || last < p.mark * scale * 0.4) {
        return std::nullopt;
    }
    KeyMatch out;
    if (!p.interpret(bits, count, out)) return std::nullopt;
    out.end = pos;
    // Protocols whose timings differ only in scale (NEC and Pioneer, 6 %) are told apart by
    // which one the frame fits without being rescaled.
    out.misfit = misfit / (pairs.size() + 1) + 0.5 * std::fabs(std::log(scale));
    return out;
}

}  // namespace

std::vector<KeyMatch> CDistanceDecoder::DecodeAt(const std::vector<std::uint32_t>& durations, std::size_t start,
                                                 bool afterJvc) {
    std::vector<KeyMatch> found;
    if (start % 2 != 0 || start >= durations.size()) return found;
    for (const DistanceProtocol& p : kProtocols) {
        if (p.continuation && !afterJvc) continue;
        if (auto match = Try(p, durations, start)) found.push_back(*match);
    }
    return found;
}

}  // namespace infrared

#include "infrared/decode/CBiphaseDecoder.h"

#include <algorithm>
#include <cmath>

namespace infrared {
namespace {

constexpr double kFrameEndSpace = 4000;  // longer than any space inside an RC-5 or RC-6 frame
constexpr std::size_t kMaxDurations = 64;
constexpr std::uint32_t kSilenceBefore = 2500;
constexpr double kRc5Half = 889, kRc6Unit = 444;

// The frame as a run of equal time units, each carrier on (true) or off.
struct Units {
    std::vector<bool> level;
    double unit = 0;
    double misfit = 0;
};

// Measures the unit and the mark stretch from the shortest mark and space, taken to be
// `markUnits` and `spaceUnits` long, refines the unit over the whole frame, then quantises
// every duration.
bool Quantise(const std::vector<std::uint32_t>& d, std::size_t start, std::size_t end, double markUnits,
              double spaceUnits, Units& out) {
    double shortestMark = 1e9, shortestSpace = 1e9;
    for (std::size_t i = start; i <= end; ++i) {
        double& shortest = (i - start) % 2 == 0 ? shortestMark : shortestSpace;
        shortest = std::min(shortest, double(d[i]));
    }
    if (end == start) return false;
    // mark = markUnits * unit + stretch, space = spaceUnits * unit - stretch
    double unit = (shortestMark + shortestSpace) / (markUnits + spaceUnits);
    const double stretch = shortestMark - markUnits * unit;
    if (unit <= 0) return false;
    out.level.clear();
    for (int pass = 0; pass < 2; ++pass) {
        double total = 0, units = 0;
        for (std::size_t i = start; i <= end; ++i) {
            const double corrected = (i - start) % 2 == 0 ? d[i] - stretch : d[i] + stretch;
            const double k = std::round(corrected / unit);
            if (k < 1) return false;
            total += corrected;
            units += k;
        }
        unit = total / units;
    }
    out.unit = unit;
    out.misfit = 0;
    for (std::size_t i = start; i <= end; ++i) {
        const bool mark = (i - start) % 2 == 0;
        const double corrected = mark ? d[i] - stretch : d[i] + stretch;
        const double k = std::round(corrected / unit);
        const double off = std::fabs(corrected - k * unit) / unit;
        if (k < 1 || k > 6 || off > 0.35) return false;
        out.misfit += off / k;
        out.level.insert(out.level.end(), static_cast<std::size_t>(k), mark);
    }
    out.misfit /= double(end - start + 1);
    return true;
}

// Manchester bit at `at`: mark-then-space is `markFirst`'s value.
bool Bit(const std::vector<bool>& level, std::size_t at, std::size_t width, bool oneIsMarkFirst, bool& bit) {
    const bool first = level[at], second = level[at + width];
    for (std::size_t i = 1; i < width; ++i) {
        if (level[at + i] != first || level[at + width + i] != second) return false;
    }
    if (first == second) return false;
    bit = first == oneIsMarkFirst;
    return true;
}

// 14 bits of 2 units, MSB first, 1 = space then mark; S1's leading space hides in the silence.
std::optional<KeyMatch> Rc5(Units units) {
    std::vector<bool>& level = units.level;
    level.insert(level.begin(), false);
    if (level.size() == 27) level.push_back(false);  // a last 0 bit ends with its space
    if (level.size() != 28) return std::nullopt;
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 14; ++i) {
        bool bit = false;
        if (!Bit(level, 2 * i, 1, false, bit)) return std::nullopt;
        bits = bits << 1 | (bit ? 1u : 0u);
    }
    if ((bits >> 13) == 0) return std::nullopt;  // S1
    KeyMatch out;
    const bool extended = (bits >> 12 & 1) == 0;
    out.protocol = extended ? Protocol::Rc5x : Protocol::Rc5;
    out.scancode = (bits >> 6 & 0x1f) << 8 | (extended ? 0x40u : 0u) | (bits & 0x3f);
    out.toggle = (bits >> 11 & 1) != 0;
    out.misfit = units.misfit;
    return out;
}

// Leader 6 units on, 2 off; start bit 1, mode 000, the toggle at double width, 16 bits; MSB
// first, 1 = mark then space.
std::optional<KeyMatch> Rc6(Units units) {
    std::vector<bool>& level = units.level;
    if (level.size() == 51) level.push_back(false);
    if (level.size() != 52) return std::nullopt;
    for (std::size_t i = 0; i < 8; ++i) {
        if (level[i] != (i < 6)) return std::nullopt;
    }
    bool bit = false;
    if (!Bit(level, 8, 1, true, bit) || !bit) return std::nullopt;  // start bit
    for (std::size_t i = 0; i < 3; ++i) {
        if (!Bit(level, 10 + 2 * i, 1, true, bit) || bit) return std::nullopt;  // mode 0
    }
    bool toggle = false;
    if (!Bit(level, 16, 2, true, toggle)) return std::nullopt;
    std::uint32_t code = 0;
    for (std::size_t i = 0; i < 16; ++i) {
        if (!Bit(level, 20 + 2 * i, 1, true, bit)) return std::nullopt;
        code = code << 1 | (bit ? 1u : 0u);
    }
    KeyMatch out;
    out.protocol = Protocol::Rc6Mode0;
    out.scancode = code;
    out.toggle = toggle;
    out.misfit = units.misfit;
    return out;
}

bool Near(double unit, double nominal) { return unit > nominal * 0.6 && unit < nominal * 1.45; }

}  // namespace

std::optional<KeyMatch> CBiphaseDecoder::DecodeAt(const std::vector<std::uint32_t>& durations, std::size_t start) {
    if (start % 2 != 0 || start >= durations.size()) return std::nullopt;
    // A frame starts after silence: inside a run of even pulses (another protocol's bits) RC-5's
    // all-ones pattern would otherwise be found everywhere.
    if (start > 0 && durations[start - 1] < kSilenceBefore) return std::nullopt;
    std::size_t end = start;
    while (end + 2 < durations.size() && durations[end + 1] <= kFrameEndSpace) {
        end += 2;
        if (end - start > kMaxDurations) return std::nullopt;
    }
    // A space that closes nothing (the capture ends after it) is not a frame end.
    if (end + 1 < durations.size() && durations[end + 1] <= kFrameEndSpace) return std::nullopt;
    // Usually both a one-unit mark and a one-unit space occur; some codes have only one of them.
    const double hypotheses[][2] = {{1, 1}, {2, 1}, {1, 2}};
    for (const auto& h : hypotheses) {
        Units units;
        if (!Quantise(durations, start, end, h[0], h[1], units)) continue;
        std::optional<KeyMatch> match;
        if (Near(units.unit, kRc5Half)) match = Rc5(units);
        if (!match && Near(units.unit, kRc6Unit)) match = Rc6(units);
        if (match) {
            match->end = end;
            return match;
        }
    }
    return std::nullopt;
}

}  // namespace infrared

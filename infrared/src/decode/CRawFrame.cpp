#include "infrared/decode/CRawFrame.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace infrared {
namespace {

constexpr std::uint32_t kGlitch = 40;       // us; shorter than any protocol's half bit by far
constexpr std::uint32_t kCopyGap = 10000;   // us; a space this long may separate copies

}  // namespace

std::vector<std::uint32_t> CRawFrame::Clean(const std::vector<std::uint32_t>& durations) {
    // Runs of one level; a zero or a glitch joins the level around it.
    std::vector<std::pair<bool, std::uint64_t>> runs;
    const auto add = [&runs](bool mark, std::uint64_t d) {
        if (d == 0) return;
        if (!runs.empty() && runs.back().first == mark) {
            runs.back().second += d;
        } else {
            runs.emplace_back(mark, d);
        }
    };
    for (std::size_t i = 0; i < durations.size(); ++i) {
        const bool mark = i % 2 == 0;
        add(runs.empty() || durations[i] >= kGlitch ? mark : !mark, durations[i]);
    }
    std::vector<std::uint32_t> out;
    out.reserve(runs.size());
    for (const auto& run : runs) {
        if (out.empty() && !run.first) continue;  // silence before the first mark
        out.push_back(static_cast<std::uint32_t>(std::min<std::uint64_t>(run.second, UINT32_MAX)));
    }
    if (out.size() % 2 == 0 && !out.empty()) out.pop_back();
    return out;
}

bool CRawFrame::Similar(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const long diff = std::labs(static_cast<long>(a[i]) - static_cast<long>(b[i]));
        if (diff * 4 > static_cast<long>(a[i] > b[i] ? a[i] : b[i])) return false;
    }
    return true;
}

std::vector<std::uint32_t> CRawFrame::OneCopy(const std::vector<std::uint32_t>& frame) {
    std::vector<std::vector<std::uint32_t>> copies(1);
    for (std::size_t i = 0; i < frame.size(); ++i) {
        if (i % 2 == 1 && frame[i] >= kCopyGap) {
            copies.emplace_back();
            continue;
        }
        copies.back().push_back(frame[i]);
    }
    for (std::size_t i = 1; i < copies.size(); ++i) {
        if (!Similar(copies[0], copies[i])) return frame;
    }
    return copies[0];
}

}  // namespace infrared

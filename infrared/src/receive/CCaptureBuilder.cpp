#include "infrared/receive/CCaptureBuilder.h"

#include <limits>

namespace infrared {
namespace {

std::uint32_t SaturatingAdd(std::uint32_t a, std::uint32_t b) {
    return b > std::numeric_limits<std::uint32_t>::max() - a ? std::numeric_limits<std::uint32_t>::max() : a + b;
}

}  // namespace

std::optional<Capture> CCaptureBuilder::Mark(std::uint32_t us) {
    if (us == 0) return std::nullopt;
    if (current_.durations.empty()) {
        current_.startUs = clock_;
        current_.durations.push_back(us);
    } else if (pendingSpace_ == 0) {
        current_.durations.back() = SaturatingAdd(current_.durations.back(), us);
    } else if (current_.durations.size() + 2 > kMaxDurations) {
        // A stuck receiver or noise: the rest stays out of the capture, which still ends at the gap.
    } else {
        current_.durations.push_back(pendingSpace_);
        current_.durations.push_back(us);
    }
    pendingSpace_ = 0;
    clock_ += us;
    return std::nullopt;
}

std::optional<Capture> CCaptureBuilder::Space(std::uint32_t us) {
    clock_ += us;
    if (current_.durations.empty()) return std::nullopt;
    pendingSpace_ = SaturatingAdd(pendingSpace_, us);
    if (pendingSpace_ >= endSpace_) return End();
    return std::nullopt;
}

std::optional<Capture> CCaptureBuilder::End() {
    pendingSpace_ = 0;
    if (current_.durations.empty()) return std::nullopt;
    Capture done = std::move(current_);
    done.carrier = carrier_;
    current_ = Capture();
    carrier_ = 0;
    return done;
}

void CCaptureBuilder::Discard() {
    current_ = Capture();
    pendingSpace_ = 0;
    carrier_ = 0;
}

}  // namespace infrared

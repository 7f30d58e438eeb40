#include "infrared/encode/CPulseWriter.h"

namespace infrared {

CPulseWriter::CPulseWriter(std::uint32_t carrier, std::uint32_t dutyCycle) {
    train_.carrier = carrier;
    train_.dutyCycle = dutyCycle;
}

void CPulseWriter::Mark(std::uint32_t microseconds) {
    if (microseconds == 0) return;
    if (!frameOpen_) {
        frameOpen_ = true;
        frameStart_ = total_;
    }
    auto& d = train_.durations;
    if (d.size() % 2 == 1) {
        d.back() += microseconds;  // still inside a mark
    } else {
        d.push_back(microseconds);
    }
    total_ += microseconds;
    elapsed_ = total_ - frameStart_;
}

void CPulseWriter::Space(std::uint32_t microseconds) {
    auto& d = train_.durations;
    if (microseconds == 0 || d.empty()) return;  // silence before the first mark is not sent
    if (d.size() % 2 == 0) {
        d.back() += microseconds;
    } else {
        d.push_back(microseconds);
    }
    total_ += microseconds;
    elapsed_ = total_ - frameStart_;
}

void CPulseWriter::EndFrame(std::uint32_t period, std::uint32_t minimumGap) {
    if (!frameOpen_) return;
    const std::uint64_t trailing = train_.durations.size() % 2 == 0 ? train_.durations.back() : 0;
    std::uint64_t pad = 0;
    if (elapsed_ < period) pad = period - elapsed_;
    if (trailing + pad < minimumGap) pad = minimumGap - trailing;
    Space(static_cast<std::uint32_t>(pad));
    frameOpen_ = false;
}

PulseTrain CPulseWriter::Finish() {
    PulseTrain out = train_;
    if (!out.durations.empty() && out.durations.size() % 2 == 0) {
        out.trailingGap = out.durations.back();
        out.durations.pop_back();
    }
    return out;
}

}  // namespace infrared

#include "CKeyLearner.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "CFrameReport.h"
#include "infrared/codeset/CCodesetsFile.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/decode/CRawFrame.h"
#include "infrared/encode/CKeyEncoder.h"
#include "infrared/receive/CLircReceiver.h"
#include "infrared/receive/OpenReceiver.h"

namespace ircontrol::host {

using infrared::DecodedFrame;

namespace {

constexpr std::uint32_t kFrameGap = 20000;  // us: longer than any space inside a key frame

// The frame as it arrived: glitches merged, one copy. It starts where the decoder found it when
// what comes before is noise apart from it, else with the capture, which may hold more of the
// frame than the decoder matched (a leading bit of a protocol it only resembles).
std::vector<std::uint32_t> Received(const infrared::Capture& capture, const DecodedFrame& frame) {
    std::size_t first = 0;
    for (std::uint64_t at = capture.startUs; first < capture.durations.size() && at < frame.startUs; ++first) {
        at += capture.durations[first];
    }
    first -= first % 2;  // a mark
    if (first > 0 && capture.durations[first - 1] < kFrameGap) first = 0;
    const std::vector<std::uint32_t> rest(capture.durations.begin() + static_cast<std::ptrdiff_t>(first),
                                          capture.durations.end());
    return infrared::CRawFrame::OneCopy(infrared::CRawFrame::Clean(rest));
}

}  // namespace

std::string CKeyLearner::Agreement(const DecodedFrame& a, const DecodedFrame& b) {
    if (a.kind != b.kind || a.protocol != b.protocol) return "a different kind of frame";
    if (a.kind == DecodedFrame::Kind::Key && a.scancode != b.scancode) return "a different scancode";
    if (a.kind == DecodedFrame::Kind::Raw && !infrared::CRawFrame::Similar(a.durations, b.durations)) {
        return "different timings";
    }
    return "";
}

// A remote close to a known protocol (an extra bit, other timings) can be read as that
// protocol; kept as such, it would send something else.
bool CKeyLearner::Reproduces(const infrared::Capture& capture, const DecodedFrame& frame) {
    const auto train =
        infrared::CKeyEncoder::Encode(frame.protocol, frame.scancode, frame.toggle.value_or(false), 0, 38000, 33);
    // Up to the first gap: copies inside one press (Sony, Sharp) and NEC repeat frames after it
    // are not compared, an extra bit is.
    const auto firstFrame = [](std::vector<std::uint32_t> d) {
        for (std::size_t i = 1; i < d.size(); i += 2) {
            if (d[i] > kFrameGap) {
                d.resize(i);
                break;
            }
        }
        return d;
    };
    return infrared::CRawFrame::Similar(firstFrame(Received(capture, frame)), firstFrame(train.durations));
}

CKeyLearner::CKeyLearner(Listener listener, std::shared_ptr<infrared::ILircDevice> device)
    : listener_(std::move(listener)), device_(std::move(device)) {}

void CKeyLearner::tell(LearnStep::Kind kind, int press, const DecodedFrame* frame, std::string text,
                       const DecodedFrame* other) {
    LearnStep step;
    step.kind = kind;
    step.press = press;
    step.frame = frame;
    step.other = other;
    step.text = std::move(text);
    listener_(step);
}

bool CKeyLearner::fail(const std::string& reason) {
    tell(LearnStep::Kind::Failed, 0, nullptr, reason);
    return false;
}

bool CKeyLearner::Run(const LearnJob& job) {
    job_ = job;
    try {
        // Recognised against the shipped codesets, whose air-conditioner codesets are copied.
        decoder_ = std::make_unique<infrared::CFrameDecoder>(
            infrared::CCodesetLibrary::Parse(infrared::DefaultCodesetsText()));
        receiver_ = infrared::OpenReceiver(job_.receiver, device_);
    } catch (const std::exception& error) {
        return fail(error.what());
    }
    try {
        return job_.aircon ? learnAircon() : learnKey();
    } catch (const std::exception& error) {  // a listener's or the library's surprise: still one reason
        return fail(error.what());
    }
}

// The next press that is not an NEC repeat frame, within the wait.
std::optional<DecodedFrame> CKeyLearner::press(int number) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(job_.waitMs);
    tell(LearnStep::Kind::Waiting, number, nullptr);
    for (;;) {
        if (cancelled_) {
            error_ = "cancelled";
            return std::nullopt;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (receiver_->Live() && left.count() <= 0) break;
        std::optional<infrared::Capture> capture;
        try {
            capture = receiver_->Next(std::clamp(left, std::chrono::milliseconds(0), std::chrono::milliseconds(kPollMs)));
        } catch (const infrared::CReceiveOverflow& error) {
            tell(LearnStep::Kind::Overflow, number, nullptr, error.what());
            continue;
        } catch (const infrared::CReceiveError& error) {
            error_ = error.what();
            return std::nullopt;
        }
        if (!capture) {
            if (receiver_->Live()) continue;  // nothing yet; look at the clock and Cancel()
            break;
        }
        for (DecodedFrame& frame : decoder_->Decode(*capture)) {
            if (frame.repeat) continue;
            tell(LearnStep::Kind::Arrived, number, &frame);
            if (frame.kind == DecodedFrame::Kind::Key && !Reproduces(*capture, frame)) {
                const std::string protocol = infrared::ProtocolName(frame.protocol);
                DecodedFrame raw;
                raw.startUs = frame.startUs;
                raw.durations = Received(*capture, frame);
                raw.carrier = capture->carrier;
                frame = std::move(raw);
                tell(LearnStep::Kind::KeptRaw, number, &frame, protocol + " would not send it exactly as it came");
            }
            return std::move(frame);
        }
    }
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%g", job_.waitMs / 1000.0);
    error_ = receiver_->Live() ? "no press within " + std::string(seconds) + " s on " + receiver_->Describe()
                               : receiver_->Describe() + " has no more presses";
    return std::nullopt;
}

bool CKeyLearner::learnKey() {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const auto first = press(1);
        if (!first) return fail(error_);
        if (first->kind == DecodedFrame::Kind::Aircon) {
            return fail("that is an air conditioner (" + first->family + "): learn it as one, with its own codeset");
        }
        const auto second = press(2);
        if (!second) return fail(error_);
        const std::string differ = Agreement(*first, *second);
        if (!differ.empty()) {
            tell(LearnStep::Kind::Differ, 2, &*second, differ, &*first);
            continue;
        }
        infrared::LearnedKey learned;
        learned.name = job_.key;
        learned.code = job_.code;
        learned.protocol = first->kind == DecodedFrame::Kind::Raw ? infrared::Protocol::Raw : first->protocol;
        learned.scancode = first->scancode;
        learned.raw = first->durations;
        learned.carrier = first->carrier;
        try {
            infrared::CCodesetsFile::PutKey(job_.codesetsFile, job_.codeset, learned);
        } catch (const infrared::CCodesetsFileError& error) {
            return fail(error.what());
        }
        tell(LearnStep::Kind::Saved, 2, &*first,
             "Learned '" + job_.key + "' (code " + std::to_string(job_.code) + "): " + CFrameReport::Summary(*first) +
                 ", written to codeset " + job_.codeset + " in " + job_.codesetsFile + ".");
        return true;
    }
    return fail("the presses of '" + job_.key + "' never agreed in " + std::to_string(kAttempts) + " tries");
}

bool CKeyLearner::learnAircon() {
    const auto frame = press(1);
    if (!frame) return fail(error_);
    if (frame->kind != DecodedFrame::Kind::Aircon) {
        return fail("not an air conditioner protocol this library knows: " + CFrameReport::Summary(*frame));
    }
    const std::string json = infrared::CCodesetsFile::CodesetJson(infrared::DefaultCodesetsText(), frame->codeset);
    try {
        infrared::CCodesetsFile::PutCodeset(job_.codesetsFile, json, job_.codeset);
    } catch (const infrared::CCodesetsFileError& error) {
        return fail(error.what());
    }
    tell(LearnStep::Kind::Saved, 1, &*frame,
         "Learned an air conditioner of family " + frame->family + " (as codeset " + frame->codeset + "; it sent " +
             frame->state.power + " " + frame->state.mode + " " + frame->state.setpoint + " " + frame->state.fan +
             "), written as codeset " + job_.codeset + " to " + job_.codesetsFile + ".");
    return true;
}

}  // namespace ircontrol::host

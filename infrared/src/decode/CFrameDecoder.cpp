#include "infrared/decode/CFrameDecoder.h"

#include <stdexcept>

#include "infrared/decode/CKeyDecoder.h"
#include "infrared/decode/CRawFrame.h"
#include "infrared/encode/CKeyEncoder.h"
#include "infrared/encode/CProntoCode.h"

namespace infrared {
namespace {

// Silence that ends a burst: longer than the gaps inside any multi-section air-conditioner
// frame, so such a frame is handed to the air-conditioner decoder whole.
constexpr std::uint32_t kBurstGap = 50000;
// Copies of one press closer than this fold into one frame; a new press comes later.
constexpr std::uint64_t kFoldGap = 200000;
constexpr std::uint32_t kRawGap = 50000;  // the silence a raw frame's Pronto code ends with
constexpr std::size_t kMinRawMarks = 3;    // fewer marks in a burst that is no key are noise

bool NecFamily(Protocol p) { return p == Protocol::Nec || p == Protocol::NecX || p == Protocol::Nec32; }

// The first key frame anywhere in `durations` (a codeset's own frame decoded back).
std::optional<KeyMatch> FirstKey(const std::vector<std::uint32_t>& durations) {
    for (std::size_t i = 0; i < durations.size(); i += 2) {
        if (auto match = CKeyDecoder::DecodeAt(durations, i, 0, std::nullopt)) return match;
    }
    return std::nullopt;
}

// NEC and Pioneer frames differ by 6 % in timing, less than a remote's clock may be off, but a
// Pioneer press sends two frames (its key twice, or a prefix and the key) with a gap of under
// half a frame, while an NEC remote repeats 108 ms after a frame's start (a gap of 0.59 frames;
// with both complements every NEC frame is as long).
bool PioneerPair(const std::vector<DecodedFrame>& out, std::size_t burstStart, const DecodedFrame& frame,
                 std::uint32_t gapBefore) {
    if (frame.protocol != Protocol::Nec || frame.repeat || out.size() <= burstStart) return false;
    const DecodedFrame& last = out.back();
    if ((last.protocol != Protocol::Nec && last.protocol != Protocol::Pioneer) || last.repeat) return false;
    return gapBefore < last.durationUs / 2;
}

bool SameKey(const DecodedFrame& a, const DecodedFrame& b) {
    return a.kind == DecodedFrame::Kind::Key && b.kind == DecodedFrame::Kind::Key && !a.repeat && !b.repeat &&
           a.protocol == b.protocol && a.scancode == b.scancode && a.toggle == b.toggle;
}

bool SameRaw(const DecodedFrame& a, const DecodedFrame& b) {
    return a.kind == DecodedFrame::Kind::Raw && b.kind == DecodedFrame::Kind::Raw &&
           CRawFrame::Similar(a.durations, b.durations);
}

// Copies of one press become one frame that lasts from the first copy's start to the last's end.
std::vector<DecodedFrame> Fold(std::vector<DecodedFrame> frames) {
    std::vector<DecodedFrame> out;
    for (DecodedFrame& frame : frames) {
        if (!out.empty()) {
            DecodedFrame& last = out.back();
            const std::uint64_t lastEnd = last.startUs + last.durationUs;
            const bool close = frame.startUs >= lastEnd && frame.startUs - lastEnd < kFoldGap;
            if (close && (SameKey(last, frame) || SameRaw(last, frame))) {
                last.durationUs = frame.startUs + frame.durationUs - last.startUs;
                continue;
            }
        }
        out.push_back(std::move(frame));
    }
    return out;
}

}  // namespace

CFrameDecoder::CFrameDecoder(std::shared_ptr<const CCodesetLibrary> codesets) : codesets_(std::move(codesets)) {
    if (!codesets_) return;
    for (const Codeset& codeset : codesets_->Codesets()) index_codeset(codeset);
}

// A key is found by what its frame decodes to, so every way of writing one frame (nec or nec32,
// rc5 with an extended command, a Pronto code of an NEC frame) names the same key.
void CFrameDecoder::index_codeset(const Codeset& codeset) {
    for (const CodesetKey& key : codeset.keys) {
        std::vector<std::uint32_t> durations;
        try {
            if (HasScancode(codeset.protocol)) {
                durations = CKeyEncoder::Encode(codeset.protocol, key.scancode, false, 0, codeset.carrier, 33).durations;
            } else if (codeset.protocol == Protocol::Pronto) {
                durations = CProntoCode::Parse(key.pronto).durations;
            } else if (codeset.protocol == Protocol::Raw) {
                durations = key.raw;
            }
        } catch (const std::invalid_argument&) {
            continue;  // the library validated it; a key that cannot be sent cannot be received
        }
        if (const auto match = FirstKey(durations)) {
            keys_.emplace(KeyId{match->protocol, match->scancode}, KeyName{codeset.name, key.name, key.code});
        }
    }
}

std::vector<DecodedFrame> CFrameDecoder::Decode(const Capture& capture) const {
    const std::vector<std::uint32_t> d = CRawFrame::Clean(capture.durations);
    std::vector<DecodedFrame> frames;
    if (d.empty()) return frames;
    // Offsets of each duration from the first mark, which is where the capture's clock starts.
    std::vector<std::uint64_t> at(d.size() + 1, 0);
    for (std::size_t i = 0; i < d.size(); ++i) at[i + 1] = at[i] + d[i];
    std::size_t first = 0;
    for (std::size_t i = 1; i < d.size(); i += 2) {
        if (d[i] >= kBurstGap) {
            decode_burst(d, first, i - 1, at, capture, frames);
            first = i + 1;
        }
    }
    decode_burst(d, first, d.size() - 1, at, capture, frames);
    frames = Fold(std::move(frames));
    for (DecodedFrame& frame : frames) name_key(frame);
    return frames;
}

void CFrameDecoder::decode_burst(const std::vector<std::uint32_t>& d, std::size_t first, std::size_t last,
                                 const std::vector<std::uint64_t>& at, const Capture& capture,
                                 std::vector<DecodedFrame>& out) const {
    const std::vector<std::uint32_t> burst(d.begin() + first, d.begin() + last + 1);
    if (auto aircon = decode_aircon(burst)) {
        aircon->startUs = capture.startUs + at[first];
        aircon->durationUs = at[last + 1] - at[first];
        out.push_back(std::move(*aircon));
        return;
    }
    const std::size_t before = out.size();
    std::optional<Protocol> previous;
    for (std::size_t i = first; i <= last;) {
        const auto match = CKeyDecoder::DecodeAt(d, i, capture.carrier, previous);
        if (!match || match->end > last) {
            i += 2;  // noise before a frame, or something no key protocol explains
            continue;
        }
        DecodedFrame frame;
        frame.kind = DecodedFrame::Kind::Key;
        frame.startUs = capture.startUs + at[i];
        frame.durationUs = at[match->end + 1] - at[i];
        frame.protocol = match->protocol;
        frame.scancode = match->scancode;
        frame.repeat = match->repeat;
        frame.toggle = match->toggle;
        // A repeat frame carries no code of its own: it repeats the NEC frame before it.
        if (frame.repeat && !out.empty() && out.back().kind == DecodedFrame::Kind::Key &&
            NecFamily(out.back().protocol)) {
            frame.protocol = out.back().protocol;
            frame.scancode = out.back().scancode;
        }
        // A frame at the start of the capture has no space before it (d[i - 1] would be outside).
        if (PioneerPair(out, before, frame, i > 0 ? d[i - 1] : UINT32_MAX)) {
            out.back().protocol = frame.protocol = Protocol::Pioneer;
        }
        out.push_back(std::move(frame));
        previous = match->protocol;
        i = match->end + 2;
    }
    if (out.size() > before) return;
    if ((last - first) / 2 + 1 < kMinRawMarks) return;  // a stray pulse or two: noise
    DecodedFrame raw;
    raw.startUs = capture.startUs + at[first];
    raw.durations = CRawFrame::OneCopy(burst);
    raw.durationUs = 0;
    for (const std::uint32_t duration : raw.durations) raw.durationUs += duration;
    raw.carrier = capture.carrier;
    raw.pronto = CProntoCode::Format(raw.durations, capture.carrier, kRawGap);
    out.push_back(std::move(raw));
}

// INTEGRATION: the air-conditioner decoder (branch aircon, CAcFrameDecoder::Decode) is called
// here, once for every codeset with protocol aircon, on the whole burst; the first match wins.
// Until it is merged no burst is recognised as an air conditioner's.
std::optional<DecodedFrame> CFrameDecoder::decode_aircon(const std::vector<std::uint32_t>& burst) const {
    (void)burst;
    return std::nullopt;
}

void CFrameDecoder::name_key(DecodedFrame& frame) const {
    if (frame.kind != DecodedFrame::Kind::Key) return;
    const auto found = keys_.find(KeyId{frame.protocol, frame.scancode});
    if (found == keys_.end()) return;
    frame.codeset = found->second.codeset;
    frame.key = found->second.key;
    frame.code = found->second.code;
}

}  // namespace infrared

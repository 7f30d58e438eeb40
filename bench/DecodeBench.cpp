// Recognising what a receiver captured: an air conditioner's frame against every shipped
// codeset, a held key, and a capture no protocol explains (kept as raw timings).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>

#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/decode/CFrameDecoder.h"
#include "infrared/encode/CKeyEncoder.h"

namespace {

using namespace infrared;

std::shared_ptr<const CCodesetLibrary> Shipped() {
    static const auto library = CCodesetLibrary::Parse(DefaultCodesetsText());
    return library;
}

Capture AcCapture(const Codeset& codeset) {
    const AcFrameFormat& f = codeset.frame;
    const AcState state{"on", f.mode.values.front().first, std::to_string(static_cast<int>(f.setpoint.min)),
                        f.fan.values.front().first};
    Capture capture;
    capture.durations =
        CAcFrameEncoder::Encode(f, CAcFrameEncoder::BuildFrame(f, state), codeset.carrier, codeset.dutyCycle).durations;
    return capture;
}

// The shipped air conditioner whose frame (sections and copies) comes nearest 600 durations,
// or (`last`) the last one in the file, which is matched only after every other is tried.
Capture AcCapture600(std::string& family, bool last) {
    Capture best;
    for (const Codeset& codeset : Shipped()->Codesets()) {
        if (codeset.protocol != Protocol::Aircon) continue;
        Capture capture = AcCapture(codeset);
        const auto off = [](const Capture& c) { return std::labs(static_cast<long>(c.durations.size()) - 600); };
        if (last || best.durations.empty() || off(capture) < off(best)) {
            best = capture;
            family = codeset.family;
        }
    }
    return best;
}

void Run(benchmark::State& state, const Capture& capture, DecodedFrame::Kind expected) {
    const CFrameDecoder decoder(Shipped());
    const auto once = decoder.Decode(capture);
    if (once.empty() || once[0].kind != expected) {
        state.SkipWithError("the capture is not decoded as expected");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(decoder.Decode(capture));
    state.counters["durations"] = static_cast<double>(capture.durations.size());
}

void BM_Decode_AcCapture(benchmark::State& state) {
    std::string family;
    const Capture capture = AcCapture600(family, state.range(0) != 0);
    state.SetLabel(family);
    Run(state, capture, DecodedFrame::Kind::Aircon);
}
BENCHMARK(BM_Decode_AcCapture)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

// An NEC press held for three repeat frames.
void BM_Decode_HeldNecKey(benchmark::State& state) {
    Capture capture;
    capture.durations = CKeyEncoder::Encode(Protocol::Nec, 0x0408, false, 0, 38000, 33).durations;
    for (int i = 0; i < 3; ++i) capture.durations.insert(capture.durations.end(), {40000, 9000, 2250, 563});
    Run(state, capture, DecodedFrame::Kind::Key);
}
BENCHMARK(BM_Decode_HeldNecKey)->Unit(benchmark::kMicrosecond);

// 600 durations of a code no key protocol or codeset explains: every position is tried.
void BM_Decode_RawCapture(benchmark::State& state) {
    std::mt19937 rng(600);
    std::uniform_int_distribution<std::uint32_t> mark(300, 900), space(300, 2600);
    Capture capture;
    for (int i = 0; i < 600; ++i) capture.durations.push_back(i % 2 == 0 ? mark(rng) : space(rng));
    capture.durations.push_back(mark(rng));
    Run(state, capture, DecodedFrame::Kind::Raw);
}
BENCHMARK(BM_Decode_RawCapture)->Unit(benchmark::kMicrosecond);

}  // namespace

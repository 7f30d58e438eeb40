// Reading an air-conditioner capture back: one family's description against its own frame,
// and a capture tried against every shipped family as recognising an unknown remote does.
#include <benchmark/benchmark.h>

#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/decode/CAcFrameDecoder.h"

namespace {

using infrared::CAcFrameDecoder;
using infrared::CAcFrameEncoder;
using infrared::Codeset;

const infrared::CCodesetLibrary& Library() {
    static const auto library = infrared::CCodesetLibrary::Parse(infrared::DefaultCodesetsText());
    return *library;
}

std::vector<const Codeset*> Families() {
    std::vector<const Codeset*> out;
    for (const auto& codeset : Library().Codesets()) {
        if (codeset.protocol == infrared::Protocol::Aircon) out.push_back(&codeset);
    }
    return out;
}

std::vector<std::uint32_t> Capture(const Codeset& codeset) {
    const auto bytes = CAcFrameEncoder::BuildFrame(codeset.frame, {"on", "cool", "24", "auto"});
    auto durations = CAcFrameEncoder::Encode(codeset.frame, bytes, codeset.carrier, codeset.dutyCycle).durations;
    for (std::size_t i = 0; i < durations.size(); ++i) durations[i] = durations[i] * (i % 3 == 0 ? 11 : 9) / 10;  // +-10 %
    return durations;
}

void BM_AcDecodeOwnFamily(benchmark::State& state) {
    const Codeset& codeset = *Families().at(static_cast<std::size_t>(state.range(0)));
    const auto capture = Capture(codeset);
    for (auto _ : state) benchmark::DoNotOptimize(CAcFrameDecoder::Decode(codeset, capture));
    state.SetLabel(codeset.family);
}
BENCHMARK(BM_AcDecodeOwnFamily)->DenseRange(0, 16);

// The worst case of recognition: a frame of the last family tried against all of them.
void BM_AcRecogniseAmongAllFamilies(benchmark::State& state) {
    const auto families = Families();
    const auto capture = Capture(*families.back());
    for (auto _ : state) {
        for (const Codeset* codeset : families) benchmark::DoNotOptimize(CAcFrameDecoder::Decode(*codeset, capture));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_AcRecogniseAmongAllFamilies);

}  // namespace

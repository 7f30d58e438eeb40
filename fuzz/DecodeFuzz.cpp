// Arbitrary captures through the frame decoder with the shipped codesets loaded (so every
// air-conditioner description is tried too): two bytes per duration, the first two bytes
// scaling them so long silences and glitches both occur. Any crash, sanitizer report, hang or
// escaped exception is a finding.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/decode/CFrameDecoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const infrared::CFrameDecoder decoder(infrared::CCodesetLibrary::Parse(infrared::DefaultCodesetsText()));
    if (size < 2) return 0;
    infrared::Capture capture;
    const std::uint32_t scale = 1u + data[0] % 64;
    capture.carrier = data[1] * 250u;
    for (std::size_t i = 2; i + 1 < size; i += 2) {
        const std::uint32_t raw = data[i] | static_cast<std::uint32_t>(data[i + 1]) << 8;
        capture.durations.push_back(raw == 0xffff ? 0xffffffffu : raw * scale / 8);
    }
    const auto frames = decoder.Decode(capture);
    std::uint64_t total = 0;
    for (const auto d : capture.durations) total += d;
    for (const auto& frame : frames) {
        if (frame.startUs + frame.durationUs > total) __builtin_trap();  // a frame outside the capture
    }
    return 0;
}

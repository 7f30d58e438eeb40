// The Flipper ".ir" signals file: a header, then signals, each "parsed" (a protocol name,
// address and command) or "raw" (carrier, duty cycle, mark/space timings). Parse() checks the
// whole text and throws CFormatError at the first fault; Write() is its inverse. Stateless.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace infrared {

struct FlipperSignal {
    std::string name;
    std::size_t line = 0;         // where its "name:" is
    bool raw = false;
    std::string protocol;         // parsed: "NEC", "NECext", ... (checked against the known names)
    std::uint32_t address = 0;    // parsed: within the protocol's field width
    std::uint32_t command = 0;
    std::uint32_t frequency = 0;  // raw: Hz
    double dutyCycle = 0;         // raw: 0 < d <= 1
    std::vector<std::uint32_t> data;  // raw: mark, space, mark, ... in microseconds
};

class CFlipperIrFile {
public:
    static constexpr std::size_t kMaxRawValues = 1024;
    static constexpr std::size_t kMaxSignals = 4096;

    static std::vector<FlipperSignal> Parse(const std::string& text, const std::string& fileName);
    static std::string Write(const std::vector<FlipperSignal>& signals);

    // The largest address and command a parsed signal of `protocol` may carry; false for an
    // unknown protocol name.
    static bool FieldLimits(const std::string& protocol, std::uint32_t& address, std::uint32_t& command);
};

}  // namespace infrared

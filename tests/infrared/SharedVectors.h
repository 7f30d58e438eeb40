// Test helper: the public IR reference data beside the repository (../shared/ir), read at run
// time and never copied into the project. Each reader gives nothing when the data is absent.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace irtest {

std::string SharedIrDir();  // IRC_SOURCE_DIR "/../shared/ir"

// One capture of the published captures: what that library calls the protocol and what it
// decoded to, in its own conventions (value: the bits in arrival order, first bit highest).
struct PublishedCapture {
    std::string protocol, source;
    std::vector<std::uint32_t> durations;  // mark first
    unsigned bits = 0;
    std::optional<std::uint64_t> value, address, command;
    bool repeat = false;
};
std::optional<std::vector<PublishedCapture>> ReadCaptures();

// One decoded message of the Flipper test vectors: each capture (`source`) is a sequence of
// entries whose timings start with the silence before the frame.
struct FlipperMessage {
    std::string protocol, source;
    std::uint32_t address = 0, command = 0;
    bool repeat = false;
    std::vector<std::uint32_t> timings;  // space first
};
std::optional<std::vector<FlipperMessage>> ReadFlipperDecodeVectors();

}  // namespace irtest

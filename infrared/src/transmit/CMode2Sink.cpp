#include "infrared/transmit/CMode2Sink.h"

#include <cerrno>
#include <cinttypes>
#include <cstring>

namespace infrared {

CMode2Sink::CMode2Sink(const std::string& path) : path_(path), file_(std::fopen(path.c_str(), "w")) {
    if (!file_) throw CTransmitError("cannot write " + path + ": " + std::strerror(errno));
}

std::chrono::microseconds CMode2Sink::Transmit(const Transmission& t) {
    if (t.emitter < 1 || t.emitter > kEmitters) {
        throw CTransmitError(Describe() + " has no emitter " + std::to_string(t.emitter));
    }
    const PulseTrain& train = t.train;
    std::FILE* f = file_.get();
    ++count_;
    std::fprintf(f, "# transmission %u: codeset %s, %s, emitter %d, carrier %" PRIu32 " Hz, duty %" PRIu32 " %%",
                 count_, t.codeset.c_str(), t.what.c_str(), t.emitter, train.carrier, train.dutyCycle);
    // A scancode names the whole train only when it is one press without copies.
    if (t.hasScancode && t.repeats == 0) std::fprintf(f, ", %s scancode 0x%" PRIx32, ProtocolName(t.protocol), t.scancode);
    std::fprintf(f, "\n");
    const std::uint32_t gap = train.trailingGap > 0 ? train.trailingGap : 100000;
    std::fprintf(f, "space %" PRIu32 "\n", gap);
    for (std::size_t i = 0; i < train.durations.size(); ++i) {
        std::fprintf(f, "%s %" PRIu32 "\n", i % 2 == 0 ? "pulse" : "space", train.durations[i]);
    }
    std::fprintf(f, "space %" PRIu32 "\n", gap);
    if (std::fflush(f) != 0 || std::ferror(f) != 0) {
        throw CTransmitError("cannot write " + path_ + ": " + std::strerror(errno));
    }
    return std::chrono::microseconds(static_cast<std::int64_t>(train.OnAirMicroseconds()));
}

}  // namespace infrared

#include "infrared/decode/CKeyDecoder.h"

#include <cstdlib>

#include "infrared/decode/CBiphaseDecoder.h"
#include "infrared/decode/CDistanceDecoder.h"

namespace infrared {
namespace {

std::uint32_t NominalCarrier(Protocol protocol) {
    switch (protocol) {
        case Protocol::Rc5: case Protocol::Rc5x: case Protocol::Rc6Mode0: return 36000;
        case Protocol::Sony12: case Protocol::Sony15: case Protocol::Sony20: case Protocol::Pioneer: return 40000;
        default: return 38000;
    }
}

// A measured carrier far from the protocol's counts against it, as much as a clear timing misfit.
double CarrierPenalty(Protocol protocol, std::uint32_t carrier) {
    if (carrier == 0) return 0;
    const long off = std::labs(static_cast<long>(carrier) - static_cast<long>(NominalCarrier(protocol)));
    return off > 1500 ? 0.1 : 0;
}

}  // namespace

std::optional<KeyMatch> CKeyDecoder::DecodeAt(const std::vector<std::uint32_t>& durations, std::size_t start,
                                              std::uint32_t carrier, std::optional<Protocol> previous) {
    std::vector<KeyMatch> found = CDistanceDecoder::DecodeAt(durations, start, previous == Protocol::Jvc);
    if (auto biphase = CBiphaseDecoder::DecodeAt(durations, start)) found.push_back(*biphase);
    std::optional<KeyMatch> best;
    double bestMisfit = 0;
    for (const KeyMatch& match : found) {
        const double misfit = match.misfit + CarrierPenalty(match.protocol, carrier);
        if (!best || misfit < bestMisfit) {
            best = match;
            bestMisfit = misfit;
        }
    }
    return best;
}

std::optional<KeyMatch> CKeyDecoder::DecodeFrame(const std::vector<std::uint32_t>& durations) {
    auto match = DecodeAt(durations, 0, 0, std::nullopt);
    if (!match || match->end + 1 != durations.size()) return std::nullopt;
    return match;
}

}  // namespace infrared

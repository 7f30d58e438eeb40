#include "SharedVectors.h"

#include <cstdlib>

#include "AcVectors.h"

namespace irtest {
namespace {

std::optional<std::uint64_t> Hex(const JsonValue& value) {
    if (!value.isString()) return std::nullopt;
    return std::strtoull(value.asString().c_str(), nullptr, 16);
}

std::vector<std::uint32_t> Durations(const JsonValue& list) {
    std::vector<std::uint32_t> out;
    for (unsigned i = 0; i < list.size(); ++i) out.push_back(static_cast<std::uint32_t>(list[i].asInt64()));
    return out;
}

}  // namespace

std::string SharedIrDir() { return IRC_SOURCE_DIR "/../shared/ir"; }

std::optional<std::vector<PublishedCapture>> ReadCaptures() {
    const JsonValue json = SharedIr("vectors/captures.json");
    if (json.isNull()) return std::nullopt;
    std::vector<PublishedCapture> out;
    const JsonValue& list = json["captures"];
    for (unsigned i = 0; i < list.size(); ++i) {
        const JsonValue& c = list[i];
        const JsonValue& e = c["expected"];
        out.push_back({c["protocol"].asString(), c["source"].asString(), Durations(c["durations"]),
                       static_cast<unsigned>(e["bits"].asInt64()), Hex(e["value"]), Hex(e["address"]),
                       Hex(e["command"]), e["repeat"].isBool() && e["repeat"].asBool()});
    }
    return out;
}

std::optional<std::vector<FlipperMessage>> ReadFlipperDecodeVectors() {
    const JsonValue json = SharedIr("vectors/flipper-irtest.json");
    if (json.isNull()) return std::nullopt;
    std::vector<FlipperMessage> out;
    for (unsigned i = 0; i < json.size(); ++i) {
        const JsonValue& e = json[i];
        if (e["direction"].asString() != "decode") continue;
        out.push_back(
            {e["protocol"].asString(), e["source"].asString(), static_cast<std::uint32_t>(e["address"].asInt64()),
             static_cast<std::uint32_t>(e["command"].asInt64()), e["repeat"].asBool(), Durations(e["timings"])});
    }
    return out;
}

}  // namespace irtest

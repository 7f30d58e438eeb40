#include "SharedVectors.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "JsonValue.h"

namespace irtest {
namespace {

using common::json::JsonValue;

std::optional<JsonValue> ReadJson(const std::string& name) {
    std::ifstream in(SharedIrDir() + "/" + name);
    if (!in) return std::nullopt;
    std::ostringstream text;
    text << in.rdbuf();
    JsonValue value = JsonValue::Create(text.str());
    if (value.isNull()) return std::nullopt;
    return value;
}

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
    const auto json = ReadJson("vectors/captures.json");
    if (!json) return std::nullopt;
    std::vector<PublishedCapture> out;
    const JsonValue& list = (*json)["captures"];
    for (unsigned i = 0; i < list.size(); ++i) {
        const JsonValue& c = list[i];
        const JsonValue& expected = c["expected"];
        PublishedCapture capture;
        capture.protocol = c["protocol"].asString();
        capture.source = c["source"].asString();
        capture.durations = Durations(c["durations"]);
        capture.bits = static_cast<unsigned>(expected["bits"].asInt64());
        capture.value = Hex(expected["value"]);
        capture.address = Hex(expected["address"]);
        capture.command = Hex(expected["command"]);
        capture.repeat = expected["repeat"].isBool() && expected["repeat"].asBool();
        out.push_back(std::move(capture));
    }
    return out;
}

std::optional<std::vector<FlipperMessage>> ReadFlipperDecodeVectors() {
    const auto json = ReadJson("vectors/flipper-irtest.json");
    if (!json) return std::nullopt;
    std::vector<FlipperMessage> out;
    for (unsigned i = 0; i < json->size(); ++i) {
        const JsonValue& e = (*json)[i];
        if (e["direction"].asString() != "decode") continue;
        FlipperMessage m;
        m.protocol = e["protocol"].asString();
        m.source = e["source"].asString();
        m.address = static_cast<std::uint32_t>(e["address"].asInt64());
        m.command = static_cast<std::uint32_t>(e["command"].asInt64());
        m.repeat = e["repeat"].asBool();
        m.timings = Durations(e["timings"]);
        out.push_back(std::move(m));
    }
    return out;
}

}  // namespace irtest

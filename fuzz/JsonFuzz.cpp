// Arbitrary text through the JSON layer: parse, then read, convert, index, copy and serialise
// whatever came out. Any crash, sanitizer report or escaped exception other than JsonException
// is a finding.
#include <cstddef>
#include <cstdint>
#include <string>

#include "JsonValue.h"
#include "sim/Simulator.h"

using common::json::JsonException;
using common::json::JsonType;
using common::json::JsonValue;

namespace {

void Convert(const JsonValue& value) {
    for (int t = 0; t <= 7; ++t) {
        // Null-convertibility of an integer outside the int32 range throws, as asInt does.
        try { value.isConvertibleTo(static_cast<JsonType>(t)); } catch (const JsonException&) {}
    }
    try { value.asString(); } catch (const JsonException&) {}
    try { value.asDouble(); } catch (const JsonException&) {}
    try { value.asInt64(); } catch (const JsonException&) {}
    try { value.asUInt(); } catch (const JsonException&) {}
    try { value.asInt(); } catch (const JsonException&) {}
    try { value.asBool(); } catch (const JsonException&) {}
}

// Walks a bounded number of nodes so a wide document cannot make one input take minutes.
void Walk(const JsonValue& value, int& budget) {
    if (--budget < 0) return;
    Convert(value);
    value.size();
    value.empty();
    if (value.type() == common::json::kObject) {
        for (const auto& name : value.getMemberNames()) {
            Walk(value[name], budget);
            value.isMember(name);
        }
        value.get("absent", JsonValue(1));
    } else if (value.type() == common::json::kArray) {
        for (unsigned i = 0; i < value.size() && budget > 0; ++i) Walk(value[i], budget);
        value.get(value.size(), JsonValue("def"));
    } else {
        try { value.isMember("x"); } catch (const JsonException&) {}
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    sim::Log::SetCapture(false);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    JsonValue value = JsonValue::Create(text);
    int budget = 2000;
    Walk(value, budget);

    JsonValue copy(value);
    if (!(copy == value)) __builtin_trap();  // a deep copy must compare equal
    const std::string serialised = value.toString(false);
    JsonValue reparsed = JsonValue::Create(serialised);
    reparsed.toString(true);

    // Mutations on the copy must leave the original as it was.
    try {
        if (copy.type() == common::json::kArray) {
            copy.append(JsonValue(7));
            copy.resize(copy.size() / 2);
        } else if (copy.type() == common::json::kObject) {
            copy["added"] = JsonValue(true);
            auto names = copy.getMemberNames();
            if (!names.empty()) copy.removeMember(names.front());
        } else if (copy.type() == common::json::kNull) {
            copy[2u] = JsonValue("grown");
        }
    } catch (const JsonException&) {
    }
    if (value.toString(false) != serialised) __builtin_trap();

    JsonValue moved(std::move(copy));
    moved = value;
    return 0;
}

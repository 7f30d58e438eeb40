#include "JsonValue.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace common::json {
namespace {

using Conversion = std::function<std::string(const JsonValue&)>;
const Conversion AsString = [](const JsonValue& v) { return v.asString(); };
const Conversion AsDouble = [](const JsonValue& v) { return std::to_string(v.asDouble()); };
const Conversion AsInt64 = [](const JsonValue& v) { return std::to_string(v.asInt64()); };
const Conversion AsUInt = [](const JsonValue& v) { return std::to_string(v.asUInt()); };
const Conversion AsInt = [](const JsonValue& v) { return std::to_string(v.asInt()); };
const Conversion AsBool = [](const JsonValue& v) { return std::string(v.asBool() ? "true" : "false"); };

// A value from its JSON text ("" for a fresh null), as an element so scalars parse too.
JsonValue Parse(const std::string& text) {
    return text.empty() ? JsonValue() : JsonValue::Create("[" + text + "]")[0u];
}

// The result's text, or the exact message of the JsonException thrown.
std::string Outcome(const std::function<std::string()>& call) {
    try {
        return call();
    } catch (const JsonException& e) {
        return e.what();
    }
}

TEST(JsonValueTest, ConversionsGiveTheirValueOrTheirRefusal) {
    struct Case { std::string source; Conversion convert; std::string expected; };
    const std::vector<Case> cases = {
        {"", AsString, ""},
        {"", AsInt, "0"},
        {"true", AsString, "true"},
        {"true", AsDouble, "1.000000"},
        {"true", AsBool, "true"},
        {"42", AsString, "42"},
        {"-7", AsDouble, "-7.000000"},
        {"5000000000", AsInt64, "5000000000"},
        {"4294967295", AsUInt, "4294967295"},
        {"4294967296", AsUInt, "int64_t value exceed uint32_t range"},
        {"2147483647", AsInt, "2147483647"},
        {"3000000000", AsInt, "int64_t value exceed int32_t range"},
        {"0", AsBool, "false"},
        {"2.5", AsString, "2.500000"},
        {"-2.9", AsInt64, "-2"},
        {"9223372036854775808.0", AsInt64, "9223372036854775807"},
        {"1e19", AsInt64, "double value exceed int64_t range"},
        {"4294967296.0", AsUInt, "double value exceed int32_t range"},
        {"2147483647.9", AsInt, "2147483647"},
        {"2147483648.0", AsInt, "double value exceed int32_t range"},
        {"1e-310", AsBool, "true"},
        {"\"7\"", AsString, "7"},
        {"\"7\"", AsDouble, "cannot convert to double type"},
        {"\"7\"", AsInt64, "cannot convert to int64_t type"},
        {"\"7\"", AsUInt, "cannot convert to uint32_t type"},
        {"\"7\"", AsInt, "cannot convert to int32_t type"},
        {"\"7\"", AsBool, "cannot convert to bool type"},
        {"{}", AsString, "cannot convert to string type"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.source + " -> " + c.expected);
        EXPECT_EQ(Outcome([&] { return c.convert(Parse(c.source)); }), c.expected);
    }
    // NaN fails every comparison: it must fail the range checks too, not slip through them.
    const JsonValue nan(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(AsBool(nan) + " " + Outcome([&] { return AsInt(nan); }), "false double value exceed int32_t range");
    EXPECT_EQ(Outcome([&] { return AsInt64(nan); }), "double value exceed int64_t range");
}

// Writing through a non-const index builds containers; a const index creates nothing and answers
// the shared null value (the plugin reads every request that way).
TEST(JsonValueTest, IndexingBuildsOnlyWhenNotConst) {
    JsonValue value;
    value["a"]["b"] = 1;
    JsonValue list;
    list[2u] = true;
    EXPECT_EQ(value.toString() + list.toString(), R"({"a":{"b":1}}[null,null,true])");
    const JsonValue& constant = value;
    EXPECT_EQ(&constant["missing"], &JsonValue::Null());
    EXPECT_EQ(value.size(), 1u);
    value["missing"];
    EXPECT_EQ(value.toString(), R"({"a":{"b":1},"missing":null})");
    EXPECT_THROW(constant[0u], JsonException);
    // A container operation on another kind is refused.
    JsonValue text("text");
    EXPECT_THROW(text["a"], JsonException);
    EXPECT_EQ(Outcome([&] { text.append(JsonValue(1)); return "appended"; }), "invalid type");
}

// Child references stay valid across rehashes and resizes, moves leave null (copies are the get
// test's), and a value assigned (or moved) from its own child reads it before it is gone (ASan checks).
TEST(JsonValueTest, ChildReferencesCopiesAndSelfAssignmentAreSafe) {
    JsonValue value;
    JsonValue& first = value["first"];
    for (int i = 0; i < 100; ++i) value["m" + std::to_string(i)] = i;  // many rehashes
    first = "kept";
    EXPECT_EQ(&value["first"], &first);
    EXPECT_EQ(JsonValue::Create(value.toString())["first"].asString() + value["m99"].asString(), "kept99");

    JsonValue array = JsonValue::Create("[1,2,3]");
    JsonValue& kept = array[0u];
    array[2u];
    array.resize(1);
    EXPECT_EQ(kept.asInt(), 1);
    array[2u] = 5;  // a fresh child, not the dropped one
    EXPECT_EQ(array.toString(), "[1,null,5]");

    JsonValue moved(std::move(array));
    EXPECT_TRUE(array.isNull());  // NOLINT(bugprone-use-after-move): a moved-from value is null
    array = moved;  // and may be assigned again
    EXPECT_TRUE(array == moved);

    JsonValue nested = JsonValue::Create(R"({"a":{"b":[1,2]}})");
    nested = nested["a"];
    EXPECT_EQ(nested.toString(), R"({"b":[1,2]})");
    nested = std::move(nested["b"]);
    EXPECT_EQ(nested.toString(), "[1,2]");
}

// get hands out copies or the default; append takes the value (a copy of its own element too).
TEST(JsonValueTest, GetCopiesAndAppendTakes) {
    JsonValue value = JsonValue::Create(R"({"a":[1]})");
    JsonValue got = value.get("a", JsonValue(0));
    got[0u] = 7;
    EXPECT_EQ(value["a"][0u].asInt(), 1);
    EXPECT_EQ(value.get("b", JsonValue("def")).asString() + JsonValue().get(3u, JsonValue(4)).asString(), "def4");
    JsonValue list;
    JsonValue item = JsonValue::Create(R"({"k":1})");
    list.append(std::move(item));
    EXPECT_TRUE(item.isNull());  // NOLINT(bugprone-use-after-move)
    list.append(list[0u]);
    list[1u]["k"] = 2;
    EXPECT_EQ(list.toString(), R"([{"k":1},{"k":2}])");
}

}  // namespace
}  // namespace common::json

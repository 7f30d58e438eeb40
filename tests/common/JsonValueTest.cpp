#include "JsonValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace common::json {
namespace {

// One row: a value, a conversion, and either the expected text of the result or the exact
// message of the JsonException it throws.
struct ConversionCase {
    std::string source;   // JSON text of the value ("" for a fresh null)
    std::string name;
    std::function<std::string(const JsonValue&)> convert;
    std::string expected;
    bool throws;
};

const auto AsString = [](const JsonValue& v) { return v.asString(); };
const auto AsDouble = [](const JsonValue& v) { return std::to_string(v.asDouble()); };
const auto AsInt64 = [](const JsonValue& v) { return std::to_string(v.asInt64()); };
const auto AsUInt = [](const JsonValue& v) { return std::to_string(v.asUInt()); };
const auto AsInt = [](const JsonValue& v) { return std::to_string(v.asInt()); };
const auto AsBool = [](const JsonValue& v) { return std::string(v.asBool() ? "true" : "false"); };

JsonValue Parse(const std::string& text) {
    return text.empty() ? JsonValue() : JsonValue::Create("[" + text + "]")[0u];
}

TEST(JsonValueTest, ConversionsFollowTheTable) {
    const std::vector<ConversionCase> cases = {
        {"", "asString", AsString, "", false},
        {"", "asDouble", AsDouble, "0.000000", false},
        {"", "asInt64", AsInt64, "0", false},
        {"", "asUInt", AsUInt, "0", false},
        {"", "asInt", AsInt, "0", false},
        {"", "asBool", AsBool, "false", false},
        {"true", "asString", AsString, "true", false},
        {"false", "asString", AsString, "false", false},
        {"true", "asDouble", AsDouble, "1.000000", false},
        {"true", "asInt64", AsInt64, "1", false},
        {"true", "asUInt", AsUInt, "1", false},
        {"false", "asInt", AsInt, "0", false},
        {"true", "asBool", AsBool, "true", false},
        {"42", "asString", AsString, "42", false},
        {"-7", "asDouble", AsDouble, "-7.000000", false},
        {"5000000000", "asInt64", AsInt64, "5000000000", false},
        {"4294967295", "asUInt", AsUInt, "4294967295", false},
        {"4294967296", "asUInt", AsUInt, "int64_t value exceed uint32_t range", true},
        {"-1", "asUInt", AsUInt, "int64_t value exceed uint32_t range", true},
        {"2147483647", "asInt", AsInt, "2147483647", false},
        {"-2147483648", "asInt", AsInt, "-2147483648", false},
        {"3000000000", "asInt", AsInt, "int64_t value exceed int32_t range", true},
        {"-2147483649", "asInt", AsInt, "int64_t value exceed int32_t range", true},
        {"0", "asBool", AsBool, "false", false},
        {"-3", "asBool", AsBool, "true", false},
        {"2.5", "asString", AsString, "2.500000", false},
        {"2.5", "asDouble", AsDouble, "2.500000", false},
        {"-2.9", "asInt64", AsInt64, "-2", false},
        {"9223372036854775808.0", "asInt64", AsInt64, "9223372036854775807", false},
        {"1e19", "asInt64", AsInt64, "double value exceed int64_t range", true},
        {"4294967295.0", "asUInt", AsUInt, "4294967295", false},
        {"-1.5", "asUInt", AsUInt, "double value exceed int32_t range", true},
        {"4294967296.0", "asUInt", AsUInt, "double value exceed int32_t range", true},
        {"2147483647.9", "asInt", AsInt, "2147483647", false},
        {"-2147483648.0", "asInt", AsInt, "-2147483648", false},
        {"2147483648.0", "asInt", AsInt, "double value exceed int32_t range", true},
        {"0.0", "asBool", AsBool, "false", false},
        {"-0.0", "asBool", AsBool, "false", false},
        {"1e-310", "asBool", AsBool, "true", false},
        {"\"7\"", "asString", AsString, "7", false},
        {"\"7\"", "asDouble", AsDouble, "cannot convert to double type", true},
        {"\"7\"", "asInt64", AsInt64, "cannot convert to int64_t type", true},
        {"\"7\"", "asUInt", AsUInt, "cannot convert to uint32_t type", true},
        {"\"7\"", "asInt", AsInt, "cannot convert to int32_t type", true},
        {"\"7\"", "asBool", AsBool, "cannot convert to bool type", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.source + " " + c.name);
        const JsonValue value = Parse(c.source);
        if (c.throws) {
            try {
                c.convert(value);
                ADD_FAILURE() << "no exception";
            } catch (const JsonException& e) {
                EXPECT_EQ(std::string(e.what()), c.expected);
            }
        } else {
            EXPECT_EQ(c.convert(value), c.expected);
        }
    }
    const char* messages[] = {"cannot convert to string type", "cannot convert to double type",
                              "cannot convert to int64_t type", "cannot convert to uint32_t type",
                              "cannot convert to int32_t type", "cannot convert to bool type"};
    const std::function<void(const JsonValue&)> conversions[] = {
        AsString, AsDouble, AsInt64, AsUInt, AsInt, AsBool};
    for (const char* container : {"{}", "[]"}) {
        for (int i = 0; i < 6; ++i) {
            SCOPED_TRACE(std::string(container) + " " + messages[i]);
            try {
                conversions[i](JsonValue::Create(container));
                ADD_FAILURE() << "no exception";
            } catch (const JsonException& e) {
                EXPECT_STREQ(e.what(), messages[i]);
            }
        }
    }
}

TEST(JsonValueTest, NanConvertsToFalseAndFailsIntegerRanges) {
    JsonValue nan(std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(nan.asBool());
    EXPECT_THROW(nan.asInt64(), JsonException);
    EXPECT_THROW(nan.asInt(), JsonException);
    EXPECT_FALSE(nan.isInt());
}

TEST(JsonValueTest, ConvertibilityFollowsTheMatrix) {
    // Columns: kNull kBool kInt kDouble kString kObject kArray, then a value above 6.
    struct Row { std::string source; std::string expected; };
    const std::vector<Row> rows = {
        {"", "11111110"},          {"false", "11111000"},   {"true", "01111000"},
        {"0", "11111000"},         {"7", "01111000"},       {"0.0", "11111000"},
        {"1.5", "01111000"},       {"1e300", "01011000"},   {"\"\"", "00001000"},
        {"{}", "10000100"},        {"{\"a\":1}", "00000100"}, {"[]", "10000010"},
        {"[1]", "00000010"},
    };
    for (const auto& row : rows) {
        const JsonValue value = Parse(row.source);
        std::string got;
        for (int t = 0; t <= 7; ++t) got += value.isConvertibleTo(static_cast<JsonType>(t)) ? '1' : '0';
        EXPECT_EQ(got, row.expected) << row.source;
    }
    // Null-convertibility goes through asInt, so a large integer throws rather than answering.
    EXPECT_THROW(Parse("3000000000").isConvertibleTo(kNull), JsonException);
}

TEST(JsonValueTest, IndexingANullValueBuildsObjectsAndArrays) {
    JsonValue value;
    value["a"]["b"] = 1;
    EXPECT_EQ(value.toString(), R"({"a":{"b":1}})");
    JsonValue list;
    list[2u] = true;
    EXPECT_EQ(list.toString(), "[null,null,true]");
}

TEST(JsonValueTest, ConstIndexingCreatesNothing) {
    JsonValue value = JsonValue::Create(R"({"a":1})");
    const JsonValue& constant = value;
    EXPECT_EQ(&constant["missing"], &JsonValue::Null());
    EXPECT_EQ(value.size(), 1u);
    value["missing"];
    EXPECT_EQ(value.toString(), R"({"a":1,"missing":null})");
    EXPECT_THROW(constant[0u], JsonException);
    EXPECT_THROW(JsonValue("text")["a"], JsonException);
}

TEST(JsonValueTest, CachedChildReferencesStayValidAndWriteThrough) {
    JsonValue value;
    JsonValue& first = value["first"];
    for (int i = 0; i < 100; ++i) value["m" + std::to_string(i)] = i;  // many rehashes
    first = "kept";
    EXPECT_EQ(&value["first"], &first);
    EXPECT_EQ(value["first"].asString(), "kept");
    EXPECT_EQ(JsonValue::Create(value.toString())["m99"].asInt(), 99);
}

TEST(JsonValueTest, CopiesAreDeepAndMovesLeaveNull) {
    JsonValue original = JsonValue::Create(R"({"list":[1,2,3]})");
    JsonValue copy(original);
    copy["list"][0u] = 9;
    EXPECT_EQ(original["list"][0u].asInt(), 1);
    JsonValue moved(std::move(copy));
    EXPECT_TRUE(copy.isNull());  // NOLINT(bugprone-use-after-move): a moved-from value is null
    EXPECT_EQ(moved["list"][0u].asInt(), 9);
    copy = original;  // a moved-from value may be assigned again
    EXPECT_TRUE(copy == original);
}

TEST(JsonValueTest, AssigningAChildToItsParentIsSafe) {
    JsonValue value = JsonValue::Create(R"({"a":{"b":[1,2]}})");
    value = value["a"];
    EXPECT_EQ(value.toString(), R"({"b":[1,2]})");
    value = std::move(value["b"]);
    EXPECT_EQ(value.toString(), "[1,2]");
}

TEST(JsonValueTest, ResizeDropsCachedChildrenBeyondTheNewSize) {
    JsonValue value = JsonValue::Create("[1,2,3]");
    JsonValue& kept = value[0u];
    value[2u];
    value.resize(1);
    EXPECT_EQ(value.size(), 1u);
    EXPECT_EQ(kept.asInt(), 1);
    value[2u] = 5;  // a fresh child, not the dropped one
    EXPECT_EQ(value.toString(), "[1,null,5]");
}

TEST(JsonValueTest, ContainerOperationsOnTheWrongKindThrowInvalidType) {
    JsonValue text("s");
    const std::vector<std::function<void()>> operations = {
        [&] { text.isMember("a"); },       [&] { text.getMemberNames(); },
        [&] { text.append(JsonValue(1)); }, [&] { text.resize(2); },
        [&] { text.removeMember("a"); },   [&] { text.get("a", JsonValue()); },
        [&] { text.get(0u, JsonValue()); },
    };
    for (const auto& operation : operations) {
        try {
            operation();
            ADD_FAILURE() << "no exception";
        } catch (const JsonException& e) {
            EXPECT_STREQ(e.what(), "invalid type");
        }
    }
    EXPECT_EQ(text.size(), 0u);
    EXPECT_FALSE(text.empty());
}

TEST(JsonValueTest, GetReturnsCopiesOrTheDefault) {
    JsonValue value = JsonValue::Create(R"({"a":[1]})");
    JsonValue got = value.get("a", JsonValue(0));
    got[0u] = 7;
    EXPECT_EQ(value["a"][0u].asInt(), 1);
    EXPECT_EQ(value.get("b", JsonValue("def")).asString(), "def");
    EXPECT_EQ(JsonValue().get(3u, JsonValue(4)).asInt(), 4);
    value.removeMember("a");
    EXPECT_TRUE(value.empty());
}

TEST(JsonValueTest, AppendTakesTheValueAndLeavesItNull) {
    JsonValue list;
    JsonValue item = JsonValue::Create(R"({"k":1})");
    list.append(std::move(item));
    EXPECT_TRUE(item.isNull());  // NOLINT(bugprone-use-after-move)
    list.append(list[0u]);       // a copy of its own element
    list[1u]["k"] = 2;
    EXPECT_EQ(list.toString(), R"([{"k":1},{"k":2}])");
}

}  // namespace
}  // namespace common::json

// CProperty is part of the plugin's fixed interface though nothing in the plugin calls it yet:
// one table of what it adds to the JSON layer: the kinds, and a logged fallback for a failure.
#include "property/CProperty.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "sim/Simulator.h"

namespace ircontrol {
namespace {

CProperty P(const std::string& text) { return CProperty::Create(text); }
std::string B(bool value) { return value ? "1" : "0"; }

std::string Types(const std::vector<std::string>& texts) {
    std::string out;
    for (const auto& text : texts) out += std::to_string(P(text).Type());
    return out;
}

template <typename T>
std::string Got(bool ok, const T& value) {
    return B(ok) + ":" + ::testing::PrintToString(value);
}

TEST(CPropertyTest, OperationsGiveTheirResultOrLogAndFallBack) {
    struct Row { const char* name; std::function<std::string()> run; std::string expected, logged; };
    const std::vector<Row> rows = {
        {"integers are classified by range",
         [] { return Types({"0", "2147483647", "-2147483648", "2147483648", "4294967295", "4294967296",
                            "-3000000000", "1.5", "true", "\"s\"", "{}", "[]", "null", "{broken"}); },
         "22233444156700", ""},
        {"an unsigned or unknown kind is made as int or null",
         [] { return std::to_string(CProperty(CProperty::kUIntType).Type()) +
                     std::to_string(CProperty(static_cast<CProperty::_Type>(12)).Type()); },
         "20", ""},
        {"AsInt out of range", [] { return std::to_string(P("3000000000").AsInt(7)); }, "7",
         "[AsInt] json exception: int64_t value exceed int32_t range"},
        {"AsUInt in range", [] { return std::to_string(P("3000000000").AsUInt(1)); }, "3000000000", ""},
        {"AsString of an object", [] { return P(R"({"a":1})").AsString("def"); }, "def",
         "[AsString] json exception: cannot convert to string type"},
        {"GetValue of a missing member writes the null conversion", [] {
             int i = -1;
             const CProperty object = P(R"({"a":5})");
             const std::string got = Got(object.GetValue("missing", i), i);
             return got + Got(object.GetValue("a", i), i);
         }, "1:01:5", ""},
        {"GetValue on the wrong kind leaves the output alone", [] {
             int out = 42;
             return Got(P("[1,2]").GetValue("a", out), out);
         }, "0:42", "[GetValue] json exception: invalid type"},
        {"Set grows a null property into an object", [] {
             CProperty object(CProperty::kNullType);
             object.Set("k", P("\"v\""));
             object.Set(0u, P("1"));  // an object cannot be indexed by position
             return object.ToJsonString();
         }, R"({"k":"v"})", "[Set] json exception: invalid type"},
        {"EqualValue is true when there is nothing to compare", [] {
             const CProperty object = P(R"({"a":1})");
             return B(object.EqualValue("missing", P("2"))) + B(object.EqualValue("a", P("1"))) +
                    B(object.EqualValue("a", P("2"))) + B(object.EqualValue(5u, P("2"))) +
                    B(object.Equal(P(R"({"a":1})")));
         }, "11011", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        sim::ResetAll();
        EXPECT_EQ(row.run(), row.expected);
        EXPECT_TRUE(row.logged.empty() || sim::Log::Contains(row.logged)) << row.logged;
    }
}

}  // namespace
}  // namespace ircontrol

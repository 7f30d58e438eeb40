// CProperty is part of the plugin's fixed interface though nothing in the plugin calls it yet:
// one check of what it adds to the JSON layer: the kinds, and a logged fallback for a failure.
#include "property/CProperty.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/Simulator.h"

namespace ircontrol {
namespace {

CProperty P(const std::string& text) { return CProperty::Create(text); }

TEST(CPropertyTest, KindsByRangeAndFailuresLoggedWithTheirFallback) {
    sim::ResetAll();
    std::string kinds;
    for (const char* text : {"0", "2147483647", "-2147483648", "2147483648", "4294967295", "4294967296",
                             "-3000000000", "1.5", "true", "\"s\"", "{}", "[]", "null", "{broken"}) {
        kinds += std::to_string(P(text).Type());
    }
    EXPECT_EQ(kinds, "22233444156700");
    EXPECT_EQ(CProperty(CProperty::kUIntType).Type() * 10 + CProperty(static_cast<CProperty::_Type>(12)).Type(), 20);
    EXPECT_EQ(P("3000000000").AsInt(7) + P("3000000000").AsUInt(1), 3000000007u);
    EXPECT_EQ(P(R"({"a":1})").AsString("def"), "def");
    // GetValue writes a missing member's null conversion, and leaves the output alone on a wrong kind.
    int got = -1, kept = 42;
    const CProperty object = P(R"({"a":5})");
    EXPECT_TRUE(object.GetValue("missing", got));
    EXPECT_EQ(got, 0);
    EXPECT_TRUE(object.GetValue("a", got));
    EXPECT_FALSE(P("[1,2]").GetValue("a", kept));
    EXPECT_EQ(got * 100 + kept, 542);
    CProperty grown(CProperty::kNullType);
    grown.Set("k", P("\"v\""));
    grown.Set(0u, P("1"));  // an object cannot be indexed by position
    EXPECT_EQ(grown.ToJsonString(), R"({"k":"v"})");
    // EqualValue is true when there is nothing to compare.
    EXPECT_EQ(std::vector<bool>({object.EqualValue("missing", P("2")), object.EqualValue("a", P("5")),
                                 object.EqualValue("a", P("2")), object.EqualValue(5u, P("2")),
                                 object.Equal(P(R"({"a":5})"))}),
              std::vector<bool>({true, true, false, true, true}));
    for (const char* line : {"[AsInt] json exception: int64_t value exceed int32_t range",
                             "[AsString] json exception: cannot convert to string type",
                             "[GetValue] json exception: invalid type", "[Set] json exception: invalid type"}) {
        EXPECT_TRUE(sim::Log::Contains(line)) << line;
    }
}

}  // namespace
}  // namespace ircontrol

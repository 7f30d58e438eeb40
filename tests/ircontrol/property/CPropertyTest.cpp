#include "property/CProperty.h"

#include <gtest/gtest.h>

#include "sim/Simulator.h"

namespace ircontrol {
namespace {

class CPropertyTest : public ::testing::Test {
protected:
    void SetUp() override { sim::ResetAll(); }
};

TEST_F(CPropertyTest, IntegersAreClassifiedByRange) {
    const std::vector<std::pair<std::string, CProperty::_Type>> cases = {
        {"0", CProperty::kIntType},           {"2147483647", CProperty::kIntType},
        {"-2147483648", CProperty::kIntType}, {"2147483648", CProperty::kUIntType},
        {"3000000000", CProperty::kUIntType}, {"4294967295", CProperty::kUIntType},
        {"4294967296", CProperty::kDoubleType}, {"5000000000", CProperty::kDoubleType},
        {"-3000000000", CProperty::kDoubleType}, {"1.5", CProperty::kDoubleType},
        {"true", CProperty::kBoolType},       {"\"s\"", CProperty::kStringType},
        {"{}", CProperty::kObjectType},       {"[]", CProperty::kArrayType},
        {"null", CProperty::kNullType},       {"{broken", CProperty::kNullType},
    };
    for (const auto& [text, type] : cases) EXPECT_EQ(CProperty::Create(text).Type(), type) << text;
    EXPECT_EQ(CProperty(CProperty::kUIntType).Type(), CProperty::kIntType);
    EXPECT_TRUE(CProperty(static_cast<CProperty::_Type>(12)).IsNullType());
}

TEST_F(CPropertyTest, FailedConversionsLogTheirOperationAndReturnTheFallback) {
    const CProperty big = CProperty::Create("3000000000");
    EXPECT_EQ(big.AsInt(7), 7);
    EXPECT_TRUE(sim::Log::Contains("[AsInt] json exception: int64_t value exceed int32_t range"));
    EXPECT_EQ(big.AsUInt(1), 3000000000u);

    const CProperty object = CProperty::Create(R"({"a":1})");
    EXPECT_EQ(object.AsString("def"), "def");
    EXPECT_TRUE(sim::Log::Contains("[AsString] json exception: cannot convert to string type"));
    EXPECT_EQ(object.AsDouble(2.5), 2.5);
    EXPECT_TRUE(object.AsBool(true));
    EXPECT_TRUE(sim::Log::Contains("[AsBool] json exception: cannot convert to bool type"));
}

TEST_F(CPropertyTest, GetValueOfAMissingMemberWritesTheNullConversion) {
    const CProperty object = CProperty::Create(R"({"a":5})");
    int i = -1;
    bool b = true;
    std::string s = "x";
    double d = 9.0;
    EXPECT_TRUE(object.GetValue("missing", i));
    EXPECT_TRUE(object.GetValue("missing", b));
    EXPECT_TRUE(object.GetValue("missing", s));
    EXPECT_TRUE(object.GetValue("missing", d));
    EXPECT_EQ(i, 0);
    EXPECT_FALSE(b);
    EXPECT_EQ(s, "");
    EXPECT_EQ(d, 0.0);
    EXPECT_TRUE(object.GetValue("a", i));
    EXPECT_EQ(i, 5);
}

TEST_F(CPropertyTest, GetValueOnTheWrongKindFailsAndLeavesTheOutputAlone) {
    const CProperty array = CProperty::Create("[1,2]");
    int out = 42;
    EXPECT_FALSE(array.GetValue("a", out));
    EXPECT_EQ(out, 42);
    EXPECT_TRUE(sim::Log::Contains("[GetValue] json exception: invalid type"));
    EXPECT_TRUE(array.GetValue(1u, out));
    EXPECT_EQ(out, 2);
    CProperty element(CProperty::kNullType);
    EXPECT_TRUE(array.GetValue(0u, element));
    EXPECT_EQ(element.AsInt(0), 1);
}

TEST_F(CPropertyTest, SetGrowsNullPropertiesIntoContainers) {
    CProperty object(CProperty::kNullType);
    object.Set("k", CProperty::Create("\"v\""));
    EXPECT_EQ(object.ToJsonString(), R"({"k":"v"})");
    CProperty array(CProperty::kArrayType);
    array.Set(3u, CProperty::Create("true"));
    EXPECT_EQ(array.ToJsonString(), "[null,null,null,true]");
    array.AppendToArray(CProperty::Create("1"));
    array.ResizeArray(2);
    EXPECT_EQ(array.ArraySize(), 2u);
    EXPECT_TRUE(array.IsValidArrayIndex(1));
    EXPECT_FALSE(array.IsValidArrayIndex(2));
    object.Set(0u, CProperty::Create("1"));  // an object cannot be indexed by position
    EXPECT_TRUE(sim::Log::Contains("[Set] json exception: invalid type"));
}

TEST_F(CPropertyTest, NameQueries) {
    const CProperty empty = CProperty::Create("{}");
    EXPECT_EQ(empty.GetFirstName(), "");
    EXPECT_TRUE(empty.IsEmptyObject());
    const CProperty text = CProperty::Create("\"s\"");
    EXPECT_FALSE(text.IsValidName("a"));
    EXPECT_TRUE(sim::Log::Contains("[IsValidName] json exception: invalid type"));
    EXPECT_TRUE(text.GetNameList().empty());
    CProperty object = CProperty::Create(R"({"a":1,"b":2})");
    EXPECT_EQ(object.ObjectSize(), 2u);
    object.Remove("a");
    EXPECT_EQ(object.GetNameList(), std::vector<std::string>{"b"});
}

TEST_F(CPropertyTest, EqualValueIsTrueWhenThereIsNothingToCompare) {
    const CProperty object = CProperty::Create(R"({"a":1})");
    EXPECT_TRUE(object.EqualValue("missing", CProperty::Create("2")));
    EXPECT_TRUE(object.EqualValue("a", CProperty::Create("1")));
    EXPECT_FALSE(object.EqualValue("a", CProperty::Create("2")));
    EXPECT_TRUE(object.EqualValue(5u, CProperty::Create("2")));
    EXPECT_TRUE(object.Equal(CProperty::Create(R"({"a":1})")));
}

TEST_F(CPropertyTest, CopiesAreDeepAndSwapExchanges) {
    CProperty a = CProperty::Create(R"({"x":1})");
    CProperty b(CProperty::kNullType);
    b = a;
    b.Set("x", CProperty::Create("2"));
    EXPECT_EQ(a.ToJsonString(), R"({"x":1})");
    a.Swap(b);
    EXPECT_EQ(a.ToJsonString(), R"({"x":2})");
    EXPECT_EQ(b.ToJsonString(), R"({"x":1})");
    const CProperty got = a.Get("x", CProperty::Create("0"));
    EXPECT_EQ(got.AsInt(0), 2);
    EXPECT_EQ(CProperty::Create("[1]").Get("x", CProperty::Create("9")).AsInt(0), 9);
    a.Clear();
    EXPECT_TRUE(a.IsNullType());
}

}  // namespace
}  // namespace ircontrol

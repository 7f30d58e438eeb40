// The request model's value kinds and their one conversion to a host property.
#include "Request.h"

#include <gtest/gtest.h>

namespace ircontrol::host {
namespace {

TEST(RequestTest, EachValueKindBecomesAHostPropertyOfThatKindOrIsRefused) {
    using Kind = sim::HostProperty::Kind;
    struct Case {
        ValueKind kind;
        std::string text;
        bool ok;
        Kind made;
        std::string madeText;
        int number;
        bool flag;
    };
    const Case cases[] = {
        {ValueKind::Json, R"({"a":1})", true, Kind::Json, R"({"a":1})", 0, false},
        {ValueKind::Json, "not json", true, Kind::Json, "not json", 0, false},  // the service judges it
        {ValueKind::String, "hello", true, Kind::String, "hello", 0, false},
        {ValueKind::Int, "-7", true, Kind::Int, "", -7, false},
        {ValueKind::Int, "2147483647", true, Kind::Int, "", 2147483647, false},
        {ValueKind::Int, "2147483648", false, Kind::String, "", 0, false},
        {ValueKind::Int, "7.5", false, Kind::String, "", 0, false},
        {ValueKind::Int, "", false, Kind::String, "", 0, false},
        {ValueKind::Bool, "true", true, Kind::Bool, "", 0, true},
        {ValueKind::Bool, "false", true, Kind::Bool, "", 0, false},
        {ValueKind::Bool, "True", false, Kind::String, "", 0, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(ToString(c.kind)) + " '" + c.text + "'");
        sim::HostProperty property = sim::HostProperty::String("untouched", "");
        ASSERT_EQ(ToHostProperty("p", c.kind, c.text, property), c.ok);
        if (!c.ok) {
            EXPECT_EQ(property.name, "untouched") << "a refused value leaves the property as it was";
            continue;
        }
        EXPECT_EQ(property.name, "p");
        EXPECT_EQ(property.kind, c.made);
        EXPECT_EQ(property.text, c.madeText);
        EXPECT_EQ(property.intValue, c.number);
        EXPECT_EQ(property.boolValue, c.flag);
    }
}

TEST(RequestTest, KindNamesRoundTripAndOthersAreRefused) {
    for (ValueKind kind : {ValueKind::Json, ValueKind::String, ValueKind::Int, ValueKind::Bool}) {
        EXPECT_EQ(ValueKindFrom(ToString(kind)), kind);
    }
    for (RequestKind kind : {RequestKind::Key, RequestKind::Ac, RequestKind::Set, RequestKind::Devices}) {
        EXPECT_EQ(RequestKindFrom(ToString(kind)), kind);
    }
    EXPECT_FALSE(ValueKindFrom("JSON"));
    EXPECT_FALSE(ValueKindFrom("double"));
    EXPECT_FALSE(RequestKindFrom("demo")) << "a tool command is not a request";
}

}  // namespace
}  // namespace ircontrol::host

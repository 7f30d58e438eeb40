// The request model's one conversion of a value of each kind to a host property.
#include "Request.h"

#include "HostTestSupport.h"

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
        // A refused value leaves the property as it was.
        EXPECT_EQ(std::tie(property.name, property.kind, property.text, property.intValue, property.boolValue),
                  std::make_tuple(c.ok ? "p" : "untouched", c.made, c.madeText, c.number, c.flag));
    }
}

}  // namespace
}  // namespace ircontrol::host

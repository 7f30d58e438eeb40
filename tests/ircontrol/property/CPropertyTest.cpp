// CProperty is part of the plugin's fixed interface though nothing in the plugin calls it yet:
// one check of what it adds to the JSON layer: the kinds by range, and a logged fallback.
#include "property/CProperty.h"

#include <gtest/gtest.h>

#include <string>

#include "sim/Simulator.h"

namespace ircontrol {
namespace {

TEST(CPropertyTest, KindsByRangeAndFailuresLoggedWithTheirFallback) {
    sim::ResetAll();
    std::string kinds;
    for (const char* text : {"-2147483648", "2147483647", "2147483648", "4294967295", "4294967296",
                             "-3000000000", "1.5", "true", "\"s\"", "{}", "[]", "{broken"}) {
        kinds += std::to_string(CProperty::Create(text).Type());
    }
    EXPECT_EQ(kinds, "223344415670");
    EXPECT_EQ(CProperty::Create("3000000000").AsInt(7), 7);
    EXPECT_TRUE(sim::Log::Contains("[AsInt] json exception: int64_t value exceed int32_t range"));
}

}  // namespace
}  // namespace ircontrol

#include "util/CVyrfTypeConverter.h"

#include <gtest/gtest.h>

namespace ircontrol {
namespace {

TEST(CVyrfTypeConverterTest, MapsEveryValueTypeToTheHostType) {
    const int expected[] = {-1, 0, 1, 1, 6, 3, 4, 4, -1, -1};
    for (int t = 0; t < 10; ++t) {
        EXPECT_EQ(CVyrfTypeConverter::GetVyrfPropertyType(static_cast<CProperty::_Type>(t)), expected[t])
            << t;
    }
}

}  // namespace
}  // namespace ircontrol

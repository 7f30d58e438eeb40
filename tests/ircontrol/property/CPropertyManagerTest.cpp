#include "property/CPropertyManager.h"

#include <gtest/gtest.h>

#include "util/CVyrfTypeConverter.h"

namespace ircontrol {
namespace {

TEST(CPropertyManagerTest, HoldsTheTwoEventPropertiesAsObjects) {
    auto table = CPropertyManager::GetInstance().GetAllPropertyInfo();
    ASSERT_EQ(table.size(), 2u);
    const auto& key = table.at("setKeyEvent");
    const auto& device = table.at("setDeviceEvent");
    EXPECT_EQ(key.description, "set ir key event");
    EXPECT_EQ(device.description, "set ir device event");
    for (const auto* def : {&key, &device}) {
        EXPECT_EQ(def->type, CProperty::kObjectType);
        EXPECT_EQ(CVyrfTypeConverter::GetVyrfPropertyType(def->type), 4);
        EXPECT_EQ(def->lowerBound, 0);
        EXPECT_EQ(def->upperBound, 0);
        EXPECT_TRUE(def->flags[1]);
    }
}

}  // namespace
}  // namespace ircontrol

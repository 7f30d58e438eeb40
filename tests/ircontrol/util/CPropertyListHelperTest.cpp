#include "util/CPropertyListHelper.h"

#include <gtest/gtest.h>

#include "sim/Simulator.h"

namespace ircontrol {
namespace {

using sim::HostProperty;

// Keeps a helper made inside the host callback, whose list the host destroys afterwards.
void OnSet(void*, void*, void* list, void* captured) {
    *static_cast<std::shared_ptr<IPropertyListHelper>*>(captured) = IPropertyListHelper::Create(list);
}

// The copy outlives the host's list; a missing or mistyped property reads empty.
TEST(CPropertyListHelperTest, CopyOutlivesTheHostsListAndReadsJsonTextsAndNames) {
    sim::ResetAll();
    std::shared_ptr<IPropertyListHelper> helper;
    void* service = vyrf_service_create({"svc", 3}, {"d", 1}, nullptr, nullptr, &OnSet, nullptr, &helper);
    ASSERT_NE(service, nullptr);
    const auto before = sim::Host::LiveLists();
    sim::Host::SendSet("svc", {HostProperty::Json("setKeyEvent", R"({"a":1})"), HostProperty::String("name", "v")});
    ASSERT_TRUE(helper);
    EXPECT_EQ(sim::Host::LiveLists(), before + 1);
    EXPECT_EQ(helper->GetJsonString("setKeyEvent"), R"({"a":1})");
    EXPECT_EQ(helper->GetPropertyNameList(), (std::vector<std::string>{"setKeyEvent", "name"}));
    EXPECT_EQ(helper->GetJsonString("name") + helper->GetJsonString("absent"), "");
    helper.reset();
    EXPECT_EQ(sim::Host::LiveLists(), before);
    vyrf_service_destroy(service);
}

}  // namespace
}  // namespace ircontrol

#include "util/CPropertyListHelper.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "common/CException.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

using sim::HostProperty;

class CPropertyListHelperTest : public ::testing::Test {
protected:
    void SetUp() override {
        sim::ResetAll();
        service_ = vyrf_service_create({"svc", 3}, {"d", 1}, nullptr, nullptr, &OnSet, nullptr, this);
        ASSERT_NE(service_, nullptr);
    }
    void TearDown() override { vyrf_service_destroy(service_); }

    // Keeps a helper made inside the host callback, whose list the host destroys afterwards.
    static void OnSet(void*, void*, void* list, void* self) {
        auto* test = static_cast<CPropertyListHelperTest*>(self);
        try {
            test->captured_ = IPropertyListHelper::Create(list);
        } catch (const std::invalid_argument& e) {
            test->error_ = e.what();
        }
    }

    std::shared_ptr<IPropertyListHelper> Capture(const std::vector<HostProperty>& properties) {
        sim::Host::SendSet("svc", properties);
        return std::move(captured_);
    }

    void* service_ = nullptr;
    std::shared_ptr<IPropertyListHelper> captured_;
    std::string error_;
};

// The copy outlives the host's list; a missing or mistyped property reads empty.
TEST_F(CPropertyListHelperTest, CopyOutlivesTheHostsListAndReadsJsonTextsAndNames) {
    const auto before = sim::Host::LiveLists();
    auto helper = Capture({HostProperty::Json("setKeyEvent", R"({"a":1})"), HostProperty::String("name", "value")});
    EXPECT_EQ(sim::Host::LiveLists(), before + 1);
    EXPECT_EQ(helper->GetJsonString("setKeyEvent"), R"({"a":1})");
    EXPECT_EQ(helper->GetPropertyNameList(), (std::vector<std::string>{"setKeyEvent", "name"}));
    EXPECT_EQ(helper->GetJsonString("name") + helper->GetJsonString("absent"), "");
    helper.reset();
    EXPECT_EQ(sim::Host::LiveLists(), before);
}

TEST_F(CPropertyListHelperTest, AnUnnamedPropertyAnywhereMakesTheNameListThrow) {
    for (std::size_t at = 0; at < 3; ++at) {
        std::vector<HostProperty> properties = {HostProperty::String("a", "1"), HostProperty::String("b", "2")};
        properties.insert(properties.begin() + static_cast<long>(at), HostProperty::String("", "x"));
        auto helper = Capture(properties);
        EXPECT_THROW(helper->GetPropertyNameList(), CException) << at;
    }
}

TEST_F(CPropertyListHelperTest, CopyFailureThrowsInvalidArgumentAndIsLogged) {
    sim::Host::InjectFault(sim::HostFault::ListCopy);
    sim::Host::SendSet("svc", {HostProperty::String("a", "1")});
    EXPECT_FALSE(captured_);
    EXPECT_EQ(error_, "failed to create list");
    EXPECT_TRUE(sim::Log::Contains("failed to copy list"));
}

}  // namespace
}  // namespace ircontrol

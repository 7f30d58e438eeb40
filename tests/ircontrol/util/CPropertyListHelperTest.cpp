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

// The copy outlives the host's list; missing or mistyped properties read empty.
TEST_F(CPropertyListHelperTest, CopyOutlivesTheHostsListAndReadsEachKind) {
    const auto before = sim::Host::LiveLists();
    auto helper = Capture({HostProperty::Json("setKeyEvent", R"({"a":1})"), HostProperty::String("name", "value"),
                           HostProperty::Int("n", 7)});
    EXPECT_EQ(sim::Host::LiveLists(), before + 1);
    EXPECT_EQ(helper->GetJsonString("setKeyEvent") + helper->GetString("name"), R"({"a":1}value)");
    EXPECT_EQ(helper->GetInt("n"), 7);
    EXPECT_EQ(helper->GetPropertyNameList(), (std::vector<std::string>{"setKeyEvent", "name", "n"}));
    EXPECT_EQ(helper->GetJsonString("name") + helper->GetString("absent"), "");
    EXPECT_EQ(helper->Find(""), nullptr);
    EXPECT_EQ(helper->GetInt("name"), 0);
    EXPECT_TRUE(sim::Log::Contains("failed to GetInt"));
    helper.reset();
    EXPECT_EQ(sim::Host::LiveLists(), before);
}

TEST_F(CPropertyListHelperTest, AnUnnamedPropertyAnywhereMakesTheNameListThrow) {
    for (std::size_t at = 0; at < 3; ++at) {
        std::vector<HostProperty> properties = {HostProperty::String("a", "1"), HostProperty::String("b", "2")};
        properties.insert(properties.begin() + static_cast<long>(at), HostProperty::String("", "x"));
        auto helper = Capture(properties);
        try {
            helper->GetPropertyNameList();
            ADD_FAILURE() << "no exception at " << at;
        } catch (const CException& e) {
            EXPECT_STREQ(e.what(), "invalid property name!(error:5)");
        }
    }
}

TEST_F(CPropertyListHelperTest, CopyOrCreateFailureThrowsInvalidArgument) {
    sim::Host::InjectFault(sim::HostFault::ListCopy);
    sim::Host::SendSet("svc", {HostProperty::String("a", "1")});
    EXPECT_FALSE(captured_);
    EXPECT_EQ(error_, "failed to create list");
    sim::Host::InjectFault(sim::HostFault::ListCreate);
    try {
        CPropertyListHelper helper;
        ADD_FAILURE();
    } catch (const std::invalid_argument& e) {
        EXPECT_STREQ(e.what(), "failed to create list");
    }
    EXPECT_EQ(sim::Log::Count("failed to copy list"), 2u);  // both failures use the copy text
}

// Only the string push answers requests; the int and boolean ones are part of the fixed interface.
TEST_F(CPropertyListHelperTest, PushesOnlyNamedNonEmptyData) {
    CPropertyListHelper helper;
    helper.PushStringData("errorCode", "ok");
    helper.PushStringData("description", "");
    helper.PushStringData("", "x");
    helper.PushIntData("n", 3);
    helper.PushIntData("", 4);
    helper.PushBooleanData("b", true);
    helper.Push(helper.CreateStringProperty("s", "v"), 0);
    EXPECT_EQ(helper.GetPropertyNameList(), (std::vector<std::string>{"errorCode", "n", "b", "s"}));
    EXPECT_EQ(sim::Log::Lines().size(), 0u);  // nothing failed, nothing logged
    void* popped = nullptr;
    vyrf_error error = -1;
    EXPECT_EQ(helper.Pop(&popped, &error), 0);
    EXPECT_NE(popped, nullptr);
    helper.Push(popped, 0);  // hand it back so the list releases it
}

}  // namespace
}  // namespace ircontrol

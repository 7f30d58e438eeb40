#include "util/CVconfUtil.h"

#include <gtest/gtest.h>
#include <vconf.h>

#include <functional>
#include <string>
#include <vector>

#include "common/CException.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

class CVconfUtilTest : public ::testing::Test {
protected:
    void SetUp() override { sim::ResetAll(); }
};

void ExpectThrows(const std::function<void()>& call, const std::string& message, int code) {
    try {
        call();
        ADD_FAILURE() << "no exception, expected " << message;
    } catch (const CException& e) {
        EXPECT_EQ(e.GetMessage(), message);
        EXPECT_EQ(e.GetErrorCode(), code);
    }
}

void OnChange(keynode_t* node, void* seen) {
    static_cast<std::vector<std::string>*>(seen)->push_back(vconf_keynode_get_name(node));
}

TEST_F(CVconfUtilTest, ReadsAndWritesValues) {
    CVconfUtil::SetString("db/a", "text");
    CVconfUtil::SetInt("db/n", -4);
    EXPECT_EQ(CVconfUtil::GetString("db/a"), "text");
    EXPECT_EQ(CVconfUtil::GetInt("db/n"), -4);
}

TEST_F(CVconfUtilTest, EmptyKeyIsRefusedBeforeTheStoreIsAsked) {
    const std::string empty;
    ExpectThrows([&] { CVconfUtil::GetString(empty); }, "vconf url is empty!!!", 4);
    ExpectThrows([&] { CVconfUtil::GetInt(empty); }, "vconf url is empty!!!", 4);
    ExpectThrows([&] { CVconfUtil::SetInt(empty, 1); }, "vconf url is empty!!!", 4);
    ExpectThrows([&] { CVconfUtil::SetString(empty, "v"); }, "vconf url is empty!!!", 4);
    // The key is checked before the callback.
    ExpectThrows([&] { CVconfUtil::SetNotifyKeyChangedCb(empty, nullptr, nullptr); },
                 "vconf url is empty!!!", 4);
    ExpectThrows([&] { CVconfUtil::SetNotifyKeyChangedCb("db/k", nullptr, nullptr); },
                 "callback is null!!", 4);
    ExpectThrows([&] { CVconfUtil::UnsetNotifyKeyChangedCb("db/k", nullptr); }, "callback is null!!", 4);
}

TEST_F(CVconfUtilTest, StoreFailuresThrowCodeEight) {
    ExpectThrows([] { CVconfUtil::GetString("db/absent"); }, "vconf get str returned null!", 8);
    ExpectThrows([] { CVconfUtil::GetInt("db/absent"); }, "vconf get int error", 8);
    const std::vector<std::pair<sim::SettingsFault, std::function<void()>>> faults = {
        {sim::SettingsFault::SetInt, [] { CVconfUtil::SetInt("db/k", 1); }},
        {sim::SettingsFault::SetStr, [] { CVconfUtil::SetString("db/k", "v"); }},
        {sim::SettingsFault::Notify, [] { CVconfUtil::SetNotifyKeyChangedCb("db/k", &OnChange, nullptr); }},
        {sim::SettingsFault::Ignore, [] { CVconfUtil::UnsetNotifyKeyChangedCb("db/k", &OnChange); }},
    };
    const char* messages[] = {"vconf set int failed!", "vconf set str failed!",
                              "vconf_notify_key_changed error", "vconf_ignore_key_changed error"};
    for (std::size_t i = 0; i < faults.size(); ++i) {
        sim::Settings::InjectFault(faults[i].first, 1);
        ExpectThrows(faults[i].second, messages[i], 8);
    }
}

TEST_F(CVconfUtilTest, NotificationsReachTheCallbackUntilUnset) {
    std::vector<std::string> seen;
    CVconfUtil::SetNotifyKeyChangedCb("db/watched", &OnChange, &seen);
    CVconfUtil::SetString("db/watched", "1");
    CVconfUtil::SetString("db/other", "2");
    sim::Settings::SetInt("db/watched", 3);
    CVconfUtil::UnsetNotifyKeyChangedCb("db/watched", &OnChange);
    CVconfUtil::SetString("db/watched", "4");
    EXPECT_EQ(seen, (std::vector<std::string>{"db/watched", "db/watched"}));
    EXPECT_EQ(sim::Settings::Subscribers("db/watched"), 0u);
}

}  // namespace
}  // namespace ircontrol

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

void OnChange(keynode_t* node, void* seen) {
    static_cast<std::vector<std::string>*>(seen)->push_back(vconf_keynode_get_name(node));
}

// Only GetString is called by the plugin (its refusals are the IR interface's pairing-list
// rows); the rest belong to its fixed interface: one row each, its value or its refusal's text.
TEST(CVconfUtilTest, CallsGiveTheirValueOrTheirRefusal) {
    using Fault = sim::SettingsFault;
    const auto inject = [](Fault fault) { sim::Settings::InjectFault(fault, 1); };
    const std::vector<std::pair<std::function<std::string()>, std::string>> rows = {
        {[] { CVconfUtil::SetInt("db/n", -4); return std::to_string(CVconfUtil::GetInt("db/n")); }, "-4"},
        {[] { return CVconfUtil::GetString(""); }, "vconf url is empty!!!(error:4)"},
        {[] { return std::to_string(CVconfUtil::GetInt("db/absent")); }, "vconf get int error(error:8)"},
        {[&] { inject(Fault::SetInt); CVconfUtil::SetInt("db/k", 1); return ""; }, "vconf set int failed!(error:8)"},
        {[&] { inject(Fault::SetStr); CVconfUtil::SetString("db/k", "v"); return ""; },
         "vconf set str failed!(error:8)"},
        // The key is checked before the callback.
        {[] { CVconfUtil::SetNotifyKeyChangedCb("", nullptr, nullptr); return ""; }, "vconf url is empty!!!(error:4)"},
        {[] { CVconfUtil::UnsetNotifyKeyChangedCb("db/k", nullptr); return ""; }, "callback is null!!(error:4)"},
        {[&] { inject(Fault::Notify); CVconfUtil::SetNotifyKeyChangedCb("db/k", &OnChange, nullptr); return ""; },
         "vconf_notify_key_changed error(error:8)"},
        {[&] { inject(Fault::Ignore); CVconfUtil::UnsetNotifyKeyChangedCb("db/k", &OnChange); return ""; },
         "vconf_ignore_key_changed error(error:8)"},
    };
    for (const auto& [call, expected] : rows) {
        SCOPED_TRACE(expected);
        sim::ResetAll();
        try {
            EXPECT_EQ(call(), expected);
        } catch (const CException& e) {
            EXPECT_EQ(e.what(), expected);
        }
    }
}

TEST(CVconfUtilTest, NotificationsReachTheCallbackUntilUnset) {
    sim::ResetAll();
    std::vector<std::string> seen;
    CVconfUtil::SetNotifyKeyChangedCb("db/watched", &OnChange, &seen);
    CVconfUtil::SetString("db/watched", "1");
    CVconfUtil::SetString("db/other", "2");
    sim::Settings::SetInt("db/watched", 3);
    CVconfUtil::UnsetNotifyKeyChangedCb("db/watched", &OnChange);
    CVconfUtil::SetString("db/watched", "4");
    EXPECT_EQ(CVconfUtil::GetString("db/watched"), "4");
    EXPECT_EQ(seen, (std::vector<std::string>{"db/watched", "db/watched"}));
    EXPECT_EQ(sim::Settings::Subscribers("db/watched"), 0u);
}

}  // namespace
}  // namespace ircontrol

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

// Only GetString is called by the plugin; the rest belong to its fixed interface. Each row: one
// call (after a store fault when named), and the value it read or its refusal's text.
TEST(CVconfUtilTest, CallsGiveTheirValueOrTheirRefusal) {
    using Fault = sim::SettingsFault;
    struct Row { const char* name; std::function<std::string()> call; std::string expected; };
    const std::string empty = "vconf url is empty!!!(error:4)", noCallback = "callback is null!!(error:4)";
    const auto inject = [](Fault fault) { sim::Settings::InjectFault(fault, 1); };
    const std::vector<Row> rows = {
        {"string", [] { CVconfUtil::SetString("db/a", "text"); return CVconfUtil::GetString("db/a"); }, "text"},
        {"int", [] { CVconfUtil::SetInt("db/n", -4); return std::to_string(CVconfUtil::GetInt("db/n")); }, "-4"},
        {"get string, no key", [] { return CVconfUtil::GetString(""); }, empty},
        {"get int, no key", [] { return std::to_string(CVconfUtil::GetInt("")); }, empty},
        {"set int, no key", [] { CVconfUtil::SetInt("", 1); return ""; }, empty},
        {"set string, no key", [] { CVconfUtil::SetString("", "v"); return ""; }, empty},
        // The key is checked before the callback.
        {"notify, no key", [] { CVconfUtil::SetNotifyKeyChangedCb("", nullptr, nullptr); return ""; }, empty},
        {"notify, no callback", [] { CVconfUtil::SetNotifyKeyChangedCb("db/k", nullptr, nullptr); return ""; },
         noCallback},
        {"ignore, no callback", [] { CVconfUtil::UnsetNotifyKeyChangedCb("db/k", nullptr); return ""; }, noCallback},
        {"get string, absent", [] { return CVconfUtil::GetString("db/absent"); },
         "vconf get str returned null!(error:8)"},
        {"get int, absent", [] { return std::to_string(CVconfUtil::GetInt("db/absent")); },
         "vconf get int error(error:8)"},
        {"set int, refused", [&] { inject(Fault::SetInt); CVconfUtil::SetInt("db/k", 1); return ""; },
         "vconf set int failed!(error:8)"},
        {"set string, refused", [&] { inject(Fault::SetStr); CVconfUtil::SetString("db/k", "v"); return ""; },
         "vconf set str failed!(error:8)"},
        {"notify, refused",
         [&] { inject(Fault::Notify); CVconfUtil::SetNotifyKeyChangedCb("db/k", &OnChange, nullptr); return ""; },
         "vconf_notify_key_changed error(error:8)"},
        {"ignore, refused",
         [&] { inject(Fault::Ignore); CVconfUtil::UnsetNotifyKeyChangedCb("db/k", &OnChange); return ""; },
         "vconf_ignore_key_changed error(error:8)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        sim::ResetAll();
        try {
            EXPECT_EQ(row.call(), row.expected);
        } catch (const CException& e) {
            EXPECT_EQ(e.what(), row.expected);
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
    EXPECT_EQ(seen, (std::vector<std::string>{"db/watched", "db/watched"}));
    EXPECT_EQ(sim::Settings::Subscribers("db/watched"), 0u);
}

}  // namespace
}  // namespace ircontrol

// Start and stop of the loaded plugin. ctest runs each test in a process of its own; within a
// test, every stop is final for that load of the library (its queue cannot restart).
#include <algorithm>

#include "E2eFixture.h"

namespace irctest {
namespace {

class PluginLifecycleTest : public PluginTest {};

std::size_t LiveServices() { return sim::Host::Services().size(); }

// The lifecycle's lines are what field logs are searched for: error priority, tag IRCONTROL,
// each message exactly as written; the request's own trace is at info priority.
TEST_F(PluginLifecycleTest, LifecycleLinesAreErrorsAndTheRequestTraceIsInfo) {
    sim::SystemInfo::SetYear(23);
    EXPECT_EQ(plugin_->Create(), 1);
    ASSERT_TRUE(AnswerOf(SendFanKey()).has_value());
    plugin_->Destroy();
    struct Case { std::string message; int priority; };
    const std::vector<Case> cases = {
        {"create ircontrol service plugin, year(23)", 6},
        {"Init", 6},
        {"QUEUE[ircontrolQ] thread created", 6},
        {"\033[33minitialized\033[0m", 6},
        {"request_type: 2", 6},
        {"oic_device_type : oic.d.fan", 6},
        {"codeset:HFAN0001, index: 3", 6},
        {"destroy ircontrol service plugin", 6},
        {"Deinit", 6},
        {"DEINIT!", 6},
        {"\033[33mdeinitialized\033[0m", 6},
        {"err: 0, name: setKeyEvent, type: 4, desc: set ir key event", 4},
        {"property_name: setKeyEvent", 4},
        {"codset_name: HFAN0001, codset_key: 10, oic_device_type: oic.d.fan", 4},
        {"[irkt]: codeset: HFAN0001, key: 10, online: 0", 4},
        {"[resp_handler] err: ok, desc: a request has been processed successfully", 4},
        {"err: 0, property: [setKeyEvent] unregistered", 4},
    };
    const auto lines = sim::Log::Lines();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        auto line = std::find_if(lines.begin(), lines.end(), [&](const sim::LogLine& l) {
            const std::size_t at = l.text.find(")  ");
            return at != std::string::npos && l.text.compare(at + 3, std::string::npos, c.message) == 0;
        });
        ASSERT_NE(line, lines.end());
        EXPECT_EQ(line->tag + " " + std::to_string(line->priority), "IRCONTROL " + std::to_string(c.priority));
    }
    EXPECT_THROW(SendFanKey(), std::runtime_error);  // no service takes requests any more
}

// A stop before any start only logs; the year is only logged, so an unreadable one does not
// gate the start.
TEST_F(PluginLifecycleTest, DestroyBeforeCreateOnlyLogsDeinitAndAnUnreadableYearDoesNotGateTheStart) {
    EXPECT_EQ(plugin_->Destroy(), 1);
    EXPECT_FALSE(sim::Log::Contains("DEINIT!"));
    sim::SystemInfo::SetYear(std::nullopt);
    plugin_->Create();
    EXPECT_TRUE(sim::Log::Contains("create ircontrol service plugin, year(-1)"));
    EXPECT_EQ(LiveServices(), 1u);
}

TEST_F(PluginLifecycleTest, SecondStartWithinOneLoadFailsAndRollsBack) {
    plugin_->Create();
    plugin_->Destroy();
    sim::Log::Clear();
    EXPECT_EQ(plugin_->Create(), 1);
    EXPECT_TRUE(sim::Log::Contains("\033[31mfail to init: Thread already finished! Can not do enqueue!!\033[0m"));
    EXPECT_TRUE(sim::Log::Contains("\033[31mneed to retry\033[0m"));
    EXPECT_EQ(LiveServices(), 0u);
    // The rollback left the core stopped, so a further start runs the whole start again.
    sim::Log::Clear();
    plugin_->Create();
    EXPECT_TRUE(sim::Log::Contains("need to retry"));
    EXPECT_FALSE(sim::Log::Contains("already initialized"));
}

TEST_F(PluginLifecycleTest, RefusedServiceCreationIsOnlyLogged) {
    sim::Host::InjectFault(sim::HostFault::ServiceCreate);
    plugin_->Create();
    EXPECT_TRUE(sim::Log::Contains("failed to create service"));
    EXPECT_TRUE(sim::Log::Contains("initialized"));
    EXPECT_FALSE(sim::Log::Contains("need to retry"));
    EXPECT_EQ(LiveServices(), 0u);
    // The stop still unregisters and destroys, with the null handle.
    const auto before = sim::Host::CallsWithBadService();
    plugin_->Destroy();
    EXPECT_GE(sim::Host::CallsWithBadService(), before + 3);
}

TEST_F(PluginLifecycleTest, RefusedRegistrationIsLoggedAndTheStartGoesOn) {
    sim::Host::InjectFault(sim::HostFault::RegisterProperty, 1);
    plugin_->Create();
    EXPECT_EQ(sim::Log::Count("err: 0, name: "), 1u);
    EXPECT_EQ(sim::Log::Count(", type: 4, desc: set ir "), 2u);
    EXPECT_TRUE(AnswerOf(SendFanKey()).has_value());
}

// A second start of a running service, or a second stop, only logs; after an unload a fresh
// load of the library gives a working service again.
TEST_F(PluginLifecycleTest, RepeatedStartsAndStopsOnlyLogAndAFreshLoadWorksAgain) {
    plugin_->Create();
    plugin_->Create();
    EXPECT_EQ(sim::Log::Count("\033[31malready initialized\033[0m"), 1u);
    EXPECT_EQ(LiveServices(), 1u);
    plugin_->Destroy();
    plugin_->Destroy();
    EXPECT_EQ(sim::Log::Count("DEINIT!"), 1u);
    ASSERT_TRUE(plugin_->Unload());
    plugin_ = std::make_unique<PluginLoader>(IRC_PLUGIN_PATH);
    plugin_->Create();
    EXPECT_EQ(AnswerOf(SendFanKey()).value_or(Answer()).first, "ok");
}

}  // namespace
}  // namespace irctest

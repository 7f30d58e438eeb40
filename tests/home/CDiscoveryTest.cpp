#include "CDiscovery.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "JsonValue.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

std::map<std::string, JsonValue> ByTopic(const std::vector<MqttMessage>& messages) {
    std::map<std::string, JsonValue> out;
    for (const auto& m : messages) out.emplace(m.topic, JsonValue::Create(m.payload));
    return out;
}

// The members Home Assistant needs for each component, and the ones every entity here carries.
TEST(HomeDiscovery, EveryConfigCarriesWhatHomeAssistantRequires) {
    HomeConfig config;
    config.clientId = "den";
    const CPlatformSetup setup;
    const auto configs = ByTopic(CDiscovery(config).Configs(setup));
    std::set<std::string> uniqueIds;
    std::size_t buttons = 0, climates = 0;
    for (const auto& [topic, c] : configs) {
        ASSERT_EQ(c.type(), common::json::kObject) << topic;
        for (const char* member : {"name", "unique_id", "device", "availability"}) {
            EXPECT_TRUE(c.isMember(member)) << topic << " lacks " << member;
        }
        EXPECT_TRUE(uniqueIds.insert(c["unique_id"].asString()).second) << "unique_id twice: " << topic;
        EXPECT_EQ(c["availability"][0]["topic"].asString(), "ircontrol/status");
        EXPECT_EQ(c["device"]["identifiers"].size(), 1u);
        // <prefix>/<component>/<node>/<object>/config
        const std::string expected = "/den/" + c["unique_id"].asString().substr(4) + "/config";
        EXPECT_EQ(topic.substr(topic.size() - expected.size()), expected);
        if (topic.rfind("homeassistant/button/", 0) == 0) {
            ++buttons;
            EXPECT_TRUE(c["command_topic"].isString()) << topic;
            EXPECT_TRUE(c["payload_press"].isString()) << topic;
        } else if (topic.rfind("homeassistant/climate/", 0) == 0) {
            ++climates;
            for (const char* member : {"mode_command_topic", "temperature_command_topic", "fan_mode_command_topic",
                                       "mode_state_topic", "modes", "fan_modes", "min_temp", "max_temp"}) {
                EXPECT_TRUE(c.isMember(member)) << topic << " lacks " << member;
            }
        } else {
            ADD_FAILURE() << "unexpected component: " << topic;
        }
    }
    EXPECT_EQ(buttons, 6u * 3 + 3);  // fan, purifier, humidifier: six keys each; cleaner: three
    EXPECT_EQ(climates, 1u);
}

TEST(HomeDiscovery, ButtonsAreNamedFromTheKeyMapAndPressedByThatName) {
    const CPlatformSetup setup;
    const auto configs = ByTopic(CDiscovery(HomeConfig()).Configs(setup));
    const JsonValue& home = configs.at("homeassistant/button/ircontrol/HRBC0004_home/config");
    EXPECT_EQ(home["name"].asString(), "home");
    EXPECT_EQ(home["payload_press"].asString(), "home");
    EXPECT_EQ(home["command_topic"].asString(), "ircontrol/HRBC0004/key");
}

TEST(HomeDiscovery, AKeyTheKeyMapDoesNotNameIsPressedByItsCode) {
    CPlatformSetup setup;
    std::string error;
    ASSERT_TRUE(setup.SetPairing(R"({"dev_info":[{"codeset":"NOMAP1","device_index":1,"type":"oic.d.robotcleaner"}]})",
                                 error));
    const auto configs = ByTopic(CDiscovery(HomeConfig()).Configs(setup));
    ASSERT_EQ(configs.size(), 3u);
    const JsonValue& start = configs.at("homeassistant/button/ircontrol/NOMAP1_key_39/config");
    EXPECT_EQ(start["payload_press"].asString(), "39");
}

TEST(HomeDiscovery, ClimateModelFollowsTheKeyMap) {
    const KeyMap map = KeyMap::Parse(R"({"modes":["cool","heat","fan"],"fan":["low","high","turbo"],"setpoint":[18,28]})");
    const ClimateModel model = CDiscovery::Climate(&map);
    EXPECT_EQ(model.modes, (std::vector<std::string>{"off", "cool", "fan_only", "heat"}));
    EXPECT_EQ(model.fanModes, (std::vector<std::string>{"low", "high"}));  // "turbo" is no word of the service
    EXPECT_EQ(model.minTemp, 18);
    EXPECT_EQ(model.maxTemp, 28);
    const ClimateModel fallback = CDiscovery::Climate(nullptr);
    EXPECT_EQ(fallback.modes.size(), 6u);
    EXPECT_EQ(fallback.fanModes.size(), 4u);
}

TEST(HomeDiscovery, ModesMapBothWays) {
    for (const char* ha : {"auto", "cool", "dry", "fan_only", "heat"}) {
        const auto service = CDiscovery::ServiceMode(ha);
        ASSERT_TRUE(service) << ha;
        EXPECT_EQ(CDiscovery::HaMode(AcState{"ON", *service, 24, "AUTO"}), ha);
    }
    EXPECT_FALSE(CDiscovery::ServiceMode("off"));
    EXPECT_EQ(CDiscovery::HaMode(AcState{"OFF", "HEAT", 24, "AUTO"}), "off");
}

TEST(HomeDiscovery, RemovalsAreEmptyConfigsForWhatIsGone) {
    const std::vector<MqttMessage> before = {{"a/config", "{}"}, {"b/config", "{}"}};
    const std::vector<MqttMessage> after = {{"b/config", "{}"}, {"c/config", "{}"}};
    const auto removals = CDiscovery::Removals(before, after);
    ASSERT_EQ(removals.size(), 1u);
    EXPECT_EQ(removals[0].topic, "a/config");
    EXPECT_TRUE(removals[0].payload.empty());
}

TEST(HomeDiscovery, CodesetsThatCannotBeTopicLevelsAreNotAnnounced) {
    CPlatformSetup setup;
    std::string error;
    ASSERT_TRUE(setup.SetPairing(
        R"({"dev_info":[{"codeset":"A/B","device_index":1,"type":"oic.d.fan"},{"codeset":"C+","device_index":2,"type":"oic.d.fan"}]})",
        error));
    EXPECT_TRUE(CDiscovery(HomeConfig()).Configs(setup).empty());
}

}  // namespace
}  // namespace ircontrol::host

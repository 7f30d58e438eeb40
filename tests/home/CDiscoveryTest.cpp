#include "CDiscovery.h"

#include <gtest/gtest.h>

#include <map>

#include "JsonValue.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

std::map<std::string, JsonValue> ByTopic(const std::vector<MqttMessage>& messages) {
    std::map<std::string, JsonValue> out;
    for (const auto& m : messages) out.emplace(m.topic, JsonValue::Create(m.payload));
    return out;
}

// A key is named from the key map and pressed by that name, else by its code; a codeset that
// cannot be a topic level is not announced.
TEST(HomeDiscovery, ButtonsAreNamedFromTheKeyMapOrTheirCode) {
    CPlatformSetup setup;
    std::string error;
    ASSERT_TRUE(setup.SetPairing(R"({"dev_info":[{"codeset":"HRBC0004","device_index":4,"type":"oic.d.robotcleaner"},
        {"codeset":"NOMAP1","device_index":1,"type":"oic.d.robotcleaner"},{"codeset":"A/B","device_index":2,"type":"oic.d.fan"},
        {"codeset":"C+","device_index":3,"type":"oic.d.fan"}]})", error)) << error;
    const auto configs = ByTopic(CDiscovery(HomeConfig()).Configs(setup));
    EXPECT_EQ(configs.size(), 6u);
    const JsonValue& home = configs.at("homeassistant/button/ircontrol/HRBC0004_home/config");
    EXPECT_EQ(home["name"].asString() + " " + home["payload_press"].asString(), "home home");
    EXPECT_EQ(home["command_topic"].asString(), "ircontrol/HRBC0004/key");
    EXPECT_EQ(configs.at("homeassistant/button/ircontrol/NOMAP1_key_39/config")["payload_press"].asString(), "39");
}

TEST(HomeDiscovery, ClimateModelFollowsTheKeyMapAndModesMapBothWays) {
    const KeyMap map = KeyMap::Parse(R"({"modes":["cool","heat","fan"],"fan":["low","high","turbo"],"setpoint":[18,28]})");
    const ClimateModel model = CDiscovery::Climate(&map);
    EXPECT_EQ(model.modes, (std::vector<std::string>{"off", "cool", "fan_only", "heat"}));
    EXPECT_EQ(model.fanModes, (std::vector<std::string>{"low", "high"}));  // "turbo" is no word of the service
    EXPECT_EQ(std::make_pair(model.minTemp, model.maxTemp), std::make_pair(18, 28));
    const ClimateModel fallback = CDiscovery::Climate(nullptr);
    EXPECT_EQ(std::make_pair(fallback.modes.size(), fallback.fanModes.size()), std::make_pair(std::size_t{6}, std::size_t{4}));
    for (const char* ha : {"auto", "cool", "dry", "fan_only", "heat"}) {
        const auto service = CDiscovery::ServiceMode(ha);
        ASSERT_TRUE(service) << ha;
        EXPECT_EQ(CDiscovery::HaMode(AcState{"ON", *service, 24, "AUTO"}), ha);
    }
    EXPECT_FALSE(CDiscovery::ServiceMode("off"));
    EXPECT_EQ(CDiscovery::HaMode(AcState{"OFF", "HEAT", 24, "AUTO"}), "off");
}

}  // namespace
}  // namespace ircontrol::host

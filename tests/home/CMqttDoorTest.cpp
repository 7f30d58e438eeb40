#include "CMqttDoor.h"

#include <gtest/gtest.h>

#include <deque>

#include "../host/LoadedPluginTest.h"
#include "CFakeMqttClient.h"
#include "JsonValue.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

// The door over a fake client and the real plugin, told of answered states by the session as the
// service wires it; jobs run when the test says (RunJobs), or are refused when `full_` is set.
class MqttDoor : public LoadedPluginTest {
protected:
    void SetUp() override {
        LoadedPluginTest::SetUp();
        const auto post = [this](std::function<void()> job) { return !full_ && (jobs_.push_back(std::move(job)), true); };
        door_ = std::make_unique<CMqttDoor>(config_, client_, post, session_, setup_, nullptr, [](const std::string&) {});
        session_.SetAcStateListener([this](const std::string& codeset, const AcState& s) { door_->AcStateAnswered(codeset, s); });
        door_->Attach();
        client_.Connect();
        RunJobs();
    }
    void RunJobs() {
        for (; !jobs_.empty(); jobs_.pop_front()) jobs_.front()();
    }
    // Delivers a command; what was published since, the result first when `result` is given.
    std::vector<Published> Command(const std::string& topic, const std::string& payload, JsonValue* result = nullptr) {
        client_.Take();
        client_.Deliver(topic, payload);
        RunJobs();
        std::vector<Published> published = client_.Take();
        for (const Published& p : published) {
            if (result != nullptr && p.topic == "ircontrol/result") *result = JsonValue::Create(p.payload);
        }
        return published;
    }
    std::map<std::string, std::string> Retained(const std::vector<Published>& published) {
        std::map<std::string, std::string> out;
        for (const Published& p : published) {
            if (p.retain) out[p.topic] = p.payload;
        }
        return out;
    }

    HomeConfig config_;
    CFakeMqttClient client_;
    CSession session_{2000};
    std::deque<std::function<void()>> jobs_;
    bool full_ = false;
    std::unique_ptr<CMqttDoor> door_;
};

TEST_F(MqttDoor, ConnectingAnnouncesOnlineFirstThenEveryEntity) {
    const auto published = client_.Take();  // SetUp's connection
    ASSERT_FALSE(published.empty());
    EXPECT_EQ(published.front().topic + " " + published.front().payload, "ircontrol/status online");
    EXPECT_EQ(Retained(published).size(), published.size());
    EXPECT_EQ(published.size(), 1 + CDiscovery(config_).Configs(setup_).size());
}

// By key-map name, by code, or as a serve line: the same request, answered on the result topic.
TEST_F(MqttDoor, KeysAndRawLinesAreSentAsTheWebRemoteSendsThem) {
    const std::tuple<const char*, const char*, int> cases[] = {
        {"ircontrol/HFAN0001/key", "power", 10}, {"ircontrol/HFAN0001/key", " 10\n", 10},
        {"ircontrol/raw", R"({"command":"key","type":"cleaner","key":"home","id":"r1"})", 28}};
    for (const auto& [topic, payload, key] : cases) {
        JsonValue result;
        Command(topic, payload, &result);
        EXPECT_EQ(result["errorCode"].asString() + " " + result["topic"].asString(), std::string("ok ") + topic);
        ASSERT_EQ(result["ir"].size(), 1u) << payload;
        EXPECT_EQ(result["ir"][0]["key"].asInt(), key);
    }
}

// Each climate command changes its field of the last state; the state answered, whichever door
// sent it (a raw set property here), is what the retained state topics show.
TEST_F(MqttDoor, ClimateCommandsChangeOnlyTheirFieldAndEveryAnsweredStateIsPublished) {
    const std::string raw = R"({"command":"set","value":{"x.com.korvan.deviceType":"oic.d.airconditioner",
        "x.com.korvan.codesetName":"ZAC00005","x.com.korvan.codesetKey":0,"x.com.korvan.acState":{
        "x.com.korvan.power":"ON","x.com.korvan.mode":"DEHUMI","x.com.korvan.coolingSetpoint":27,"x.com.korvan.fanSpeed":"LOW"}}})";
    const std::tuple<std::string, std::string, std::string, std::string, std::string> steps[] = {
        {"mode/set", "heat", "heat", "24", "auto"}, {"temperature/set", "21.0", "heat", "21", "auto"},
        {"fan_mode/set", "high", "heat", "21", "high"}, {"mode/set", "off", "off", "21", "high"},
        {"raw", raw, "dry", "27", "low"}, {"mode/set", "cool", "cool", "27", "low"}};
    for (const auto& [topic, payload, mode, temperature, fan] : steps) {
        const std::string full = topic == "raw" ? "ircontrol/raw" : "ircontrol/ZAC00005/" + topic;
        JsonValue result;
        const auto states = Retained(Command(full, payload, &result));
        EXPECT_EQ(result["errorCode"].asString(), "ok") << payload;
        EXPECT_EQ(states, (std::map<std::string, std::string>{{"ircontrol/ZAC00005/mode/state", mode},
                                                              {"ircontrol/ZAC00005/temperature/state", temperature},
                                                              {"ircontrol/ZAC00005/fan_mode/state", fan}}))
            << payload;
    }
}

// Bad payloads get an error on the result topic and nothing else: no request, no state.
TEST_F(MqttDoor, BadPayloadsAreAnsweredWithAnErrorOnly) {
    const std::pair<std::string, std::string> cases[] = {
        {"HFAN0001/key", "warp"}, {"HFAN0001/key", ""}, {"NOPE/key", "power"}, {"HFAN0001/mode/set", "cool"},
        {"ZAC00005/mode/set", "turbo"}, {"ZAC00005/temperature/set", "21.5"}, {"ZAC00005/temperature/set", "nan"},
        {"ZAC00005/fan_mode/set", "\xff\xfe"}, {"ZAC00005/swing/set", "on"}, {"raw", "{not json"},
        {"devices/set", "{\"dev_info\":5}"}, {"HFAN0001/key", std::string(CMqttDoor::kMaxPayload + 1, 'a')}};
    const uint64_t before = sim::IrBlaster::Journal().size();
    for (const auto& [level, payload] : cases) {
        const std::string topic = "ircontrol/" + level;
        JsonValue result;
        EXPECT_EQ(Command(topic, payload, &result).size(), 1u) << topic;
        EXPECT_EQ(result["outcome"].asString() + " " + result["topic"].asString(), "error " + topic);
        EXPECT_FALSE(result["reason"].asString().empty()) << topic;
    }
    EXPECT_EQ(sim::IrBlaster::Journal().size(), before);
    EXPECT_EQ(setup_.Devices().size(), 5u);
    full_ = true;
    JsonValue refused;
    Command("ircontrol/HFAN0001/key", "power", &refused);
    EXPECT_EQ(refused["reason"].asString(), "too many requests queued; try again");
}

TEST_F(MqttDoor, APairingEditRemovesTheEntitiesOfAppliancesNoLongerPaired) {
    const auto published = Retained(Command(
        "ircontrol/devices/set", R"({"dev_info":[{"codeset":"HRBC0004","device_index":4,"type":"oic.d.robotcleaner"}]})"));
    std::size_t removed = 0, kept = 0;
    for (const auto& [topic, payload] : published) {
        if (topic.rfind("homeassistant/", 0) != 0) continue;
        EXPECT_EQ(payload.empty(), topic.find("HRBC0004") == std::string::npos) << topic;
        (payload.empty() ? removed : kept)++;
    }
    EXPECT_EQ(std::make_pair(kept, removed), std::make_pair(std::size_t{3}, std::size_t{6 * 3 + 1}));
}

// What could not be published goes on the next connection; new topics take back what the old ones
// held retained (all of it on a broker left behind), and the next connection publishes under them.
TEST_F(MqttDoor, ANewConnectionPublishesWhatWasMissedAndNewTopicsTakeBackTheOld) {
    client_.Drop();
    EXPECT_TRUE(Command("ircontrol/ZAC00005/mode/set", "heat").empty());
    client_.Connect();
    RunJobs();
    EXPECT_EQ(Retained(client_.Take()).at("ircontrol/ZAC00005/mode/state"), "heat");
    HomeConfig next = config_;
    next.baseTopic = "home2";
    for (const bool sameBroker : {true, false}) {
        door_->Retract(next, sameBroker);
        const auto taken = Retained(client_.Take());
        EXPECT_EQ(taken.count("ircontrol/status") + taken.count("ircontrol/ZAC00005/mode/state"), 2u);
        EXPECT_EQ(taken.size(), sameBroker ? 4u : 4u + CDiscovery(config_).Configs(setup_).size());
        for (const auto& [topic, payload] : taken) EXPECT_EQ(payload, "") << topic;
    }
    door_->Reconfigure(next);
    client_.Connect();
    RunJobs();
    EXPECT_EQ(Retained(client_.Take()).at("home2/ZAC00005/mode/state"), "heat");
}

}  // namespace
}  // namespace ircontrol::host

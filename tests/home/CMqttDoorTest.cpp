#include "CMqttDoor.h"

#include <gtest/gtest.h>

#include <deque>

#include "../host/LoadedPluginTest.h"
#include "CFakeMqttClient.h"
#include "JsonValue.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

// The door over a fake client and the real plugin; jobs run when the test says (RunJobs), as the
// worker would run them, or are refused when `full_` is set.
class MqttDoor : public LoadedPluginTest {
protected:
    void SetUp() override {
        LoadedPluginTest::SetUp();
        door_ = std::make_unique<CMqttDoor>(
            config_, client_,
            [this](std::function<void()> job) {
                if (full_) return false;
                jobs_.push_back(std::move(job));
                return true;
            },
            session_, setup_, nullptr, [this](const std::string& line) { logged_.push_back(line); });
        door_->Attach();
        client_.Connect();
        RunJobs();
        client_.Take();
    }
    void RunJobs() {
        while (!jobs_.empty()) {
            auto job = std::move(jobs_.front());
            jobs_.pop_front();
            job();
        }
    }
    // The result messages published since the last call, parsed.
    std::vector<JsonValue> Results() {
        std::vector<JsonValue> results;
        for (const Published& p : client_.Take()) {
            if (p.topic == "ircontrol/result") results.push_back(JsonValue::Create(p.payload));
        }
        return results;
    }
    JsonValue Command(const std::string& topic, const std::string& payload) {
        client_.Deliver(topic, payload);
        RunJobs();
        auto results = Results();
        EXPECT_EQ(results.size(), 1u) << topic;
        return results.empty() ? JsonValue() : results.front();
    }

    HomeConfig config_;
    CFakeMqttClient client_;
    CSession session_{2000};
    std::deque<std::function<void()>> jobs_;
    bool full_ = false;
    std::vector<std::string> logged_;
    std::unique_ptr<CMqttDoor> door_;
};

TEST_F(MqttDoor, ConnectingSubscribesAndAnnouncesOnlineAndEveryEntity) {
    EXPECT_EQ(client_.Subscriptions(),
              (std::vector<std::string>{"ircontrol/+/key", "ircontrol/+/+/set", "ircontrol/raw", "ircontrol/devices/set"}));
    client_.Connect();
    RunJobs();
    const auto published = client_.Take();
    ASSERT_FALSE(published.empty());
    EXPECT_EQ(published.front().topic, "ircontrol/status");
    EXPECT_EQ(published.front().payload, "online");
    std::size_t configs = 0;
    for (const auto& p : published) {
        EXPECT_TRUE(p.retain) << p.topic;
        if (p.topic.rfind("homeassistant/", 0) == 0) ++configs;
    }
    EXPECT_EQ(configs, CDiscovery(config_).Configs(setup_).size());
}

TEST_F(MqttDoor, AKeyByNameOrCodeIsSentAsTheWebRemoteSendsIt) {
    for (const char* key : {"power", "10", " power\n"}) {
        const JsonValue result = Command("ircontrol/HFAN0001/key", key);
        EXPECT_EQ(result["errorCode"].asString(), "ok") << key;
        EXPECT_EQ(result["topic"].asString(), "ircontrol/HFAN0001/key");
        EXPECT_EQ(result["payload"]["x.com.korvan.codesetKey"].asInt(), 10);
        EXPECT_EQ(result["payload"]["x.com.korvan.deviceType"].asString(), "oic.d.fan");
        ASSERT_EQ(result["ir"].size(), 1u);
        EXPECT_EQ(result["ir"][0]["key"].asInt(), 10);
    }
}

TEST_F(MqttDoor, ClimateCommandsChangeOnlyTheirFieldAndPublishTheNewState) {
    struct Step {
        const char* field;
        const char* payload;
        const char* power;
        const char* mode;
        int setpoint;
        const char* fan;
    };
    const Step steps[] = {
        {"mode", "heat", "ON", "HEAT", 24, "AUTO"},       {"temperature", "21.0", "ON", "HEAT", 21, "AUTO"},
        {"fan_mode", "high", "ON", "HEAT", 21, "HIGH"},   {"mode", "off", "OFF", "HEAT", 21, "HIGH"},
        {"mode", "cool", "ON", "COLD", 21, "HIGH"},
    };
    for (const Step& s : steps) {
        client_.Deliver(std::string("ircontrol/ZAC00005/") + s.field + "/set", s.payload);
        RunJobs();
        const auto published = client_.Take();
        ASSERT_FALSE(published.empty()) << s.payload;
        const JsonValue result = JsonValue::Create(published.front().payload);
        EXPECT_EQ(result["errorCode"].asString(), "ok") << s.payload;
        const JsonValue& ac = result["payload"]["x.com.korvan.acState"];
        EXPECT_EQ(ac["x.com.korvan.power"].asString(), s.power) << s.payload;
        EXPECT_EQ(ac["x.com.korvan.mode"].asString(), s.mode) << s.payload;
        EXPECT_EQ(ac["x.com.korvan.coolingSetpoint"].asInt(), s.setpoint) << s.payload;
        EXPECT_EQ(ac["x.com.korvan.fanSpeed"].asString(), s.fan) << s.payload;
        ASSERT_EQ(published.size(), 4u);  // the result and three retained states
        EXPECT_EQ(published[1].payload, CDiscovery::HaMode(AcState{s.power, s.mode, s.setpoint, s.fan}));
        EXPECT_EQ(published[2].payload, std::to_string(s.setpoint));
    }
}

// Bad payloads get an error on the result topic and nothing else: no request, no state.
TEST_F(MqttDoor, BadPayloadsAreAnsweredWithAnErrorOnly) {
    struct Case {
        const char* topic;
        std::string payload;
        const char* reason;
    };
    const Case cases[] = {
        {"ircontrol/HFAN0001/key", "warp", "warp"},
        {"ircontrol/HFAN0001/key", "", "key"},
        {"ircontrol/NOPE/key", "power", "no paired appliance uses codeset NOPE"},
        {"ircontrol/HFAN0001/mode/set", "cool", "no paired air conditioner"},
        {"ircontrol/ZAC00005/mode/set", "turbo", "is not one of this air conditioner's modes"},
        {"ircontrol/ZAC00005/temperature/set", "21.5", "needs a whole number from 16 to 31"},
        {"ircontrol/ZAC00005/temperature/set", "99", "needs a whole number"},
        {"ircontrol/ZAC00005/temperature/set", "nan", "needs a whole number"},
        {"ircontrol/ZAC00005/fan_mode/set", std::string("\xff\xfe", 2), "fan modes"},
        {"ircontrol/ZAC00005/swing/set", "on", "not one of the service's topics"},
        {"ircontrol/raw", "{not json", ""},
        {"ircontrol/raw", "{\"command\":\"key\",\"type\":\"fan\",\"key\":[1]}", "key"},
        {"ircontrol/devices/set", "{\"dev_info\":5}", "dev_info"},
        {"ircontrol/HFAN0001/key", std::string(CMqttDoor::kMaxPayload + 1, 'a'), "at most 65536"},
    };
    const uint64_t before = sim::IrBlaster::Journal().size();
    for (const Case& c : cases) {
        const JsonValue result = Command(c.topic, c.payload);
        EXPECT_EQ(result["outcome"].asString(), "error") << c.topic;
        EXPECT_NE(result["reason"].asString().find(c.reason), std::string::npos) << result["reason"].asString();
        EXPECT_EQ(result["topic"].asString(), c.topic);
    }
    EXPECT_EQ(sim::IrBlaster::Journal().size(), before);
    EXPECT_EQ(setup_.Devices().size(), 5u);
}

TEST_F(MqttDoor, AFullWorkerRefusesAtOnce) {
    full_ = true;
    client_.Deliver("ircontrol/HFAN0001/key", "power");
    const auto results = Results();
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results[0]["reason"].asString(), "too many requests queued; try again");
}

TEST_F(MqttDoor, RawLinesAreServeLines) {
    const JsonValue result = Command("ircontrol/raw", R"({"command":"key","type":"cleaner","key":"home","id":"r1"})");
    EXPECT_EQ(result["errorCode"].asString(), "ok");
    EXPECT_EQ(result["id"].asString(), "r1");
    EXPECT_EQ(result["ir"][0]["key"].asInt(), 28);
}

TEST_F(MqttDoor, APairingEditRemovesTheEntitiesOfAppliancesNoLongerPaired) {
    client_.Deliver("ircontrol/devices/set",
                    R"({"dev_info":[{"codeset":"HRBC0004","device_index":4,"type":"oic.d.robotcleaner"}]})");
    RunJobs();
    std::size_t removed = 0, kept = 0;
    for (const Published& p : client_.Take()) {
        if (p.topic.rfind("homeassistant/", 0) != 0) continue;
        const bool cleaner = p.topic.find("HRBC0004") != std::string::npos;
        EXPECT_EQ(p.payload.empty(), !cleaner) << p.topic;
        (p.payload.empty() ? removed : kept)++;
    }
    EXPECT_EQ(kept, 3u);  // power, home, start
    EXPECT_EQ(removed, 6u * 3 + 1);  // three appliances of six keys and the air conditioner
    EXPECT_EQ(Command("ircontrol/HFAN0001/key", "power")["outcome"].asString(), "error");
}

TEST_F(MqttDoor, WhatCouldNotBePublishedIsPublishedOnTheNextConnection) {
    client_.Drop();
    client_.Deliver("ircontrol/ZAC00005/mode/set", "heat");
    RunJobs();
    EXPECT_TRUE(client_.Take().empty());
    client_.Connect();
    RunJobs();
    bool state = false;
    for (const Published& p : client_.Take()) state = state || (p.topic == "ircontrol/ZAC00005/mode/state" && p.payload == "heat");
    EXPECT_TRUE(state);
}

}  // namespace
}  // namespace ircontrol::host

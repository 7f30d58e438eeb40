// The whole road of a request through the loaded plugin: host callback, queue, IR control,
// IR blaster, answer list.
#include <atomic>
#include <map>
#include <thread>

#include "E2eFixture.h"

namespace irctest {
namespace {

using sim::HostProperty;
using Answer = std::pair<std::string, std::string>;

const Answer kOk{"ok", "a request has been processed successfully"};
const Answer kKeyError{"key_error", "a ir key event request got error"};

class PluginRequestTest : public PluginTest {
protected:
    void SetUp() override {
        PluginTest::SetUp();
        plugin_->Create();
        ASSERT_TRUE(sim::Host::FindService(kService).has_value());
    }
};

TEST_F(PluginRequestTest, RegistersBothPropertiesAsJson) {
    auto service = sim::Host::FindService(kService);
    EXPECT_EQ(service->description, "ir control service plugin");
    std::map<std::string, sim::RegisteredProperty> byName;
    for (const auto& p : service->properties) byName.emplace(p.name, p);
    ASSERT_EQ(byName.size(), 2u);
    EXPECT_EQ(byName.at("setKeyEvent").description, "set ir key event");
    EXPECT_EQ(byName.at("setDeviceEvent").description, "set ir device event");
    for (const auto& [name, p] : byName) {
        EXPECT_EQ(p.type, 4) << name;
        EXPECT_EQ(p.first, 0) << name;
        EXPECT_EQ(p.second, 0) << name;
    }
}

TEST_F(PluginRequestTest, FanKeyIsTransmittedAndAnsweredOk) {
    auto tx = SendKey(KeyPayload("oic.d.fan", "HFAN0001", 12));
    EXPECT_EQ(AnswerOf(tx), kOk);
    auto journal = sim::IrBlaster::Journal();
    std::vector<sim::IrCall> sends;
    for (const auto& call : journal) {
        if (call.function == sim::IrCall::Function::SendH) sends.push_back(call);
    }
    ASSERT_EQ(sends.size(), 1u);
    EXPECT_EQ(sends[0].key, 12);
    EXPECT_EQ(sends[0].deviceIndex, 3);
    EXPECT_FALSE(sends[0].online);
}

TEST_F(PluginRequestTest, AirConditionerStateIsTranslatedAndSent) {
    auto tx = sim::Host::SendSet(
        kService, {HostProperty::Json("setKeyEvent", AcPayload("ZAC00005", "ON", "COLD", 24, "AUTO"))});
    EXPECT_EQ(AnswerOf(tx), kOk);
    bool found = false;
    for (const auto& call : sim::IrBlaster::Journal()) {
        if (call.function != sim::IrCall::Function::Aircon) continue;
        found = true;
        EXPECT_EQ(call.deviceIndex, 7);
        EXPECT_EQ(call.mode, "cool");
        EXPECT_EQ(call.power, "on");
        EXPECT_EQ(call.coolingSetpoint, "24");
        EXPECT_EQ(call.fanSpeed, "auto");
    }
    EXPECT_TRUE(found);
}

TEST_F(PluginRequestTest, RefusedKeyEventsAnswerKeyError) {
    const std::vector<std::string> payloads = {
        KeyPayload("oic.d.fan", "HFAN0001", 39),             // not in the fan's keys
        KeyPayload("oic.d.television", "HFAN0001", 10),      // unknown device type
        KeyPayload("oic.d.fan", "NOTPAIRED", 10),            // codeset not paired
        AcPayload("ZAC00005", "ON", "cool", 24, "LOW"),      // mode word in the wrong case
        "not json at all",
        "",
    };
    for (const auto& payload : payloads) {
        EXPECT_EQ(AnswerOf(SendKey(payload)), kKeyError) << payload;
    }
}

TEST_F(PluginRequestTest, DeviceEventIsAnsweredOkWhateverItsText) {
    for (const std::string text : {"{}", "", "[1,2", "{\"anything\":true}"}) {
        auto tx = sim::Host::SendSet(kService, {HostProperty::Json("setDeviceEvent", text)});
        EXPECT_EQ(AnswerOf(tx), kOk) << text;
    }
}

// Requests that get no answer are checked by sending an answered request behind them: the
// queue is first-in first-out, so once that one is answered the earlier ones never will be.
TEST_F(PluginRequestTest, UnknownNamesAndPayloadsWithoutDeviceTypeGetNoAnswer) {
    auto unknown = sim::Host::SendSet(kService, {HostProperty::Json("SetKeyEvent", "{}")});
    auto noType = SendKey(R"({"x.com.korvan.codesetName":"HFAN0001","x.com.korvan.codesetKey":10})");
    auto last = SendKey(KeyPayload("oic.d.fan", "HFAN0001", 10));
    EXPECT_EQ(AnswerOf(last), kOk);
    EXPECT_TRUE(sim::Host::ResultsFor(unknown).empty());
    EXPECT_TRUE(sim::Host::ResultsFor(noType).empty());
    EXPECT_TRUE(sim::Log::Contains("SetKeyEvent not found in map", "IRCONTROL"));
    EXPECT_TRUE(sim::Log::Contains("there is no deviceType obj. wrong data", "IRCONTROL"));
}

TEST_F(PluginRequestTest, OneListWithBothNamesIsAnsweredByEachHandlerInListOrder) {
    auto tx = sim::Host::SendSet(
        kService, {HostProperty::Json("setDeviceEvent", "{}"), HostProperty::String("volume", "3"),
                   HostProperty::Json("setKeyEvent", KeyPayload("oic.d.fan", "HFAN0001", 99))});
    auto last = SendKey(KeyPayload("oic.d.fan", "HFAN0001", 10));
    ASSERT_TRUE(AnswerOf(last).has_value());
    auto results = sim::Host::ResultsFor(tx);
    ASSERT_EQ(results.size(), 2u);
    EXPECT_EQ(results[0].properties.at(0).text, "ok");         // the device event
    EXPECT_EQ(results[1].properties.at(0).text, "key_error");  // key 99 is refused
    EXPECT_TRUE(sim::Log::Contains("volume not found in map"));
}

TEST_F(PluginRequestTest, GetCancelAndProtocolStatusSendNothing) {
    sim::Host::SendGet(kService, {HostProperty::Json("setKeyEvent", "{}")});
    sim::Host::SendCancel(kService);
    sim::Host::SendProtocolStatus(kService, "ocf", 1);
    auto last = SendKey(KeyPayload("oic.d.fan", "HFAN0001", 10));
    ASSERT_TRUE(AnswerOf(last).has_value());
    EXPECT_EQ(sim::Host::Results().size(), 1u);
}

TEST_F(PluginRequestTest, RequestsThatCannotBeTakenInAreDroppedWithoutUnwinding) {
    auto unnamed = sim::Host::SendSet(kService, {HostProperty::Json("", "{}")});
    EXPECT_TRUE(sim::Log::Contains("invalid property name!"));
    sim::Host::InjectFault(sim::HostFault::ListCopy);
    auto uncopied = SendKey(KeyPayload("oic.d.fan", "HFAN0001", 10));
    EXPECT_TRUE(sim::Log::Contains("failed to copy list"));
    auto last = SendKey(KeyPayload("oic.d.fan", "HFAN0001", 10));
    EXPECT_EQ(AnswerOf(last), kOk);
    EXPECT_TRUE(sim::Host::ResultsFor(unnamed).empty());
    EXPECT_TRUE(sim::Host::ResultsFor(uncopied).empty());
}

TEST_F(PluginRequestTest, ConcurrentHostThreadsAreAnsweredOnceEachInArrivalOrder) {
    constexpr int kThreads = 4;
    constexpr int kPerThread = 25;
    const int keys[] = {10, 11, 12, 76, 14, 13};
    std::string pairing = R"({"dev_info":[)";
    for (int t = 0; t < kThreads; ++t) {
        pairing += (t ? "," : "") + std::string(R"({"codeset":"HCONC)") + std::to_string(t) +
                   R"(","device_index":)" + std::to_string(100 + t) + "}";
    }
    sim::Settings::SetString(kDevicesKey, pairing + "]}");

    std::vector<std::vector<uint64_t>> sent(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kPerThread; ++i) {
                sent[t].push_back(
                    SendKey(KeyPayload("oic.d.fan", "HCONC" + std::to_string(t), keys[i % 6])));
            }
        });
    }
    for (auto& thread : threads) thread.join();

    for (const auto& txs : sent) {
        for (auto tx : txs) ASSERT_EQ(AnswerOf(tx), kOk);
    }
    // Each transaction exactly once, and each thread's answers in the order it sent.
    std::map<uint64_t, std::size_t> position;
    auto results = sim::Host::Results();
    for (std::size_t i = 0; i < results.size(); ++i) {
        EXPECT_TRUE(position.emplace(results[i].transaction, i).second) << "answered twice";
    }
    EXPECT_EQ(results.size(), static_cast<std::size_t>(kThreads * kPerThread));
    for (const auto& txs : sent) {
        for (std::size_t i = 1; i < txs.size(); ++i) {
            EXPECT_LT(position.at(txs[i - 1]), position.at(txs[i]));
        }
    }
    // The blaster saw each thread's keys in the order that thread sent them.
    std::vector<std::vector<int>> transmitted(kThreads);
    for (const auto& call : sim::IrBlaster::Journal()) {
        if (call.function == sim::IrCall::Function::SendH) {
            transmitted.at(static_cast<std::size_t>(call.deviceIndex - 100)).push_back(call.key);
        }
    }
    for (int t = 0; t < kThreads; ++t) {
        ASSERT_EQ(transmitted[t].size(), static_cast<std::size_t>(kPerThread));
        for (int i = 0; i < kPerThread; ++i) EXPECT_EQ(transmitted[t][i], keys[i % 6]);
    }
}

}  // namespace
}  // namespace irctest

// The whole road of a request through the loaded plugin: host callback, queue, IR control,
// IR blaster, answer list.
#include <map>
#include <thread>

#include "E2eFixture.h"

namespace irctest {
namespace {

using sim::HostProperty;

const Answer kOk{"ok", "a request has been processed successfully"};

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
    std::map<std::string, std::string> registered;
    for (const auto& p : service->properties) {
        registered[p.name] = p.description + " " + std::to_string(p.type) + std::to_string(p.first) +
                             std::to_string(p.second);
    }
    EXPECT_EQ(registered, (std::map<std::string, std::string>{{"setKeyEvent", "set ir key event 400"},
                                                              {"setDeviceEvent", "set ir device event 400"}}));
}

// Requests that get no answer are checked by sending an answered request behind them: the
// queue is first-in first-out, so once that one is answered the earlier ones never will be.
TEST_F(PluginRequestTest, OneListWithBothNamesIsAnsweredByEachHandlerInListOrderAndOthersNever) {
    auto tx = sim::Host::SendSet(
        kService, {HostProperty::Json("setDeviceEvent", "{}"), HostProperty::String("volume", "3"),
                   HostProperty::Json("setKeyEvent", KeyPayload("oic.d.fan", "HFAN0001", "99")),
                   HostProperty::Json("setDeviceEvent", "{}")});
    auto unknown = sim::Host::SendSet(kService, {HostProperty::Json("SetKeyEvent", "{}")});
    ASSERT_EQ(AnswerOf(SendFanKey()), kOk);
    auto results = sim::Host::ResultsFor(tx);
    ASSERT_EQ(results.size(), 3u);  // a name given twice is handled twice
    EXPECT_EQ(results[0].properties.at(0).text + results[1].properties.at(0).text + results[2].properties.at(0).text,
              "okkey_errorok");  // 99 refused
    EXPECT_EQ(JournalText(), "map H HFAN0001; map H HFAN0001; H 10 @3");  // the refused key never reached it
    EXPECT_TRUE(sim::Host::ResultsFor(unknown).empty());
    EXPECT_TRUE(sim::Log::Contains("volume not found in map"));
}

// Gets, cancels and protocol news are not answered; a list without names or one the plugin
// cannot copy is dropped with a log line and never unwinds into the host.
TEST_F(PluginRequestTest, OtherCallsAndRequestsThatCannotBeTakenInGetNoAnswer) {
    sim::Host::SendGet(kService, {HostProperty::Json("setKeyEvent", "{}")});
    sim::Host::SendCancel(kService);
    sim::Host::SendProtocolStatus(kService, "ocf", 1);
    sim::Host::SendSet(kService, {HostProperty::Json("", "{}")});
    sim::Host::InjectFault(sim::HostFault::ListCopy);
    SendFanKey();
    ASSERT_EQ(AnswerOf(SendFanKey()), kOk);
    EXPECT_EQ(sim::Host::Results().size(), 1u);
    EXPECT_TRUE(sim::Log::Contains("invalid property name!"));
    EXPECT_TRUE(sim::Log::Contains("failed to copy list"));
}

// Host threads call in at once (the only test that sends requests from several threads, run
// under ThreadSanitizer): each request is answered once, each thread's in the order it sent.
TEST_F(PluginRequestTest, ConcurrentHostThreadsAreAnsweredOnceEachInArrivalOrder) {
    sim::IrBlaster::SetTransmitDelay(std::chrono::milliseconds(1));  // so requests wait in the queue
    std::vector<std::vector<uint64_t>> sent(4);
    std::vector<std::thread> threads;
    for (auto& txs : sent) {
        threads.emplace_back([&txs] {
            for (int i = 0; i < 20; ++i) txs.push_back(SendFanKey(10 + i % 5));
        });
    }
    for (auto& thread : threads) thread.join();
    std::map<uint64_t, std::size_t> position;
    for (const auto& txs : sent) {
        for (const auto tx : txs) ASSERT_EQ(AnswerOf(tx), kOk);
    }
    const auto results = sim::Host::Results();
    for (std::size_t i = 0; i < results.size(); ++i) {
        EXPECT_TRUE(position.emplace(results[i].transaction, i).second) << "answered twice";
    }
    for (const auto& txs : sent) {
        for (std::size_t i = 1; i < txs.size(); ++i) EXPECT_LT(position.at(txs[i - 1]), position.at(txs[i]));
    }
}

}  // namespace
}  // namespace irctest

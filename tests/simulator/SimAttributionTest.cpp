// The simulator ties what a plugin thread does (IR calls, log lines) to the host request that
// thread is serving, so a tool can show each transmission under the request whose job made it.
// The plugin is loaded as the host loads it: its queue's worker serves the requests.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "Payloads.h"
#include "PlatformState.h"
#include "PluginLoader.h"
#include "sim/Simulator.h"

namespace {

// The lines a transaction's thread logged, each without its "<file> : <function>(<line>)  ".
std::vector<std::string> Messages(uint64_t transaction) {
    std::vector<std::string> out;
    for (const auto& line : sim::Log::LinesFor(transaction)) out.push_back(line.text.substr(line.text.find(") ") + 1));
    return out;
}

// Keys 10, 12 and 13 are answered; the request without a device type between them never is, so
// its worker goes on serving it until it reads the next request's list.
TEST(SimAttributionTest, EachTransmissionAndLogLineCarriesTheRequestItsWorkerThreadServed) {
    irctest::ResetWithPairing(R"({"dev_info":[{"codeset":"HFAN","device_index":3}]})");
    irctest::PluginLoader plugin(IRC_PLUGIN_PATH);
    plugin.Create();
    // The blaster holds the worker, so later requests wait in the queue behind the first.
    sim::IrBlaster::SetTransmitDelay(std::chrono::milliseconds(50));
    const std::vector<std::string> keys = {"10", "12", "", "13"};
    std::vector<uint64_t> sent;
    const auto before = std::chrono::steady_clock::now();
    for (const auto& key : keys) {
        const std::string text = key.empty() ? "{}" : irctest::KeyPayload("oic.d.fan", "HFAN", key);
        sent.push_back(sim::Host::SendSet("ircontrol", {sim::HostProperty::Json("setKeyEvent", text)}));
    }
    EXPECT_EQ(sim::Host::ServingTransaction(), 0u) << "the sending thread serves nothing after the callback";
    const auto result = sim::Host::WaitResult(sent.back(), std::chrono::seconds(10));
    ASSERT_TRUE(result.has_value());
    EXPECT_GE(result->time, before);  // answers carry their arrival time
    EXPECT_LE(result->time, std::chrono::steady_clock::now());
    plugin.Destroy();
    EXPECT_TRUE(plugin.Unload());  // joins the worker: every line is in

    for (std::size_t i = 0; i < sent.size(); ++i) {
        SCOPED_TRACE(keys[i]);
        const auto calls = sim::IrBlaster::JournalFor(sent[i]);
        const auto lines = Messages(sent[i]);
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.front(), " > Entered\n") << "the host's callback, on the sending thread";
        if (keys[i].empty()) {
            EXPECT_TRUE(calls.empty());
            EXPECT_EQ(std::vector<std::string>(lines.end() - 2, lines.end()),
                      (std::vector<std::string>{"  HandleKeyEvent", " > Entered\n"}));  // the next job's start
            continue;
        }
        ASSERT_EQ(calls.size(), 2u);  // the key map, then the key
        EXPECT_EQ(calls[1].key, std::stoi(keys[i]));
        EXPECT_EQ(calls[1].transaction, sent[i]);
        EXPECT_EQ(calls[1].onAirEnd - calls[1].time, std::chrono::milliseconds(50));
        EXPECT_EQ(lines.back(), "  [resp_handler] err: ok, desc: a request has been processed successfully");
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "  key event str: " +
                             irctest::KeyPayload("oic.d.fan", "HFAN", keys[i])), 1);
    }
    // The lines after an answer and before the next list is read belong to no request.
    const auto none = Messages(0);
    EXPECT_EQ(std::count(none.begin(), none.end(), "  [resp_handler] vyrf_service_send_set_property_result: 0"), 3);
}

}  // namespace

// Shared set-up of the end-to-end tests: a fresh simulator, a pairing list, and the plugin
// loaded from the build the way the TV's host loads it.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Payloads.h"
#include "PlatformState.h"
#include "PluginLoader.h"
#include "sim/Simulator.h"

namespace irctest {

inline constexpr char kService[] = "ircontrol";
inline constexpr auto kAnswerDeadline = std::chrono::seconds(10);
using Answer = std::pair<std::string, std::string>;

class PluginTest : public ::testing::Test {
protected:
    void SetUp() override {
        ResetWithPairing(R"({"dev_info":[{"codeset":"HFAN0001","device_index":3},)"
                         R"({"codeset":"ZAC00005","device_index":7}]})");
        plugin_ = std::make_unique<PluginLoader>(IRC_PLUGIN_PATH);
    }

    void TearDown() override {
        if (plugin_) {
            plugin_->Destroy();
            EXPECT_TRUE(plugin_->Unload()) << "the plugin stayed mapped after dlclose";
        }
    }

    static uint64_t SendFanKey(int key = 10) {
        const auto payload = KeyPayload("oic.d.fan", "HFAN0001", std::to_string(key));
        return sim::Host::SendSet(kService, {sim::HostProperty::Json("setKeyEvent", payload)});
    }

    // The answer's two string properties, errorCode and description; nullopt when none came
    // before the deadline.
    static std::optional<Answer> AnswerOf(uint64_t transaction) {
        auto result = sim::Host::WaitResult(transaction, kAnswerDeadline);
        if (!result) return std::nullopt;
        std::string shape;
        for (const auto& p : result->properties) {
            shape += p.name + (p.kind == sim::HostProperty::Kind::String ? " " : "? ");
        }
        EXPECT_EQ(shape, "errorCode description ");
        if (result->properties.size() != 2) return std::nullopt;
        return std::make_pair(result->properties[0].text, result->properties[1].text);
    }

    std::unique_ptr<PluginLoader> plugin_;
};

}  // namespace irctest

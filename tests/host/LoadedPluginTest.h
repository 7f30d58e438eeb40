// Base fixture of the tools' tests that need the plugin running: the built plugin on the
// simulated platform with the tool's defaults (no on-air time), one lifecycle per test.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "CPlatformSetup.h"
#include "CPluginLibrary.h"
#include "CRequestParser.h"
#include "sim/Simulator.h"

namespace ircontrol::host {

class LoadedPluginTest : public ::testing::Test {
protected:
    void SetUp() override {
        sim::ResetAll();
        setup_.Apply();
        std::string error;
        ASSERT_TRUE(plugin_.Load(IRC_PLUGIN_PATH, error)) << error;
        plugin_.Create();
    }
    void TearDown() override { plugin_.Destroy(); }
    // A request as the command line gives it.
    Request Parse(const std::string& command, const NamedValues& values) {
        Request request;
        std::string error;
        EXPECT_TRUE(CRequestParser(setup_, CRequestParser::Style::CommandLine).Parse(command, values, request, error))
            << error;
        return request;
    }

    CPlatformSetup setup_;
    CPluginLibrary plugin_;
};

}  // namespace ircontrol::host

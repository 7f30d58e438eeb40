// Base fixture of the host tool's tests that need the plugin running: the built plugin on the
// simulated platform with the tool's defaults (no on-air time), one lifecycle per test.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "CPlatformSetup.h"
#include "CPluginLibrary.h"
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

    CPlatformSetup setup_;
    CPluginLibrary plugin_;
};

}  // namespace ircontrol::host

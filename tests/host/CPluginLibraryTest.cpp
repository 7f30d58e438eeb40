#include "CPluginLibrary.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "PluginLoader.h"
#include "sim/Simulator.h"

namespace ircontrol::host {
namespace {

TEST(CPluginLibraryTest, RefusesWhatIsNotAPluginWithAReason) {
    CPluginLibrary library;
    std::string error;
    EXPECT_FALSE(library.Load("/no/such/plugin.so", error));
    EXPECT_EQ(error, "plugin library not found: /no/such/plugin.so");

    const std::string text = std::string(IRC_BINARY_DIR) + "/test_host_not_a_library.so";
    std::ofstream(text) << "not an ELF file\n";
    EXPECT_FALSE(library.Load(text, error));
    EXPECT_EQ(error.rfind("cannot load plugin library: ", 0), 0u) << error;
    std::remove(text.c_str());

    // A real shared library without the two entry points.
    EXPECT_FALSE(library.Load(IRC_SIM_PATH, error));
    EXPECT_EQ(error, std::string(IRC_SIM_PATH) + " is not a plugin (no CreatePlugin/DestroyPlugin)");
    EXPECT_FALSE(library.Loaded());
}

TEST(CPluginLibraryTest, RunsOneLifecycleAndUnloadsWhenDestroyed) {
    sim::ResetAll();
    {
        CPluginLibrary library;
        std::string error;
        ASSERT_TRUE(library.Load(IRC_PLUGIN_PATH, error)) << error;
        EXPECT_FALSE(sim::Host::FindService("ircontrol"));
        library.Create();
        library.Create();  // once only: a second CreatePlugin would be refused by the plugin
        EXPECT_TRUE(sim::Host::FindService("ircontrol"));
        EXPECT_EQ(sim::Log::Count("need to retry"), 0u);
    }
    EXPECT_FALSE(sim::Host::FindService("ircontrol")) << "the destructor stops the plugin";
    EXPECT_FALSE(irctest::PluginLoader::IsResident(IRC_PLUGIN_PATH)) << "and unloads it";
}

TEST(CPluginLibraryTest, UnloadStopsThePluginAndSaysWhetherItLeft) {
    sim::ResetAll();
    CPluginLibrary library;
    EXPECT_TRUE(library.Unload()) << "nothing loaded, nothing mapped";
    std::string error;
    ASSERT_TRUE(library.Load(IRC_PLUGIN_PATH, error)) << error;
    library.Create();
    // A second handle keeps the library mapped: Unload must notice and say so.
    irctest::PluginLoader pin(IRC_PLUGIN_PATH);
    EXPECT_FALSE(library.Unload());
    EXPECT_FALSE(sim::Host::FindService("ircontrol")) << "stopped all the same";
    EXPECT_FALSE(library.Loaded());
    EXPECT_TRUE(pin.Unload());
}

}  // namespace
}  // namespace ircontrol::host

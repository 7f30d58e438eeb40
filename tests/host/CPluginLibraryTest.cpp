#include "CPluginLibrary.h"

#include "HostTestSupport.h"
#include "PluginLoader.h"

namespace ircontrol::host {
namespace {

TEST(CPluginLibraryTest, RefusesWhatIsNotAPluginWithAReason) {
    const std::string text = irtest::TempDir() + "/not_a_library.so";
    std::ofstream(text) << "not an ELF file\n";
    const std::pair<std::string, std::string> cases[] = {
        {"/no/such/plugin.so", "plugin library not found: /no/such/plugin.so"},
        {text, "cannot load plugin library: "},
        // A real shared library without the two entry points.
        {IRC_SIM_PATH, std::string(IRC_SIM_PATH) + " is not a plugin (no CreatePlugin/DestroyPlugin)"},
    };
    for (const auto& [path, reason] : cases) {
        CPluginLibrary library;
        std::string error;
        EXPECT_FALSE(library.Load(path, error));
        EXPECT_EQ(error.substr(0, reason.size()), reason);
        EXPECT_FALSE(library.Loaded());
    }
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

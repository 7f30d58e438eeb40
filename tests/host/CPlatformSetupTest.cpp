#include "CPlatformSetup.h"

#include <system_info.h>

#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

using Catalogue = std::vector<std::pair<std::string, std::string>>;

// Unreadable files and their status are CAppTest's; here what is in a file is judged.
TEST(CPlatformSetupTest, PairingListsAreCheckedEntryByEntry) {
    const std::pair<std::string, std::string> refused[] = {
        {"{\"dev_info\":", "the pairing list is not valid JSON"},
        {"[]", "the pairing list must be a JSON object with a \"dev_info\" array"},
        {R"({"dev_info":[{"codeset":"A","device_index":1},{"device_index":2}]})",
         "dev_info[1] needs a string \"codeset\" and an integer \"device_index\""},
        {R"({"dev_info":[{"codeset":"A","device_index":1099511627776}]})",
         "dev_info[0] \"device_index\" is out of range"},
    };
    for (const auto& [text, reason] : refused) {
        std::vector<PairedDevice> devices{{"KEEP", 1, ""}};
        std::string error;
        EXPECT_FALSE(CPlatformSetup::ParsePairing(text, devices, error)) << text;
        EXPECT_EQ(error, reason) << text;
        EXPECT_EQ(devices.size(), 1u) << "a refused list leaves the old one: " << text;
    }
    std::vector<PairedDevice> devices;
    std::string error;
    ASSERT_TRUE(CPlatformSetup::ParsePairing(
        R"({"dev_info":[{"codeset":"A","device_index":7,"type":"oic.d.fan"},{"codeset":"B","device_index":-2}]})",
        devices, error));
    std::vector<std::string> got;
    for (const auto& d : devices) got.push_back(d.codeset + " " + std::to_string(d.deviceIndex) + " " + d.type);
    EXPECT_EQ(got, (std::vector<std::string>{"A 7 oic.d.fan", "B -2 "}));
}

TEST(CPlatformSetupTest, CatalogueTakesKeyMapsAsTextOrAsJson) {
    Catalogue catalogue;
    std::string error;
    ASSERT_TRUE(CPlatformSetup::ParseCatalogue(R"({"A":"{\"power\":10}","B":{"power":11}})", catalogue, error));
    EXPECT_EQ(catalogue, (Catalogue{{"A", R"({"power":10})"}, {"B", R"({"power":11})"}}));
    EXPECT_FALSE(CPlatformSetup::ParseCatalogue("[1]", catalogue, error));
    EXPECT_EQ(error, "the catalogue must be a JSON object {\"<codeset>\": \"<key map text>\"}");
    EXPECT_FALSE(CPlatformSetup::ParseCatalogue("{", catalogue, error));
    EXPECT_EQ(error, "the catalogue is not valid JSON");
}

TEST(CPlatformSetupTest, KeyMapsAreParsedOnceIntoTheirNamedKeys) {
    struct Case {
        std::string text;
        std::vector<std::pair<std::string, int>> keys;
        bool json;
    };
    const Case cases[] = {
        // Members that are not whole numbers name no key, but the map is still JSON.
        {R"({"power":10,"label":"x","list":[1],"off":{"a":1},"speed_up":11})", {{"power", 10}, {"speed_up", 11}}, true},
        {"[10,11]", {}, true},
        {"not a map", {}, false},
    };
    for (const auto& c : cases) {
        const KeyMap map = KeyMap::Parse(c.text);
        EXPECT_EQ(map.text, c.text);
        EXPECT_EQ(map.keys, c.keys) << c.text;
        EXPECT_EQ(!map.json.isNull(), c.json) << c.text;
    }
}

TEST(CPlatformSetupTest, ApplyWritesEverythingThePluginReads) {
    const std::string path = irtest::TempDir() + "/catalogue.json";
    std::ofstream(path) << R"({"ONLY":"{\"power\":1}"})";
    Options options = CCommandLine::Parse({"--catalogue", path, "--year", "25", "--mbr-support", "off", "demo"});
    CPlatformSetup setup;
    std::string error;
    ASSERT_TRUE(setup.Load(options.platform, error)) << error;
    setup.Apply();
    EXPECT_EQ(sim::Settings::GetString(CPlatformSetup::kDevicesKey), setup.PairingText());
    // The catalogue replaces what the blaster knew, it does not add to it.
    EXPECT_EQ(sim::IrBlaster::Catalogue(), (Catalogue{{"ONLY", R"({"power":1})"}}));
    int year = 0;
    bool mbr = true;
    EXPECT_EQ(system_info_get_custom_int("com.korvan/featureconf/product.tv_year", &year), 0);
    EXPECT_EQ(system_info_get_custom_bool("com.korvan/featureconf/mbr_support", &mbr), 0);
    EXPECT_EQ(std::make_pair(year, mbr), std::make_pair(25, false));
    // The embedded defaults: one paired appliance of each kind.
    EXPECT_EQ(setup.Devices().size(), 5u);
    EXPECT_EQ(setup.PairedCodeset("oic.d.airconditioner"), "ZAC00005");
    EXPECT_EQ(setup.PairedCodeset("oic.d.television"), "");
}

}  // namespace
}  // namespace ircontrol::host

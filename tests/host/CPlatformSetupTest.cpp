#include "CPlatformSetup.h"

#include <gtest/gtest.h>
#include <system_info.h>

#include <cstdio>
#include <fstream>

#include "CCommandLine.h"
#include "sim/Simulator.h"

namespace ircontrol::host {
namespace {

TEST(CPlatformSetupTest, PairingListsAreCheckedEntryByEntry) {
    const std::vector<std::pair<std::string, std::string>> refused = {
        {"{\"dev_info\":", "the pairing list is not valid JSON"},
        {"[]", "the pairing list must be a JSON object with a \"dev_info\" array"},
        {R"({"dev_info":{}})", "the pairing list must be a JSON object with a \"dev_info\" array"},
        {R"({"dev_info":[{"codeset":"A","device_index":1},{"device_index":2}]})",
         "dev_info[1] needs a string \"codeset\" and an integer \"device_index\""},
        {R"({"dev_info":[{"codeset":"A","device_index":"1"}]})",
         "dev_info[0] needs a string \"codeset\" and an integer \"device_index\""},
        {R"({"dev_info":[{"codeset":"A","device_index":1099511627776}]})",
         "dev_info[0] \"device_index\" is out of range"},
    };
    for (const auto& [text, reason] : refused) {
        std::vector<PairedDevice> devices{{"KEEP", 1, ""}};
        std::string error;
        EXPECT_FALSE(CPlatformSetup::ParsePairing(text, devices, error)) << text;
        EXPECT_EQ(error, reason) << text;
        ASSERT_EQ(devices.size(), 1u) << "a refused list leaves the old one: " << text;
    }
    std::vector<PairedDevice> devices;
    std::string error;
    ASSERT_TRUE(CPlatformSetup::ParsePairing(
        R"({"dev_info":[{"codeset":"A","device_index":7,"type":"oic.d.fan"},{"codeset":"B","device_index":-2}]})",
        devices, error));
    ASSERT_EQ(devices.size(), 2u);
    EXPECT_EQ(devices[0].codeset, "A");
    EXPECT_EQ(devices[0].deviceIndex, 7);
    EXPECT_EQ(devices[0].type, "oic.d.fan");
    EXPECT_EQ(devices[1].deviceIndex, -2);
    EXPECT_EQ(devices[1].type, "");
}

TEST(CPlatformSetupTest, CatalogueTakesKeyMapsAsTextOrAsJson) {
    std::vector<std::pair<std::string, std::string>> catalogue;
    std::string error;
    ASSERT_TRUE(CPlatformSetup::ParseCatalogue(R"({"A":"{\"power\":10}","B":{"power":11}})", catalogue, error));
    ASSERT_EQ(catalogue.size(), 2u);
    EXPECT_EQ(catalogue[0], (std::pair<std::string, std::string>{"A", R"({"power":10})"}));
    EXPECT_EQ(catalogue[1].first, "B");
    EXPECT_EQ(catalogue[1].second, R"({"power":11})");
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
        {R"({"power":10,"speed_up":11})", {{"power", 10}, {"speed_up", 11}}, true},
        // Members that are not whole numbers name no key, but the map is still JSON.
        {R"({"power":10,"label":"x","list":[1],"off":{"a":1}})", {{"power", 10}}, true},
        {"[10,11]", {}, true},
        {"not a map", {}, false},
    };
    for (const auto& c : cases) {
        const KeyMap map = KeyMap::Parse(c.text);
        EXPECT_EQ(map.text, c.text);
        EXPECT_EQ(map.keys, c.keys) << c.text;
        EXPECT_EQ(!map.json.isNull(), c.json) << c.text;
    }
    const CPlatformSetup setup;
    ASSERT_NE(setup.KeyMap("HFAN0001"), nullptr);
    EXPECT_EQ(setup.KeyMap("HFAN0001")->keys.front(), (std::pair<std::string, int>{"power", 10}));
    EXPECT_EQ(setup.KeyMap("NOSUCH"), nullptr);
}

TEST(CPlatformSetupTest, ApplyWritesEverythingThePluginReads) {
    const std::string path = std::string(IRC_BINARY_DIR) + "/test_host_catalogue.json";
    std::ofstream(path) << R"({"ONLY":"{\"power\":1}"})";
    Options options = CCommandLine::Parse({"--catalogue", path, "--year", "25", "--mbr-support", "off", "demo"});
    ASSERT_EQ(options.error, "");
    CPlatformSetup setup;
    std::string error;
    ASSERT_TRUE(setup.Load(options.platform, error)) << error;
    setup.Apply();
    std::remove(path.c_str());

    EXPECT_EQ(sim::Settings::GetString(CPlatformSetup::kDevicesKey), setup.PairingText());
    // The catalogue replaces what the blaster knew, it does not add to it.
    EXPECT_EQ(sim::IrBlaster::Catalogue(),
              (std::vector<std::pair<std::string, std::string>>{{"ONLY", R"({"power":1})"}}));
    int year = 0;
    bool mbr = true;
    EXPECT_EQ(system_info_get_custom_int("com.korvan/featureconf/product.tv_year", &year), 0);
    EXPECT_EQ(system_info_get_custom_bool("com.korvan/featureconf/mbr_support", &mbr), 0);
    EXPECT_EQ(year, 25);
    EXPECT_FALSE(mbr);
    // The embedded defaults: one paired appliance of each kind.
    EXPECT_EQ(setup.Devices().size(), 5u);
    EXPECT_EQ(setup.PairedCodeset("oic.d.airconditioner"), "ZAC00005");
    EXPECT_EQ(setup.PairedCodeset("oic.d.television"), "");
}

TEST(CPlatformSetupTest, UnusableFilesAreNamedInTheReason) {
    const std::string path = std::string(IRC_BINARY_DIR) + "/test_host_bad_pairing.json";
    std::ofstream(path) << R"({"dev_info":[{"codeset":5,"device_index":1}]})";
    CPlatformSetup setup;
    std::string error;
    EXPECT_FALSE(setup.Load(CCommandLine::Parse({"--devices", path, "demo"}).platform, error));
    EXPECT_EQ(error, path + ": dev_info[0] needs a string \"codeset\" and an integer \"device_index\"");
    std::remove(path.c_str());
    EXPECT_FALSE(setup.Load(CCommandLine::Parse({"--catalogue", "/no/such.json", "demo"}).platform, error));
    EXPECT_EQ(error, "cannot read --catalogue file /no/such.json: no such file");
    // A directory reads as an empty stream; it must not be called "not valid JSON".
    EXPECT_FALSE(setup.Load(CCommandLine::Parse({"--devices", IRC_BINARY_DIR, "demo"}).platform, error));
    EXPECT_EQ(error, std::string("cannot read --devices file ") + IRC_BINARY_DIR + ": it is a directory");
    EXPECT_EQ(setup.Devices().size(), 5u) << "the defaults survive a refused file";
}

}  // namespace
}  // namespace ircontrol::host

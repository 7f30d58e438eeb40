#include "CHomeConfig.h"

#include <gtest/gtest.h>

#include <tuple>

namespace ircontrol::host {
namespace {

const char kFull[] =
    "# the living room\n[ir]\ntransmitter = mode2:/tmp/out.mode2\nreceiver=mode2:/tmp/presses.txt\n"
    "codesets=/etc/ircontrol/codesets.json\npairing=/etc/ircontrol/devices.json\n\n[web]\nlisten=0.0.0.0:8080\n"
    "[mqtt]\nbroker=mqtts://broker.lan:8884\nclient-id=living-room\nuser=ir\npassword-file=/etc/ircontrol/mqtt.pass\n"
    "ca-file=/etc/ssl/ca.pem\nbase-topic=home/ir\ndiscovery-prefix=ha\n[state]\ndirectory=/var/lib/ircontrol\n";

TEST(HomeConfigFile, ReadsEveryKeyAndKeysLeftOutKeepTheirDefaults) {
    HomeConfig config;
    std::string error;
    ASSERT_TRUE(CHomeConfig::Parse(kFull, "home.conf", config, error)) << error;
    const std::vector<std::pair<std::string, std::string>> read = {
        {config.transmitter, "mode2:/tmp/out.mode2"}, {config.receiver, "mode2:/tmp/presses.txt"},
        {config.codesets, "/etc/ircontrol/codesets.json"}, {config.pairing, "/etc/ircontrol/devices.json"},
        {config.listen, "0.0.0.0:8080"}, {config.broker, "mqtts://broker.lan:8884"}, {config.clientId, "living-room"},
        {config.user, "ir"}, {config.passwordFile, "/etc/ircontrol/mqtt.pass"}, {config.caFile, "/etc/ssl/ca.pem"},
        {config.baseTopic, "home/ir"}, {config.discoveryPrefix, "ha"}, {config.stateDirectory, "/var/lib/ircontrol"}};
    for (const auto& [got, expected] : read) EXPECT_EQ(got, expected);
    HomeConfig defaults;
    ASSERT_TRUE(CHomeConfig::Parse("[mqtt]\nbroker=mqtt://localhost\n", "a.conf", defaults, error)) << error;
    EXPECT_EQ(defaults.clientId + " " + defaults.baseTopic + " " + defaults.discoveryPrefix,
              "ircontrol ircontrol homeassistant");
}

// Every refusal names the file, the line, the group and the key, and leaves the config as it was.
TEST(HomeConfigFile, RefusesWithFileLineGroupAndKey) {
    const std::pair<const char*, const char*> cases[] = {
        {"[ir]\ntransmitter=/dev/lirc0\ncolour=blue\n", "c.conf:3: [ir] colour: unknown key"},
        {"[ir]\n\n[garden]\nx=1\n", "c.conf:3: [garden]: unknown group"},
        {"[mqtt]\nbroker=http://x\n", "c.conf:2: [mqtt] broker: needs mqtt://host[:port]"},
        {"[mqtt]\nbroker=mqtt://x:99999\n", "c.conf:2: [mqtt] broker: has no usable port"},
        {"[mqtt]\nbroker=mqtt://:1883\n", "c.conf:2: [mqtt] broker: has no usable host"},
        {"[mqtt]\n  client-id = has space\n", "c.conf:2: [mqtt] client-id: may hold only"},
        {"[mqtt]\nclient-id=abcdefghijklmnopqrstuvwxyz\n", "c.conf:2: [mqtt] client-id: needs 1 to 23"},
        {"[mqtt]\nbase-topic=/home\n", "c.conf:2: [mqtt] base-topic: needs topic levels"},
        {"[state]\ndirectory=var/lib\n", "c.conf:2: [state] directory: needs an absolute path"},
        {"[web]\nlisten=8080\n", "c.conf:2: [web] listen: needs host:port"},
        {"[ir]\ntransmitter=/tmp/x\n", "c.conf:2: [ir] transmitter: needs /dev/lircN or mode2:FILE"},
        {"[ir]\ncodesets=\n", "c.conf:2: [ir] codesets: needs a file name"},
        {"[ir]\nthis line has no equals sign\n", "c.conf: "},
    };
    for (const auto& [text, expected] : cases) {
        HomeConfig config;
        config.baseTopic = "kept";
        std::string error;
        EXPECT_FALSE(CHomeConfig::Parse(text, "c.conf", config, error)) << text;
        EXPECT_EQ(error.rfind(expected, 0), 0u) << "got: " << error;
        EXPECT_EQ(config.baseTopic, "kept") << text;
    }
    HomeConfig config;
    std::string error;
    EXPECT_FALSE(CHomeConfig::Load("/nonexistent/home.conf", config, error));
    EXPECT_NE(error.find("/nonexistent/home.conf"), std::string::npos);
}

TEST(HomeConfigFile, BrokerUrlsGiveHostPortAndTls) {
    const std::tuple<const char*, const char*, int, bool> cases[] = {{"mqtt://localhost", "localhost", 1883, false},
                                                                     {"mqtt://10.0.0.2:1884", "10.0.0.2", 1884, false},
                                                                     {"mqtts://broker", "broker", 8883, true}};
    for (const auto& [url, host, port, tls] : cases) {
        BrokerAddress address;
        std::string error;
        ASSERT_TRUE(CHomeConfig::ParseBroker(url, address, error)) << url << ": " << error;
        EXPECT_EQ(std::make_tuple(address.host, address.port, address.tls), std::make_tuple(host, port, tls));
    }
}

// The command line overrides the file, the file fills the rest, learned keys go to the state
// directory, and the command line's values are checked as the file's are.
TEST(HomeConfigFile, MergesWithTheCommandLine) {
    HomeConfig config;
    std::string error;
    ASSERT_TRUE(CHomeConfig::Parse(kFull, "home.conf", config, error));
    Options options;
    options.platform.irDevice = "mode2:/tmp/given.mode2";
    options.values = {{"broker", "mqtt://127.0.0.1:1999"}, {"state-dir", "/tmp/state"}};
    ASSERT_TRUE(CHomeConfig::Merge(options, config, error)) << error;
    EXPECT_EQ(options.platform.irDevice, "mode2:/tmp/given.mode2");
    EXPECT_EQ(options.platform.codesetsFile, "/etc/ircontrol/codesets.json");
    EXPECT_EQ(options.platform.devicesFile, "/etc/ircontrol/devices.json");
    EXPECT_EQ(options.platform.learnedFile, "/tmp/state/learned.json");
    EXPECT_EQ(options.irReceiver, "/tmp/presses.txt");
    EXPECT_EQ(options.values["listen"], "0.0.0.0:8080");
    EXPECT_EQ(config.broker + " " + config.stateDirectory + " " + config.clientId,
              "mqtt://127.0.0.1:1999 /tmp/state living-room");
    HomeConfig untouched;
    Options bad;
    bad.values["base-topic"] = "a/+/b";
    EXPECT_FALSE(CHomeConfig::Merge(bad, untouched, error));
    EXPECT_EQ(error.rfind("--base-topic: ", 0), 0u) << error;
    EXPECT_EQ(untouched.baseTopic, "ircontrol");
    Options plain;
    ASSERT_TRUE(CHomeConfig::Merge(plain, untouched, error));
    EXPECT_TRUE(plain.platform.learnedFile.empty());  // no state directory: learned keys go to --codesets
}

}  // namespace
}  // namespace ircontrol::host

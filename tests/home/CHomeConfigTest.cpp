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

// Every key into its member, the broker's URL into host, port and TLS, and defaults for the rest.
TEST(HomeConfigFile, ReadsEveryKeyAndKeysLeftOutKeepTheirDefaults) {
    HomeConfig config;
    std::string error;
    ASSERT_TRUE(CHomeConfig::Parse(kFull, "home.conf", config, error)) << error;
    const HomeConfig& c = config;
    EXPECT_EQ(c.transmitter + " " + c.receiver + " " + c.codesets + " " + c.pairing + " " + c.listen + " " + c.broker,
              "mode2:/tmp/out.mode2 mode2:/tmp/presses.txt /etc/ircontrol/codesets.json /etc/ircontrol/devices.json "
              "0.0.0.0:8080 mqtts://broker.lan:8884");
    EXPECT_EQ(c.clientId + " " + c.user + " " + c.passwordFile + " " + c.caFile + " " + c.baseTopic + " " +
                  c.discoveryPrefix + " " + c.stateDirectory,
              "living-room ir /etc/ircontrol/mqtt.pass /etc/ssl/ca.pem home/ir ha /var/lib/ircontrol");
    for (const auto& [url, port, tls] : {std::tuple{"mqtts://broker.lan:8884", 8884, true}, {"mqtts://broker.lan", 8883, true},
                                         {"mqtt://broker.lan", 1883, false}}) {
        BrokerAddress address;
        ASSERT_TRUE(CHomeConfig::ParseBroker(url, address, error)) << url << ": " << error;
        EXPECT_EQ(std::make_tuple(address.host, address.port, address.tls), std::make_tuple("broker.lan", port, tls));
    }
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
        {"[mqtt]\n  client-id = has space\n", "c.conf:2: [mqtt] client-id: may hold only"},
        {"[mqtt]\nbase-topic=/home\n", "c.conf:2: [mqtt] base-topic: needs topic levels"},
        {"[state]\ndirectory=var/lib\n", "c.conf:2: [state] directory: needs an absolute path"},
        {"[web]\nlisten=8080\n", "c.conf:2: [web] listen: needs host:port"},
        {"[ir]\ntransmitter=/tmp/x\n", "c.conf:2: [ir] transmitter: needs /dev/lircN or mode2:FILE"},
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
    const PlatformOptions& p = options.platform;
    EXPECT_EQ(p.irDevice + " " + p.codesetsFile + " " + p.devicesFile + " " + p.learnedFile + " " + options.irReceiver,
              "mode2:/tmp/given.mode2 /etc/ircontrol/codesets.json /etc/ircontrol/devices.json "
              "/tmp/state/learned.json /tmp/presses.txt");
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

#include "CHomeConfig.h"

#include <gtest/gtest.h>

namespace ircontrol::host {
namespace {

const char kFull[] =
    "# the living room\n"
    "[ir]\n"
    "transmitter = mode2:/tmp/out.mode2\n"
    "receiver=/dev/lirc1\n"
    "codesets=/etc/ircontrol/codesets.json\n"
    "pairing=/etc/ircontrol/devices.json\n"
    "\n"
    "[web]\n"
    "listen=0.0.0.0:8080\n"
    "[mqtt]\n"
    "broker=mqtts://broker.lan:8884\n"
    "client-id=living-room\n"
    "user=ir\n"
    "password-file=/etc/ircontrol/mqtt.pass\n"
    "ca-file=/etc/ssl/ca.pem\n"
    "base-topic=home/ir\n"
    "discovery-prefix=ha\n"
    "[state]\n"
    "directory=/var/lib/ircontrol\n";

TEST(HomeConfigFile, ReadsEveryKeyIntoItsMember) {
    HomeConfig config;
    std::string error;
    ASSERT_TRUE(CHomeConfig::Parse(kFull, "home.conf", config, error)) << error;
    EXPECT_EQ(config.transmitter, "mode2:/tmp/out.mode2");
    EXPECT_EQ(config.receiver, "/dev/lirc1");
    EXPECT_EQ(config.codesets, "/etc/ircontrol/codesets.json");
    EXPECT_EQ(config.pairing, "/etc/ircontrol/devices.json");
    EXPECT_EQ(config.listen, "0.0.0.0:8080");
    EXPECT_EQ(config.broker, "mqtts://broker.lan:8884");
    EXPECT_EQ(config.clientId, "living-room");
    EXPECT_EQ(config.user, "ir");
    EXPECT_EQ(config.passwordFile, "/etc/ircontrol/mqtt.pass");
    EXPECT_EQ(config.caFile, "/etc/ssl/ca.pem");
    EXPECT_EQ(config.baseTopic, "home/ir");
    EXPECT_EQ(config.discoveryPrefix, "ha");
    EXPECT_EQ(config.stateDirectory, "/var/lib/ircontrol");
}

TEST(HomeConfigFile, KeysLeftOutKeepTheirDefaults) {
    HomeConfig config;
    std::string error;
    ASSERT_TRUE(CHomeConfig::Parse("[mqtt]\nbroker=mqtt://localhost\n", "a.conf", config, error)) << error;
    EXPECT_EQ(config.clientId, "ircontrol");
    EXPECT_EQ(config.baseTopic, "ircontrol");
    EXPECT_EQ(config.discoveryPrefix, "homeassistant");
    EXPECT_TRUE(config.stateDirectory.empty());
}

// Every refusal names the file, the line, the group and the key, and leaves the config as it was.
TEST(HomeConfigFile, RefusesWithFileLineGroupAndKey) {
    struct Case {
        const char* text;
        const char* expected;
    };
    const Case cases[] = {
        {"[ir]\ntransmitter=/dev/lirc0\ncolour=blue\n", "c.conf:3: [ir] colour: unknown key"},
        {"[ir]\n\n[garden]\nx=1\n", "c.conf:3: [garden]: unknown group"},
        {"[mqtt]\nbroker=http://x\n", "c.conf:2: [mqtt] broker: needs mqtt://host[:port]"},
        {"[mqtt]\nbroker=mqtt://x:99999\n", "c.conf:2: [mqtt] broker: has no usable port"},
        {"[mqtt]\nbroker=mqtt://:1883\n", "c.conf:2: [mqtt] broker: has no usable host"},
        {"[mqtt]\n  client-id = has space\n", "c.conf:2: [mqtt] client-id: may hold only"},
        {"[mqtt]\nclient-id=abcdefghijklmnopqrstuvwxyz\n", "c.conf:2: [mqtt] client-id: needs 1 to 23"},
        {"[mqtt]\nbase-topic=home/#\n", "c.conf:2: [mqtt] base-topic: needs topic levels"},
        {"[mqtt]\nbase-topic=/home\n", "c.conf:2: [mqtt] base-topic: needs topic levels"},
        {"[state]\ndirectory=var/lib\n", "c.conf:2: [state] directory: needs an absolute path"},
        {"[web]\nlisten=8080\n", "c.conf:2: [web] listen: needs host:port"},
        {"[ir]\ntransmitter=/tmp/x\n", "c.conf:2: [ir] transmitter: needs /dev/lircN or mode2:FILE"},
        {"[ir]\ncodesets=\n", "c.conf:2: [ir] codesets: needs a file name"},
    };
    for (const Case& c : cases) {
        HomeConfig config;
        config.baseTopic = "kept";
        std::string error;
        EXPECT_FALSE(CHomeConfig::Parse(c.text, "c.conf", config, error)) << c.text;
        EXPECT_EQ(error.rfind(c.expected, 0), 0u) << "got: " << error;
        EXPECT_EQ(config.baseTopic, "kept") << c.text;
    }
}

TEST(HomeConfigFile, TextThatIsNoKeyFileIsRefusedWithItsName) {
    HomeConfig config;
    std::string error;
    EXPECT_FALSE(CHomeConfig::Parse("[ir]\nthis line has no equals sign\n", "bad.conf", config, error));
    EXPECT_EQ(error.rfind("bad.conf: ", 0), 0u) << error;
    EXPECT_FALSE(CHomeConfig::Load("/nonexistent/home.conf", config, error));
    EXPECT_NE(error.find("/nonexistent/home.conf"), std::string::npos);
}

TEST(HomeConfigFile, BrokerUrlsGiveHostPortAndTls) {
    struct Case {
        const char* url;
        const char* host;
        int port;
        bool tls;
    };
    for (const Case& c : {Case{"mqtt://localhost", "localhost", 1883, false}, Case{"mqtt://10.0.0.2:1884", "10.0.0.2", 1884, false},
                          Case{"mqtts://broker", "broker", 8883, true}, Case{"mqtts://b:443", "b", 443, true}}) {
        BrokerAddress address;
        std::string error;
        ASSERT_TRUE(CHomeConfig::ParseBroker(c.url, address, error)) << c.url << ": " << error;
        EXPECT_EQ(address.host, c.host);
        EXPECT_EQ(address.port, c.port);
        EXPECT_EQ(address.tls, c.tls);
    }
}

TEST(HomeConfigFile, CommandLineOverridesTheFileAndTheFileFillsTheRest) {
    HomeConfig config;
    std::string error;
    ASSERT_TRUE(CHomeConfig::Parse(kFull, "home.conf", config, error));
    Options options;
    options.platform.irDevice = "mode2:/tmp/given.mode2";
    options.values["broker"] = "mqtt://127.0.0.1:1999";
    options.values["state-dir"] = "/tmp/state";
    ASSERT_TRUE(CHomeConfig::Merge(options, config, error)) << error;
    EXPECT_EQ(options.platform.irDevice, "mode2:/tmp/given.mode2");
    EXPECT_EQ(options.platform.codesetsFile, "/etc/ircontrol/codesets.json");
    EXPECT_EQ(options.platform.devicesFile, "/etc/ircontrol/devices.json");
    EXPECT_EQ(options.values["listen"], "0.0.0.0:8080");
    EXPECT_EQ(config.broker, "mqtt://127.0.0.1:1999");
    EXPECT_EQ(config.stateDirectory, "/tmp/state");
    EXPECT_EQ(config.clientId, "living-room");
}

TEST(HomeConfigFile, CommandLineValuesAreCheckedAsTheFilesAre) {
    HomeConfig config;
    Options options;
    options.values["base-topic"] = "a/+/b";
    std::string error;
    EXPECT_FALSE(CHomeConfig::Merge(options, config, error));
    EXPECT_EQ(error.rfind("--base-topic: ", 0), 0u) << error;
    EXPECT_EQ(config.baseTopic, "ircontrol");
}

}  // namespace
}  // namespace ircontrol::host

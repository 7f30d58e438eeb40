#include "CMosquittoClient.h"

#include <gtest/gtest.h>

namespace ircontrol::host {
namespace {

// Reaching a broker, and coming back to it, is shown against a real one by test_service.py.
TEST(MosquittoClient, StopReturnsWhileTheBrokerIsAwayAndUnusableSettingsAreRefused) {
    CMosquittoClient client;
    MqttSettings settings;
    settings.broker = BrokerAddress{"127.0.0.1", 9, false};  // discard: nobody answers
    settings.clientId = "irc-test";
    std::string error;
    ASSERT_TRUE(client.Start(settings, error)) << error;
    client.Stop();
    EXPECT_FALSE(client.Publish("t/x", "late", false));
    EXPECT_FALSE(client.Subscribe("t/#"));
    settings.clientId = std::string(70000, 'x');  // longer than an MQTT string may be
    EXPECT_FALSE(client.Start(settings, error));
    EXPECT_NE(error.find("mqtt"), std::string::npos);
}

}  // namespace
}  // namespace ircontrol::host

#include "CMosquittoClient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include "BrokerProcess.h"

namespace ircontrol::host {
namespace {

class MosquittoClient : public ::testing::Test {
protected:
    void SetUp() override {
        client_.SetHandlers([this] { ++connections_, client_.Subscribe("t/#"); },
                            [this](const std::string&, const std::string& payload) {
                                const std::lock_guard<std::mutex> lock(mutex_);
                                payloads_.push_back(payload);
                            },
                            nullptr);
        settings_.broker = BrokerAddress{"127.0.0.1", port_, false};
        settings_.clientId = "irc-test";
        settings_.maxBackoffSeconds = 1;
    }
    // Looks every 10 ms, up to `limit`, until `done` holds.
    template <typename Predicate>
    static bool Eventually(Predicate done, std::chrono::milliseconds limit = std::chrono::seconds(20)) {
        for (auto end = std::chrono::steady_clock::now() + limit; !done(); std::this_thread::sleep_for(limit / 2000)) {
            if (std::chrono::steady_clock::now() > end) return false;
        }
        return true;
    }
    // Publishes until one comes back: the subscription may still be on its way.
    bool RoundTrip(const std::string& payload) {
        return Eventually([&] {
            client_.Publish("t/x", payload, false);
            return Eventually([&] {
                const std::lock_guard<std::mutex> lock(mutex_);
                return std::find(payloads_.begin(), payloads_.end(), payload) != payloads_.end();
            }, std::chrono::seconds(1));
        });
    }

    int port_ = irctest::CBrokerProcess::FreePort();
    irctest::CBrokerProcess broker_{IRC_MOSQUITTO, port_};
    MqttSettings settings_;
    // Declared before the client: its network thread calls into these until the client is gone.
    std::mutex mutex_;
    std::vector<std::string> payloads_;
    std::atomic<int> connections_{0};
    CMosquittoClient client_;
};

// Down at start, then restarted mid-run: each time reached, and subscribed again.
TEST_F(MosquittoClient, ABrokerThatIsDownOrRestartedIsReachedAndResubscribed) {
    std::string error;
    ASSERT_TRUE(client_.Start(settings_, error)) << error;
    broker_.Start();
    ASSERT_TRUE(Eventually([&] { return connections_ == 1; }));
    EXPECT_TRUE(RoundTrip("hello"));
    broker_.Stop();
    broker_.Start();
    ASSERT_TRUE(Eventually([&] { return connections_ == 2; }));
    EXPECT_TRUE(RoundTrip("after restart"));
}

TEST_F(MosquittoClient, StopReturnsWhileTheBrokerIsAwayAndUnusableSettingsAreRefused) {
    std::string error;
    ASSERT_TRUE(client_.Start(settings_, error)) << error;
    client_.Stop();
    EXPECT_FALSE(client_.Publish("t/x", "late", false));
    EXPECT_FALSE(client_.Subscribe("t/#"));
    settings_.clientId = std::string(70000, 'x');  // longer than an MQTT string may be
    EXPECT_FALSE(client_.Start(settings_, error));
    EXPECT_NE(error.find("mqtt"), std::string::npos);
}

}  // namespace
}  // namespace ircontrol::host

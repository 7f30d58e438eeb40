#include "CMosquittoClient.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "BrokerProcess.h"

namespace ircontrol::host {
namespace {

// Counts the client's events and lets the test wait for them.
struct Events {
    std::mutex mutex;
    std::condition_variable changed;
    int connections = 0;
    std::vector<std::pair<std::string, std::string>> messages;

    template <typename Predicate>
    bool WaitFor(Predicate done, std::chrono::seconds limit = std::chrono::seconds(20)) {
        std::unique_lock<std::mutex> lock(mutex);
        return changed.wait_for(lock, limit, [&] { return done(); });
    }
};

class MosquittoClient : public ::testing::Test {
protected:
    void SetUp() override {
        port_ = irctest::CBrokerProcess::FreePort();
        broker_ = std::make_unique<irctest::CBrokerProcess>(IRC_MOSQUITTO, port_);
        client_.SetHandlers(
            [this] {
                {
                    const std::lock_guard<std::mutex> lock(events_.mutex);
                    ++events_.connections;
                }
                client_.Subscribe("t/#");
                events_.changed.notify_all();
            },
            [this](const std::string& topic, const std::string& payload) {
                {
                    const std::lock_guard<std::mutex> lock(events_.mutex);
                    events_.messages.emplace_back(topic, payload);
                }
                events_.changed.notify_all();
            },
            nullptr);
        settings_.broker = BrokerAddress{"127.0.0.1", port_, false};
        settings_.clientId = "irc-test";
        settings_.maxBackoffSeconds = 1;
    }
    // Publishes until one comes back: the subscription may still be on its way.
    bool RoundTrip(const std::string& payload) {
        for (int i = 0; i < 100; ++i) {
            client_.Publish("t/x", payload, false);
            if (events_.WaitFor([&] {
                    for (const auto& m : events_.messages) {
                        if (m.second == payload) return true;
                    }
                    return false;
                }, std::chrono::seconds(1))) {
                return true;
            }
        }
        return false;
    }

    int port_ = 0;
    std::unique_ptr<irctest::CBrokerProcess> broker_;
    MqttSettings settings_;
    // Declared before the client: its network thread calls into these until the client is gone.
    Events events_;
    CMosquittoClient client_;
};

TEST_F(MosquittoClient, ABrokerThatIsDownAtStartIsReachedWhenItComes) {
    std::string error;
    ASSERT_TRUE(client_.Start(settings_, error)) << error;
    EXPECT_FALSE(client_.Publish("t/x", "early", false) && events_.WaitFor([&] { return !events_.messages.empty(); },
                                                                            std::chrono::seconds(1)));
    broker_->Start();
    ASSERT_TRUE(events_.WaitFor([&] { return events_.connections == 1; }));
    EXPECT_TRUE(RoundTrip("hello"));
}

TEST_F(MosquittoClient, ABrokerRestartedMidRunIsReconnectedAndResubscribed) {
    broker_->Start();
    std::string error;
    ASSERT_TRUE(client_.Start(settings_, error)) << error;
    ASSERT_TRUE(events_.WaitFor([&] { return events_.connections == 1; }));
    broker_->Stop();
    broker_->Start();
    ASSERT_TRUE(events_.WaitFor([&] { return events_.connections == 2; }));
    EXPECT_TRUE(RoundTrip("after restart"));
}

TEST_F(MosquittoClient, StopReturnsWhileTheBrokerIsAwayAndPublishingAfterwardsFails) {
    std::string error;
    ASSERT_TRUE(client_.Start(settings_, error)) << error;
    client_.Stop();
    EXPECT_FALSE(client_.Publish("t/x", "late", false));
    EXPECT_FALSE(client_.Subscribe("t/#"));
}

TEST_F(MosquittoClient, UnusableSettingsAreRefused) {
    settings_.clientId = std::string(70000, 'x');  // longer than an MQTT string may be
    std::string error;
    EXPECT_FALSE(client_.Start(settings_, error));
    EXPECT_NE(error.find("mqtt"), std::string::npos);
}

}  // namespace
}  // namespace ircontrol::host

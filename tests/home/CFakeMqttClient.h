// An IMqttClient without a broker for the door's tests: records what is published, and lets a
// test connect, drop the connection (publishes then fail, as on a broken link) and deliver
// messages as the network thread would. Thread-safe once its handlers are set.
#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "IMqttClient.h"

namespace ircontrol::host {

struct Published {
    std::string topic;
    std::string payload;
    bool retain = false;
};

class CFakeMqttClient : public IMqttClient {
public:
    void SetHandlers(OnConnected connected, OnMessage message, OnLog) override {
        connected_ = std::move(connected);
        message_ = std::move(message);
    }
    bool Start(const MqttSettings&, std::string&) override { return true; }
    bool Publish(const std::string& topic, const std::string& payload, bool retain) override {
        return record([&] { published_.push_back({topic, payload, retain}); });
    }
    bool Subscribe(const std::string&) override { return record([] {}); }
    void Stop() override { Drop(); }

    void Connect() {  // the connection is up: runs the connected handler
        setUp(true);
        connected_();
    }
    void Drop() { setUp(false); }  // publishes fail until Connect()
    void Deliver(const std::string& topic, const std::string& payload) { message_(topic, payload); }
    std::vector<Published> Take() {  // what was published since the last Take()
        const std::lock_guard<std::mutex> lock(mutex_);
        return std::exchange(published_, {});
    }

private:
    template <typename Change>
    bool record(Change change) {  // false, and nothing recorded, while the connection is down
        const std::lock_guard<std::mutex> lock(mutex_);
        if (up_) change();
        return up_;
    }
    void setUp(bool up) {
        const std::lock_guard<std::mutex> lock(mutex_);
        up_ = up;
    }

    std::mutex mutex_;
    OnConnected connected_;
    OnMessage message_;
    bool up_ = false;
    std::vector<Published> published_;
};

}  // namespace ircontrol::host

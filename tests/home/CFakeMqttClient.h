// An IMqttClient without a broker for the door's tests: records what is published and
// subscribed, and lets a test connect, drop the connection (publishes then fail, as on a broken
// link) and deliver messages as the network thread would. Thread-safe.
#pragma once

#include <mutex>
#include <string>
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
    void SetHandlers(OnConnected connected, OnMessage message, OnLog log) override;
    bool Start(const MqttSettings& settings, std::string& error) override;
    bool Publish(const std::string& topic, const std::string& payload, bool retain) override;
    bool Subscribe(const std::string& pattern) override;
    void Stop() override;

    void Connect();  // the connection is up: runs the connected handler
    void Drop();     // the connection is gone: publishes fail until Connect()
    void Deliver(const std::string& topic, const std::string& payload);
    std::vector<Published> Take();  // what was published since the last Take()
    std::vector<std::string> Subscriptions() const;

private:
    mutable std::mutex mutex_;
    OnConnected connected_;
    OnMessage message_;
    bool up_ = false;
    std::vector<Published> published_;
    std::vector<std::string> subscriptions_;
};

}  // namespace ircontrol::host

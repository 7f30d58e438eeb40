#include "CFakeMqttClient.h"

namespace ircontrol::host {

void CFakeMqttClient::SetHandlers(OnConnected connected, OnMessage message, OnLog) {
    const std::lock_guard<std::mutex> lock(mutex_);
    connected_ = std::move(connected);
    message_ = std::move(message);
}

bool CFakeMqttClient::Start(const MqttSettings&, std::string&) { return true; }

bool CFakeMqttClient::Publish(const std::string& topic, const std::string& payload, bool retain) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!up_) return false;
    published_.push_back({topic, payload, retain});
    return true;
}

bool CFakeMqttClient::Subscribe(const std::string& pattern) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!up_) return false;
    subscriptions_.push_back(pattern);
    return true;
}

void CFakeMqttClient::Stop() {
    const std::lock_guard<std::mutex> lock(mutex_);
    up_ = false;
}

void CFakeMqttClient::Connect() {
    OnConnected handler;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        up_ = true;
        handler = connected_;
    }
    if (handler) handler();
}

void CFakeMqttClient::Drop() {
    const std::lock_guard<std::mutex> lock(mutex_);
    up_ = false;
}

void CFakeMqttClient::Deliver(const std::string& topic, const std::string& payload) {
    OnMessage handler;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        handler = message_;
    }
    if (handler) handler(topic, payload);
}

std::vector<Published> CFakeMqttClient::Take() {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<Published> taken;
    taken.swap(published_);
    return taken;
}

std::vector<std::string> CFakeMqttClient::Subscriptions() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return subscriptions_;
}

}  // namespace ircontrol::host

// A connection to an MQTT broker as the home service needs it: connect in the background and keep
// reconnecting, publish, subscribe, and tell the owner when a connection is up and when a message
// comes. Handlers run on the client's own network thread and must not block for long nor throw
// (an exception is caught, logged and dropped); Publish/Subscribe may be called from any thread.
#pragma once

#include <functional>
#include <string>

#include "CHomeConfig.h"

namespace ircontrol::host {

struct MqttSettings {
    BrokerAddress broker;
    std::string clientId;
    std::string user;
    std::string password;
    std::string caFile;
    std::string willTopic;        // retained "offline" when the connection is lost
    int maxBackoffSeconds = 30;   // reconnect delays double from 1 s up to this
};

class IMqttClient {
public:
    using OnConnected = std::function<void()>;
    using OnMessage = std::function<void(const std::string& topic, const std::string& payload)>;
    using OnLog = std::function<void(const std::string& line)>;

    virtual ~IMqttClient() = default;
    // Before Start().
    virtual void SetHandlers(OnConnected connected, OnMessage message, OnLog log) = 0;
    // Starts connecting (a broker that is down is retried with backoff); false with a reason only
    // when the settings themselves are unusable.
    virtual bool Start(const MqttSettings& settings, std::string& error) = 0;
    // QoS 1. False when the message was not handed to the connection (not connected, too big).
    virtual bool Publish(const std::string& topic, const std::string& payload, bool retain) = 0;
    virtual bool Subscribe(const std::string& pattern) = 0;
    // Disconnects cleanly (no last will) and joins the network thread; no handler runs afterwards.
    virtual void Stop() = 0;
};

}  // namespace ircontrol::host

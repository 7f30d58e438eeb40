// IMqttClient over libmosquitto: the handle is owned from mosquitto_new() on; one network thread
// of its own runs mosquitto_loop and, when the broker is unreachable at start or the connection
// breaks, reconnects after 1, 2, 4, ... seconds up to the settings' limit (libmosquitto's own
// loop thread gives up on a broker that is down at start). The destructor stops. Callbacks from
// libmosquitto never let an exception through.
#pragma once

#include <mosquitto.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>
#include <thread>

#include "IMqttClient.h"

namespace ircontrol::host {

class CMosquittoClient : public IMqttClient {
public:
    CMosquittoClient();
    ~CMosquittoClient() override;
    CMosquittoClient(const CMosquittoClient&) = delete;
    CMosquittoClient& operator=(const CMosquittoClient&) = delete;

    void SetHandlers(OnConnected connected, OnMessage message, OnLog log) override;
    bool Start(const MqttSettings& settings, std::string& error) override;
    bool Publish(const std::string& topic, const std::string& payload, bool retain) override;
    bool Subscribe(const std::string& pattern) override;
    void Stop() override;

private:
    struct Destroy {
        void operator()(mosquitto* handle) const { mosquitto_destroy(handle); }
    };
    static void onConnect(mosquitto* handle, void* self, int rc);
    static void onDisconnect(mosquitto* handle, void* self, int rc);
    static void onPublish(mosquitto* handle, void* self, int mid);
    static void onMessage(mosquitto* handle, void* self, const mosquitto_message* message);
    void run(MqttSettings settings);  // the network thread
    bool stopping();
    bool pause(int seconds);          // false when stopping
    void log(const std::string& line);

    OnConnected connected_;
    OnMessage message_;
    OnLog log_;
    std::unique_ptr<mosquitto, Destroy> handle_;
    std::mutex mutex_;  // guards stopping_, pending_, early_
    std::condition_variable wake_;
    bool stopping_ = false;
    // QoS 1 messages not yet acknowledged, by message id (one queued while the connection was down
    // too: it goes when the connection comes), and acknowledgements that came before their id
    // was noted.
    std::set<int> pending_;
    std::set<int> early_;
    std::atomic<int> backoff_{1};       // seconds before the next attempt; back to 1 once connected
    std::thread thread_;
    std::mutex stopMutex_;
};

}  // namespace ircontrol::host

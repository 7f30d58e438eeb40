#include "CMosquittoClient.h"

#include <algorithm>
#include <chrono>
#include <exception>

namespace ircontrol::host {
namespace {

// mosquitto_lib_init is not thread-safe and wants one call per process; cleanup is left to exit.
void InitLibrary() {
    static std::once_flag once;
    std::call_once(once, [] { mosquitto_lib_init(); });
}

std::string Describe(int rc) {
    return rc == MOSQ_ERR_ERRNO ? std::string("system error") : std::string(mosquitto_strerror(rc));
}

}  // namespace

CMosquittoClient::CMosquittoClient() { InitLibrary(); }

CMosquittoClient::~CMosquittoClient() { Stop(); }

void CMosquittoClient::SetHandlers(OnConnected connected, OnMessage message, OnLog log) {
    connected_ = std::move(connected);
    message_ = std::move(message);
    log_ = std::move(log);
}

void CMosquittoClient::log(const std::string& line) {
    if (log_) log_(line);
}

bool CMosquittoClient::Start(const MqttSettings& settings, std::string& error) {
    handle_.reset(mosquitto_new(settings.clientId.c_str(), true, this));
    if (!handle_) {
        error = "mqtt: cannot create a client with id '" + settings.clientId.substr(0, 40) + "'";
        return false;
    }
    mosquitto* h = handle_.get();
    int rc = mosquitto_threaded_set(h, true);
    // Commands and results are small packets: without this, Nagle's algorithm meeting the
    // broker's delayed ACKs holds each one back by about 40 ms.
    if (rc == MOSQ_ERR_SUCCESS) rc = mosquitto_int_option(h, MOSQ_OPT_TCP_NODELAY, 1);
    if (rc == MOSQ_ERR_SUCCESS && !settings.user.empty()) {
        rc = mosquitto_username_pw_set(h, settings.user.c_str(), settings.password.c_str());
    }
    if (rc == MOSQ_ERR_SUCCESS && settings.broker.tls) {
        rc = mosquitto_tls_set(h, settings.caFile.empty() ? nullptr : settings.caFile.c_str(),
                               settings.caFile.empty() ? "/etc/ssl/certs" : nullptr, nullptr, nullptr, nullptr);
    }
    if (rc == MOSQ_ERR_SUCCESS && !settings.willTopic.empty()) {
        rc = mosquitto_will_set(h, settings.willTopic.c_str(), 7, "offline", 1, true);
    }
    if (rc != MOSQ_ERR_SUCCESS) {
        error = "mqtt: unusable settings: " + Describe(rc);
        handle_.reset();
        return false;
    }
    mosquitto_connect_callback_set(h, &CMosquittoClient::onConnect);
    mosquitto_disconnect_callback_set(h, &CMosquittoClient::onDisconnect);
    mosquitto_publish_callback_set(h, &CMosquittoClient::onPublish);
    mosquitto_message_callback_set(h, &CMosquittoClient::onMessage);
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = false;
        pending_.clear();
        early_.clear();
    }
    backoff_ = 1;
    thread_ = std::thread([this, settings] { run(settings); });
    return true;
}

void CMosquittoClient::run(MqttSettings settings) {
    mosquitto* h = handle_.get();
    const std::string where = settings.broker.host + ":" + std::to_string(settings.broker.port);
    bool first = true;
    for (;;) {
        // Asynchronous, so that Stop() is never stuck behind a TCP connect to a silent host.
        int rc = first ? mosquitto_connect_async(h, settings.broker.host.c_str(), settings.broker.port, 30)
                       : mosquitto_reconnect_async(h);
        first = false;
        while (rc == MOSQ_ERR_SUCCESS) {
            if (stopping()) {
                // The DISCONNECT that Stop() queued goes out before the socket closes; without it
                // the broker would publish the last will over what a clean stop left retained.
                for (int i = 0; i < 10 && mosquitto_loop(h, 100, 1) == MOSQ_ERR_SUCCESS; ++i) {
                }
                return;
            }
            rc = mosquitto_loop(h, 200, 1);
        }
        const int delay = backoff_.load();
        if (stopping()) return;
        log("mqtt: " + where + " " + Describe(rc) + "; trying again in " + std::to_string(delay) + " s");
        if (!pause(delay)) return;
        backoff_ = std::min(delay * 2, settings.maxBackoffSeconds);
    }
}

bool CMosquittoClient::stopping() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return stopping_;
}

bool CMosquittoClient::pause(int seconds) {
    std::unique_lock<std::mutex> lock(mutex_);
    wake_.wait_for(lock, std::chrono::seconds(seconds), [this] { return stopping_; });
    return !stopping_;
}

bool CMosquittoClient::Publish(const std::string& topic, const std::string& payload, bool retain) {
    if (!handle_) return false;
    int id = 0;
    const int rc = mosquitto_publish(handle_.get(), &id, topic.c_str(), static_cast<int>(payload.size()),
                                     payload.data(), 1, retain);
    // Not connected: libmosquitto keeps the message and sends it on the next connection.
    if (rc == MOSQ_ERR_SUCCESS || rc == MOSQ_ERR_NO_CONN) {
        // Its acknowledgement may have come before mosquitto_publish returned.
        const std::lock_guard<std::mutex> lock(mutex_);
        if (early_.erase(id) == 0) pending_.insert(id);
    }
    return rc == MOSQ_ERR_SUCCESS;
}

bool CMosquittoClient::Subscribe(const std::string& pattern) {
    if (!handle_) return false;
    return mosquitto_subscribe(handle_.get(), nullptr, pattern.c_str(), 1) == MOSQ_ERR_SUCCESS;
}

void CMosquittoClient::Stop() {
    const std::lock_guard<std::mutex> stop(stopMutex_);
    if (!handle_) return;
    int lost = 0;
    {
        // What was published last (the "offline" of a clean stop) reaches the broker first.
        std::unique_lock<std::mutex> lock(mutex_);
        if (!wake_.wait_for(lock, std::chrono::seconds(2), [this] { return pending_.empty(); })) {
            lost = static_cast<int>(pending_.size());
        }
    }
    mosquitto_disconnect(handle_.get());  // queued for the network thread, which sends it last
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    if (thread_.joinable()) thread_.join();
    handle_.reset();
    if (lost > 0) log("mqtt: " + std::to_string(lost) + " messages were not acknowledged before the connection closed");
}

void CMosquittoClient::onPublish(mosquitto*, void* self, int id) {
    auto* client = static_cast<CMosquittoClient*>(self);
    try {
        const std::lock_guard<std::mutex> lock(client->mutex_);
        if (client->pending_.erase(id) == 0) client->early_.insert(id);
    } catch (...) {  // no memory for the note: Stop() waits its two seconds instead
    }
    client->wake_.notify_all();
}

void CMosquittoClient::onConnect(mosquitto*, void* self, int rc) {
    auto* client = static_cast<CMosquittoClient*>(self);
    try {
        if (rc != 0) {
            client->log(std::string("mqtt: the broker refused the connection: ") + mosquitto_connack_string(rc));
            return;
        }
        client->backoff_ = 1;
        client->log("mqtt: connected");
        if (client->connected_) client->connected_();
    } catch (const std::exception& e) {
        client->log(std::string("mqtt: connect handler failed: ") + e.what());
    } catch (...) {
        client->log("mqtt: connect handler failed");
    }
}

void CMosquittoClient::onDisconnect(mosquitto*, void* self, int rc) {
    auto* client = static_cast<CMosquittoClient*>(self);
    try {
        if (rc != 0) client->log("mqtt: connection lost; reconnecting with backoff");
    } catch (...) {
    }
}

void CMosquittoClient::onMessage(mosquitto*, void* self, const mosquitto_message* message) {
    auto* client = static_cast<CMosquittoClient*>(self);
    try {
        if (!client->message_ || message == nullptr || message->topic == nullptr) return;
        const char* data = static_cast<const char*>(message->payload);
        client->message_(message->topic,
                         data == nullptr ? std::string() : std::string(data, static_cast<std::size_t>(message->payloadlen)));
    } catch (const std::exception& e) {
        client->log(std::string("mqtt: message handler failed: ") + e.what());
    } catch (...) {
        client->log("mqtt: message handler failed");
    }
}

}  // namespace ircontrol::host

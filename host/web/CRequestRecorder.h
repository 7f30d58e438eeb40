// Runs one request to the plugin at a time for the web and publishes each step as a live event
// (a JSON object's text): the request, the plugin's log lines while it runs, its transmissions
// and the result. Run() is called on one worker thread; the log listener it adds to the
// simulator (beside --verbose's) is removed by the destructor. Throws nothing of its own.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "JsonValue.h"
#include "Request.h"
#include "sim/Simulator.h"

namespace ircontrol::host {

class CRequestRecorder {
public:
    using Publish = std::function<void(const std::string& json)>;
    // Parses and sends the request, filling the result; false with a reason when it could not be sent.
    using Send = std::function<bool(RequestResult& out, std::string& error)>;

    explicit CRequestRecorder(Publish publish);
    ~CRequestRecorder();
    CRequestRecorder(const CRequestRecorder&) = delete;
    CRequestRecorder& operator=(const CRequestRecorder&) = delete;

    uint64_t NextId() { return nextId_++; }
    // Publishes the request, sends it and returns the result object; "error" and "status" 400
    // instead when `send` refused it.
    // `kept`, when given, receives the tool's result (to look again at one that had no answer).
    common::json::JsonValue Run(uint64_t id, const common::json::JsonValue& request, const Send& send,
                                RequestResult* kept = nullptr);
    // Publishes a result again after a late answer or late transmissions came ("late": true).
    void Late(uint64_t id, const RequestResult& result);
    // Publishes an event that belongs to no request ("devices" after an edit, ...).
    void Announce(common::json::JsonValue event);

    // The one result object (CResultJson, as serve prints it) with what the page shows besides:
    // the web request's id, label, summary, each transmission as text and the request's log lines.
    static common::json::JsonValue Describe(uint64_t id, const RequestResult& result);

private:
    struct Capture {
        std::mutex mutex;
        uint64_t current = 0;  // the web request now being served, 0 between requests
        Publish publish;
    };

    std::chrono::steady_clock::time_point origin_;
    std::atomic<uint64_t> nextId_{1};
    std::shared_ptr<Capture> capture_;
    uint64_t listener_ = 0;
};

}  // namespace ircontrol::host

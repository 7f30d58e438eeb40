// Runs one request to the plugin at a time and records it for the web: the plugin's log lines
// while it runs, the answer's arrival, the transmissions with their on-air start and end. Each
// step is published as a live event (a JSON object's text). Run() is called on one worker
// thread; the listeners it installs on the simulator are removed by the destructor.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "CSession.h"
#include "JsonValue.h"
#include "sim/Simulator.h"

namespace ircontrol::host {

class CRequestRecorder {
public:
    using Publish = std::function<void(const std::string& json)>;
    // Sends the request and fills the exchange; false with a reason when it could not be sent.
    using Send = std::function<bool(Exchange& exchange, std::string& error)>;

    // `echo`: where --verbose shows the plugin's log lines (nullptr: nowhere).
    CRequestRecorder(int irDelayMs, int timeoutMs, Publish publish, std::ostream* echo, bool colour);
    ~CRequestRecorder();
    CRequestRecorder(const CRequestRecorder&) = delete;
    CRequestRecorder& operator=(const CRequestRecorder&) = delete;

    uint64_t NextId() { return nextId_++; }
    // Publishes the request, sends it and returns the result object; an "error" member instead
    // when `send` refused it.
    common::json::JsonValue Run(uint64_t id, const common::json::JsonValue& request, const Send& send);
    // Publishes an event that belongs to no request ("devices" after an edit, ...).
    void Announce(common::json::JsonValue event);

    // The message of the last error-priority line, without its source location; "" if none.
    static std::string LastError(const std::vector<sim::LogLine>& lines);
    // The result object of an exchange, times in ms from `start`.
    static common::json::JsonValue Describe(const Exchange& exchange, std::chrono::steady_clock::time_point start,
                                            std::chrono::steady_clock::time_point answered, int irDelayMs);

private:
    struct Capture {
        std::mutex mutex;
        uint64_t current = 0;  // request whose log lines are being collected, 0 for none
        std::vector<sim::LogLine> lines;
        std::map<uint64_t, std::chrono::steady_clock::time_point> answers;  // transaction -> arrival
        Publish publish;
        std::ostream* echo;
        bool colour;
    };

    int irDelayMs_;
    int timeoutMs_;
    std::chrono::steady_clock::time_point origin_;
    std::atomic<uint64_t> nextId_{1};
    std::shared_ptr<Capture> capture_;
};

}  // namespace ircontrol::host

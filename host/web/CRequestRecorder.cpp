#include "CRequestRecorder.h"

#include "CPrinter.h"
#include "CResultJson.h"
#include "GlibHandles.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;
using Clock = std::chrono::steady_clock;

double Ms(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

// Log texts are the plugin's bytes; JSON needs UTF-8.
std::string Utf8(const std::string& text) {
    if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr)) return text;
    const GCharPtr valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    return valid.get();
}

// JSON text for a browser must be UTF-8.
bool Valid(const JsonValue& value) {
    const std::string text = value.toString();
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr);
}

JsonValue LineJson(const sim::LogLine& line) {
    JsonValue entry;
    entry["priority"] = line.priority;
    entry["tag"] = Utf8(line.tag);
    entry["text"] = Utf8(line.text);
    return entry;
}

}  // namespace

CRequestRecorder::CRequestRecorder(Publish publish) : origin_(Clock::now()), capture_(std::make_shared<Capture>()) {
    capture_->publish = std::move(publish);
    std::weak_ptr<Capture> weak = capture_;
    // Lines come from the plugin's worker thread and the host's; they are shown live under the
    // web request being served (the result carries the simulator's exact attribution).
    listener_ = sim::Log::AddListener([weak](const sim::LogLine& line) {
        auto capture = weak.lock();
        if (!capture) return;
        std::lock_guard<std::mutex> lock(capture->mutex);
        if (!capture->publish) return;  // the recorder is gone
        JsonValue event = LineJson(line);
        event["type"] = "log";
        event["id"] = static_cast<long long>(capture->current);
        capture->publish(event.toString());
    });
}

CRequestRecorder::~CRequestRecorder() {
    sim::Log::RemoveListener(listener_);
    // The simulator calls a listener outside its own lock, so a line may already be on its way
    // in the plugin's worker. It publishes under the capture's lock: waiting for that lock and
    // dropping the publisher keeps it, and any later one, away from the event hub, which goes
    // right after this recorder.
    std::lock_guard<std::mutex> lock(capture_->mutex);
    capture_->publish = nullptr;
}

void CRequestRecorder::Announce(JsonValue event) {
    event["time_ms"] = Ms(Clock::now() - origin_);
    capture_->publish(event.toString());
}

void CRequestRecorder::Late(uint64_t id, const RequestResult& result) {
    JsonValue event = Describe(id, result);
    event["type"] = "answer";
    event["late"] = true;
    event["time_ms"] = Ms(Clock::now() - origin_);
    capture_->publish(event.toString());
}

JsonValue CRequestRecorder::Run(uint64_t id, const JsonValue& request, const Send& send, RequestResult* kept) {
    JsonValue started;
    started["type"] = "request";
    started["id"] = static_cast<long long>(id);
    started["request"] = request;
    started["time_ms"] = Ms(Clock::now() - origin_);
    capture_->publish(started.toString());
    {
        std::lock_guard<std::mutex> lock(capture_->mutex);
        capture_->current = id;
    }
    RequestResult outcome;
    std::string error;
    const bool sent = send(outcome, error);
    {
        std::lock_guard<std::mutex> lock(capture_->mutex);
        capture_->current = 0;
    }
    JsonValue result;
    if (sent && kept != nullptr) *kept = outcome;
    if (sent) {
        result = Describe(id, outcome);
    } else {
        result["id"] = static_cast<long long>(id);
        result["error"] = error;
        result["status"] = 400;
    }
    result["request"] = request;
    for (unsigned i = 0; i < result["ir"].size(); ++i) {
        JsonValue event = result["ir"][i];
        event["type"] = "transmission";
        event["id"] = static_cast<long long>(id);
        capture_->publish(event.toString());
    }
    JsonValue finished = result;
    finished["type"] = "answer";
    finished["time_ms"] = Ms(Clock::now() - origin_);
    capture_->publish(finished.toString());
    return result;
}

JsonValue CRequestRecorder::Describe(uint64_t id, const RequestResult& result) {
    JsonValue described = CResultJson::Build(result);
    if (!Valid(described)) {
        // Only bytes that are not UTF-8 (from a key map file, say) can make it unusable.
        described = JsonValue(common::json::kObject);
        described["outcome"] = ToString(result.outcome);
        described["reason"] = Utf8(result.reason);
    }
    // "id" is the web request's own; a client's id (as a serve line has one) moves aside.
    if (described.isMember("id")) {
        described["clientId"] = described["id"];
        described.removeMember("id");
    }
    described["id"] = static_cast<long long>(id);
    described["label"] = Utf8(result.label);
    described["summary"] = Utf8(result.summary);
    JsonValue& ir = described["ir"];
    for (unsigned i = 0; i < ir.size() && i < result.transmissions.size(); ++i) {
        ir[i]["text"] = CPrinter::Transmission(result.transmissions[i].call);
    }
    JsonValue& log = described["log"];
    log = JsonValue(common::json::kArray);
    for (const auto& line : result.log) log.append(LineJson(line));
    return described;
}

}  // namespace ircontrol::host

#include "CRequestRecorder.h"

#include "CLogEcho.h"
#include "CPrinter.h"
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

JsonValue LineJson(uint64_t id, const sim::LogLine& line) {
    JsonValue event;
    event["type"] = "log";
    event["id"] = static_cast<long long>(id);
    event["priority"] = line.priority;
    event["tag"] = Utf8(line.tag);
    event["text"] = Utf8(line.text);
    return event;
}

}  // namespace

std::string CRequestRecorder::LastError(const std::vector<sim::LogLine>& lines) {
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        if (line->priority < 6) continue;
        // "File.cpp : Function(12)  message": the message is what a reader needs.
        const std::size_t gap = line->text.find("  ");
        std::string message = gap == std::string::npos ? line->text : line->text.substr(gap + 2);
        while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) message.pop_back();
        return Utf8(message);
    }
    return std::string();
}

CRequestRecorder::CRequestRecorder(int irDelayMs, int timeoutMs, Publish publish, std::ostream* echo, bool colour)
    : irDelayMs_(irDelayMs), timeoutMs_(timeoutMs), origin_(Clock::now()), capture_(std::make_shared<Capture>()) {
    capture_->publish = std::move(publish);
    capture_->echo = echo;
    capture_->colour = colour;
    std::weak_ptr<Capture> weak = capture_;
    // Lines come from the plugin's worker thread (and the host's); a line outside a request is
    // published on its own.
    sim::Log::SetListener([weak](const sim::LogLine& line) {
        auto capture = weak.lock();
        if (!capture) return;
        std::lock_guard<std::mutex> lock(capture->mutex);
        if (capture->echo != nullptr) {
            *capture->echo << CLogEcho::Format(line.priority, line.tag, line.text, capture->colour) << std::endl;
        }
        if (capture->current != 0) capture->lines.push_back(line);
        capture->publish(LineJson(capture->current, line).toString());
    });
    sim::Host::SetResultListener([weak](const sim::SetResult& result) {
        auto capture = weak.lock();
        if (!capture) return;
        std::lock_guard<std::mutex> lock(capture->mutex);
        capture->answers[result.transaction] = Clock::now();
    });
}

CRequestRecorder::~CRequestRecorder() {
    sim::Log::SetListener(nullptr);
    sim::Host::SetResultListener(nullptr);
}

void CRequestRecorder::Announce(JsonValue event) {
    event["time_ms"] = Ms(Clock::now() - origin_);
    capture_->publish(event.toString());
}

JsonValue CRequestRecorder::Run(uint64_t id, const JsonValue& request, const Send& send) {
    const Clock::time_point start = Clock::now();
    JsonValue started;
    started["type"] = "request";
    started["id"] = static_cast<long long>(id);
    started["request"] = request;
    started["time_ms"] = Ms(start - origin_);
    capture_->publish(started.toString());
    {
        std::lock_guard<std::mutex> lock(capture_->mutex);
        capture_->current = id;
        capture_->lines.clear();
        capture_->answers.clear();
    }
    Exchange exchange;
    std::string error;
    const bool sent = send(exchange, error);
    std::vector<sim::LogLine> lines;
    Clock::time_point answered = Clock::now();
    {
        std::lock_guard<std::mutex> lock(capture_->mutex);
        capture_->current = 0;
        lines.swap(capture_->lines);
        const auto found = capture_->answers.find(exchange.transaction);
        if (sent && found != capture_->answers.end()) answered = found->second;
    }
    JsonValue result = sent ? Describe(exchange, start, answered, irDelayMs_) : JsonValue(common::json::kObject);
    result["id"] = static_cast<long long>(id);
    result["request"] = request;
    // A request the plugin refuses or drops says why in its last error line.
    const std::string why = LastError(lines);
    if (!sent) {
        result["error"] = error;
    } else if (!exchange.answer) {
        result["reason"] = "no answer within " + std::to_string(timeoutMs_) + " ms" + (why.empty() ? "" : ": " + why);
        result["why"] = why;
    } else if (exchange.answer->first != "ok") {
        result["why"] = why;
    }
    JsonValue& log = result["log"];
    log = JsonValue(common::json::kArray);
    for (const auto& line : lines) {
        JsonValue entry = LineJson(id, line);
        entry.removeMember("type");
        entry.removeMember("id");
        log.append(std::move(entry));
    }
    for (unsigned i = 0; i < result["transmissions"].size(); ++i) {
        JsonValue event = result["transmissions"][i];
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

JsonValue CRequestRecorder::Describe(const Exchange& exchange, Clock::time_point start, Clock::time_point answered,
                                     int irDelayMs) {
    JsonValue result;
    result["label"] = exchange.label;
    result["summary"] = Utf8(exchange.summary);
    result["property"] = Utf8(exchange.property);
    result["payload"] = Utf8(exchange.payload);
    result["transaction"] = static_cast<long long>(exchange.transaction);
    if (exchange.answer) {
        result["answer"]["errorCode"] = exchange.answer->first;
        result["answer"]["description"] = exchange.answer->second;
        result["reason"] = exchange.answer->first == "ok" ? "ok" : exchange.answer->first + ": " + exchange.answer->second;
        result["answer_ms"] = Ms(answered - start);
    } else {
        result["answer"] = JsonValue();
    }
    JsonValue& list = result["transmissions"];
    list = JsonValue(common::json::kArray);
    for (const auto& call : exchange.transmissions) {
        JsonValue entry;
        entry["function"] = sim::ToString(call.function);
        entry["text"] = CPrinter::Transmission(call);
        entry["deviceIndex"] = call.deviceIndex;
        if (call.function == sim::IrCall::Function::Aircon) {
            entry["power"] = call.power;
            entry["mode"] = call.mode;
            entry["setpoint"] = call.coolingSetpoint;
            entry["fan"] = call.fanSpeed;
        } else {
            entry["key"] = call.key;
        }
        // The simulated blaster holds the sender for the whole on-air time from the call on.
        entry["start_ms"] = Ms(call.time - start);
        entry["end_ms"] = Ms(call.time - start) + irDelayMs;
        list.append(std::move(entry));
    }
    result["elapsed_ms"] = Ms((exchange.answer ? answered : Clock::now()) - start);
    return result;
}

}  // namespace ircontrol::host

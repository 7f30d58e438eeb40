// dlog_print and the log part of the control API: every line is captured for tests and,
// when asked, echoed to stderr in a readable one-line form.
#include <dlog.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>

#include "SimInternal.h"
#include "sim/Simulator.h"

namespace sim {
namespace {

struct LogState {
    std::mutex mutex;
    std::deque<LogLine> lines;
    bool capture = true;
    std::size_t limit = 200000;
    bool echo = false;
    // By id; id 0 is SetListener's. Shared, so a line already handed out keeps its listener
    // alive while it is being called outside the lock.
    std::map<uint64_t, std::shared_ptr<const std::function<void(const LogLine&)>>> listeners;
    uint64_t nextListener = 1;

    LogState() {
        const char* env = std::getenv("VYRSIM_LOG");
        echo = env != nullptr && env[0] != '\0' && std::strcmp(env, "0") != 0;
    }
};

LogState& State() {
    static LogState* state = new LogState();  // never destroyed: plugin threads may log at exit
    return *state;
}

char PriorityLetter(int priority) {
    static const char kLetters[] = "?DVDIWEFS";
    return priority >= 0 && priority <= DLOG_SILENT ? kLetters[priority] : '?';
}

}  // namespace

std::vector<LogLine> Log::Lines() {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    return {s.lines.begin(), s.lines.end()};
}

std::vector<LogLine> Log::LinesFor(uint64_t transaction) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    std::vector<LogLine> out;
    for (const auto& line : s.lines) {
        if (line.transaction == transaction) out.push_back(line);
    }
    return out;
}

void Log::Clear() {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.lines.clear();
}

std::size_t Log::Count(const std::string& needle, const std::string& tag) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    std::size_t n = 0;
    for (const auto& line : s.lines) {
        if ((tag.empty() || line.tag == tag) && line.text.find(needle) != std::string::npos) ++n;
    }
    return n;
}

bool Log::Contains(const std::string& needle, const std::string& tag) {
    return Count(needle, tag) > 0;
}

void Log::SetCapture(bool on, std::size_t limit) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.capture = on;
    s.limit = limit;
    while (s.lines.size() > s.limit) s.lines.pop_front();
}

void Log::SetEcho(bool on) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.echo = on;
}

void Log::SetListener(std::function<void(const LogLine&)> listener) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (listener) {
        s.listeners[0] = std::make_shared<const std::function<void(const LogLine&)>>(std::move(listener));
    } else {
        s.listeners.erase(0);
    }
}

uint64_t Log::AddListener(std::function<void(const LogLine&)> listener) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (!listener) return 0;
    const uint64_t id = s.nextListener++;
    s.listeners[id] = std::make_shared<const std::function<void(const LogLine&)>>(std::move(listener));
    return id;
}

void Log::RemoveListener(uint64_t id) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (id != 0) s.listeners.erase(id);
}

void internal::ResetLog() {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.lines.clear();
    s.capture = true;
    s.limit = 200000;
    s.listeners.clear();
}

}  // namespace sim

extern "C" int dlog_print(log_priority prio, const char* tag, const char* fmt, ...) {
    if (fmt == nullptr) return -1;
    auto& state = sim::State();
    {
        // Nobody is looking: skip the formatting, as a disabled log level would on the TV.
        std::lock_guard<std::mutex> lock(state.mutex);
        if (!state.capture && !state.echo && state.listeners.empty()) return 0;
    }
    va_list args;
    va_start(args, fmt);
    va_list copy;
    va_copy(copy, args);
    int length = std::vsnprintf(nullptr, 0, fmt, copy);
    va_end(copy);
    std::string text;
    if (length > 0) {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(&text[0], text.size() + 1, fmt, args);
    }
    va_end(args);

    sim::LogLine line{static_cast<int>(prio), tag != nullptr ? tag : "", std::move(text),
                      sim::internal::ServingTransaction()};
    std::vector<std::shared_ptr<const std::function<void(const sim::LogLine&)>>> listeners;
    {
        auto& s = state;
        std::lock_guard<std::mutex> lock(s.mutex);
        if (s.echo) {
            std::string shown = line.text;
            while (!shown.empty() && shown.back() == '\n') shown.pop_back();
            std::fprintf(stderr, "%c/%-11s %s\n", sim::PriorityLetter(line.priority),
                         line.tag.c_str(), shown.c_str());
        }
        for (const auto& [id, listener] : s.listeners) listeners.push_back(listener);
        if (s.capture) {
            s.lines.push_back(line);
            while (s.lines.size() > s.limit) s.lines.pop_front();
        }
    }
    for (const auto& listener : listeners) (*listener)(line);
    return length;
}

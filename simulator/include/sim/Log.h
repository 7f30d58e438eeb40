// The simulated platform log: every dlog_print line captured for tests, optionally echoed.
// One piece of the simulator's control API (see sim/Simulator.h); every function is thread-safe.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace sim {

struct LogLine {
    int priority;        // the dlog priority number (3 debug, 4 info, 6 error, ...)
    std::string tag;
    std::string text;    // fully formatted message
    uint64_t transaction = 0;  // the request the logging thread served (Host::ServingTransaction)
};

class Log {
public:
    static std::vector<LogLine> Lines();                 // snapshot, oldest first
    static std::vector<LogLine> LinesFor(uint64_t transaction);  // that request's lines, oldest first
    static void Clear();
    // Lines whose text contains `needle` (and whose tag equals `tag`, when given).
    static std::size_t Count(const std::string& needle, const std::string& tag = "");
    static bool Contains(const std::string& needle, const std::string& tag = "");
    // Capture on by default; the newest `limit` lines are kept (default 200000).
    static void SetCapture(bool on, std::size_t limit = 200000);
    // Also print each line to stderr in a readable one-line form. Starts on when the
    // environment variable VYRSIM_LOG is set to a non-empty value other than "0".
    static void SetEcho(bool on);
    // Listeners are called for every line after capture (e.g. for a tool's own display), on the
    // logging thread, outside the log's lock, in the order they were added (SetListener's first).
    // A listener removed while a line is on its way may still be called with that line.
    // The one listener SetListener sets: each call replaces it; empty to remove.
    static void SetListener(std::function<void(const LogLine&)> listener);
    // Listeners beside it, each kept until removed by the id AddListener gave (> 0).
    static uint64_t AddListener(std::function<void(const LogLine&)> listener);
    static void RemoveListener(uint64_t id);
};

}  // namespace sim

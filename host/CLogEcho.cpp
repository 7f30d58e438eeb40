#include "CLogEcho.h"

#include <dlog.h>

#include <algorithm>
#include <cctype>

#include "sim/Simulator.h"

namespace ircontrol::host {

CLogEcho::CLogEcho(std::ostream& out, bool terminal, int minPriority) : sink_(new Sink{{}, out, terminal}) {
    // The simulator's own echo would print every line a second time.
    sim::Log::SetEcho(false);
    std::shared_ptr<Sink> sink = sink_;
    listener_ = sim::Log::AddListener([sink, minPriority](const sim::LogLine& line) {
        if (line.priority < minPriority) return;
        const std::string text = Format(line.priority, line.tag, line.text, sink->terminal);
        std::lock_guard<std::mutex> lock(sink->mutex);
        if (sink->open) sink->out << text << '\n' << std::flush;
    });
}

CLogEcho::~CLogEcho() {
    sim::Log::RemoveListener(listener_);
    // A line being written on another thread finishes before the stream can go away, and a
    // listener call already under way elsewhere writes nothing afterwards.
    std::lock_guard<std::mutex> lock(sink_->mutex);
    sink_->open = false;
}

std::string CLogEcho::Format(int priority, const std::string& tag, const std::string& text, bool colour) {
    static const char kLetters[] = "??VDIWEF";  // DLOG_VERBOSE .. DLOG_FATAL
    const char letter = priority >= 0 && priority <= DLOG_FATAL ? kLetters[priority] : '?';
    std::string body;
    body.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!colour && text[i] == '\x1b' && i + 1 < text.size() && text[i + 1] == '[') {
            // Only a complete colour sequence (ESC [ digits and semicolons m) is dropped.
            std::size_t end = i + 2;
            while (end < text.size() && (std::isdigit(static_cast<unsigned char>(text[end])) || text[end] == ';')) ++end;
            if (end < text.size() && text[end] == 'm') {
                i = end;
                continue;
            }
        }
        body += text[i];
    }
    while (!body.empty() && (body.back() == '\n' || body.back() == '\r')) body.pop_back();
    std::string head = std::string(1, letter) + "/" + tag;
    head.resize(std::max<std::size_t>(head.size() + 1, 14), ' ');
    return head + body;
}

}  // namespace ircontrol::host

// --verbose: shows every line the plugin logs on a stream while it lives, one readable line each
// ("I/IRCONTROL   CIRControl.cpp : HandleKeyEvent(33)  key event str: ..."). Colour sequences
// are kept only when the stream is a terminal. Lines come from any thread; they are serialised.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>

namespace ircontrol::host {

class CLogEcho {
public:
    // Lines below `minPriority` (a dlog priority, DLOG_INFO, DLOG_ERROR, ...; 0 shows all) are
    // left out. Other log listeners (the web remote's) are not disturbed.
    CLogEcho(std::ostream& out, bool terminal, int minPriority = 0);
    ~CLogEcho();  // removes the listener; no line is written afterwards
    CLogEcho(const CLogEcho&) = delete;
    CLogEcho& operator=(const CLogEcho&) = delete;

    // "E/IRCONTROL   text", without ESC [ ... m sequences unless `colour`.
    static std::string Format(int priority, const std::string& tag, const std::string& text, bool colour);

private:
    struct Sink {
        std::mutex mutex;
        std::ostream& out;
        bool terminal;
        bool open = true;  // false once the echo is gone: a late line is dropped
    };
    std::shared_ptr<Sink> sink_;
    uint64_t listener_ = 0;
};

}  // namespace ircontrol::host

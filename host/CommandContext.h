// What a command's handler (CommandInfo::run) works with: the parsed options, the streams, the
// printer for the chosen form and the set-up platform, session and plugin. CApp builds it and
// owns everything it refers to, for the handler's run on CApp's thread.
#pragma once

#include <chrono>
#include <istream>
#include <memory>
#include <ostream>
#include <string>

#include "CCommandLine.h"
#include "CLogEcho.h"
#include "CPlatformSetup.h"
#include "CPluginLibrary.h"
#include "CSession.h"
#include "IPrinter.h"

namespace ircontrol::host {

struct CommandContext {
    const Options& options;
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
    bool errIsTerminal;
    IPrinter& printer;
    CSession& session;
    CPlatformSetup& setup;
    CPluginLibrary& plugin;
    const Options& commandLine;  // as given, before --config was merged in (a reload merges again)

    // Reports a failure as one line on `err` and gives `status` back.
    int Fail(const std::string& reason, int status) const {
        err << "ircontrol-host: " << reason << "\n";
        return status;
    }
    // How long the last look for late answers waits for each: a request behind in the plugin's
    // queue answers within one on-air time of the one before it.
    std::chrono::milliseconds DrainWait() const {
        return std::chrono::milliseconds(options.timeoutMs + options.irDelayMs);
    }
};

}  // namespace ircontrol::host

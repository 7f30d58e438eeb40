// One run of ircontrol-host: prepares the simulated platform, loads and starts the plugin, runs
// the subcommand, stops and unloads the plugin. Run() returns the exit status: 0 when every
// request was usable and answered ok in time (devices: the lists were usable), 1 a refused,
// unanswered or late request or an unusable input, 2 a mistake in a single command's values or a
// --devices/--catalogue path that names no readable file.
// It reports every failure as one line on `err` and throws nothing. One CApp per plugin lifecycle.
#pragma once

#include <chrono>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "CCommandLine.h"
#include "CLogEcho.h"
#include "CPlatformSetup.h"
#include "CPluginLibrary.h"
#include "CPrinter.h"
#include "CSession.h"
#include "Request.h"
#ifdef IRC_HOST_HOME
#include "CHomeService.h"
#endif

namespace ircontrol::host {

class CApp {
public:
    // `errIsTerminal` keeps colour in --verbose log lines.
    CApp(Options options, std::istream& in, std::ostream& out, std::ostream& err, bool errIsTerminal = false);
    int Run();

private:
    int run();
    bool configure(std::string& error);
    bool start();
    int demo();
    int devices();
    int serve();
    int web();
    int service();
    int single();
    // Looks again at requests that had no answer in time, printing what came late; waits up to
    // `wait` for each. Drops those that are answered.
    void catchUp(std::vector<RequestResult>& pending, std::chrono::milliseconds wait);
    std::chrono::milliseconds drainWait() const;  // how long the last catch-up waits for each
    int fail(const std::string& reason, int status);

    Options options_;
#ifdef IRC_HOST_HOME
    std::unique_ptr<CHomeService> home_;  // service: made before the plugin starts
#endif
    std::istream& in_;
    std::ostream& out_;
    std::ostream& err_;
    bool errIsTerminal_;
    CPrinter printer_;
    CSession session_;
    CPlatformSetup setup_;
    std::unique_ptr<CLogEcho> echo_;
    CPluginLibrary plugin_;  // last: stopped and unloaded first, while the echo still listens
};

}  // namespace ircontrol::host

// One run of ircontrol-host: sets up what the command needs (the simulated platform, the plugin
// loaded and started), runs the command's handler from the command table, stops and unloads the
// plugin. Run() returns the exit status: 0 when every request was usable and answered ok in time
// (devices: the lists were usable), 1 a refused, unanswered or late request or an unusable input,
// 2 a mistake in a single command's values or a --devices/--catalogue path that names no
// readable file. It reports every failure as one line on `err` and throws nothing. One CApp per
// plugin lifecycle.
#pragma once

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

class CApp {
public:
    // `errIsTerminal` keeps colour in --verbose log lines.
    CApp(Options options, std::istream& in, std::ostream& out, std::ostream& err, bool errIsTerminal = false);
    int Run();

private:
    int run();
    bool configure(std::string& error);
    bool start();
    int fail(const std::string& reason, int status);

    Options options_;
    std::istream& in_;
    std::ostream& out_;
    std::ostream& err_;
    bool errIsTerminal_;
    std::unique_ptr<IPrinter> printer_;
    CSession session_;
    const Options given_;  // options_ as given, before configure() merged the file in
    CPlatformSetup setup_;
    std::unique_ptr<CLogEcho> echo_;
    CPluginLibrary plugin_;  // last: stopped and unloaded first, while the echo still listens
};

}  // namespace ircontrol::host

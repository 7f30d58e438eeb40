// One run of ircontrol-host: prepares the simulated platform, loads and starts the plugin, runs
// the subcommand, stops and unloads the plugin. Run() returns the exit status: 0 success, 1 a
// refused or missing answer or an unusable input, 2 a mistake on the command line. It reports
// every failure as one line on `err` and throws nothing. One CApp per plugin lifecycle.
#pragma once

#include <istream>
#include <map>
#include <memory>
#include <ostream>
#include <string>

#include "CCommandLine.h"
#include "CLogEcho.h"
#include "CPlatformSetup.h"
#include "CPluginLibrary.h"
#include "CPrinter.h"
#include "CSession.h"

namespace ircontrol::host {

class CApp {
public:
    // `errIsTerminal` keeps colour in --verbose log lines.
    CApp(Options options, std::istream& in, std::ostream& out, std::ostream& err, bool errIsTerminal = false);
    int Run();

private:
    using Values = std::map<std::string, std::string>;

    int run();
    bool start();
    int demo();
    int devices();
    int serve();
    int web();
    int single();
    // Builds and sends a key, ac or set request from its named values; false with a reason.
    bool request(const std::string& command, const Values& values, Exchange& out, std::string& error);
    std::string option(const std::string& name) const;  // "--type", or "\"type\"" when serving
    int fail(const std::string& reason, int status);

    Options options_;
    std::istream& in_;
    std::ostream& out_;
    std::ostream& err_;
    bool errIsTerminal_;
    bool serving_ = false;
    CPrinter printer_;
    CSession session_;
    CPlatformSetup setup_;
    std::unique_ptr<CLogEcho> echo_;
    CPluginLibrary plugin_;  // last: stopped and unloaded first, while the echo still listens
};

}  // namespace ircontrol::host

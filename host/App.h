// One run of ircontrol-host: sets up the simulated platform, loads and starts the plugin, runs
// the subcommand and stops the plugin. Returns the exit status: 0 success, 1 a refused or
// missing answer or an unusable input file, 2 a mistake on the command line.
#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <vector>

#include "Defaults.h"
#include "Options.h"
#include "PluginLibrary.h"
#include "Printer.h"
#include "Session.h"

namespace irhost {

class App {
public:
    App(Options options, std::istream& in, std::ostream& out, std::ostream& err);
    int Run();

private:
    bool setUp();
    int demo();
    int key();
    int ac();
    int set();
    int devices();
    int serve();
    int fail(const std::string& reason, int status = 2);
    int verdict(const Exchange& exchange);
    std::string pairedCodeset(const std::string& type) const;

    Options options_;
    std::istream& in_;
    std::ostream& out_;
    std::ostream& err_;
    Printer printer_;
    Session session_;
    PluginLibrary plugin_;
    std::vector<PairedDevice> devices_;
    std::vector<std::pair<std::string, std::string>> catalogue_;
    std::string pairingText_;
};

}  // namespace irhost

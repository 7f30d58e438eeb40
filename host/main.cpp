// ircontrol-host: loads the IR control plugin into the desktop platform simulator, the way the
// TV's host framework does, and drives it from the command line.
#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "CApp.h"
#include "CCommandLine.h"

using ircontrol::host::CApp;
using ircontrol::host::CCommandLine;

int main(int argc, char** argv) {
    try {
        ircontrol::host::Options options = CCommandLine::Parse({argv + 1, argv + argc});
        if (options.version && options.error.empty()) {
            std::cout << CCommandLine::Version() << "\n";
            return 0;
        }
        if (options.help) {
            const auto* info = CCommandLine::FindCommand(options.command);
            std::cout << (info != nullptr ? CCommandLine::CommandUsage(*info) : CCommandLine::Usage());
            return 0;
        }
        if (!options.error.empty()) {
            std::cerr << "ircontrol-host: " << options.error << "\n";
            return 2;
        }
        return CApp(std::move(options), std::cin, std::cout, std::cerr, isatty(STDERR_FILENO) != 0).Run();
    } catch (const std::exception& e) {
        std::cerr << "ircontrol-host: " << e.what() << "\n";
        return 1;
    }
}

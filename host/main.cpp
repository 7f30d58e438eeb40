// ircontrol-host: loads the IR control plugin into the desktop platform simulator, the way the
// TV's host framework does, and drives it from the command line.
#include <iostream>
#include <string>
#include <vector>

#include "App.h"
#include "Options.h"

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    irhost::Options options = irhost::Parse(args);
    if (options.help) {
        const irhost::CommandSpec* spec = irhost::FindCommand(options.command);
        std::cout << (spec != nullptr ? irhost::CommandUsage(*spec) : irhost::Usage());
        return 0;
    }
    if (!options.error.empty()) {
        std::cerr << "ircontrol-host: " << options.error << "\n";
        return 2;
    }
    try {
        irhost::App app(std::move(options), std::cin, std::cout, std::cerr);
        return app.Run();
    } catch (const std::exception& e) {
        std::cerr << "ircontrol-host: " << e.what() << "\n";
        return 1;
    }
}

// Command-line options of ircontrol-host: global options, a subcommand and its own options.
// Parse() never exits or throws: mistakes come back as a one-line reason in `error`.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace irhost {

struct Options {
    std::string command;                       // demo, key, ac, set, devices, serve
    std::string plugin;                        // empty: the library beside the executable
    std::string devicesFile;
    std::string catalogueFile;
    std::optional<int> year;
    bool verbose = false;
    bool json = false;
    bool help = false;
    int irDelayMs = 0;
    int timeoutMs = 2000;
    std::map<std::string, std::string> values;  // the subcommand's --name value pairs
    std::string error;                         // set when the command line is unusable
};

// Options taken by each subcommand, for checking and for --help.
struct CommandSpec {
    std::string name;
    std::string summary;
    std::vector<std::pair<std::string, std::string>> options;  // name, help text
};

const std::vector<CommandSpec>& Commands();
const CommandSpec* FindCommand(const std::string& name);

Options Parse(const std::vector<std::string>& args);
std::string Usage();                                // the whole tool
std::string CommandUsage(const CommandSpec& spec);  // one subcommand

}  // namespace irhost

// Command line of ircontrol-host: global options, a subcommand and the subcommand's own options.
// Parse() never exits or throws: a mistake comes back as a one-line reason in Options::error.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ircontrol::host {

struct Options {
    std::string command;                       // demo, key, ac, set, devices, serve, web
    std::string plugin;                        // empty: the library beside the executable
    std::string devicesFile;
    std::string catalogueFile;
    std::optional<int> year;
    std::optional<bool> mbrSupport;
    bool verbose = false;
    bool json = false;
    bool help = false;
    int irDelayMs = 0;
    int timeoutMs = 2000;
    std::map<std::string, std::string> values;  // the subcommand's --name value pairs
    std::string error;                         // set when the command line is unusable
};

// A subcommand with the options it takes, for checking and for --help.
struct CommandInfo {
    std::string name;
    std::string summary;
    std::vector<std::pair<std::string, std::string>> options;  // name, help text
};

class CCommandLine {
public:
    static Options Parse(const std::vector<std::string>& args);
    static const std::vector<CommandInfo>& Commands();
    static const CommandInfo* FindCommand(const std::string& name);  // nullptr if unknown
    static std::string Usage();                                      // the whole tool
    static std::string CommandUsage(const CommandInfo& info);        // one subcommand
    // A decimal integer within +-1e9 filling the whole text.
    static bool ParseInt(const std::string& text, int& out);
};

}  // namespace ircontrol::host

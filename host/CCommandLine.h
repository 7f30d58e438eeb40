// Command line of ircontrol-host: global options, a subcommand and the subcommand's own options,
// each as "--name value" or "--name=value". Both kinds of option come from tables (Globals(),
// Commands()), which also give --help its text and unknown options their hint; the command table
// holds each command's handler and what it needs set up before it runs. A request command's
// options are its request kind's fields (FieldsOf). Parse() never exits or throws: a mistake
// comes back as a one-line reason in Options::error.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "PlatformOptions.h"

namespace ircontrol::host {

struct Options {
    std::string command;                       // demo, key, ac, set, devices, serve, web, service
    std::string configFile;                    // --config: the service's configuration file
    std::string plugin;                        // empty: the library beside the executable
    PlatformOptions platform;                  // --devices, --catalogue, --codesets, --ir-device, ...
    std::string irReceiver;                    // where received IR comes from: /dev/lircN or a file
    bool verbose = false;
    int logLevel = 0;                          // lowest log priority --verbose shows (0: all)
    bool json = false;
    bool help = false;
    bool version = false;
    int irDelayMs = 0;
    int timeoutMs = 2000;
    bool timeoutSet = false;                   // --timeout was given
    std::map<std::string, std::string> values;  // the subcommand's --name value pairs ("true" for a flag)
    std::vector<std::string> arguments;        // words after the command (decode's SOURCE, import's files)
    std::string error;                         // set when the command line is unusable
};

// A global option: its name without "--", the value's placeholder ("" for a flag), its help,
// and what it does to the options (a one-line reason when the value does not fit).
struct GlobalOption {
    std::string name;
    std::string placeholder;
    std::string help;
    std::function<std::string(Options&, const std::string& value)> apply;
};

struct CommandContext;  // CommandContext.h: what a handler works with

// What a command needs before its handler runs: nothing, the simulated platform set up from the
// options, or that and the plugin loaded and started.
enum class CommandNeeds { Nothing, Platform, Plugin };

// A subcommand: the options it takes (for checking and for --help) and its handler, which
// returns the exit status.
struct CommandInfo {
    std::string name;
    std::string summary;
    std::vector<std::pair<std::string, std::string>> options;  // name, help text
    std::string details;                                        // more text for its --help
    CommandNeeds needs = CommandNeeds::Plugin;
    int (*run)(CommandContext& context) = nullptr;
    std::string operands = {};      // its words after the command, for --help: "" none, "SOURCE" one, "FILE..." several
    std::vector<std::string> flags = {};                        // its options that take no value
};

class CCommandLine {
public:
    static Options Parse(const std::vector<std::string>& args);
    static const std::vector<GlobalOption>& Globals();
    static const std::vector<CommandInfo>& Commands();
    static const CommandInfo* FindCommand(const std::string& name);  // nullptr if unknown
    static std::string Usage();                                      // the whole tool
    static std::string CommandUsage(const CommandInfo& info);        // one subcommand
    static std::string Version();                                    // "ircontrol-host 1.0"
    // A decimal integer within +-1e9 filling the whole text.
    static bool ParseInt(const std::string& text, int& out);
};

}  // namespace ircontrol::host

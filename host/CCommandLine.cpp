#include "CCommandLine.h"

#include <dlog.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "Commands.h"
#include "Nearest.h"
#include "Request.h"

#ifndef IRC_HOST_VERSION
#define IRC_HOST_VERSION "unknown"
#endif

namespace ircontrol::host {
namespace {

// A word after the command is its argument while the command takes one more ("FILE..." any number).
bool TakesArgument(const CommandInfo& info, const Options& options) {
    if (info.operands.empty()) return false;
    const bool several = info.operands.size() > 3 && info.operands.compare(info.operands.size() - 3, 3, "...") == 0;
    return several || options.arguments.empty();
}

std::string Pad(const std::string& text, std::size_t width) {
    return text.size() >= width ? text + " " : text + std::string(width - text.size(), ' ');
}

// A setter for a millisecond option; `minimum` is 0 or 1.
std::function<std::string(Options&, const std::string&)> Milliseconds(int Options::*field, int minimum,
                                                                      const std::string& option) {
    return [field, minimum, option](Options& o, const std::string& value) -> std::string {
        int number = 0;
        if (!CCommandLine::ParseInt(value, number) || number < minimum) {
            return "--" + option + " needs milliseconds, not '" + value + "'";
        }
        o.*field = number;
        return "";
    };
}

std::function<std::string(Options&, const std::string&)> File(std::string PlatformOptions::*field,
                                                               const std::string& option) {
    return [field, option](Options& o, const std::string& value) -> std::string {
        if (value.empty()) return "--" + option + " needs a file name, not an empty text";
        o.platform.*field = value;
        return "";
    };
}

// A request command's options: the fields of its request kind.
std::vector<std::pair<std::string, std::string>> FieldOptions(RequestKind kind) {
    std::vector<std::pair<std::string, std::string>> options;
    for (const RequestField& field : FieldsOf(kind)) options.emplace_back(field.name, field.help);
    return options;
}

}  // namespace

bool CCommandLine::ParseInt(const std::string& text, int& out) {
    if (text.empty()) return false;
    char* end = nullptr;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    if (*end != '\0' || value < -1000000000LL || value > 1000000000LL) return false;
    out = static_cast<int>(value);
    return true;
}

std::string CCommandLine::Version() { return std::string("ircontrol-host ") + IRC_HOST_VERSION; }

const std::vector<GlobalOption>& CCommandLine::Globals() {
    static const std::vector<GlobalOption> globals = {
        {"plugin", "PATH", "plugin library (default: libircontrol-plugin.so beside this program)",
         [](Options& o, const std::string& v) -> std::string {
             if (v.empty()) return "--plugin needs a path, not an empty text";
             o.plugin = v;
             return "";
         }},
        {"config", "FILE", "the service's configuration file (docs/home.md); options given here override it",
         [](Options& o, const std::string& v) -> std::string {
             if (v.empty()) return "--config needs a file name, not an empty text";
             o.configFile = v;
             return "";
         }},
        {"devices", "FILE", "pairing list JSON {\"dev_info\":[{\"codeset\",\"device_index\",\"type\"}]}",
         File(&PlatformOptions::devicesFile, "devices")},
        {"catalogue", "FILE", "key maps the IR library reports, JSON {\"<codeset>\": <key map>}",
         File(&PlatformOptions::catalogueFile, "catalogue")},
        {"codesets", "FILE", "what each codeset sends, JSON (docs/codesets.md; default: the embedded ones)",
         File(&PlatformOptions::codesetsFile, "codesets")},
        {"ir-device", "DEV", "transmit for real: /dev/lircN, or mode2:FILE to write what would be sent",
         File(&PlatformOptions::irDevice, "ir-device")},
        {"ir-receiver", "DEV|FILE", "receive IR (decode, learn): /dev/lircN, or a mode2, Pronto or Flipper .ir file",
         [](Options& o, const std::string& v) -> std::string {
             if (v.empty()) return "--ir-receiver needs a device or a file, not an empty text";
             o.irReceiver = v;
             return "";
         }},
        {"year", "N",
         "TV model year the platform reports (default 23); the plugin only logs it when it starts",
         [](Options& o, const std::string& v) -> std::string {
             int number = 0;
             if (!ParseInt(v, number)) return "--year needs a whole number, not '" + v + "'";
             o.platform.year = number;
             return "";
         }},
        {"mbr-support", "on|off",
         "IR service feature flag the platform reports (default on); the plugin does not read it today",
         [](Options& o, const std::string& v) -> std::string {
             if (v != "on" && v != "off") return "--mbr-support needs on or off, not '" + v + "'";
             o.platform.mbrSupport = v == "on";
             return "";
         }},
        {"ir-delay", "MS", "simulated on-air time of each transmission (default 0)",
         Milliseconds(&Options::irDelayMs, 0, "ir-delay")},
        {"timeout", "MS", "how long to wait for each answer (default 2000), or for a press (decode, learn)",
         [](Options& o, const std::string& v) -> std::string {
             o.timeoutSet = true;
             return Milliseconds(&Options::timeoutMs, 1, "timeout")(o, v);
         }},
        {"json", "", "machine-readable output, one JSON object per line",
         [](Options& o, const std::string&) -> std::string {
             o.json = true;
             return "";
         }},
        {"verbose", "", "show the plugin's own log lines on stderr, as it logs them",
         [](Options& o, const std::string&) -> std::string {
             o.verbose = true;
             return "";
         }},
        {"log-level", "LEVEL", "--verbose with only lines at or above debug (all), info or error",
         [](Options& o, const std::string& v) -> std::string {
             // debug shows every line, whatever its priority.
             const std::vector<std::pair<std::string, int>> levels = {
                 {"debug", DLOG_UNKNOWN}, {"info", DLOG_INFO}, {"error", DLOG_ERROR}};
             for (const auto& [name, priority] : levels) {
                 if (v == name) {
                     o.logLevel = priority;
                     o.verbose = true;
                     return "";
                 }
             }
             return "--log-level needs debug, info or error, not '" + v + "'";
         }},
        {"version", "", "print the version and exit",
         [](Options& o, const std::string&) -> std::string {
             o.version = true;
             return "";
         }},
    };
    return globals;
}

const std::vector<CommandInfo>& CCommandLine::Commands() {
    static const std::vector<CommandInfo> commands = {
        {"demo", "a guided tour: each appliance kind, an air-conditioner state, refused requests", {}, "",
         CommandNeeds::Plugin, RunDemo},
        {"key", "send one key to one appliance", FieldOptions(RequestKind::Key),
         "The service accepts a fixed set of key codes per appliance type (see 'devices');\n"
         "a key name is only looked up in the key map to find its code.\n",
         CommandNeeds::Plugin, RunRequest},
        {"ac", "send an air-conditioner state", FieldOptions(RequestKind::Ac), "", CommandNeeds::Plugin, RunRequest},
        {"set", "set any property to any text", FieldOptions(RequestKind::Set), "", CommandNeeds::Plugin, RunRequest},
        {"devices", "list the paired appliances: the keys the service accepts and the key maps", {}, "",
         CommandNeeds::Platform, RunDevices},
        {"serve", "read requests as JSON lines on stdin, write JSON lines about them", {},
         "Each input line is one JSON object:\n"
         "  \"command\"  key, ac, set or devices (required)\n"
         "  \"id\"       any value, echoed as text in every output object about the line\n"
         "  and the command's own options as members: {\"command\":\"key\",\"type\":\"fan\",\"key\":10},\n"
         "  {\"command\":\"ac\",\"mode\":\"HEAT\",\"setpoint\":22}; numbers may be written 22 or 22.0.\n"
         "Each output object has \"line\" (the input line number) and \"id\" when one was given;\n"
         "a line that cannot be used gets {\"line\",\"id\",\"error\"}. A request that had no answer\n"
         "in time gets a second object with \"late\":true once its answer or transmissions come.\n"
         "Exit status: 0 when every line was usable and answered ok in time, 1 otherwise.\n",
         CommandNeeds::Plugin, RunServe},
        {"web", "serve a web remote: the page, a JSON API and a live event stream (Ctrl-C stops)",
         {{"listen", "ADDRESS:PORT to serve on (default 127.0.0.1:8088; port 0 picks a free one)"}},
         "Open the printed address in a browser. The API, JSON in and out:\n"
         "  POST /api/requests  {\"name\",\"value\",\"kind\"} or {\"properties\":[...]}; ?wait=false answers at once\n"
         "  POST /api/key, POST /api/ac  the members a serve line takes\n"
         "  GET, PUT /api/devices  the pairing list, accepted keys and key maps\n"
         "  GET /api/events  a live stream (Server-Sent Events) of requests, log lines, transmissions, answers\n"
         "Only requests whose Host and Origin name the served address are taken. Ctrl-C stops.\n",
         CommandNeeds::Plugin, RunWeb},
        {"decode", "print what each received IR frame is: a key, an air-conditioner state, or raw timings", {},
         "SOURCE is a file (lirc mode2 text, Pronto hex, a Flipper .ir file's raw signals) or /dev/lircN\n"
         "(default: --ir-receiver); a device is listened to until --timeout passes without a press.\n"
         "Keys are named by the codesets of --codesets (default: the embedded ones). --json prints one\n"
         "object per frame: frame, startUs, durationUs and protocol with its members.\n",
         CommandNeeds::Nothing, RunDecode, "SOURCE"},
        {"learn", "learn a remote's key (two agreeing presses) or an air conditioner into a codesets file",
         {{"codeset", "the codeset to learn into (created when missing)"},
          {"key", "the key's name, e.g. power"},
          {"code", "the key code the plugin will send for it"},
          {"ac", "learn an air conditioner: one press picks its protocol, every state works afterwards"}},
         "Needs --codesets FILE (created when missing; everything else in it is kept) and\n"
         "--ir-receiver DEV|FILE. With --config and a state directory the key goes to its\n"
         "learned.json instead (SIGHUP makes a running service load it). Waits up to --timeout\n"
         "(default 30000 ms) for each press.\n",
         CommandNeeds::Nothing, RunLearn, "", {"ac"}},
        {"import", "turn Flipper .ir files and lircd.conf remotes into codesets: import FILE... --codesets OUT",
         {{"name", "CODESET name (one FILE; default: the file's or the remote's name)"},
          {"type", "fan, purifier, humidifier, cleaner or ac (default: from the path, else fan)"},
          {"recognise", "an air conditioner whose captures are frames of a known protocol becomes that codeset"}},
         "Keys get the key codes of the table in docs/codesets.md; other buttons get free codes, listed.\n"
         "An air conditioner's captures become a state table (one frame per state its name says).\n"
         "OUT is written only when every FILE can be imported, atomically; a refused signal is listed\n"
         "with file:line and its reason. Exit status: 0 imported, 1 a file refused, 2 a usage mistake.\n",
         CommandNeeds::Nothing, RunImport, "FILE...", {"recognise"}},
        {"export", "write a codeset for other tools: export --codesets FILE --codeset NAME --format lircd|flipper",
         {{"codeset", "NAME of the codeset to write"}, {"format", "lircd (a raw_codes remote) or flipper (.ir)"}},
         "The file goes to standard output.\n", CommandNeeds::Nothing, RunExport},
        {"service", "the home service: the web remote and MQTT with Home Assistant discovery (SIGTERM stops)",
         {{"listen", "ADDRESS:PORT of the web remote (default 127.0.0.1:8088)"},
          {"broker", "mqtt://HOST[:PORT] or mqtts://HOST[:PORT] (default: none, the web remote only)"},
          {"client-id", "MQTT client id, also the Home Assistant node id (default ircontrol)"},
          {"base-topic", "the service's topics begin with it (default ircontrol)"},
          {"state-dir", "where the pairing list, the air conditioners' last states and learned keys are kept"}},
         "Reads --config FILE (docs/home.md); every option given here overrides the file. Topics, under the\n"
         "base topic: <codeset>/key (a key name or code), <codeset>/mode|temperature|fan_mode/set (air\n"
         "conditioners), raw (a serve line), devices/set (the pairing list); answers on result, \"online\"/\n"
         "\"offline\" on status. Keys learned on the page go to learned.json in the state directory.\n"
         "SIGHUP reads the configuration file again and applies it whole (codesets, IR devices, broker,\n"
         "credentials, topics) or not at all; the listen address and the state directory take a restart.\n",
         CommandNeeds::Plugin, RunService},
    };
    return commands;
}

const CommandInfo* CCommandLine::FindCommand(const std::string& name) {
    for (const auto& info : Commands()) {
        if (info.name == name) return &info;
    }
    return nullptr;
}

Options CCommandLine::Parse(const std::vector<std::string>& args) {
    Options options;
    // The first mistake is the one reported; later ones are usually its consequences.
    auto fail = [&](const std::string& reason) {
        if (options.error.empty()) options.error = reason;
    };
    std::vector<std::string> known;  // every option name, for hints
    for (const auto& g : Globals()) known.push_back(g.name);
    for (const auto& c : Commands()) {
        for (const auto& o : c.options) known.push_back(o.first);
    }
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--help" || arg == "-h") {
            options.help = true;
            continue;
        }
        if (arg == "-v") {
            options.verbose = true;
            continue;
        }
        if (arg.rfind("--", 0) != 0) {
            if (options.command.empty()) {
                options.command = arg;
                if (FindCommand(arg) == nullptr) {
                    std::vector<std::string> names;
                    for (const auto& c : Commands()) names.push_back(c.name);
                    const std::string hint = Nearest(arg, names);
                    fail("unknown command '" + arg + "'" + (hint.empty() ? "" : " (did you mean " + hint + "?)") +
                         " (try --help)");
                }
            } else if (const CommandInfo* info = FindCommand(options.command); info != nullptr && TakesArgument(*info, options)) {
                options.arguments.push_back(arg);
            } else {
                fail("unexpected argument '" + arg + "'");
            }
            continue;
        }
        const std::size_t equals = arg.find('=');
        const std::string name = arg.substr(2, equals == std::string::npos ? std::string::npos : equals - 2);
        std::optional<std::string> value;
        if (equals != std::string::npos) value = arg.substr(equals + 1);
        const auto global = std::find_if(Globals().begin(), Globals().end(), [&](const auto& g) { return g.name == name; });
        const bool commandOption = std::find(known.begin(), known.end(), name) != known.end();
        if (global == Globals().end() && !commandOption) {
            const std::string hint = Nearest(name, known);
            fail("unknown option --" + name + (hint.empty() ? "" : " (did you mean --" + hint + "?)"));
            continue;
        }
        bool commandFlag = false;
        for (const auto& c : Commands()) commandFlag = commandFlag || std::find(c.flags.begin(), c.flags.end(), name) != c.flags.end();
        if (commandFlag && global == Globals().end()) {
            if (value) fail("option --" + name + " takes no value");
            options.values[name] = "true";
            continue;
        }
        const bool flag = global != Globals().end() && global->placeholder.empty();
        if (flag) {
            if (value) fail("option --" + name + " takes no value");
            global->apply(options, "");
            continue;
        }
        const CommandInfo* command = FindCommand(options.command);
        if (global == Globals().end() && command != nullptr &&
            std::find(command->flags.begin(), command->flags.end(), name) != command->flags.end()) {
            if (value) fail("option --" + name + " takes no value");
            options.values[name] = "";
            continue;
        }
        if (!value) {
            if (i + 1 >= args.size()) {
                fail("option --" + name + " needs a value");
                break;
            }
            value = args[++i];
        }
        if (global != Globals().end()) {
            const std::string error = global->apply(options, *value);
            if (!error.empty()) fail(error);
        } else {
            options.values[name] = *value;
        }
    }
    if (options.command.empty() && !options.help && !options.version) fail("no command given (try --help)");
    if (const CommandInfo* info = FindCommand(options.command)) {
        for (const auto& entry : options.values) {
            bool found = false;
            for (const auto& option : info->options) found = found || option.first == entry.first;
            if (!found) fail("'" + info->name + "' has no option --" + entry.first);
        }
    }
    return options;
}

std::string CCommandLine::Usage() {
    std::ostringstream out;
    out << "usage: ircontrol-host [options] <command> [command options]\n\n"
        << "Loads the IR control plugin into the desktop platform simulator, as the TV's host does,\n"
        << "and drives it.\n\ncommands:\n";
    for (const auto& info : Commands()) out << "  " << Pad(info.name, 10) << info.summary << "\n";
    out << "\noptions (--name value or --name=value):\n";
    for (const auto& g : Globals()) {
        out << "  " << Pad("--" + g.name + (g.placeholder.empty() ? "" : " " + g.placeholder), 22) << g.help << "\n";
    }
    out << "\n'ircontrol-host <command> --help' describes a command's own options.\n"
        << "Exit status: 0 when every request was answered ok in time, 1 a refused, unanswered or late\n"
        << "request or an unusable input, 2 a mistake on the command line (a path to no file included).\n";
    return out.str();
}

std::string CCommandLine::CommandUsage(const CommandInfo& info) {
    std::ostringstream out;
    out << "usage: ircontrol-host [options] " << info.name
        << (info.options.empty() ? "" : " [--option value ...]") << (info.operands.empty() ? "" : " " + info.operands)
        << "\n\n"
        << info.summary << "\n";
    if (!info.options.empty()) {
        out << "\n";
        for (const auto& [name, help] : info.options) out << "  " << Pad("--" + name, 14) << help << "\n";
    }
    if (!info.details.empty()) out << "\n" << info.details;
    out << "\n'ircontrol-host --help' lists the options every command takes.\n";
    return out.str();
}

}  // namespace ircontrol::host

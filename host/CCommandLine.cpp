#include "CCommandLine.h"

#include <cstdlib>
#include <sstream>

namespace ircontrol::host {
namespace {

const std::vector<std::pair<std::string, std::string>> kGlobal = {
    {"--plugin PATH", "plugin library (default: libircontrol-plugin.so beside this program)"},
    {"--devices FILE", "pairing list JSON {\"dev_info\":[{\"codeset\",\"device_index\",\"type\"}]}"},
    {"--catalogue FILE", "key maps JSON {\"<codeset>\": \"<key map text>\"}"},
    {"--year N", "TV model year reported by the platform (default 23)"},
    {"--mbr-support on|off", "IR service feature flag reported by the platform (default on)"},
    {"--ir-delay MS", "simulated on-air time of each transmission (default 0)"},
    {"--timeout MS", "how long to wait for each answer (default 2000)"},
    {"--json", "machine-readable output, one JSON object per line"},
    {"--verbose", "show the plugin's own log lines on stderr"},
};

std::string Pad(const std::string& text, std::size_t width) {
    return text.size() >= width ? text + " " : text + std::string(width - text.size(), ' ');
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

const std::vector<CommandInfo>& CCommandLine::Commands() {
    static const std::vector<CommandInfo> commands = {
        {"demo", "a guided tour: each appliance kind, an air-conditioner state, refused requests", {}},
        {"key", "send one key to one appliance",
         {{"type", "fan, purifier, humidifier, cleaner, ac, or a full OCF device type"},
          {"codeset", "codeset name (default: the paired one of that type)"},
          {"key", "key code"}}},
        {"ac", "send an air-conditioner state",
         {{"codeset", "codeset name (default: the paired air conditioner)"},
          {"power", "ON or OFF (default ON)"},
          {"mode", "AUTO, COLD, DEHUMI, VENT or HEAT (default COLD)"},
          {"setpoint", "cooling set point (default 24)"},
          {"fan", "LOW, MEDIUM, HIGH or AUTO (default AUTO)"}}},
        {"set", "set any property to any text",
         {{"name", "property name (default setKeyEvent)"},
          {"value", "the value's text"},
          {"kind", "json, string, int or bool (default json)"}}},
        {"devices", "list the paired appliances and their key maps", {}},
        {"serve", "read requests as JSON lines on stdin, write one JSON line per answer", {}},
        {"web", "serve a web remote: the page, a JSON API and a live event stream (Ctrl-C stops)",
         {{"listen", "ADDRESS:PORT to serve on (default 127.0.0.1:8088; port 0 picks a free one)"}}},
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
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--help" || arg == "-h") {
            options.help = true;
            continue;
        }
        if (arg == "--json") {
            options.json = true;
            continue;
        }
        if (arg == "--verbose" || arg == "-v") {
            options.verbose = true;
            continue;
        }
        if (arg.rfind("--", 0) != 0) {
            if (options.command.empty()) {
                options.command = arg;
                if (FindCommand(arg) == nullptr) fail("unknown command '" + arg + "' (try --help)");
            } else {
                fail("unexpected argument '" + arg + "'");
            }
            continue;
        }
        const std::string name = arg.substr(2);
        if (i + 1 >= args.size()) {
            fail("option " + arg + " needs a value");
            break;
        }
        const std::string value = args[++i];
        int number = 0;
        if (name == "plugin") {
            options.plugin = value;
        } else if (name == "devices") {
            options.devicesFile = value;
        } else if (name == "catalogue") {
            options.catalogueFile = value;
        } else if (name == "year") {
            if (!ParseInt(value, number)) fail("--year needs a whole number, not '" + value + "'");
            options.year = number;
        } else if (name == "mbr-support") {
            if (value != "on" && value != "off") fail("--mbr-support needs on or off, not '" + value + "'");
            options.mbrSupport = value == "on";
        } else if (name == "ir-delay") {
            if (!ParseInt(value, number) || number < 0) fail("--ir-delay needs milliseconds, not '" + value + "'");
            options.irDelayMs = number;
        } else if (name == "timeout") {
            if (!ParseInt(value, number) || number <= 0) fail("--timeout needs milliseconds, not '" + value + "'");
            options.timeoutMs = number;
        } else {
            options.values[name] = value;
        }
    }
    if (options.command.empty() && !options.help) fail("no command given (try --help)");
    if (const CommandInfo* info = FindCommand(options.command)) {
        for (const auto& entry : options.values) {
            bool known = false;
            for (const auto& option : info->options) known = known || option.first == entry.first;
            if (!known) fail("'" + info->name + "' has no option --" + entry.first);
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
    out << "\noptions:\n";
    for (const auto& [name, help] : kGlobal) out << "  " << Pad(name, 22) << help << "\n";
    out << "\n'ircontrol-host <command> --help' describes a command's own options.\n"
        << "Exit status: 0 success, 1 a refused or missing answer or an unusable input, 2 bad usage.\n";
    return out.str();
}

std::string CCommandLine::CommandUsage(const CommandInfo& info) {
    std::ostringstream out;
    out << "usage: ircontrol-host [options] " << info.name
        << (info.options.empty() ? "" : " [--option value ...]") << "\n\n"
        << info.summary << "\n";
    if (!info.options.empty()) {
        out << "\n";
        for (const auto& [name, help] : info.options) out << "  " << Pad("--" + name, 14) << help << "\n";
    }
    out << "\n'ircontrol-host --help' lists the options every command takes.\n";
    return out.str();
}

}  // namespace ircontrol::host

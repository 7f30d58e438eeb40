#include "App.h"

#include <chrono>
#include <cstdlib>
#include <functional>
#include <fstream>
#include <sstream>

#include "JsonValue.h"

namespace irhost {
namespace {

constexpr char kDevicesKey[] = "db/tavrell/irplugin/devices";

bool ReadFile(const std::string& path, std::string& text) {
    std::ifstream in(path);
    if (!in) return false;
    std::ostringstream buffer;
    buffer << in.rdbuf();
    text = buffer.str();
    return true;
}

bool ParseInt(const std::string& text, int& out) {
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0') return false;
    out = static_cast<int>(value);
    return true;
}

}  // namespace

App::App(Options options, std::istream& in, std::ostream& out, std::ostream& err)
    : options_(std::move(options)), in_(in), out_(out), err_(err), printer_(out, options_.json),
      session_(options_.timeoutMs) {}

int App::fail(const std::string& reason, int status) {
    err_ << "ircontrol-host: " << reason << "\n";
    return status;
}

bool App::setUp() {
    sim::ResetAll();
    sim::Log::SetEcho(options_.verbose);
    pairingText_ = DefaultPairingJson();
    if (!options_.devicesFile.empty() && !ReadFile(options_.devicesFile, pairingText_)) {
        fail("cannot read --devices file " + options_.devicesFile, 1);
        return false;
    }
    std::string error;
    if (!ParsePairing(pairingText_, devices_, error)) {
        fail((options_.devicesFile.empty() ? "" : options_.devicesFile + ": ") + error, 1);
        return false;
    }
    catalogue_ = DefaultCatalogue();
    if (!options_.catalogueFile.empty()) {
        std::string text;
        if (!ReadFile(options_.catalogueFile, text)) {
            fail("cannot read --catalogue file " + options_.catalogueFile, 1);
            return false;
        }
        if (!ParseCatalogue(text, catalogue_, error)) {
            fail(options_.catalogueFile + ": " + error, 1);
            return false;
        }
    }
    sim::Settings::SetString(kDevicesKey, pairingText_);
    for (const auto& [codeset, keyMap] : catalogue_) sim::IrBlaster::SetKeyMap(codeset, keyMap);
    sim::SystemInfo::SetYear(options_.year.value_or(kDefaultYear));
    sim::SystemInfo::SetMbrSupport(true);
    sim::IrBlaster::SetTransmitDelay(std::chrono::milliseconds(options_.irDelayMs));

    const std::string path = options_.plugin.empty() ? PluginLibrary::BesideExecutable() : options_.plugin;
    if (!plugin_.Load(path, error)) {
        fail(error, 1);
        return false;
    }
    plugin_.Create();
    if (!sim::Host::FindService("ircontrol")) {
        fail("the plugin did not create the \"ircontrol\" service (see --verbose)", 1);
        return false;
    }
    return true;
}

int App::Run() {
    if (options_.command == "devices") {
        // Needs no plugin: it shows the platform set-up the plugin would see.
        sim::ResetAll();
        std::string error;
        pairingText_ = DefaultPairingJson();
        if (!options_.devicesFile.empty() && !ReadFile(options_.devicesFile, pairingText_)) {
            return fail("cannot read --devices file " + options_.devicesFile, 1);
        }
        if (!ParsePairing(pairingText_, devices_, error)) return fail(error, 1);
        catalogue_ = DefaultCatalogue();
        std::string text;
        if (!options_.catalogueFile.empty() &&
            (!ReadFile(options_.catalogueFile, text) || !ParseCatalogue(text, catalogue_, error))) {
            return fail("unusable --catalogue file " + options_.catalogueFile, 1);
        }
        return devices();
    }
    if (!setUp()) return 1;
    int status = 2;
    if (options_.command == "demo") status = demo();
    if (options_.command == "key") status = key();
    if (options_.command == "ac") status = ac();
    if (options_.command == "set") status = set();
    if (options_.command == "serve") status = serve();
    plugin_.Destroy();
    return status;
}

int App::verdict(const Exchange& exchange) {
    printer_.Exchange(exchange);
    return exchange.answer && exchange.answer->first == "ok" ? 0 : 1;
}

std::string App::pairedCodeset(const std::string& type) const {
    for (const auto& device : devices_) {
        if (device.type == type) return device.codeset;
    }
    return std::string();
}

int App::demo() {
    printer_.Service(*sim::Host::FindService("ircontrol"));
    printer_.ExchangeHeader();
    struct Step {
        std::string note;
        std::function<Exchange()> send;
        std::string expected;  // "ok", "key_error", or "" for no answer
    };
    const std::vector<Step> steps = {
        {"", [&] { return session_.Key("oic.d.fan", pairedCodeset("oic.d.fan"), 10); }, "ok"},
        {"", [&] { return session_.Key("oic.d.airpurifier", pairedCodeset("oic.d.airpurifier"), 11); }, "ok"},
        {"", [&] { return session_.Key("x.com.zq.d.humidifier", pairedCodeset("x.com.zq.d.humidifier"), 76); }, "ok"},
        {"", [&] { return session_.Key("oic.d.robotcleaner", pairedCodeset("oic.d.robotcleaner"), 39); }, "ok"},
        {"", [&] { return session_.Ac(pairedCodeset("oic.d.airconditioner"), AcState{}); }, "ok"},
        {"key 39 is not one of a fan's keys",
         [&] { return session_.Key("oic.d.fan", pairedCodeset("oic.d.fan"), 39); }, "key_error"},
        {"the service drives no such device type",
         [&] { return session_.Key("oic.d.television", pairedCodeset("oic.d.fan"), 10); }, "key_error"},
        {"no paired appliance uses that codeset",
         [&] { return session_.Key("oic.d.fan", "NOTPAIRED", 10); }, "key_error"},
        {"AC words are upper case: \"cool\" is not a mode",
         [&] { AcState s; s.mode = "cool"; return session_.Ac(pairedCodeset("oic.d.airconditioner"), s); },
         "key_error"},
    };
    int unexpected = 0;
    for (const auto& step : steps) {
        const Exchange exchange = step.send();
        printer_.Exchange(exchange);
        if (!step.note.empty()) printer_.Note(std::string(58, ' ') + "(" + step.note + ")");
        const std::string got = exchange.answer ? exchange.answer->first : "";
        if (got != step.expected) ++unexpected;
    }
    printer_.Note("");
    printer_.Note(unexpected == 0 ? "every answer was the expected one"
                                  : std::to_string(unexpected) + " answer(s) differed from the expected ones");
    return unexpected == 0 ? 0 : 1;
}

int App::key() {
    const auto& v = options_.values;
    if (!v.count("type")) return fail("key: --type is required (fan, purifier, humidifier, cleaner, ac)");
    const std::string type = ResolveType(v.at("type"));
    if (type.empty()) return fail("key: unknown --type '" + v.at("type") + "'");
    int code = 0;
    if (!v.count("key") || !ParseInt(v.at("key"), code)) return fail("key: --key needs a key code");
    std::string codeset = v.count("codeset") ? v.at("codeset") : pairedCodeset(type);
    if (codeset.empty()) return fail("key: no paired " + ShortName(type) + "; give --codeset");
    return verdict(session_.Key(type, codeset, code));
}

int App::ac() {
    const auto& v = options_.values;
    AcState state;
    if (v.count("power")) state.power = v.at("power");
    if (v.count("mode")) state.mode = v.at("mode");
    if (v.count("fan")) state.fan = v.at("fan");
    if (v.count("setpoint") && !ParseInt(v.at("setpoint"), state.setpoint)) {
        return fail("ac: --setpoint needs a whole number");
    }
    std::string codeset = v.count("codeset") ? v.at("codeset") : pairedCodeset("oic.d.airconditioner");
    if (codeset.empty()) return fail("ac: no paired air conditioner; give --codeset");
    return verdict(session_.Ac(codeset, state));
}

int App::set() {
    const auto& v = options_.values;
    if (!v.count("value")) return fail("set: --value is required");
    Exchange exchange;
    std::string error;
    const std::string name = v.count("name") ? v.at("name") : "setKeyEvent";
    const std::string kind = v.count("kind") ? v.at("kind") : "json";
    if (!session_.Set(name, kind, v.at("value"), exchange, error)) return fail("set: " + error);
    return verdict(exchange);
}

int App::devices() {
    printer_.Devices(devices_, catalogue_);
    return 0;
}

// One request per line: {"command":"key","type":"fan","key":10[,"codeset":..]},
// {"command":"ac",["power","mode","setpoint","fan","codeset"]},
// {"command":"set","name":..,"value":..,"kind":..}. A bad line gets {"error": ...}.
int App::serve() {
    using common::json::JsonValue;
    std::string line;
    auto error = [&](const std::string& reason) {
        JsonValue e;
        e["error"] = reason;
        out_ << e.toString() << std::endl;
    };
    while (std::getline(in_, line)) {
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        const JsonValue request = JsonValue::Create(line);
        if (request.type() != common::json::kObject) {
            error("not a JSON object");
            continue;
        }
        auto text = [&](const char* name, const std::string& def) {
            const JsonValue& v = request[name];
            return v.isNull() ? def : (v.isString() ? v.asString() : v.toString());
        };
        const std::string command = text("command", "");
        Exchange exchange;
        if (command == "key") {
            const std::string type = ResolveType(text("type", ""));
            int code = 0;
            if (type.empty()) { error("unknown or missing \"type\""); continue; }
            if (!ParseInt(text("key", ""), code)) { error("\"key\" must be an integer"); continue; }
            const std::string codeset = text("codeset", pairedCodeset(type));
            if (codeset.empty()) { error("no paired " + ShortName(type) + "; give \"codeset\""); continue; }
            exchange = session_.Key(type, codeset, code);
        } else if (command == "ac") {
            AcState state;
            state.power = text("power", state.power);
            state.mode = text("mode", state.mode);
            state.fan = text("fan", state.fan);
            if (!ParseInt(text("setpoint", "24"), state.setpoint)) { error("\"setpoint\" must be an integer"); continue; }
            exchange = session_.Ac(text("codeset", pairedCodeset("oic.d.airconditioner")), state);
        } else if (command == "set") {
            std::string reason;
            if (!session_.Set(text("name", "setKeyEvent"), text("kind", "json"), text("value", ""), exchange, reason)) {
                error(reason);
                continue;
            }
        } else {
            error("\"command\" must be key, ac or set");
            continue;
        }
        out_ << Printer::ExchangeJson(exchange) << std::endl;
    }
    return 0;
}

}  // namespace irhost

#include "CApp.h"

#include <chrono>
#include <functional>
#include <stdexcept>
#include <vector>

#include "CApplianceTypes.h"
#include "JsonValue.h"
#ifdef IRC_HOST_WEB
#include "CRequestGuard.h"
#include "CWebServer.h"
#endif

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

const char kAirConditioner[] = "oic.d.airconditioner";

bool Answered(const Exchange& exchange, const std::string& code) {
    return exchange.answer ? exchange.answer->first == code : code.empty();
}

}  // namespace

CApp::CApp(Options options, std::istream& in, std::ostream& out, std::ostream& err, bool errIsTerminal)
    : options_(std::move(options)), in_(in), out_(out), err_(err), errIsTerminal_(errIsTerminal),
      printer_(out, options_.json), session_(options_.timeoutMs) {}

int CApp::fail(const std::string& reason, int status) {
    err_ << "ircontrol-host: " << reason << "\n";
    return status;
}

std::string CApp::option(const std::string& name) const {
    return serving_ ? "\"" + name + "\"" : "--" + name;
}

int CApp::Run() {
    // The plugin and the simulator may throw (a service gone, a JSON type error): report it as
    // one line, after the members have stopped and unloaded the plugin.
    try {
        const int status = run();
        plugin_.Destroy();
        return status;
    } catch (const std::exception& e) {
        plugin_.Destroy();
        return fail(e.what(), 1);
    }
}

int CApp::run() {
    sim::ResetAll();
    if (options_.verbose) echo_ = std::make_unique<CLogEcho>(err_, errIsTerminal_);
    std::string error;
    if (!setup_.Load(options_, error)) return fail(error, 1);
    setup_.Apply();
    sim::IrBlaster::SetTransmitDelay(std::chrono::milliseconds(options_.irDelayMs));
    // Listing the pairing needs no plugin.
    if (options_.command == "devices") return devices();
    if (!start()) return 1;
    if (options_.command == "demo") return demo();
    if (options_.command == "serve") return serve();
    if (options_.command == "web") return web();
    return single();
}

bool CApp::start() {
    const std::string path = options_.plugin.empty() ? CPluginLibrary::BesideExecutable() : options_.plugin;
    std::string error;
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

bool CApp::request(const std::string& command, const Values& values, Exchange& out, std::string& error) {
    auto value = [&](const std::string& name, const std::string& fallback) {
        const auto found = values.find(name);
        return found == values.end() ? fallback : found->second;
    };
    if (command == "key") {
        if (!values.count("type")) {
            error = "key: " + option("type") + " is required (fan, purifier, humidifier, cleaner, ac)";
            return false;
        }
        const std::string type = CApplianceTypes::Resolve(values.at("type"));
        if (type.empty()) {
            error = "key: unknown " + option("type") + " '" + values.at("type") + "'";
            return false;
        }
        int code = 0;
        if (!CCommandLine::ParseInt(value("key", ""), code)) {
            error = "key: " + option("key") + " needs a key code";
            return false;
        }
        const std::string codeset = value("codeset", setup_.PairedCodeset(type));
        if (codeset.empty()) {
            error = "key: no paired " + CApplianceTypes::ShortName(type) + "; give " + option("codeset");
            return false;
        }
        out = session_.Key(type, codeset, code);
        return true;
    }
    if (command == "ac") {
        AcState state;
        state.power = value("power", state.power);
        state.mode = value("mode", state.mode);
        state.fan = value("fan", state.fan);
        if (values.count("setpoint") && !CCommandLine::ParseInt(values.at("setpoint"), state.setpoint)) {
            error = "ac: " + option("setpoint") + " needs a whole number";
            return false;
        }
        const std::string codeset = value("codeset", setup_.PairedCodeset(kAirConditioner));
        if (codeset.empty()) {
            error = "ac: no paired air conditioner; give " + option("codeset");
            return false;
        }
        out = session_.Ac(codeset, state);
        return true;
    }
    if (command == "set") {
        if (!values.count("value")) {
            error = "set: " + option("value") + " is required";
            return false;
        }
        if (!session_.Set(value("name", "setKeyEvent"), value("kind", "json"), values.at("value"), out, error)) {
            error = "set: " + error;
            return false;
        }
        return true;
    }
    error = option("command") + " must be key, ac or set";
    return false;
}

int CApp::single() {
    Exchange exchange;
    std::string error;
    if (!request(options_.command, options_.values, exchange, error)) return fail(error, 2);
    printer_.Exchange(exchange);
    if (!exchange.answer) return fail("no answer within " + std::to_string(options_.timeoutMs) + " ms", 1);
    if (exchange.answer->first != "ok") {
        return fail("refused: " + exchange.answer->first + ": " + exchange.answer->second, 1);
    }
    return 0;
}

int CApp::demo() {
    printer_.Service(*sim::Host::FindService("ircontrol"));
    printer_.ExchangeHeader();
    struct Step {
        std::function<Exchange()> send;
        std::string expected;  // "ok" or "key_error"
        std::string note;
    };
    const auto paired = [this](const char* type) { return setup_.PairedCodeset(type); };
    const std::vector<Step> steps = {
        {[&] { return session_.Key("oic.d.fan", paired("oic.d.fan"), 10); }, "ok", ""},
        {[&] { return session_.Key("oic.d.airpurifier", paired("oic.d.airpurifier"), 11); }, "ok", ""},
        {[&] { return session_.Key("x.com.zq.d.humidifier", paired("x.com.zq.d.humidifier"), 76); }, "ok", ""},
        {[&] { return session_.Key("oic.d.robotcleaner", paired("oic.d.robotcleaner"), 39); }, "ok", ""},
        {[&] { return session_.Ac(paired(kAirConditioner), AcState{}); }, "ok", ""},
        {[&] { return session_.Key("oic.d.fan", paired("oic.d.fan"), 39); }, "key_error",
         "key 39 is not one of a fan's keys"},
        {[&] { return session_.Key("oic.d.television", paired("oic.d.fan"), 10); }, "key_error",
         "the service drives no such device type"},
        {[&] { return session_.Key("oic.d.fan", "NOTPAIRED", 10); }, "key_error",
         "no paired appliance uses that codeset"},
        {[&] {
             AcState state;
             state.mode = "cool";
             return session_.Ac(paired(kAirConditioner), state);
         },
         "key_error", "AC words are upper case: \"cool\" is not a mode"},
    };
    std::size_t unexpected = 0;
    for (const auto& step : steps) {
        const Exchange exchange = step.send();
        printer_.Exchange(exchange, step.note);
        if (!Answered(exchange, step.expected)) ++unexpected;
    }
    printer_.Summary(steps.size(), unexpected);
    return unexpected == 0 ? 0 : fail(std::to_string(unexpected) + " demo answer(s) were not the expected ones", 1);
}

int CApp::devices() {
    printer_.Devices(setup_.Devices(), sim::IrBlaster::Catalogue());
    return 0;
}

// One request per line, an object with "command" (key, ac or set) and the values the command
// line would take: {"command":"key","type":"fan","key":10}. A bad line gets {"error","line"}.
int CApp::serve() {
    serving_ = true;
    std::string line;
    for (long number = 1; std::getline(in_, line); ++number) {
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        std::string error;
        Exchange exchange;
        const JsonValue request = JsonValue::Create(line);
        if (request.type() != common::json::kObject) {
            error = "not a JSON object";
        } else {
            Values values;
            for (const auto& name : request.getMemberNames()) {
                const JsonValue& v = request[name];
                values[name] = v.isString() ? v.asString() : v.toString();
            }
            const std::string command = values.count("command") ? values.at("command") : "";
            if (this->request(command, values, exchange, error)) {
                out_ << CPrinter::ExchangeJson(exchange) << std::endl;
                continue;
            }
        }
        JsonValue reply;
        reply["error"] = error;
        reply["line"] = static_cast<long long>(number);
        out_ << reply.toString() << std::endl;
    }
    return 0;
}

// Serves until Ctrl-C; then the plugin is destroyed and unloaded here, so the last line can say
// whether the library really left the process.
int CApp::web() {
#ifdef IRC_HOST_WEB
    serving_ = true;
    echo_.reset();  // the server shows the log lines itself, beside its event stream
    WebOptions web;
    const auto listen = options_.values.find("listen");
    if (listen != options_.values.end()) web.listen = listen->second;
    web.irDelayMs = options_.irDelayMs;
    web.timeoutMs = options_.timeoutMs;
    web.echo = options_.verbose ? &err_ : nullptr;
    web.colour = errIsTerminal_;
    {
        CWebServer server(web, session_, setup_,
                          [this](const std::string& command, const Values& values, Exchange& out, std::string& error) {
                              return request(command, values, out, error);
                          });
        std::string error;
        if (!server.Listen(error)) return fail(error, 2);
        std::string address;
        unsigned port = 0;
        if (CRequestGuard::ParseListen(web.listen, address, port) && !CRequestGuard::IsLoopback(address)) {
            err_ << "ircontrol-host: warning: serving beyond this machine (" << web.listen
                 << "); anyone who can reach it can drive the plugin\n";
        }
        out_ << "ircontrol-host: serving " << server.Url() << " (Ctrl-C stops)" << std::endl;
        server.Run();
    }
    const bool unloaded = plugin_.Unload();
    out_ << "ircontrol-host: stopped; plugin destroyed, library " << (unloaded ? "unloaded" : "still mapped")
         << std::endl;
    return unloaded ? 0 : 1;
#else
    return fail("this ircontrol-host was built without libsoup-3.0, so it has no web command", 1);
#endif
}

}  // namespace ircontrol::host

#include "CApp.h"

#include <stdexcept>
#include <vector>

#include "CRequestParser.h"
#ifdef IRC_HOST_WEB
#include "CRequestGuard.h"
#include "CWebServer.h"
#endif

namespace ircontrol::host {

CApp::CApp(Options options, std::istream& in, std::ostream& out, std::ostream& err, bool errIsTerminal)
    : options_(std::move(options)), in_(in), out_(out), err_(err), errIsTerminal_(errIsTerminal),
      // serve speaks JSON lines whatever --json says.
      printer_(out, options_.json || options_.command == "serve"), session_(options_.timeoutMs) {}

int CApp::fail(const std::string& reason, int status) {
    err_ << "ircontrol-host: " << reason << "\n";
    return status;
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
    if (options_.verbose) echo_ = std::make_unique<CLogEcho>(err_, errIsTerminal_, options_.logLevel);
    std::string error;
    if (!configure(error)) return fail(error, 2);
    bool badPath = false;
    // A path that names no readable file is a mistake on the command line; a file that is not
    // the expected JSON is an unusable input.
    if (!setup_.Load(options_, error, &badPath)) return fail(error, badPath ? 2 : 1);
    setup_.Apply();
    if (!setup_.AttachTransmitter(error)) return fail(error, 1);
#ifdef IRC_HOST_HOME
    if (home_ && !home_->Prepare(error)) return fail(error, 1);
#endif
    sim::IrBlaster::SetTransmitDelay(std::chrono::milliseconds(options_.irDelayMs));
    // Listing the pairing needs no plugin.
    if (options_.command == "devices") return devices();
    if (!start()) return 1;
    if (options_.command == "demo") return demo();
    if (options_.command == "serve") return serve();
    if (options_.command == "web") return web();
    if (options_.command == "service") return service();
    return single();
}

// --config: the file fills in what the command line left out; the service keeps the rest.
bool CApp::configure(std::string& error) {
#ifdef IRC_HOST_HOME
    HomeConfig config;
    if (!options_.configFile.empty() && !CHomeConfig::Load(options_.configFile, config, error)) return false;
    if (!CHomeConfig::Merge(options_, config, error)) return false;
    if (options_.command == "service") {
        home_ = std::make_unique<CHomeService>(options_, config, session_, setup_, out_, err_);
    }
    return true;
#else
    if (options_.configFile.empty() && options_.command != "service") return true;
    error = "this ircontrol-host was built without libmosquitto and libsoup-3.0: no --config, no service";
    return false;
#endif
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

int CApp::single() {
    const CRequestParser parser(setup_, CRequestParser::Style::CommandLine);
    Request request;
    std::string error;
    if (!parser.Parse(options_.command, options_.values, request, error)) return fail(error, 2);
    if (!options_.json) printer_.Platform(setup_, options_.irDelayMs, options_.timeoutMs);
    const RequestResult result = session_.Send(request);
    printer_.Result(result);
    if (result.outcome == Outcome::NoAnswer) {
        // Show what still comes of it, marked late; the status stays that of the timeout.
        std::vector<RequestResult> pending = {result};
        catchUp(pending, drainWait());
    }
    switch (result.outcome) {
        case Outcome::Ok:
        case Outcome::Listed: return 0;
        case Outcome::Refused: return fail("refused: " + result.reason, 1);
        case Outcome::Unanswered:
        case Outcome::NoAnswer: return fail(result.reason, 1);
    }
    return 1;
}

std::chrono::milliseconds CApp::drainWait() const {
    // Each request behind in the queue answers within one on-air time of the one before it.
    return std::chrono::milliseconds(options_.timeoutMs + options_.irDelayMs);
}

void CApp::catchUp(std::vector<RequestResult>& pending, std::chrono::milliseconds wait) {
    for (auto it = pending.begin(); it != pending.end();) {
        const std::size_t known = it->transmissions.size();
        if (session_.Refresh(*it, wait)) printer_.Late(*it, known);
        it = it->answer ? pending.erase(it) : it + 1;
    }
}

int CApp::demo() {
    printer_.Platform(setup_, options_.irDelayMs, options_.timeoutMs);
    printer_.Service(*sim::Host::FindService("ircontrol"));
    printer_.ExchangeHeader();
    struct Step {
        std::string command;
        NamedValues values;
        Outcome expected;
        std::string note;
    };
    const std::vector<Step> steps = {
        {"key", {{"type", "fan"}, {"key", "10"}}, Outcome::Ok, ""},
        {"key", {{"type", "purifier"}, {"key", "11"}}, Outcome::Ok, ""},
        {"key", {{"type", "humidifier"}, {"key", "76"}}, Outcome::Ok, ""},
        {"key", {{"type", "cleaner"}, {"key", "39"}}, Outcome::Ok, ""},
        {"ac", {}, Outcome::Ok, ""},
        {"key", {{"type", "fan"}, {"key", "39"}}, Outcome::Refused, "key 39 is not one of a fan's keys"},
        {"key", {{"type", "oic.d.television"}, {"codeset", setup_.PairedCodeset("oic.d.fan")}, {"key", "10"}},
         Outcome::Refused, "the service drives no such device type"},
        {"key", {{"type", "fan"}, {"codeset", "NOTPAIRED"}, {"key", "10"}}, Outcome::Refused,
         "no paired appliance uses that codeset"},
        {"ac", {{"mode", "cool"}}, Outcome::Refused, "AC words are upper case: \"cool\" is not a mode"},
        {"set", {{"value", "{\"x.com.korvan.codesetName\":\"HFAN0001\",\"x.com.korvan.codesetKey\":10}"}},
         Outcome::Unanswered, "a payload without a device type gets no answer, on purpose"},
    };
    const CRequestParser parser(setup_, CRequestParser::Style::CommandLine);
    std::vector<RequestResult> pending;
    std::size_t unexpected = 0;
    for (const auto& step : steps) {
        Request request;
        std::string error;
        if (!parser.Parse(step.command, step.values, request, error)) return fail(error, 1);
        const RequestResult result = session_.Send(request);
        catchUp(pending, std::chrono::milliseconds(0));
        printer_.Result(result, step.note);
        if (result.outcome != step.expected) ++unexpected;
        if (result.outcome == Outcome::NoAnswer) pending.push_back(result);
    }
    catchUp(pending, drainWait());
    printer_.Summary(steps.size(), unexpected);
    return unexpected == 0 ? 0 : fail(std::to_string(unexpected) + " demo answer(s) were not the expected ones", 1);
}

int CApp::devices() {
    if (!options_.json) printer_.Platform(setup_, options_.irDelayMs, options_.timeoutMs);
    printer_.Devices(setup_);
    return 0;
}

// One request per line (see `serve --help`). The status is 0 only when every non-blank line was
// usable and answered ok in time.
int CApp::serve() {
    const CRequestParser parser(setup_, CRequestParser::Style::Json);
    std::vector<RequestResult> pending;
    bool allOk = true;
    std::string line;
    for (long number = 1; std::getline(in_, line); ++number) {
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        Request request;
        std::string error;
        if (!parser.ParseLine(line, number, request, error)) {
            catchUp(pending, std::chrono::milliseconds(0));
            printer_.LineError(request, error);
            allOk = false;
            continue;
        }
        if (request.kind == RequestKind::Devices) {
            catchUp(pending, std::chrono::milliseconds(0));
            printer_.Devices(setup_, request);
            continue;
        }
        const RequestResult result = session_.Send(request);
        catchUp(pending, std::chrono::milliseconds(0));
        printer_.Result(result);
        out_.flush();
        if (result.outcome != Outcome::Ok) allOk = false;
        if (result.outcome == Outcome::NoAnswer) pending.push_back(result);
    }
    catchUp(pending, drainWait());
    return allOk ? 0 : 1;
}

// Serves until Ctrl-C; then the plugin is destroyed and unloaded here, so the last line can say
// whether the library really left the process.
int CApp::web() {
#ifdef IRC_HOST_WEB
    echo_.reset();  // the server shows the log lines itself, beside its event stream
    WebOptions web;
    const auto listen = options_.values.find("listen");
    if (listen != options_.values.end()) web.listen = listen->second;
    web.timeoutMs = options_.timeoutMs;
    web.echo = options_.verbose ? &err_ : nullptr;
    web.colour = errIsTerminal_;
    {
        CWebServer server(web, session_, setup_);
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

int CApp::service() {
#ifdef IRC_HOST_HOME
    echo_.reset();  // the web server shows the log lines itself
    std::string error;
    const bool served = home_->Run(error);
    home_.reset();
    if (!served) return fail(error, 2);
    const bool unloaded = plugin_.Unload();
    out_ << "ircontrol-host: stopped; plugin destroyed, library " << (unloaded ? "unloaded" : "still mapped")
         << std::endl;
    return unloaded ? 0 : 1;
#else
    return 1;
#endif
}

}  // namespace ircontrol::host

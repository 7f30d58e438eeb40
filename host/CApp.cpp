#include "CApp.h"

#include <stdexcept>

#include "CPrinter.h"
#include "CommandContext.h"
#include "ServiceContract.h"
#ifdef IRC_HOST_HOME
#include "CHomeConfig.h"
#endif

namespace ircontrol::host {

CApp::CApp(Options options, std::istream& in, std::ostream& out, std::ostream& err, bool errIsTerminal)
    : options_(std::move(options)), in_(in), out_(out), err_(err), errIsTerminal_(errIsTerminal),
      printer_(CPrinter::Make(out, options_.json)), session_(options_.timeoutMs), given_(options_) {}

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
    const CommandInfo* command = CCommandLine::FindCommand(options_.command);
    if (command == nullptr || command->run == nullptr) return fail("unknown command '" + options_.command + "'", 2);
    sim::ResetAll();
    if (options_.verbose) echo_ = std::make_unique<CLogEcho>(err_, errIsTerminal_, options_.logLevel);
    std::string error;
    // Every command: `learn --config FILE` writes where the service reads learned keys.
    if (!configure(error)) return fail(error, 2);
    if (command->needs != CommandNeeds::Nothing) {
        bool badPath = false;
        // A path that names no readable file is a mistake on the command line; a file that is
        // not the expected JSON is an unusable input.
        if (!setup_.Load(options_.platform, error, &badPath)) return fail(error, badPath ? 2 : 1);
        setup_.Apply();
        if (!setup_.AttachTransmitter(error)) return fail(error, 1);
        sim::IrBlaster::SetTransmitDelay(std::chrono::milliseconds(options_.irDelayMs));
    }
    if (command->needs == CommandNeeds::Plugin && !start()) return 1;
    CommandContext context{options_, in_, out_, err_, errIsTerminal_, *printer_, session_, setup_, plugin_, given_};
    return command->run(context);
}

// --config: the file fills in the options the command line left out; the service reads the rest
// of it itself. Merged without a file too: the service's --state-dir decides where learned keys go.
bool CApp::configure(std::string& error) {
#ifdef IRC_HOST_HOME
    HomeConfig config;
    if (!options_.configFile.empty() && !CHomeConfig::Load(options_.configFile, config, error)) return false;
    return CHomeConfig::Merge(options_, config, error);
#else
    if (options_.configFile.empty()) return true;
    error = "this ircontrol-host was built without libmosquitto and libsoup-3.0, so it takes no --config";
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
    if (!sim::Host::FindService(contract::kServiceName)) {
        fail("the plugin did not create the \"ircontrol\" service (see --verbose)", 1);
        return false;
    }
    return true;
}

}  // namespace ircontrol::host

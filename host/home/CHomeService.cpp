#include "CHomeService.h"

#include "infrared/formats/CAtomicFile.h"
#include "CMosquittoClient.h"
#include "CRequestGuard.h"
#include "CWebServer.h"

namespace ircontrol::host {

CHomeService::CHomeService(const CommandContext& context)
    : options_(context.options), session_(context.session), setup_(context.setup), out_(context.out),
      err_(context.err) {}

bool CHomeService::Configure(const Options& options, HomeConfig& out, std::string& error) {
    HomeConfig config;
    Options merged = options;
    if (!options.configFile.empty() && !CHomeConfig::Load(options.configFile, config, error)) return false;
    if (!CHomeConfig::Merge(merged, config, error)) return false;
    out = config;
    return true;
}

CHomeService::~CHomeService() {
    if (client_) client_->Stop();
}

void CHomeService::log(const std::string& line) {
    const std::lock_guard<std::mutex> lock(logMutex_);
    err_ << "ircontrol-host: " << line << std::endl;
}

bool CHomeService::Settings(const HomeConfig& config, MqttSettings& out, std::string& error) {
    MqttSettings settings;
    if (!CHomeConfig::ParseBroker(config.broker, settings.broker, error)) {
        error = "mqtt broker " + error;
        return false;
    }
    settings.clientId = config.clientId;
    settings.user = config.user;
    settings.caFile = config.caFile;
    settings.willTopic = config.baseTopic + "/status";
    if (!config.passwordFile.empty()) {
        std::string text;
        if (!infrared::CAtomicFile::Read(config.passwordFile, text)) {
            error = config.passwordFile + ": cannot read the MQTT password file";
            return false;
        }
        settings.password = text.substr(0, text.find_first_of("\r\n"));
    }
    out = settings;
    return true;
}

bool CHomeService::restore(std::string& error) {
    if (config_.stateDirectory.empty()) return true;
    state_ = std::make_unique<CStateDirectory>(config_.stateDirectory);
    if (!state_->Load(error)) return false;
    // The plugin reads the pairing list on every command, so replacing it now is in time.
    if (state_->HasPairing() && !setup_.SetPairing(state_->Pairing(), error)) {
        error = state_->PairingPath() + ": " + error;
        return false;
    }
    return true;
}

bool CHomeService::Run(std::string& error) {
    if (!Configure(options_, config_, error) || !restore(error)) return false;
    MqttSettings settings;
    if (!config_.broker.empty() && !Settings(config_, settings, error)) return false;
    WebOptions web;
    const auto listen = options_.values.find("listen");
    if (listen != options_.values.end()) web.listen = listen->second;
    web.timeoutMs = options_.timeoutMs;
    // Room for a burst of MQTT commands: each is answered or refused, none dropped unheard.
    web.maxQueued = 4096;
    web.pairingChanged = [this] {
        if (door_) return door_->PairingChanged();
        std::string failure;
        if (state_ && !state_->SavePairing(setup_.PairingText(), failure)) log("state: " + failure);
    };
    web.reload = [this] { reload(); };
    CWebServer server(web, session_, setup_);
    if (!server.Listen(error)) return false;
    runner_ = &server.Runner();
    std::string address;
    unsigned port = 0;
    if (CRequestGuard::ParseListen(web.listen, address, port) && !CRequestGuard::IsLoopback(address)) {
        log("warning: serving beyond this machine (" + web.listen + "); anyone who can reach it can drive the plugin");
    }
    if (!config_.broker.empty()) {
        client_ = std::make_unique<CMosquittoClient>();
        door_ = std::make_unique<CMqttDoor>(
            config_, *client_, [this](std::function<void()> job) { return runner_->Post(std::move(job)); }, session_,
            setup_, state_.get(), [this](const std::string& line) { log(line); });
        door_->Attach();
        if (!client_->Start(settings, error)) return false;
        log("mqtt: broker " + config_.broker + ", base topic " + config_.baseTopic);
    } else {
        log("no MQTT broker configured: the web remote only");
    }
    out_ << "ircontrol-host: serving " << server.Url() << " (SIGTERM stops)" << std::endl;
    server.Run();
    if (client_) {
        // A clean stop says so itself; the last will is for a connection that breaks.
        client_->Publish(config_.baseTopic + "/status", "offline", true);
        client_->Stop();  // joins the network thread, the last that posts to the runner
    }
    runner_ = nullptr;
    return true;
}

void CHomeService::reload() {
    HomeConfig next;
    std::string error;
    if (options_.configFile.empty()) return log("reload: no configuration file was given");
    if (!Configure(options_, next, error)) return log("reload refused, the running configuration stays: " + error);
    MqttSettings settings;
    if (!next.broker.empty() && !Settings(next, settings, error)) return log("reload refused: " + error);
    if (next.baseTopic != config_.baseTopic || next.clientId != config_.clientId ||
        next.discoveryPrefix != config_.discoveryPrefix || next.broker.empty() != config_.broker.empty() ||
        next.stateDirectory != config_.stateDirectory) {
        log("reload: topics, client id, state directory or turning MQTT on or off take a restart");
    }
    if (!client_ || next.broker.empty() || runner_ == nullptr) return log("reload: done");
    // On the worker, so no job publishes while the client reconnects.
    const bool posted = runner_->Post([this, settings] {
        std::string failure;
        client_->Stop();
        if (!client_->Start(settings, failure)) return log("reload: " + failure);
        log("reload: reconnecting to " + settings.broker.host + ":" + std::to_string(settings.broker.port));
    });
    if (!posted) log("reload refused: the worker is full");
}

}  // namespace ircontrol::host

#include "CHomeService.h"

#include "infrared/formats/CAtomicFile.h"
#include "CMosquittoClient.h"
#include "CRequestGuard.h"
#include "CWebServer.h"

namespace ircontrol::host {
namespace {

bool SameBroker(const HomeConfig& a, const HomeConfig& b) { return a.broker == b.broker; }

bool SameTopics(const HomeConfig& a, const HomeConfig& b) {
    return a.baseTopic == b.baseTopic && a.clientId == b.clientId && a.discoveryPrefix == b.discoveryPrefix;
}

bool SameSettings(const MqttSettings& a, const MqttSettings& b) {
    return a.broker.host == b.broker.host && a.broker.port == b.broker.port && a.broker.tls == b.broker.tls &&
           a.clientId == b.clientId && a.user == b.user && a.password == b.password && a.caFile == b.caFile &&
           a.willTopic == b.willTopic;
}

}  // namespace

CHomeService::CHomeService(const CommandContext& context)
    : options_(context.options), commandLine_(context.commandLine), session_(context.session),
      setup_(context.setup), out_(context.out), err_(context.err) {}

CHomeService::~CHomeService() {
    session_.SetAcStateListener({});
    if (client_) client_->Stop();
}

bool CHomeService::configure(HomeConfig& out, Options& merged, std::string& error) const {
    HomeConfig config;
    merged = commandLine_;
    if (!merged.configFile.empty() && !CHomeConfig::Load(merged.configFile, config, error)) return false;
    if (!CHomeConfig::Merge(merged, config, error)) return false;
    out = config;
    return true;
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

// Whichever door sent it (page, web API, MQTT climate or raw line), an answered state is kept
// here and nowhere else.
void CHomeService::keepAcState(const std::string& codeset, const AcState& state) {
    std::string error;
    if (state_ && !state_->SaveAcState(codeset, state, error)) log("state: " + error);
    if (door_) door_->AcStateAnswered(codeset, state);
}

bool CHomeService::startMqtt(const MqttSettings& settings, std::string& error) {
    client_ = std::make_unique<CMosquittoClient>();
    door_ = std::make_unique<CMqttDoor>(
        config_, *client_, [this](std::function<void()> job) { return server_->Runner().Post(std::move(job)); },
        session_, setup_, state_.get(), [this](const std::string& line) { log(line); });
    door_->Attach();
    if (!client_->Start(settings, error)) return false;
    log("mqtt: broker " + config_.broker + ", base topic " + config_.baseTopic);
    return true;
}

void CHomeService::stopMqtt() {
    // A clean stop says so itself; the last will is for a connection that breaks.
    client_->Publish(config_.baseTopic + "/status", "offline", true);
    client_->Stop();  // joins the network thread, the last that posts to the runner
}

bool CHomeService::Run(std::string& error) {
    Options merged;
    if (!configure(config_, merged, error) || !restore(error)) return false;
    if (!config_.broker.empty() && !Settings(config_, settings_, error)) return false;
    WebOptions web;
    const auto listen = options_.values.find("listen");
    if (listen != options_.values.end()) web.listen = listen->second;
    web.timeoutMs = options_.timeoutMs;
    // Room for a burst of MQTT commands: each is answered or refused, none dropped unheard.
    web.maxQueued = 4096;
    web.learn.receiver = options_.irReceiver;
    web.learn.codesetsFile = CPlatformSetup::LearnInto(options_.platform);
    web.pairingChanged = [this] {
        if (door_) return door_->PairingChanged();
        std::string failure;
        if (state_ && !state_->SavePairing(setup_.PairingText(), failure)) log("state: " + failure);
    };
    web.reload = [this] { reload(); };
    web.learned = [this] {
        if (door_) door_->KeyMapsChanged();
    };
    CWebServer server(web, session_, setup_);
    if (!server.Listen(error)) return false;
    server_ = &server;
    session_.SetAcStateListener([this](const std::string& codeset, const AcState& state) { keepAcState(codeset, state); });
    std::string address;
    unsigned port = 0;
    if (CRequestGuard::ParseListen(web.listen, address, port) && !CRequestGuard::IsLoopback(address)) {
        log("warning: serving beyond this machine (" + web.listen + "); anyone who can reach it can drive the plugin");
    }
    if (!config_.broker.empty() && !startMqtt(settings_, error)) return false;
    if (config_.broker.empty()) log("no MQTT broker configured: the web remote only");
    out_ << "ircontrol-host: serving " << server.Url() << " (SIGTERM stops)" << std::endl;
    server.Run();  // returns with the worker stopped
    session_.SetAcStateListener({});
    if (client_) stopMqtt();
    server_ = nullptr;
    return true;
}

void CHomeService::reload() {
    HomeConfig next;
    Options merged;
    MqttSettings settings;
    std::string error;
    if (commandLine_.configFile.empty()) return log("reload: no configuration file was given");
    if (!configure(next, merged, error) || (!next.broker.empty() && !Settings(next, settings, error))) {
        return log("reload refused, the running configuration stays: " + error);
    }
    // On the worker, which owns the setup and the door, so no job runs while they change.
    if (!server_->Runner().Post([this, next, merged, settings] { apply(next, merged, settings); })) {
        log("reload refused: the worker is full");
    }
}

void CHomeService::apply(const HomeConfig& next, const Options& merged, const MqttSettings& settings) {
    const PlatformOptions& platform = merged.platform;
    std::string error;
    if (!setup_.Reload(platform, error)) return log("reload refused, the running configuration stays: " + error);
    server_->SetLearnOptions(WebLearnOptions{merged.irReceiver, CPlatformSetup::LearnInto(platform)});
    for (const auto& [what, changed] : {std::pair{"the web address (listen)", next.listen != config_.listen},
                                        {"the state directory", next.stateDirectory != config_.stateDirectory},
                                        {"the pairing file", next.pairing != config_.pairing}}) {
        if (changed) log(std::string("reload: ") + what + " changed, which takes a restart");
    }
    applyMqtt(next, settings);
    if (door_) door_->KeyMapsChanged();
    log("reload: done; codesets " + (platform.codesetsFile.empty() ? "embedded" : platform.codesetsFile) +
        (platform.irDevice.empty() ? "" : ", transmitter " + platform.irDevice) +
        (config_.broker.empty() ? ", no MQTT" : ", mqtt " + config_.broker + " base topic " + config_.baseTopic));
}

void CHomeService::applyMqtt(const HomeConfig& next, const MqttSettings& settings) {
    const HomeConfig before = config_;
    config_ = next;
    config_.stateDirectory = before.stateDirectory;  // takes a restart
    if (client_ && !next.broker.empty() && SameSettings(settings_, settings) && SameTopics(before, next)) return;
    if (client_) {
        // What the next connection will not publish over is taken back; the rest stays retained.
        door_->Retract(next, SameBroker(before, next) && !next.broker.empty());
        client_->Stop();
    }
    settings_ = settings;
    std::string error;
    if (next.broker.empty()) {
        if (!client_) return;
        door_.reset();
        client_.reset();
        return log("reload: MQTT is off");
    }
    if (!client_) {
        if (!startMqtt(settings, error)) log("reload: " + error);
        return;
    }
    door_->Reconfigure(config_);
    if (!client_->Start(settings, error)) return log("reload: " + error);
    log("reload: reconnecting to " + settings.broker.host + ":" + std::to_string(settings.broker.port));
}

}  // namespace ircontrol::host

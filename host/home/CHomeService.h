// ircontrol-host service: the web remote and the MQTT door in one process, over the one session
// and setup of the loaded plugin, with what they are told kept in the state directory. Run()
// serves until SIGTERM or SIGINT; SIGHUP reads the configuration file again and applies all of
// it that a running service can take (codesets, learned keys, catalogue, IR devices, broker,
// credentials, topics) and logs what takes a restart (listen address, state directory, pairing
// file). A file or setup that is refused changes nothing; a broker that then refuses the new
// settings is logged, with the rest applied. Construct, Run and destroy on the command's thread;
// throws nothing.
#pragma once

#include <memory>
#include <mutex>
#include <ostream>
#include <string>

#include "CHomeConfig.h"
#include "CommandContext.h"
#include "CMqttDoor.h"
#include "CPlatformSetup.h"
#include "CSession.h"
#include "CStateDirectory.h"
#include "IMqttClient.h"

namespace ircontrol::host {

class CJobRunner;
class CWebServer;

class CHomeService {
public:
    // The plugin is running; `context` outlives the service.
    explicit CHomeService(const CommandContext& context);
    ~CHomeService();

    // Reads the configuration and the state directory, whose pairing list (the last one the
    // service was told) replaces the configured one, then serves until stopped. False with a
    // reason when it could not start serving.
    bool Run(std::string& error);

    // The broker settings of a configuration (reads the password file); false with a reason.
    static bool Settings(const HomeConfig& config, MqttSettings& out, std::string& error);

private:
    // The configuration file (if any) with the command line's values over it; `merged` gets the
    // tool's options filled from it.
    bool configure(HomeConfig& out, Options& merged, std::string& error) const;
    bool restore(std::string& error);
    bool startMqtt(const MqttSettings& settings, std::string& error);  // Run(), or the worker
    void stopMqtt();                                                  // the worker, or after Run()
    void keepAcState(const std::string& codeset, const AcState& state);  // worker thread
    void reload();  // the web server's loop thread: reads and checks, the worker applies
    void apply(const HomeConfig& next, const Options& merged, const MqttSettings& settings);  // worker
    void applyMqtt(const HomeConfig& next, const MqttSettings& settings);  // worker
    void log(const std::string& line);

    const Options& options_;      // merged at start
    const Options& commandLine_;  // as given, merged again on each reload
    HomeConfig config_;           // worker thread while serving
    MqttSettings settings_;       // config_'s; worker thread while serving
    CSession& session_;
    CPlatformSetup& setup_;
    std::ostream& out_;
    std::ostream& err_;
    std::mutex logMutex_;
    std::unique_ptr<CStateDirectory> state_;
    std::unique_ptr<IMqttClient> client_;
    std::unique_ptr<CMqttDoor> door_;
    CWebServer* server_ = nullptr;  // while Run() serves
};

}  // namespace ircontrol::host

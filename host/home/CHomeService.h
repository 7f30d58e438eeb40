// ircontrol-host service: the web remote and the MQTT door in one process, over the one session
// and setup of the loaded plugin, with what they are told kept in the state directory. Run()
// serves until SIGTERM or SIGINT; SIGHUP re-reads the configuration file and reconnects with
// its broker settings. Construct, Run and destroy on the command's thread; throws nothing.
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
    // The configuration file (if any) with the command line's values over it.
    static bool Configure(const Options& options, HomeConfig& out, std::string& error);
    bool restore(std::string& error);
    void reload();  // the web server's loop thread
    void log(const std::string& line);

    const Options& options_;
    HomeConfig config_;
    CSession& session_;
    CPlatformSetup& setup_;
    std::ostream& out_;
    std::ostream& err_;
    std::mutex logMutex_;
    std::unique_ptr<CStateDirectory> state_;
    std::unique_ptr<IMqttClient> client_;
    std::unique_ptr<CMqttDoor> door_;
    CJobRunner* runner_ = nullptr;  // the web server's, while Run() serves
};

}  // namespace ircontrol::host

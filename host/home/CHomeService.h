// ircontrol-host service: the web remote and the MQTT door in one process, over the one session
// and setup of the loaded plugin, with what they are told kept in the state directory. Run()
// serves until SIGTERM or SIGINT; SIGHUP re-reads the configuration file and reconnects with
// its broker settings. Construct, Prepare, Run and destroy on one thread; throws nothing.
#pragma once

#include <memory>
#include <mutex>
#include <ostream>
#include <string>

#include "CHomeConfig.h"
#include "CMqttDoor.h"
#include "CPlatformSetup.h"
#include "CSession.h"
#include "CStateDirectory.h"
#include "IMqttClient.h"

namespace ircontrol::host {

class CJobRunner;

class CHomeService {
public:
    CHomeService(Options options, HomeConfig config, CSession& session, CPlatformSetup& setup, std::ostream& out,
                 std::ostream& err);
    ~CHomeService();

    // After the setup is applied and before the plugin starts: reads the state directory, whose
    // pairing list (the last one the service was told) replaces the configured one. False with a reason.
    bool Prepare(std::string& error);
    // Serves until stopped; false with a reason when it could not start serving.
    bool Run(std::string& error);

    // The broker settings of a configuration (reads the password file); false with a reason.
    static bool Settings(const HomeConfig& config, MqttSettings& out, std::string& error);

private:
    void reload();  // the web server's loop thread
    void log(const std::string& line);

    Options options_;
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

// The MQTT door of the host tool: every command that arrives on the service's topics becomes a
// request through the tool's one request parser and session, exactly as the web remote sends it,
// and its result (the answer's errorCode and description, the transmissions) goes to the result
// topic; a payload that cannot be used gets an error there and nothing else. On each connection
// it announces itself ("online"), the Home Assistant discovery configs and the air conditioners'
// retained states. It keeps the pairing list in the state directory (if any); an air
// conditioner's answered state, whichever door sent it, comes in by AcStateAnswered().
//
// Threads: the client's handlers only post jobs; every job, and PairingChanged(), runs on the
// session's one worker (the `post` function), which owns the setup, the session and the state.
// Throws nothing out of its handlers.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "CDiscovery.h"
#include "CHomeConfig.h"
#include "CPlatformSetup.h"
#include "CSession.h"
#include "CStateDirectory.h"
#include "IMqttClient.h"

namespace ircontrol::host {

class CMqttDoor {
public:
    using Post = std::function<bool(std::function<void()> job)>;  // false: queue full or stopped
    using Log = std::function<void(const std::string& line)>;

    static constexpr std::size_t kMaxPayload = 64 * 1024;

    // `state` may be null (nothing is written back); all references must outlive the door.
    CMqttDoor(const HomeConfig& config, IMqttClient& client, Post post, CSession& session, CPlatformSetup& setup,
              CStateDirectory* state, Log log);

    // Installs the client's handlers; call before the client starts.
    void Attach();
    // Worker thread: the pairing list was replaced (web page or MQTT); keeps it and re-announces.
    void PairingChanged();
    // Worker thread: the key maps changed (a learned key, a reload); announces them again.
    void KeyMapsChanged() { announce(); }
    // Worker thread: a request answered ok told `codeset` this state; its retained state follows.
    void AcStateAnswered(const std::string& codeset, const AcState& state);
    // Worker thread, before the client stops for new settings: takes back (empty retained
    // payloads) what this connection holds retained that `next` will not publish over on the same
    // broker; all of it when the broker changes.
    void Retract(const HomeConfig& next, bool sameBroker);
    // Worker thread, while the client is stopped: the topics of `next` from the next connection.
    void Reconfigure(const HomeConfig& next);

private:
    void connected();
    void received(const std::string& topic, const std::string& payload);
    void handle(const std::string& topic, const std::string& payload);
    void key(const std::string& topic, const std::string& codeset, const std::string& payload);
    void climate(const std::string& topic, const std::string& codeset, const std::string& field,
                 const std::string& payload);
    void raw(const std::string& topic, const std::string& payload);
    void pairing(const std::string& topic, const std::string& payload);
    void send(const std::string& topic, const Request& request);
    void announce();
    // What a connection holds retained: "online", `configs`, the climates' states.
    std::vector<MqttMessage> retained(const CDiscovery& discovery, const std::vector<MqttMessage>& configs) const;
    void publishError(const std::string& topic, const std::string& reason);
    const PairedDevice* paired(const std::string& codeset) const;

    HomeConfig config_;
    CDiscovery discovery_;
    IMqttClient& client_;
    Post post_;
    CSession& session_;
    CPlatformSetup& setup_;
    CStateDirectory* state_;
    Log log_;
    // Worker thread only:
    std::vector<MqttMessage> announced_;       // the discovery configs last published
    std::map<std::string, AcState> acStates_;  // codeset -> last state answered ok
};

}  // namespace ircontrol::host

// The service's configuration file, a GLib key file people edit by hand:
//
//   [ir]     transmitter, receiver, codesets, pairing, catalogue
//   [web]    listen
//   [mqtt]   broker (mqtt://host:port or mqtts://), client-id, user, password-file, ca-file,
//            base-topic, discovery-prefix
//   [state]  directory
//
// Load() checks the whole file: an unknown group or key, or a value that does not fit, is refused
// with "FILE:LINE: [group] key: reason". Plain value type; nothing here throws.
#pragma once

#include <string>

#include "CCommandLine.h"

namespace ircontrol::host {

struct HomeConfig {
    std::string transmitter;      // --ir-device: /dev/lircN or mode2:FILE
    std::string receiver;         // a /dev/lircN (or mode2:FILE of presses) the web remote learns from
    std::string codesets;         // --codesets
    std::string pairing;          // --devices: the pairing list the state directory starts from
    std::string catalogue;        // --catalogue
    std::string listen;           // web remote address, host:port
    std::string broker;           // mqtt://host[:port] or mqtts://host[:port]; empty: no MQTT
    std::string clientId = "ircontrol";
    std::string user;
    std::string passwordFile;     // first line is the password
    std::string caFile;           // TLS CA bundle for mqtts://
    std::string baseTopic = "ircontrol";
    std::string discoveryPrefix = "homeassistant";
    std::string stateDirectory;   // empty: nothing is written back
};

// A broker URL taken apart.
struct BrokerAddress {
    std::string host;
    int port = 1883;
    bool tls = false;
};

class CHomeConfig {
public:
    static constexpr const char* kLearnedFile = "learned.json";

    // Reads `path` into `out` (members absent from the file keep their value). False with one line.
    static bool Load(const std::string& path, HomeConfig& out, std::string& error);
    // Same for a file's text; `path` only names it in errors.
    static bool Parse(const std::string& text, const std::string& path, HomeConfig& out, std::string& error);
    // Joins the file and the command line: the file fills the tool's options the command line left
    // empty (--ir-device, --codesets, --devices, --catalogue, --listen), and the service's own
    // command-line values (--broker, --client-id, --base-topic, --state-dir) replace the file's,
    // checked as the file's are. Learned keys go to the state directory's kLearnedFile when there
    // is one. False with "--name: reason".
    static bool Merge(Options& options, HomeConfig& config, std::string& error);
    // "mqtt://host:1883" -> host, port, tls; false with a reason.
    static bool ParseBroker(const std::string& url, BrokerAddress& out, std::string& error);
    // An MQTT topic level prefix: non-empty, no wildcards, no leading or trailing '/'.
    static bool IsTopicPrefix(const std::string& topic);
};

}  // namespace ircontrol::host

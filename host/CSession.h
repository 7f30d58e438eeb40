// Drives the loaded plugin through the simulated host: builds each request, sends it on the
// service "ircontrol", waits for its answer and collects what the IR blaster was asked to send.
// One request at a time, on the calling thread; the plugin must be started (service present).
// SendSet throws std::runtime_error when the service is gone; nothing else is thrown.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "sim/Simulator.h"

namespace ircontrol::host {

struct Exchange {
    std::string label;      // appliance kind or property, for display
    std::string summary;    // what was asked, in a few words
    std::string property;   // the property set
    std::string payload;    // its text as sent
    uint64_t transaction = 0;
    std::optional<std::pair<std::string, std::string>> answer;  // errorCode, description
    std::vector<sim::IrCall> transmissions;
};

struct AcState {
    std::string power = "ON";
    std::string mode = "COLD";
    int setpoint = 24;
    std::string fan = "AUTO";
};

class CSession {
public:
    explicit CSession(int timeoutMs) : timeoutMs_(timeoutMs) {}

    Exchange Key(const std::string& type, const std::string& codeset, int key, int waitMs = -1);
    Exchange Ac(const std::string& codeset, const AcState& state);
    // kind: json, string, int or bool; false with a reason if the value does not fit the kind.
    bool Set(const std::string& name, const std::string& kind, const std::string& value,
             Exchange& out, std::string& error, int waitMs = -1);

    // Several properties in one request, as a host may send them; the exchange describes them.
    Exchange SendList(Exchange exchange, const std::vector<sim::HostProperty>& properties, int waitMs = -1);

    static std::string KeyPayload(const std::string& type, const std::string& codeset, int key);
    static std::string AcPayload(const std::string& codeset, const AcState& state);

private:
    Exchange send(Exchange exchange, const sim::HostProperty& property, int waitMs);

    int timeoutMs_;
};

}  // namespace ircontrol::host

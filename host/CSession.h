// Drives the loaded plugin through the simulated host: turns a Request into the property set on
// the service "ircontrol", waits for its answer and collects what the request's own job did (IR
// transmissions, log lines), tied to it by the host transaction the plugin's worker serves.
// Requests go one at a time from the calling thread; the plugin must be started. Send throws
// std::runtime_error when the service is gone; nothing else is thrown. Every door's requests pass
// SendProperties, so it is where an air conditioner's answered state is told (SetAcStateListener).
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "JsonValue.h"
#include "Request.h"
#include "sim/Simulator.h"

namespace ircontrol::host {

class CSession {
public:
    // Told, on the sending thread, of each air conditioner's state a request carried (an ac
    // request, or a setKeyEvent property holding one) once it is answered ok.
    using AcStateListener = std::function<void(const std::string& codeset, const AcState& state)>;

    explicit CSession(int timeoutMs) : timeoutMs_(timeoutMs) {}

    // Replaces the listener (empty: nobody is told); set it while no request is being sent.
    void SetAcStateListener(AcStateListener listener) { acStateListener_ = std::move(listener); }

    // Sends a key, ac or set request and waits up to the timeout for its answer. The result has
    // its outcome and, unless it is ok, a one-line reason.
    RequestResult Send(const Request& request);
    // Sends several properties in one set request, as a host may; `described` names them (label,
    // summary, property, payload) and has a Set request. Waits and explains as Send does.
    RequestResult SendProperties(RequestResult described, const std::vector<sim::HostProperty>& properties);
    // Looks again at a result that had no answer in time, waiting up to `wait` for one: takes in a
    // late answer, the transmissions and log lines that came since (marked late). True if
    // anything was added.
    bool Refresh(RequestResult& result, std::chrono::milliseconds wait) const;

    // What a request sends, without sending it: label, summary, property and payload.
    static RequestResult Describe(const Request& request);
    static common::json::JsonValue KeyPayload(const std::string& type, const std::string& codeset, int key);
    static common::json::JsonValue AcPayload(const std::string& codeset, const AcState& state);
    // The reverse of AcPayload for a setKeyEvent value of any door: false when it holds no whole
    // air-conditioner state.
    static bool AcStateOf(const common::json::JsonValue& payload, std::string& codeset, AcState& out);

    int TimeoutMs() const { return timeoutMs_; }

private:
    // Takes in what the simulator holds for the result's transaction; true if anything was new.
    bool collect(RequestResult& result) const;

    void tellAcStates(const std::vector<sim::HostProperty>& properties) const;

    int timeoutMs_;
    AcStateListener acStateListener_;
};

}  // namespace ircontrol::host

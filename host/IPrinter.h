// What the host tool shows of a run, whatever the form: aligned columns for people
// (CTextPrinter) or one JSON object per line for programs (CJsonPrinter). A printer writes only
// to the stream it was made with and is used from one thread.
#pragma once

#include <cstddef>
#include <string>

#include "CPlatformSetup.h"
#include "Request.h"
#include "sim/Simulator.h"

namespace ircontrol::host {

class IPrinter {
public:
    virtual ~IPrinter() = default;

    // What the simulated platform reports (model year, IR service flag) and the tool's timing.
    virtual void Platform(const CPlatformSetup& setup, int irDelayMs, int timeoutMs) = 0;
    virtual void Service(const sim::ServiceInfo& service) = 0;
    // The column heads above a run of results (people only).
    virtual void ExchangeHeader() = 0;
    // One request with its answer, reason and transmissions; `note` says why it is shown (demo).
    virtual void Result(const RequestResult& result, const std::string& note) = 0;
    // A request that had no answer in time, once more came of it; the transmissions from
    // `firstNew` on are the new ones.
    virtual void Late(const RequestResult& result, std::size_t firstNew) = 0;
    virtual void Summary(std::size_t steps, std::size_t unexpected) = 0;
    // The paired appliances; `request` is the serve line that asked (line 0: the command line).
    virtual void Devices(const CPlatformSetup& setup, const Request& request) = 0;
    // A serve line that could not be used.
    virtual void LineError(const Request& request, const std::string& error) = 0;
};

}  // namespace ircontrol::host

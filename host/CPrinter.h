// Output of the host tool: aligned columns for people, or one JSON object per line for programs.
// Writes only to the stream it is given; used from one thread.
#pragma once

#include <ostream>
#include <string>

#include "CPlatformSetup.h"
#include "Request.h"
#include "sim/Simulator.h"

namespace ircontrol::host {

class CPrinter {
public:
    CPrinter(std::ostream& out, bool json) : out_(out), json_(json) {}

    // What the simulated platform reports (model year, IR service flag) and the tool's timing.
    void Platform(const CPlatformSetup& setup, int irDelayMs, int timeoutMs);
    void Service(const sim::ServiceInfo& service);
    void ExchangeHeader();
    // One request with its answer, reason and transmissions; `note` says why it is shown (demo).
    void Result(const RequestResult& result, const std::string& note = "");
    // A request that had no answer in time, once more came of it: in JSON the whole result again
    // with "late":true; for people the transmissions from `firstNew` on and the answer, if any.
    void Late(const RequestResult& result, std::size_t firstNew);
    void Summary(std::size_t steps, std::size_t unexpected);
    void Devices(const CPlatformSetup& setup, const Request& request = Request());
    // A serve line that could not be used.
    void LineError(const Request& request, const std::string& error);

    // "hdevice #1 key 10", "aircon  #5 mode=cool power=on setpoint=24 fan=auto"
    static std::string Transmission(const sim::IrCall& call);
    // {"line"?,"id"?,"command","property","payload","transaction","answer":{...}|null,"outcome",
    //  "outcome","reason"?,"elapsedUs"?,"ir":[{...,"onAirStartUs","onAirEndUs","late"}],"note"?}
    static std::string ResultJson(const RequestResult& result, const std::string& note = "");

private:
    std::ostream& out_;
    bool json_;
};

}  // namespace ircontrol::host

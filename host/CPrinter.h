// Output of the host tool: aligned columns for people, or one JSON object per line for programs.
// Writes only to the stream it is given; used from one thread.
#pragma once

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "CPlatformSetup.h"
#include "CSession.h"

namespace ircontrol::host {

class CPrinter {
public:
    CPrinter(std::ostream& out, bool json) : out_(out), json_(json) {}

    void Service(const sim::ServiceInfo& service);
    void ExchangeHeader();
    // One request with its answer and transmissions; `note` says why it is shown (demo).
    void Exchange(const ircontrol::host::Exchange& exchange, const std::string& note = "");
    void Summary(std::size_t steps, std::size_t unexpected);
    void Devices(const std::vector<PairedDevice>& devices,
                 const std::vector<std::pair<std::string, std::string>>& catalogue);

    // "hdevice #1 key 10", "aircon  #5 mode=cool power=on setpoint=24 fan=auto"
    static std::string Transmission(const sim::IrCall& call);
    // {"property","payload","transaction","answer":{"errorCode","description"}|null,"ir":[...]}
    static std::string ExchangeJson(const ircontrol::host::Exchange& exchange, const std::string& note = "");

private:
    std::ostream& out_;
    bool json_;
};

}  // namespace ircontrol::host

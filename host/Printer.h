// Output of the host tool: aligned text for people, or one JSON object per line for programs.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "Defaults.h"
#include "Session.h"

namespace irhost {

class Printer {
public:
    Printer(std::ostream& out, bool json) : out_(out), json_(json) {}

    void Service(const sim::ServiceInfo& service);
    void ExchangeHeader();
    void Exchange(const irhost::Exchange& exchange);
    void Devices(const std::vector<PairedDevice>& devices,
                 const std::vector<std::pair<std::string, std::string>>& catalogue);
    void Note(const std::string& text);  // a plain line (text mode only)

    static std::string Transmission(const sim::IrCall& call);
    static std::string ExchangeJson(const irhost::Exchange& exchange);

private:
    std::ostream& out_;
    bool json_;
};

}  // namespace irhost

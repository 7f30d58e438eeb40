// The printer for an output form, and the one-line text of a transmission that the text printer,
// the web page and the request reference share. Stateless; throws nothing.
#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "IPrinter.h"
#include "sim/Simulator.h"

namespace ircontrol::host {

class CPrinter {
public:
    // A JSON printer when `json`, else a text printer; both write to `out`, which must outlive it.
    static std::unique_ptr<IPrinter> Make(std::ostream& out, bool json);

    // "hdevice #1 key 10", "aircon  #5 mode=cool power=on setpoint=24 fan=auto", with what went
    // on air or why nothing did when a transmitter is attached.
    static std::string Transmission(const sim::IrCall& call);
};

}  // namespace ircontrol::host

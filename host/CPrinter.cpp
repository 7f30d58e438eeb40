#include "CPrinter.h"

#include <cstdio>

#include "CJsonPrinter.h"
#include "CTextPrinter.h"

namespace ircontrol::host {

std::unique_ptr<IPrinter> CPrinter::Make(std::ostream& out, bool json) {
    if (json) return std::make_unique<CJsonPrinter>(out);
    return std::make_unique<CTextPrinter>(out);
}

std::string CPrinter::Transmission(const sim::IrCall& call) {
    const std::string index = "#" + std::to_string(call.deviceIndex);
    std::string text;
    switch (call.function) {
        case sim::IrCall::Function::SendH: text = "hdevice " + index + " key " + std::to_string(call.key); break;
        case sim::IrCall::Function::SendZ: text = "zdevice " + index + " key " + std::to_string(call.key); break;
        case sim::IrCall::Function::Aircon:
            text = "aircon  " + index + " mode=" + call.mode + " power=" + call.power +
                   " setpoint=" + call.coolingSetpoint + " fan=" + call.fanSpeed;
            break;
        default: return sim::ToString(call.function);
    }
    if (!call.transmitError.empty()) return text + " (not sent: " + call.transmitError + ")";
    if (!call.waveform.empty()) {
        char onAir[64];
        std::snprintf(onAir, sizeof onAir, " (%zu pulses and spaces, %.1f ms on air)", call.waveform.size(),
                      static_cast<double>(call.onAir.count()) / 1000.0);
        text += onAir;
    }
    return text;
}

}  // namespace ircontrol::host

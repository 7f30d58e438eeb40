#include "PlatformState.h"

#include "sim/Simulator.h"

namespace irctest {
namespace {

std::string Describe(const sim::IrCall& call) {
    using Function = sim::IrCall::Function;
    const std::string online = call.online ? " online" : "";
    const std::string at = " @" + std::to_string(call.deviceIndex);
    switch (call.function) {
        case Function::SendH: return "H " + std::to_string(call.key) + at + online;
        case Function::SendZ: return "Z " + std::to_string(call.key) + at + online;
        case Function::Aircon:
            return "AC " + call.power + " " + call.mode + " " + call.coolingSetpoint + " " + call.fanSpeed + at;
        case Function::KeyMapH: return "map H " + call.codeset + online;
        case Function::KeyMapZ: return "map Z " + call.codeset + online;
    }
    return "?";
}

}  // namespace

void ResetWithPairing(const std::string& pairing) {
    sim::ResetAll();
    sim::Settings::SetString(kPairingKey, pairing);
}

std::string JournalText() {
    std::string text;
    for (const auto& call : sim::IrBlaster::Journal()) text += (text.empty() ? "" : "; ") + Describe(call);
    return text;
}

}  // namespace irctest

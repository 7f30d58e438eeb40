#include "PlatformState.h"

#include "sim/Simulator.h"

namespace irctest {
namespace {

bool IsKeyMapQuery(const sim::IrCall& call) {
    return call.function == sim::IrCall::Function::KeyMapH ||
           call.function == sim::IrCall::Function::KeyMapZ;
}

std::vector<sim::IrCall> Journal(bool keyMapQueries) {
    std::vector<sim::IrCall> out;
    for (auto& call : sim::IrBlaster::Journal()) {
        if (IsKeyMapQuery(call) == keyMapQueries) out.push_back(std::move(call));
    }
    return out;
}

}  // namespace

void ResetWithPairing(const std::string& pairing) {
    sim::ResetAll();
    sim::Settings::SetString(kPairingKey, pairing);
}

std::vector<sim::IrCall> Transmissions() { return Journal(false); }

std::vector<sim::IrCall> KeyMapQueries() { return Journal(true); }

}  // namespace irctest

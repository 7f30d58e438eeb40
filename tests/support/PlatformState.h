// Test helpers over the fake platform: a clean start with a pairing list in the settings store,
// and the IR blaster's journal as one text. Any thread.
#pragma once

#include <string>

#include "ServiceContract.h"
#include "sim/IrBlaster.h"

namespace irctest {

// The settings key of the pairing list the plugin reads on every command.
inline constexpr const char* kPairingKey = ircontrol::contract::kDevicesKey;

// sim::ResetAll, then `pairing` (a JSON text) stored as the pairing list.
void ResetWithPairing(const std::string& pairing);

// The whole journal as text, one "; "-separated entry per call, so a test compares all of it at
// once: "H 12 @3", "Z 76 @3 online", "AC on cool 24 low @7", "map H HFAN", "map Z ZAC online".
std::string JournalText();

}  // namespace irctest

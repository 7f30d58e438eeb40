// Picks the captured frame of a state-table air-conditioner codeset (Protocol::AcStates) for a
// requested state, and describes what the table offers. Stateless.
#pragma once

#include <string>

#include "infrared/codeset/Codeset.h"
#include "infrared/encode/CAcFrameEncoder.h"

namespace infrared {

class CAcStateTable {
public:
    // "off" takes a state that says off; otherwise the mode must match and the set point and fan
    // speed must match where the state's name says them; the state saying most wins. Throws
    // std::invalid_argument naming up to three nearest states when none matches.
    static const AcStateEntry& Find(const Codeset& codeset, const AcState& state);
    // {"modes":[...],"fan":[...],"setpoint":[min,max],"states":[...]} ([0,0]: no set point named).
    static std::string KeyMapText(const Codeset& codeset);
};

}  // namespace infrared

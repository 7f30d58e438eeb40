// The published table from a remote's button names to the key codes the service sends, per
// appliance kind, with the usual synonyms (POWER, Power, power_on-off -> 10; SPEED+, FAN_UP ->
// 11; ...), and the reading of air-conditioner state names ("Cool_22", "Heat_lo", "Off").
// docs/codesets.md shows the same table. Stateless.
#pragma once

#include <string>
#include <vector>

#include "infrared/codeset/Codeset.h"

namespace infrared {

enum class ApplianceKind { Fan, Purifier, Humidifier, Cleaner, Aircon };

struct KeyName {
    int code;
    const char* key;                     // the key name the codeset uses when the button has none
    std::vector<const char*> synonyms;   // normalised button names (see Normalise)
};

class CKeyNames {
public:
    static constexpr int kFirstFreeCode = 1000;  // codes given to buttons the table does not know

    // "fan", "purifier", "humidifier", "cleaner", "ac"; false for anything else.
    static bool KindFromName(const std::string& name, ApplianceKind& out);
    static const char* KindName(ApplianceKind kind);
    // The kind a database path names (".../Fans/...", ".../ACs/..."); false when none.
    static bool KindFromPath(const std::string& path, ApplianceKind& out);

    static const std::vector<KeyName>& Table(ApplianceKind kind);
    // The key code for a button name, or -1 when the table does not know it.
    static int Code(ApplianceKind kind, const std::string& button);
    // Lower case, letters and digits only, a trailing '+'/'-' read as "up"/"down", a "key"
    // prefix dropped: "SPEED+" -> "speedup", "KEY_POWER" -> "power".
    static std::string Normalise(const std::string& button);

    // What an air-conditioner button name says about a state; false when it names no state
    // (a toggle such as "Mode" or "TEMP+").
    static bool ReadStateName(const std::string& button, AcStateEntry& out);
};

}  // namespace infrared

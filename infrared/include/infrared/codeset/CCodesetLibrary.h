// The codesets of a codesets file (JSON, see docs/codesets.md), validated as a whole so that a
// bad file is refused at start and never half-used. Immutable after Parse(); share it freely.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "infrared/codeset/Codeset.h"

namespace infrared {

class CCodesetLibrary {
public:
    // Throws std::invalid_argument naming the member at fault ("codesets[1].keys.power: ...").
    static std::shared_ptr<const CCodesetLibrary> Parse(const std::string& text);

    const Codeset* Find(const std::string& name) const;  // nullptr if absent
    const std::vector<Codeset>& Codesets() const { return codesets_; }
    // The key map the IR library reports: {"<key>":<code>,...} for keys,
    // {"modes":[...],"fan":[...],"setpoint":[min,max]} for air conditioners, with
    // "power":[...] added where the unit's power words are not just on and off.
    static std::string KeyMapText(const Codeset& codeset);

private:
    std::vector<Codeset> codesets_;
};

}  // namespace infrared

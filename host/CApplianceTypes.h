// The five appliance kinds the service drives: short names for the command line and their OCF
// device types. Stateless.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace ircontrol::host {

class CApplianceTypes {
public:
    // (short name, OCF type), in the order the tool shows them.
    static const std::vector<std::pair<std::string, std::string>>& All();
    // "fan" -> "oic.d.fan"; a dotted name is taken as an OCF type as it stands; "" if neither.
    static std::string Resolve(const std::string& nameOrType);
    // "oic.d.fan" -> "fan"; any other type comes back unchanged.
    static std::string ShortName(const std::string& type);
    // The key codes the service accepts for that OCF type, ascending: a fixed allow-list per
    // appliance type, whatever the codeset's key map says. Empty for the air conditioner (it
    // takes a state, not keys) and for types the service does not drive.
    static const std::vector<int>& AllowedKeys(const std::string& type);
    // The words an air-conditioner state may carry: field "power", "mode" or "fan".
    static std::vector<std::string> AcWords(const std::string& field);
    // "" when a state is in those words with a set point of 0 to 99 (what is kept of it reads back),
    // else what is wrong, naming the field ("\"power\" is not one of the service's words").
    static std::string AcStateProblem(const std::string& power, const std::string& mode, long long setpoint,
                                      const std::string& fan);
};

}  // namespace ircontrol::host

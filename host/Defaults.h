// The host tool's embedded platform set-up: one paired appliance of each kind, their key maps,
// the model year and feature flag. Each can be replaced from a file or an option.
#pragma once

#include <string>
#include <vector>

namespace irhost {

struct PairedDevice {
    std::string codeset;
    int deviceIndex = 0;
    std::string type;   // OCF device type; only the tool reads it, the plugin ignores it
};

// The default pairing list text, as another component would store it.
const std::string& DefaultPairingJson();
// codeset -> key map text.
const std::vector<std::pair<std::string, std::string>>& DefaultCatalogue();
constexpr int kDefaultYear = 23;

// "fan" -> "oic.d.fan" etc.; a full OCF type is returned as it stands; "" if unknown.
std::string ResolveType(const std::string& nameOrType);
// A short name for an OCF type ("fan"), or the type itself.
std::string ShortName(const std::string& type);

// Parses a pairing list; on a bad text returns false with a one-line reason.
bool ParsePairing(const std::string& text, std::vector<PairedDevice>& out, std::string& error);
bool ParseCatalogue(const std::string& text, std::vector<std::pair<std::string, std::string>>& out,
                    std::string& error);

}  // namespace irhost

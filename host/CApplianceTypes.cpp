#include "CApplianceTypes.h"

namespace ircontrol::host {

const std::vector<std::pair<std::string, std::string>>& CApplianceTypes::All() {
    static const std::vector<std::pair<std::string, std::string>> types = {
        {"fan", "oic.d.fan"},
        {"purifier", "oic.d.airpurifier"},
        {"humidifier", "x.com.zq.d.humidifier"},
        {"cleaner", "oic.d.robotcleaner"},
        {"ac", "oic.d.airconditioner"},
    };
    return types;
}

std::string CApplianceTypes::Resolve(const std::string& nameOrType) {
    for (const auto& [name, type] : All()) {
        if (nameOrType == name || nameOrType == type) return type;
    }
    // Other OCF types pass, so the service's own refusal of them can be tried.
    return nameOrType.find('.') != std::string::npos ? nameOrType : std::string();
}

std::string CApplianceTypes::ShortName(const std::string& type) {
    for (const auto& [name, full] : All()) {
        if (type == full) return name;
    }
    return type;
}

}  // namespace ircontrol::host

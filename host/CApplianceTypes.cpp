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

const std::vector<int>& CApplianceTypes::AllowedKeys(const std::string& type) {
    static const std::vector<int> none;
    static const std::vector<int> climate = {10, 11, 12, 13, 14, 76};
    static const std::vector<int> cleaner = {10, 28, 39};
    if (type == "oic.d.fan" || type == "oic.d.airpurifier" || type == "x.com.zq.d.humidifier") return climate;
    if (type == "oic.d.robotcleaner") return cleaner;
    return none;
}

std::vector<std::string> CApplianceTypes::AcWords(const std::string& field) {
    if (field == "power") return {"ON", "OFF"};
    if (field == "mode") return {"AUTO", "COLD", "DEHUMI", "VENT", "HEAT"};
    if (field == "fan") return {"LOW", "MEDIUM", "HIGH", "AUTO"};
    return {};
}

}  // namespace ircontrol::host

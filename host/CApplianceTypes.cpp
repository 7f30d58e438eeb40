#include "CApplianceTypes.h"

#include <algorithm>

#include <iterator>

#include "ServiceContract.h"

namespace ircontrol::host {

const std::vector<std::pair<std::string, std::string>>& CApplianceTypes::All() {
    static const std::vector<std::pair<std::string, std::string>> types = {
        {"fan", contract::kOcfFan},
        {"purifier", contract::kOcfAirPurifier},
        {"humidifier", contract::kOcfHumidifier},
        {"cleaner", contract::kOcfRobotCleaner},
        {"ac", contract::kOcfAirConditioner},
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
    if (type == contract::kOcfFan || type == contract::kOcfAirPurifier || type == contract::kOcfHumidifier) return climate;
    if (type == contract::kOcfRobotCleaner) return cleaner;
    return none;
}

std::vector<std::string> CApplianceTypes::AcWords(const std::string& field) {
    if (field == "power") return {std::begin(contract::kAcPowerWords), std::end(contract::kAcPowerWords)};
    if (field == "mode") return {std::begin(contract::kAcModeWords), std::end(contract::kAcModeWords)};
    if (field == "fan") return {std::begin(contract::kAcFanWords), std::end(contract::kAcFanWords)};
    return {};
}

std::string CApplianceTypes::AcStateProblem(const std::string& power, const std::string& mode, long long setpoint,
                                            const std::string& fan) {
    for (const auto& [field, word] : {std::pair{"power", &power}, {"mode", &mode}, {"fan", &fan}}) {
        const std::vector<std::string> words = AcWords(field);
        if (std::find(words.begin(), words.end(), *word) == words.end()) {
            return std::string("\"") + field + "\" is not one of the service's words";
        }
    }
    return setpoint < 0 || setpoint > 99 ? "\"setpoint\" is out of range" : "";
}

}  // namespace ircontrol::host

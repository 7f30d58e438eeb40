#include "CDiscovery.h"

#include <algorithm>
#include <set>

#include "CApplianceTypes.h"
#include "JsonValue.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

// HA mode, the service's word, the words codesets use for it.
struct ModeWord {
    const char* ha;
    const char* service;
    std::vector<std::string> codeset;
};

const std::vector<ModeWord>& ModeWords() {
    static const std::vector<ModeWord> words = {
        {"auto", "AUTO", {"auto"}},       {"cool", "COLD", {"cool", "cold"}},
        {"dry", "DEHUMI", {"dry", "dehumi"}}, {"fan_only", "VENT", {"fan", "fan_only", "vent"}},
        {"heat", "HEAT", {"heat"}},
    };
    return words;
}

// Topic levels and HA object ids take only these; a codeset named otherwise is not announced.
bool Safe(const std::string& name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
    });
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

JsonValue Strings(const std::vector<std::string>& list) {
    JsonValue array(common::json::kArray);
    for (const auto& item : list) array.append(JsonValue(item));
    return array;
}

// code -> name from a key map's named keys
std::map<int, std::string> KeyNames(const KeyMap* keyMap) {
    std::map<int, std::string> names;
    if (keyMap == nullptr) return names;
    for (const auto& [name, code] : keyMap->keys) {
        if (Safe(name)) names.emplace(code, name);
    }
    return names;
}

}  // namespace

CDiscovery::CDiscovery(const HomeConfig& config)
    : prefix_(config.discoveryPrefix), base_(config.baseTopic), node_(config.clientId) {}

ClimateModel CDiscovery::Climate(const KeyMap* keyMap) {
    ClimateModel model;
    model.modes.push_back("off");
    const JsonValue map = keyMap != nullptr ? keyMap->json : JsonValue();
    const bool object = map.type() == common::json::kObject;
    std::set<std::string> given;
    if (object && map.isMember("modes") && map["modes"].type() == common::json::kArray) {
        for (unsigned i = 0; i < map["modes"].size(); ++i) {
            if (map["modes"][i].isString()) given.insert(Lower(map["modes"][i].asString()));
        }
    }
    for (const ModeWord& word : ModeWords()) {
        const bool offered = given.empty() || std::any_of(word.codeset.begin(), word.codeset.end(),
                                                          [&](const std::string& w) { return given.count(w) > 0; });
        if (offered) model.modes.push_back(word.ha);
    }
    const auto serviceFans = CApplianceTypes::AcWords("fan");
    if (object && map.isMember("fan") && map["fan"].type() == common::json::kArray) {
        for (unsigned i = 0; i < map["fan"].size(); ++i) {
            const std::string fan = map["fan"][i].isString() ? Lower(map["fan"][i].asString()) : "";
            const bool known = std::any_of(serviceFans.begin(), serviceFans.end(),
                                           [&](const std::string& w) { return Lower(w) == fan; });
            if (known) model.fanModes.push_back(fan);
        }
    }
    if (model.fanModes.empty()) {
        for (const auto& word : serviceFans) model.fanModes.push_back(Lower(word));
    }
    if (object && map.isMember("setpoint") && map["setpoint"].type() == common::json::kArray &&
        map["setpoint"].size() == 2 && map["setpoint"][0].isInt() && map["setpoint"][1].isInt() &&
        map["setpoint"][0].asInt() <= map["setpoint"][1].asInt()) {
        model.minTemp = map["setpoint"][0].asInt();
        model.maxTemp = map["setpoint"][1].asInt();
    }
    return model;
}

std::optional<std::string> CDiscovery::ServiceMode(const std::string& haMode) {
    for (const ModeWord& word : ModeWords()) {
        if (haMode == word.ha) return std::string(word.service);
    }
    return std::nullopt;
}

std::string CDiscovery::HaMode(const AcState& state) {
    if (state.power == "OFF") return "off";
    for (const ModeWord& word : ModeWords()) {
        if (state.mode == word.service) return word.ha;
    }
    return "off";
}

JsonValue CDiscovery::entity(const PairedDevice& paired, const std::string& object, const std::string& name) const {
    JsonValue config(common::json::kObject);
    config["name"] = name;
    config["unique_id"] = node_ + "_" + object;
    config["object_id"] = node_ + "_" + object;
    JsonValue& device = config["device"];
    JsonValue ids(common::json::kArray);
    ids.append(JsonValue(node_ + "_" + paired.codeset));
    device["identifiers"] = ids;
    device["name"] = CApplianceTypes::ShortName(paired.type) + " " + paired.codeset;
    device["model"] = paired.codeset;
    device["manufacturer"] = "ircontrol (IR)";
    device["via_device"] = node_;
    JsonValue availability(common::json::kObject);
    availability["topic"] = Availability();
    JsonValue list(common::json::kArray);
    list.append(availability);
    config["availability"] = list;
    return config;
}

MqttMessage CDiscovery::button(const PairedDevice& paired, const std::string& name, const std::string& press) const {
    const std::string object = paired.codeset + "_" + name;
    JsonValue config = entity(paired, object, name);
    config["command_topic"] = Key(paired.codeset);
    config["payload_press"] = press;
    return {prefix_ + "/button/" + node_ + "/" + object + "/config", config.toString()};
}

MqttMessage CDiscovery::climate(const PairedDevice& paired, const ClimateModel& model) const {
    const std::string object = paired.codeset + "_climate";
    JsonValue config = entity(paired, object, "Air conditioner");
    config["modes"] = Strings(model.modes);
    config["fan_modes"] = Strings(model.fanModes);
    config["min_temp"] = model.minTemp;
    config["max_temp"] = model.maxTemp;
    config["temp_step"] = 1;
    config["precision"] = 1.0;
    config["temperature_unit"] = "C";
    for (const char* field : {"mode", "temperature", "fan_mode"}) {
        config[std::string(field) + "_command_topic"] = Climate(paired.codeset, field, "set");
        config[std::string(field) + "_state_topic"] = Climate(paired.codeset, field, "state");
    }
    return {prefix_ + "/climate/" + node_ + "/" + object + "/config", config.toString()};
}

std::vector<MqttMessage> CDiscovery::Configs(const CPlatformSetup& setup) const {
    std::vector<MqttMessage> configs;
    std::set<std::string> seen;
    for (const PairedDevice& paired : setup.Devices()) {
        // One entity set per codeset: the plugin picks the first paired entry of a codeset.
        if (!Safe(paired.codeset) || !seen.insert(paired.codeset).second) continue;
        if (paired.type == contract::kOcfAirConditioner) {
            configs.push_back(climate(paired, Climate(setup.KeyMap(paired.codeset))));
            continue;
        }
        const auto names = KeyNames(setup.KeyMap(paired.codeset));
        for (const int code : CApplianceTypes::AllowedKeys(paired.type)) {
            // A key the key map does not name is pressed by its code.
            const auto named = names.find(code);
            if (named != names.end()) {
                configs.push_back(button(paired, named->second, named->second));
            } else {
                configs.push_back(button(paired, "key_" + std::to_string(code), std::to_string(code)));
            }
        }
    }
    return configs;
}

std::vector<MqttMessage> CDiscovery::Removals(const std::vector<MqttMessage>& before,
                                              const std::vector<MqttMessage>& after) {
    std::set<std::string> kept;
    for (const auto& message : after) kept.insert(message.topic);
    std::vector<MqttMessage> removals;
    for (const auto& message : before) {
        if (kept.count(message.topic) == 0) removals.push_back({message.topic, ""});
    }
    return removals;
}

std::vector<MqttMessage> CDiscovery::States(const std::string& codeset, const AcState& state) const {
    return {{Climate(codeset, "mode", "state"), HaMode(state)},
            {Climate(codeset, "temperature", "state"), std::to_string(state.setpoint)},
            {Climate(codeset, "fan_mode", "state"), Lower(state.fan)}};
}

}  // namespace ircontrol::host

// The Home Assistant view of the paired appliances and the service's MQTT topics. Per paired
// appliance one HA device; per key the service accepts for it a `button` (named from the
// codeset's key map); per air conditioner a `climate` with the modes ("off" among them), fan
// modes and set-point range of its codeset's key map. Configs are retained under
// <prefix>/<component>/<node>/<object>/config; an entity that is gone gets an empty retained
// config, which is how HA removes it. Pure functions of the setup; const; throws nothing.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "CHomeConfig.h"
#include "CPlatformSetup.h"
#include "JsonValue.h"
#include "Request.h"

namespace ircontrol::host {

struct MqttMessage {
    std::string topic;
    std::string payload;  // "" for a discovery config: remove the entity
};

// What an air conditioner's codeset offers, in HA's words.
struct ClimateModel {
    std::vector<std::string> modes;      // "off" first, then HA names ("cool", "fan_only", ...)
    std::vector<std::string> fanModes;   // lower-case
    int minTemp = 16;
    int maxTemp = 30;
};

class CDiscovery {
public:
    explicit CDiscovery(const HomeConfig& config);

    // Every retained config for the setup's pairing list, in a stable order.
    std::vector<MqttMessage> Configs(const CPlatformSetup& setup) const;
    // Empty configs for the topics in `before` that `after` has no more.
    static std::vector<MqttMessage> Removals(const std::vector<MqttMessage>& before,
                                             const std::vector<MqttMessage>& after);
    // From a key map {"modes":[...],"fan":[...],"setpoint":[min,max]}; defaults where it says less.
    static ClimateModel Climate(const KeyMap* keyMap);
    // HA mode <-> the service's AC words; nullopt when there is no match.
    static std::optional<std::string> ServiceMode(const std::string& haMode);
    static std::string HaMode(const AcState& state);

    std::string Availability() const { return base_ + "/status"; }
    std::string Result() const { return base_ + "/result"; }
    std::string Raw() const { return base_ + "/raw"; }
    std::string Pairing() const { return base_ + "/devices/set"; }
    std::string Key(const std::string& codeset) const { return base_ + "/" + codeset + "/key"; }
    // field: mode, temperature or fan_mode; what: set or state
    std::string Climate(const std::string& codeset, const std::string& field, const std::string& what) const {
        return base_ + "/" + codeset + "/" + field + "/" + what;
    }
    // The retained state topics of one air conditioner's state.
    std::vector<MqttMessage> States(const std::string& codeset, const AcState& state) const;

private:
    // What every entity's config has: name, ids, the HA device of its appliance, availability.
    common::json::JsonValue entity(const PairedDevice& paired, const std::string& object, const std::string& name) const;
    MqttMessage button(const PairedDevice& paired, const std::string& name, const std::string& press) const;
    MqttMessage climate(const PairedDevice& paired, const ClimateModel& model) const;

    std::string prefix_;
    std::string base_;
    std::string node_;
};

}  // namespace ircontrol::host

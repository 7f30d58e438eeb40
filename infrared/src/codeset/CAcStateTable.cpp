#include "infrared/codeset/CAcStateTable.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "JsonValue.h"

namespace infrared {
namespace {

// How far a state is from the request: a wrong power or mode outweighs any set point or fan.
double Distance(const AcStateEntry& entry, const AcState& state, bool setpointGiven, double setpoint) {
    if (entry.power != state.power) return 1000;
    if (state.power == "off") return 0;
    double distance = entry.mode == state.mode ? 0 : 100;
    if (entry.hasSetpoint && setpointGiven) distance += std::fabs(entry.setpoint - setpoint);
    if (!entry.fan.empty() && entry.fan != state.fan) distance += 1;
    return distance;
}

std::string Describe(const AcState& state) {
    if (state.power == "off") return "off";
    std::string out = "on";
    for (const std::string* word : {&state.mode, &state.setpoint, &state.fan}) {
        if (!word->empty()) out += " " + *word;
    }
    return out;
}

}  // namespace

const AcStateEntry& CAcStateTable::Find(const Codeset& codeset, const AcState& state) {
    char* end = nullptr;
    const double setpoint = std::strtod(state.setpoint.c_str(), &end);
    const bool setpointGiven = !state.setpoint.empty() && end != nullptr && *end == '\0';
    const AcStateEntry* best = nullptr;
    int bestSaid = -1;
    for (const auto& entry : codeset.states) {
        if (entry.power != state.power) continue;
        if (state.power == "on") {
            if (entry.mode != state.mode) continue;
            if (entry.hasSetpoint && (!setpointGiven || std::fabs(entry.setpoint - setpoint) > 1e-9)) continue;
            if (!entry.fan.empty() && entry.fan != state.fan) continue;
        }
        const int said = (entry.hasSetpoint ? 1 : 0) + (entry.fan.empty() ? 0 : 1);
        if (said > bestSaid) {
            best = &entry;
            bestSaid = said;
        }
    }
    if (best != nullptr) return *best;
    std::vector<std::pair<double, const AcStateEntry*>> ranked;
    for (const auto& entry : codeset.states) ranked.emplace_back(Distance(entry, state, setpointGiven, setpoint), &entry);
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::string nearest;
    for (std::size_t i = 0; i < ranked.size() && i < 3; ++i) nearest += (i > 0 ? ", " : "") + ranked[i].second->frame.name;
    throw std::invalid_argument("codeset " + codeset.name + " has no captured state for " + Describe(state) +
                                "; nearest: " + nearest);
}

std::string CAcStateTable::KeyMapText(const Codeset& codeset) {
    std::vector<std::string> modes, fans, names;
    double low = 0, high = 0;
    bool anySetpoint = false;
    const auto add = [](std::vector<std::string>& list, const std::string& word) {
        if (!word.empty() && std::find(list.begin(), list.end(), word) == list.end()) list.push_back(word);
    };
    for (const auto& entry : codeset.states) {
        add(modes, entry.mode);
        add(fans, entry.fan);
        names.push_back(entry.frame.name);
        if (entry.hasSetpoint) {
            low = anySetpoint ? std::min(low, entry.setpoint) : entry.setpoint;
            high = anySetpoint ? std::max(high, entry.setpoint) : entry.setpoint;
            anySetpoint = true;
        }
    }
    std::ostringstream out;
    const auto list = [&](const char* member, const std::vector<std::string>& words) {
        out << '"' << member << "\":[";
        for (std::size_t i = 0; i < words.size(); ++i) out << (i > 0 ? "," : "") << common::json::JsonValue(words[i]).toString();
        out << ']';
    };
    out << '{';
    list("modes", modes);
    out << ',';
    list("fan", fans);
    out << ",\"setpoint\":[" << low << ',' << high << "],";
    list("states", names);
    out << '}';
    return out.str();
}

}  // namespace infrared

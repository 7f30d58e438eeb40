#include "infrared/import/CKeyNames.h"

#include <cctype>
#include <cstdlib>

namespace infrared {
namespace {

const std::vector<KeyName> kFan = {
    {10, "power", {"power", "poweronoff", "onoff", "pwr", "powertoggle", "standby", "on"}},
    {11, "speed_up", {"speedup", "fanup", "fanspeedup", "speedplus", "speed", "fanspeed", "wind", "up"}},
    {12, "speed_down", {"speeddown", "fandown", "fanspeeddown", "speedminus", "down"}},
    {13, "swing", {"swing", "oscillate", "oscillation", "osc", "rotate", "rotation", "sweep", "swivel", "turn"}},
    {14, "timer", {"timer", "time", "timerup", "offtimer"}},
    {76, "mode", {"mode", "windmode", "windtype", "naturalwind", "natural", "breeze", "sleep", "type"}},
};
const std::vector<KeyName> kPurifier = {
    {10, "power", {"power", "poweronoff", "onoff", "pwr", "powertoggle", "standby", "on"}},
    {11, "fan_up", {"fanup", "speedup", "fanspeedup", "speed", "fanspeed", "fan", "up"}},
    {12, "fan_down", {"fandown", "speeddown", "fanspeeddown", "down"}},
    {13, "sleep", {"sleep", "night", "nightmode", "quiet", "silent"}},
    {14, "timer", {"timer", "time"}},
    {76, "mode", {"mode", "auto", "automode", "turbo"}},
};
const std::vector<KeyName> kHumidifier = {
    {10, "power", {"power", "poweronoff", "onoff", "pwr", "powertoggle", "standby", "on"}},
    {11, "mist_up", {"mistup", "humidityup", "levelup", "mist", "humidity", "up", "speedup"}},
    {12, "mist_down", {"mistdown", "humiditydown", "leveldown", "down", "speeddown"}},
    {13, "auto", {"auto", "automode", "sleep"}},
    {14, "timer", {"timer", "time"}},
    {76, "mode", {"mode", "warm", "heat"}},
};
const std::vector<KeyName> kCleaner = {
    {10, "power", {"power", "poweronoff", "onoff", "pwr", "powertoggle", "standby"}},
    {28, "home", {"home", "dock", "charge", "recharge", "returnhome", "base", "gohome"}},
    {39, "start", {"start", "clean", "startstop", "startpause", "play", "playpause", "go", "auto", "autoclean"}},
};
const std::vector<KeyName> kNone;

struct Word {
    const char* text;
    const char* field;  // "mode", "fan", "power"
    const char* value;
};

// Words of air-conditioner state names as the database writes them.
const Word kStateWords[] = {
    {"off", "power", "off"},   {"on", "power", "on"},     {"cool", "mode", "cool"},  {"cold", "mode", "cool"},
    {"cooling", "mode", "cool"}, {"heat", "mode", "heat"}, {"hot", "mode", "heat"},  {"heating", "mode", "heat"},
    {"dry", "mode", "dry"},    {"dh", "mode", "dry"},     {"dehum", "mode", "dry"},  {"dehumidify", "mode", "dry"},
    {"fan", "mode", "fan"},    {"vent", "mode", "fan"},   {"auto", "mode", "auto"},  {"lo", "fan", "low"},
    {"low", "fan", "low"},     {"mid", "fan", "medium"},  {"med", "fan", "medium"},  {"medium", "fan", "medium"},
    {"hi", "fan", "high"},     {"high", "fan", "high"},
};

}  // namespace

bool CKeyNames::KindFromName(const std::string& name, ApplianceKind& out) {
    const std::pair<const char*, ApplianceKind> names[] = {{"fan", ApplianceKind::Fan}, {"purifier", ApplianceKind::Purifier},
        {"humidifier", ApplianceKind::Humidifier}, {"cleaner", ApplianceKind::Cleaner}, {"ac", ApplianceKind::Aircon}};
    for (const auto& [word, kind] : names) {
        if (name == word) {
            out = kind;
            return true;
        }
    }
    return false;
}

const char* CKeyNames::KindName(ApplianceKind kind) {
    switch (kind) {
        case ApplianceKind::Fan: return "fan";
        case ApplianceKind::Purifier: return "purifier";
        case ApplianceKind::Humidifier: return "humidifier";
        case ApplianceKind::Cleaner: return "cleaner";
        case ApplianceKind::Aircon: return "ac";
    }
    return "?";
}

bool CKeyNames::KindFromPath(const std::string& path, ApplianceKind& out) {
    const std::pair<const char*, ApplianceKind> folders[] = {{"/ACs/", ApplianceKind::Aircon}, {"/Fans/", ApplianceKind::Fan},
        {"/Air_Purifiers/", ApplianceKind::Purifier}, {"/Humidifiers/", ApplianceKind::Humidifier},
        {"/Vacuum_Cleaners/", ApplianceKind::Cleaner}};
    const std::string slashed = "/" + path;
    for (const auto& [folder, kind] : folders) {
        if (slashed.find(folder) != std::string::npos) {
            out = kind;
            return true;
        }
    }
    return false;
}

const std::vector<KeyName>& CKeyNames::Table(ApplianceKind kind) {
    switch (kind) {
        case ApplianceKind::Fan: return kFan;
        case ApplianceKind::Purifier: return kPurifier;
        case ApplianceKind::Humidifier: return kHumidifier;
        case ApplianceKind::Cleaner: return kCleaner;
        case ApplianceKind::Aircon: return kNone;
    }
    return kNone;
}

std::string CKeyNames::Normalise(const std::string& button) {
    std::string text = button;
    std::string suffix;
    if (!text.empty() && (text.back() == '+' || text.back() == '-')) {
        suffix = text.back() == '+' ? "up" : "down";
        text.pop_back();
    }
    std::string out;
    for (const char c : text) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) out += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    if (out.size() > 3 && out.compare(0, 3, "key") == 0) out.erase(0, 3);
    return out + suffix;
}

int CKeyNames::Code(ApplianceKind kind, const std::string& button) {
    const std::string normal = Normalise(button);
    for (const auto& entry : Table(kind)) {
        for (const char* synonym : entry.synonyms) {
            if (normal == synonym) return entry.code;
        }
    }
    return -1;
}

bool CKeyNames::ReadStateName(const std::string& button, AcStateEntry& out) {
    std::vector<std::string> words;
    std::string word;
    for (const char c : button + " ") {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            // "Cool22" splits into "cool" and "22" as "Cool_22" does.
            if (!word.empty() && (std::isdigit(static_cast<unsigned char>(c)) != 0) != (std::isdigit(static_cast<unsigned char>(word.back())) != 0)) {
                words.push_back(word);
                word.clear();
            }
            word += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        } else if (!word.empty()) {
            words.push_back(word);
            word.clear();
        }
    }
    // A bare "Fan" is the fan-speed button of most remotes, not the fan-only mode.
    if (words.size() == 1 && words[0] == "fan") return false;
    AcStateEntry state;
    for (const auto& w : words) {
        if (std::isdigit(static_cast<unsigned char>(w[0])) != 0) {
            const long degrees = std::strtol(w.c_str(), nullptr, 10);
            if (state.hasSetpoint || w.size() > 2 || degrees < 16 || degrees > 32) return false;
            state.hasSetpoint = true;
            state.setpoint = static_cast<double>(degrees);
            continue;
        }
        const Word* found = nullptr;
        for (const auto& known : kStateWords) {
            if (w == known.text) found = &known;
        }
        if (found == nullptr) return false;
        std::string& field = std::string(found->field) == "power" ? state.power : std::string(found->field) == "mode" ? state.mode : state.fan;
        // "Auto" after a mode is the fan speed ("Cool_auto").
        if (&field == &state.mode && !state.mode.empty() && std::string(found->value) == "auto" && state.fan.empty()) {
            state.fan = "auto";
            continue;
        }
        if (!field.empty()) return false;
        field = found->value;
    }
    if (state.power == "off") {
        if (!state.mode.empty() || state.hasSetpoint || !state.fan.empty()) return false;
    } else {
        // A state names a mode; a bare "On" or "22" is a button, not a state.
        if (state.mode.empty()) return false;
        state.power = "on";
    }
    out.power = state.power;
    out.mode = state.mode;
    out.fan = state.fan;
    out.hasSetpoint = state.hasSetpoint;
    out.setpoint = state.setpoint;
    return true;
}

}  // namespace infrared

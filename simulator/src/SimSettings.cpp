// vconf: an in-memory key-value store with change notifications, seeding and fault injection.
#include <vconf.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <variant>

#include "SimInternal.h"
#include "sim/Simulator.h"

struct _keynode_t {
    std::string name;
};

namespace sim {
namespace {

struct Subscriber {
    std::string key;
    vconf_callback_fn callback;
    void* userData;
};

struct SettingsState {
    std::mutex mutex;
    std::map<std::string, std::variant<int, std::string>> values;
    std::vector<Subscriber> subscribers;
    std::map<SettingsFault, int> faults;
};

bool LoadFile(SettingsState& s, const std::string& path, std::string* error);

SettingsState& State() {
    static SettingsState* state = [] {
        auto* s = new SettingsState();  // never destroyed: plugin threads may read it at exit
        if (const char* file = std::getenv("VYRSIM_VCONF_FILE"); file != nullptr && *file) {
            std::string error;
            if (!LoadFile(*s, file, &error)) std::fprintf(stderr, "vyrsim: %s\n", error.c_str());
        }
        return s;
    }();
    return *state;
}

// Consumes one injected failure of that kind, if any is pending. Called under the lock.
bool Fails(SettingsState& s, SettingsFault fault) {
    auto it = s.faults.find(fault);
    if (it == s.faults.end() || it->second == 0) return false;
    if (it->second > 0) --it->second;
    return true;
}

bool LoadFile(SettingsState& s, const std::string& path, std::string* error) {
    std::ifstream in(path);
    if (!in) {
        if (error) *error = "cannot open " + path;
        return false;
    }
    std::string line;
    int number = 0;
    while (std::getline(in, line)) {
        ++number;
        std::istringstream words(line);
        std::string kind, key;
        words >> kind;
        if (kind.empty() || kind[0] == '#') continue;
        words >> key;
        std::string rest;
        std::getline(words >> std::ws, rest);
        if (key.empty() || (kind != "int" && kind != "string")) {
            if (error) *error = path + ":" + std::to_string(number) + ": expected 'int|string <key> <value>'";
            return false;
        }
        if (kind == "string") {
            s.values[key] = rest;
            continue;
        }
        char* end = nullptr;
        errno = 0;
        // long long, not long: the same file must mean the same on 32- and 64-bit builds.
        const long long value = std::strtoll(rest.c_str(), &end, 10);
        if (rest.empty() || *end != '\0') {
            if (error) *error = path + ":" + std::to_string(number) + ": not an integer: " + rest;
            return false;
        }
        if (errno == ERANGE || value < INT_MIN || value > INT_MAX) {
            if (error) *error = path + ":" + std::to_string(number) + ": out of int range: " + rest;
            return false;
        }
        s.values[key] = static_cast<int>(value);
    }
    return true;
}

void Notify(const std::string& key) {
    std::vector<Subscriber> targets;
    {
        auto& s = State();
        std::lock_guard<std::mutex> lock(s.mutex);
        for (const auto& sub : s.subscribers) {
            if (sub.key == key) targets.push_back(sub);
        }
    }
    _keynode_t node{key};
    for (const auto& sub : targets) sub.callback(&node, sub.userData);
}

}  // namespace

void Settings::SetString(const std::string& key, const std::string& value) {
    {
        std::lock_guard<std::mutex> lock(State().mutex);
        State().values[key] = value;
    }
    Notify(key);
}

void Settings::SetInt(const std::string& key, int value) {
    {
        std::lock_guard<std::mutex> lock(State().mutex);
        State().values[key] = value;
    }
    Notify(key);
}

void Settings::Remove(const std::string& key) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().values.erase(key);
}

std::optional<std::string> Settings::GetString(const std::string& key) {
    std::lock_guard<std::mutex> lock(State().mutex);
    auto it = State().values.find(key);
    if (it == State().values.end() || !std::holds_alternative<std::string>(it->second)) return std::nullopt;
    return std::get<std::string>(it->second);
}

std::optional<int> Settings::GetInt(const std::string& key) {
    std::lock_guard<std::mutex> lock(State().mutex);
    auto it = State().values.find(key);
    if (it == State().values.end() || !std::holds_alternative<int>(it->second)) return std::nullopt;
    return std::get<int>(it->second);
}

bool Settings::SeedFromFile(const std::string& path, std::string* error) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    return LoadFile(s, path, error);
}

void Settings::InjectFault(SettingsFault fault, int times) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().faults[fault] = times;
}

void Settings::ClearFaults() {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().faults.clear();
}

std::size_t Settings::Subscribers(const std::string& key) {
    std::lock_guard<std::mutex> lock(State().mutex);
    std::size_t n = 0;
    for (const auto& sub : State().subscribers) n += sub.key == key ? 1 : 0;
    return n;
}

void Settings::Reset() {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.values.clear();
    s.subscribers.clear();
    s.faults.clear();
}

void internal::ResetSettings() { Settings::Reset(); }

}  // namespace sim

using sim::SettingsFault;

extern "C" int vconf_get_int(const char* key, int* value) {
    if (key == nullptr || value == nullptr) return -1;
    auto& s = sim::State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (sim::Fails(s, SettingsFault::GetInt)) return -1;
    auto it = s.values.find(key);
    if (it == s.values.end() || !std::holds_alternative<int>(it->second)) return -1;
    *value = std::get<int>(it->second);
    return 0;
}

extern "C" char* vconf_get_str(const char* key) {
    if (key == nullptr) return nullptr;
    auto& s = sim::State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (sim::Fails(s, SettingsFault::GetStr)) return nullptr;
    auto it = s.values.find(key);
    if (it == s.values.end() || !std::holds_alternative<std::string>(it->second)) return nullptr;
    return strdup(std::get<std::string>(it->second).c_str());
}

extern "C" int vconf_set_int(const char* key, int value) {
    if (key == nullptr) return -1;
    {
        auto& s = sim::State();
        std::lock_guard<std::mutex> lock(s.mutex);
        if (sim::Fails(s, SettingsFault::SetInt)) return -1;
        s.values[key] = value;
    }
    sim::Notify(key);
    return 0;
}

extern "C" int vconf_set_str(const char* key, const char* value) {
    if (key == nullptr || value == nullptr) return -1;
    {
        auto& s = sim::State();
        std::lock_guard<std::mutex> lock(s.mutex);
        if (sim::Fails(s, SettingsFault::SetStr)) return -1;
        s.values[key] = std::string(value);
    }
    sim::Notify(key);
    return 0;
}

extern "C" int vconf_notify_key_changed(const char* key, vconf_callback_fn cb, void* user_data) {
    if (key == nullptr || cb == nullptr) return -1;
    auto& s = sim::State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (sim::Fails(s, SettingsFault::Notify)) return -1;
    s.subscribers.push_back({key, cb, user_data});
    return 0;
}

extern "C" int vconf_ignore_key_changed(const char* key, vconf_callback_fn cb) {
    if (key == nullptr || cb == nullptr) return -1;
    auto& s = sim::State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (sim::Fails(s, SettingsFault::Ignore)) return -1;
    const auto before = s.subscribers.size();
    auto& subs = s.subscribers;
    subs.erase(std::remove_if(subs.begin(), subs.end(),
                              [&](const sim::Subscriber& sub) {
                                  return sub.key == key && sub.callback == cb;
                              }),
               subs.end());
    return s.subscribers.size() < before ? 0 : -1;
}

extern "C" const char* vconf_keynode_get_name(keynode_t* node) {
    return node != nullptr ? node->name.c_str() : nullptr;
}

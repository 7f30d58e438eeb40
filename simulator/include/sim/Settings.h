// The simulated settings store (vconf): int and string keys, change notifications, seeding
// from a file, failure injection.
// One piece of the simulator's control API (see sim/Simulator.h); every function is thread-safe.
#pragma once

#include <optional>
#include <string>

namespace sim {

enum class SettingsFault { GetInt, GetStr, SetInt, SetStr, Notify, Ignore };

class Settings {
public:
    static void SetString(const std::string& key, const std::string& value);  // notifies
    static void SetInt(const std::string& key, int value);                    // notifies
    static void Remove(const std::string& key);
    static std::optional<std::string> GetString(const std::string& key);
    static std::optional<int> GetInt(const std::string& key);
    // Lines "int <key> <value>" and "string <key> <text to end of line>"; '#' starts a comment.
    // Also read at start from the file named by VYRSIM_VCONF_FILE, when set.
    static bool SeedFromFile(const std::string& path, std::string* error = nullptr);
    static void InjectFault(SettingsFault fault, int times = -1);
    static void ClearFaults();
    static std::size_t Subscribers(const std::string& key);
    static void Reset();                           // empty store, no faults, no subscribers
};

}  // namespace sim

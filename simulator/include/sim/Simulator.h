// Control API of the desktop platform simulator (libvyrsim.so). The simulator implements every
// function of the platform headers in platform/include/ for a PC; tests and tools steer it through
// this API: inject failures, drive the host side, read the IR journal and the captured log.
// Every function is thread-safe. Callbacks into the plugin are made without any simulator lock
// held, on the thread that called the control function (or, for answers, the plugin's thread).
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace sim {

// Puts every part below back to its start state (services are forgotten, not destroyed).
void ResetAll();

// ---------------------------------------------------------------------------------- log
struct LogLine {
    int priority;        // the dlog priority number (3 debug, 4 info, 6 error, ...)
    std::string tag;
    std::string text;    // fully formatted message
};

class Log {
public:
    static std::vector<LogLine> Lines();                 // snapshot, oldest first
    static void Clear();
    // Lines whose text contains `needle` (and whose tag equals `tag`, when given).
    static std::size_t Count(const std::string& needle, const std::string& tag = "");
    static bool Contains(const std::string& needle, const std::string& tag = "");
    // Capture on by default; the newest `limit` lines are kept (default 200000).
    static void SetCapture(bool on, std::size_t limit = 200000);
    // Also print each line to stderr in a readable one-line form. Starts on when the
    // environment variable VYRSIM_LOG is set to a non-empty value other than "0".
    static void SetEcho(bool on);
    // Called for every line after capture (e.g. for a tool's own display); empty to remove.
    static void SetListener(std::function<void(const LogLine&)> listener);
};

// ------------------------------------------------------------------------ host framework
struct HostProperty {
    enum class Kind { String, Int, Bool, Json };
    std::string name;    // an empty name makes an unnamed property (get_name fails on it)
    Kind kind = Kind::String;
    std::string text;    // String and Json
    int intValue = 0;
    bool boolValue = false;

    static HostProperty String(const std::string& name, const std::string& value);
    static HostProperty Int(const std::string& name, int value);
    static HostProperty Bool(const std::string& name, bool value);
    static HostProperty Json(const std::string& name, const std::string& text);
};

struct RegisteredProperty {
    std::string name;
    int type;
    int64_t first;
    int64_t second;
    std::string description;
};

struct ServiceInfo {
    void* handle;
    std::string name;
    std::string description;
    std::vector<RegisteredProperty> properties;   // registration order
};

struct SetResult {
    uint64_t transaction;
    void* service;
    int error;                                    // the error argument of the send call
    std::vector<HostProperty> properties;         // list contents, in list order
    bool serviceAlive;                            // false if sent for a destroyed/unknown service
};

enum class HostFault {
    ServiceCreate,      // vyrf_service_create returns NULL
    RegisterProperty,   // vyrf_service_register_property returns non-zero
    ListCreate,         // vyrf_property_list_create returns NULL
    ListCopy,           // vyrf_property_list_copy returns NULL
    SendResult,         // vyrf_service_send_set_property_result returns non-zero (list still taken)
};

class Host {
public:
    static std::vector<ServiceInfo> Services();   // live services, creation order
    static std::optional<ServiceInfo> FindService(const std::string& name);

    // Builds a property list from `properties`, calls the named service's set callback on the
    // calling thread, destroys the list when the callback returns and gives the transaction id
    // (> 0). Throws std::runtime_error if no live service has that name.
    static uint64_t SendSet(const std::string& service, const std::vector<HostProperty>& properties);
    static void SendGet(const std::string& service, const std::vector<HostProperty>& properties);
    static void SendCancel(const std::string& service);
    static void SendProtocolStatus(const std::string& service, const std::string& protocol, int status);

    // The first result sent for `transaction`, waiting until the deadline.
    static std::optional<SetResult> WaitResult(uint64_t transaction, std::chrono::milliseconds timeout);
    static std::vector<SetResult> Results();      // every result, arrival order
    static std::vector<SetResult> ResultsFor(uint64_t transaction);
    // Keep results (default on); a listener sees each result as it arrives, on the sender's thread.
    static void SetKeepResults(bool on);
    static void SetResultListener(std::function<void(const SetResult&)> listener);

    // The next `times` calls of that kind fail (-1: every call until cleared).
    static void InjectFault(HostFault fault, int times = 1);
    static void ClearFaults();

    // Counters for leak checks: lists and properties currently alive in the simulator.
    static std::size_t LiveLists();
    static std::size_t LiveProperties();
    // Host calls made with a NULL or unknown service handle (register, unregister, destroy, send).
    static std::size_t CallsWithBadService();
};

// ---------------------------------------------------------------------------- IR blaster
struct IrCall {
    enum class Function { SendH, SendZ, Aircon, KeyMapH, KeyMapZ };
    Function function;
    int key = 0;                 // SendH / SendZ
    int deviceIndex = 0;         // SendH / SendZ / Aircon
    bool online = false;         // SendH / SendZ / KeyMapH / KeyMapZ
    std::string codeset;         // KeyMapH / KeyMapZ
    // Aircon: the four words in the order received (mode, power, setpoint, fan speed).
    std::string mode, power, coolingSetpoint, fanSpeed;
    std::chrono::steady_clock::time_point time;
};

const char* ToString(IrCall::Function function);   // "send_command_hdevice", ...

class IrBlaster {
public:
    static std::vector<IrCall> Journal();
    static void ClearJournal();
    static void SetJournalEnabled(bool on);        // on by default
    // Waits until the journal holds at least `count` transmissions (key maps not counted).
    static bool WaitForTransmissions(std::size_t count, std::chrono::milliseconds timeout);
    static void SetSendResult(bool ok);            // hdevice/zdevice result (default true)
    static void SetAirconResult(int code);         // aircon result (default 0)
    static void SetTransmitDelay(std::chrono::microseconds delay);  // simulated on-air time
    // Codeset catalogue behind the key-map queries; a codeset not in it gives NULL.
    static void SetKeyMap(const std::string& codeset, const std::string& keyMap);
    static void RemoveKeyMap(const std::string& codeset);
    static std::vector<std::pair<std::string, std::string>> Catalogue();  // sorted by codeset
    static void Reset();                           // default catalogue, results, no delay
};

// ------------------------------------------------------------------------ settings store
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

// -------------------------------------------------------------------- system information
class SystemInfo {
public:
    static void SetYear(std::optional<int> year);           // nullopt: unreadable (default 23)
    static void SetMbrSupport(std::optional<bool> value);   // nullopt: unreadable (default true)
    static void Reset();
};

}  // namespace sim

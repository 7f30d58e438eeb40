// The simulated IR blaster: a journal of every call, configurable results and on-air time,
// and the codeset catalogue of key maps.
// One piece of the simulator's control API (see sim/Simulator.h); every function is thread-safe.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace sim {

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
    uint64_t transaction = 0;    // the request the calling thread served (Host::ServingTransaction)
    // Transmissions: when the simulated on-air time ends (time + the transmit delay).
    std::chrono::steady_clock::time_point onAirEnd{};
};

const char* ToString(IrCall::Function function);   // "send_command_hdevice", ...

class IrBlaster {
public:
    static std::vector<IrCall> Journal();
    static std::vector<IrCall> JournalFor(uint64_t transaction);  // that request's calls, in order
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

}  // namespace sim

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
    // Numbered from 1 in the order recorded, over the life of the process (never reused, not
    // even after ClearJournal or Reset): a reader resumes after the last call it took, which
    // stays right when the journal has dropped older entries meanwhile.
    uint64_t sequence = 0;
    // Transmissions: when the on-air time ends (time + the transmitter's measured on-air time
    // when one is attached, else + the simulated transmit delay).
    std::chrono::steady_clock::time_point onAirEnd{};
    // With a transmitter attached (SetTransmitter), what the call put on air: the waveform
    // (pulse, space, ..., pulse in microseconds) at `carrier` Hz, the measured on-air time, and
    // why the call failed ("" when it did not).
    std::vector<std::uint32_t> waveform;
    std::uint32_t carrier = 0;
    std::chrono::microseconds onAir{0};
    std::string transmitError;
};

const char* ToString(IrCall::Function function);   // "send_command_hdevice", ...

class IrBlaster {
public:
    static constexpr std::size_t kDefaultJournalLimit = 100000;

    static std::vector<IrCall> Journal();                          // the calls kept, oldest first
    static std::vector<IrCall> JournalFor(uint64_t transaction);  // that request's calls kept, in order
    static void ClearJournal();                    // also restarts the transmission count
    static void SetJournalEnabled(bool on);        // on by default
    // The journal keeps the newest `limit` calls (0: none) and drops older ones, so a long-running
    // tool does not grow without end; Reset restores the default.
    static void SetJournalLimit(std::size_t limit);
    // Waits until at least `count` transmissions were made since the last ClearJournal/Reset
    // (key maps not counted; calls the journal no longer keeps, or never kept, still count).
    static bool WaitForTransmissions(std::size_t count, std::chrono::milliseconds timeout);
    static void SetSendResult(bool ok);            // hdevice/zdevice result (default true)
    static void SetAirconResult(int code);         // aircon result (default 0)
    static void SetTransmitDelay(std::chrono::microseconds delay);  // simulated on-air time
    // Codeset catalogue behind the key-map queries; a codeset not in it gives NULL.
    static void SetKeyMap(const std::string& codeset, const std::string& keyMap);
    static void RemoveKeyMap(const std::string& codeset);
    static std::vector<std::pair<std::string, std::string>> Catalogue();  // sorted by codeset
    // Codesets (JSON, docs/codesets.md): the catalogue becomes their key maps. false with a
    // reason, and nothing changed, when the text is not a usable codesets file.
    static bool SetCodesets(const std::string& text, std::string& error);
    static std::string DefaultCodesets();          // the embedded codesets the tools start from
    // The key maps a codesets text gives (codeset, key map), without installing it; false with
    // the same reason SetCodesets would give.
    static bool CodesetKeyMaps(const std::string& text, std::vector<std::pair<std::string, std::string>>& out,
                               std::string& error);
    // Sends every transmission, encoded from the codesets (the defaults if none were set), to
    // "mode2:FILE" (a dry run) or a Linux IR transmitter "/dev/lircN"; "" detaches. Results and
    // on-air time then come from the transmitter. false with a reason when it cannot be used.
    static bool SetTransmitter(const std::string& device, std::string& error);
    static void Reset();                           // default catalogue, results, no delay, no transmitter
};

}  // namespace sim

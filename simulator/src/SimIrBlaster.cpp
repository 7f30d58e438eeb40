// libirkt: records every call in a journal, answers with configurable results, stands in for
// on-air time with a per-transmission delay, and serves key maps from a codeset catalogue.
#include <irkt_irbl.h>

#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "SimInternal.h"
#include "infrared/CIrBackend.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "sim/Simulator.h"
#include "ServiceContract.h"

namespace sim {
namespace {

// A few codesets so key-map queries answer something without set-up; tools add their own.
const std::map<std::string, std::string>& DefaultCatalogue() {
    static const std::map<std::string, std::string> catalogue = {
        {"HFAN0001", R"({"keys":[10,11,12,13,14,76]})"},
        {"HRBC0004", R"({"keys":[10,28,39]})"},
        {"ZAC00005", R"({"modes":["auto","cool","dry","fan","heat"],"fan":["low","medium","high","auto"]})"},
    };
    return catalogue;
}

struct IrState {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<IrCall> journal;     // oldest first; trimmed from the front to journalLimit
    bool journalEnabled = true;
    std::size_t journalLimit = IrBlaster::kDefaultJournalLimit;
    uint64_t lastSequence = 0;      // never reset: readers resume after a sequence they saw
    std::size_t transmissions = 0;  // counted even when the journal is off
    bool sendResult = true;
    int airconResult = 0;
    std::chrono::microseconds delay{0};
    std::map<std::string, std::string> catalogue = DefaultCatalogue();
    std::shared_ptr<const infrared::CCodesetLibrary> codesets;    // null until SetCodesets
    std::shared_ptr<infrared::CIrBackend> backend;               // null: journal only
};

IrState& State() {
    static IrState* state = new IrState();  // never destroyed: plugin threads may send at exit
    return *state;
}

bool IsTransmission(IrCall::Function f) {
    return f == IrCall::Function::SendH || f == IrCall::Function::SendZ || f == IrCall::Function::Aircon;
}

// Records the call, then (for transmissions) holds the caller for the simulated on-air time.
void Record(IrCall call) {
    auto& s = State();
    std::chrono::microseconds delay{0};
    {
        std::lock_guard<std::mutex> lock(s.mutex);
        // A transmitter stamps the start itself, before it goes on air.
        if (call.time == std::chrono::steady_clock::time_point{}) call.time = std::chrono::steady_clock::now();
        call.transaction = internal::ServingTransaction();
        call.sequence = ++s.lastSequence;
        if (IsTransmission(call.function)) {
            ++s.transmissions;
            delay = s.delay;
        }
        call.onAirEnd = call.time + (call.onAir.count() > 0 ? call.onAir : delay);
        if (s.journalEnabled && s.journalLimit > 0) {
            if (s.journal.size() >= s.journalLimit) s.journal.pop_front();
            s.journal.push_back(std::move(call));
        }
    }
    s.changed.notify_all();
    if (delay.count() > 0) std::this_thread::sleep_for(delay);
}


std::shared_ptr<infrared::CIrBackend> Backend() {
    std::lock_guard<std::mutex> lock(State().mutex);
    return State().backend;
}

// Copies what the transmitter was given into the journal entry; true when it was sent.
bool Fill(IrCall& call, const infrared::CIrBackend::Result& result) {
    call.waveform = result.transmission.train.durations;
    call.carrier = result.transmission.train.carrier;
    call.onAir = result.onAir;
    call.transmitError = result.error;
    return result.ok;
}

std::string Pairing() { return Settings::GetString(ircontrol::contract::kDevicesKey).value_or(std::string()); }

char* KeyMap(IrCall::Function function, const char* codeset, bool online) {
    IrCall call{};
    call.function = function;
    call.codeset = codeset != nullptr ? codeset : "";
    call.online = online;
    Record(call);
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    auto it = s.catalogue.find(call.codeset);
    return it == s.catalogue.end() ? nullptr : strdup(it->second.c_str());
}

}  // namespace

const char* ToString(IrCall::Function function) {
    switch (function) {
        case IrCall::Function::SendH: return "send_command_hdevice";
        case IrCall::Function::SendZ: return "send_command_zdevice";
        case IrCall::Function::Aircon: return "set_aircon_states_and_send_command";
        case IrCall::Function::KeyMapH: return "get_supported_keymap_hcodeset";
        case IrCall::Function::KeyMapZ: return "get_supported_keymap_zcodeset";
    }
    return "?";
}

std::vector<IrCall> IrBlaster::Journal() {
    std::lock_guard<std::mutex> lock(State().mutex);
    return {State().journal.begin(), State().journal.end()};
}

std::vector<IrCall> IrBlaster::JournalFor(uint64_t transaction) {
    std::lock_guard<std::mutex> lock(State().mutex);
    std::vector<IrCall> out;
    for (const auto& call : State().journal) {
        if (call.transaction == transaction) out.push_back(call);
    }
    return out;
}

void IrBlaster::ClearJournal() {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().journal.clear();
    State().transmissions = 0;
}

void IrBlaster::SetJournalEnabled(bool on) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().journalEnabled = on;
}

void IrBlaster::SetJournalLimit(std::size_t limit) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.journalLimit = limit;
    while (s.journal.size() > limit) s.journal.pop_front();
}

bool IrBlaster::WaitForTransmissions(std::size_t count, std::chrono::milliseconds timeout) {
    auto& s = State();
    std::unique_lock<std::mutex> lock(s.mutex);
    return s.changed.wait_for(lock, timeout, [&] { return s.transmissions >= count; });
}

void IrBlaster::SetSendResult(bool ok) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().sendResult = ok;
}

void IrBlaster::SetAirconResult(int code) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().airconResult = code;
}

void IrBlaster::SetTransmitDelay(std::chrono::microseconds delay) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().delay = delay;
}

void IrBlaster::SetKeyMap(const std::string& codeset, const std::string& keyMap) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().catalogue[codeset] = keyMap;
}

void IrBlaster::RemoveKeyMap(const std::string& codeset) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().catalogue.erase(codeset);
}

std::vector<std::pair<std::string, std::string>> IrBlaster::Catalogue() {
    std::lock_guard<std::mutex> lock(State().mutex);
    return {State().catalogue.begin(), State().catalogue.end()};
}

void IrBlaster::Reset() {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.journal.clear();
    s.journalEnabled = true;
    s.journalLimit = IrBlaster::kDefaultJournalLimit;
    s.transmissions = 0;
    s.sendResult = true;
    s.airconResult = 0;
    s.delay = std::chrono::microseconds(0);
    s.catalogue = DefaultCatalogue();
    s.codesets.reset();
    s.backend.reset();
}

namespace {
std::shared_ptr<const infrared::CCodesetLibrary> ParseCodesets(const std::string& text, std::string& error) {
    try {
        return infrared::CCodesetLibrary::Parse(text);
    } catch (const std::exception& e) {
        error = e.what();
        return nullptr;
    }
}
}  // namespace

bool IrBlaster::CodesetKeyMaps(const std::string& text, std::vector<std::pair<std::string, std::string>>& out,
                               std::string& error) {
    const auto codesets = ParseCodesets(text, error);
    if (!codesets) return false;
    out.clear();
    for (const auto& codeset : codesets->Codesets()) {
        out.emplace_back(codeset.name, infrared::CCodesetLibrary::KeyMapText(codeset));
    }
    return true;
}

bool IrBlaster::SetCodesets(const std::string& text, std::string& error) {
    const auto codesets = ParseCodesets(text, error);
    if (!codesets) return false;
    std::lock_guard<std::mutex> lock(State().mutex);
    State().codesets = codesets;
    State().catalogue.clear();
    for (const auto& codeset : codesets->Codesets()) {
        State().catalogue[codeset.name] = infrared::CCodesetLibrary::KeyMapText(codeset);
    }
    return true;
}

std::string IrBlaster::DefaultCodesets() { return infrared::DefaultCodesetsText(); }

bool IrBlaster::SetTransmitter(const std::string& device, std::string& error) {
    if (device.empty()) {
        std::lock_guard<std::mutex> lock(State().mutex);
        State().backend.reset();
        return true;
    }
    std::shared_ptr<const infrared::CCodesetLibrary> codesets;
    {
        std::lock_guard<std::mutex> lock(State().mutex);
        codesets = State().codesets;
    }
    if (!codesets && !SetCodesets(DefaultCodesets(), error)) return false;
    {
        std::lock_guard<std::mutex> lock(State().mutex);
        codesets = State().codesets;
    }
    try {
        auto backend = std::make_shared<infrared::CIrBackend>(codesets, infrared::CIrBackend::OpenTransmitter(device, *codesets));
        std::lock_guard<std::mutex> lock(State().mutex);
        State().backend = std::move(backend);
    } catch (const std::exception& e) {
        error = e.what();
        return false;
    }
    return true;
}

void internal::ResetIrBlaster() { IrBlaster::Reset(); }

}  // namespace sim

using sim::IrCall;

namespace {
bool SendKey(IrCall::Function function, int key, int deviceIndex, bool online) {
    IrCall call{};
    call.function = function;
    call.key = key;
    call.deviceIndex = deviceIndex;
    call.online = online;
    bool result;
    {
        std::lock_guard<std::mutex> lock(sim::State().mutex);
        result = sim::State().sendResult;
    }
    if (const auto backend = sim::Backend()) {
        call.time = std::chrono::steady_clock::now();
        result = sim::Fill(call, backend->SendKey(sim::Pairing(), key, deviceIndex));
    }
    sim::Record(call);
    return result;
}
}  // namespace

extern "C" bool irkt_irbl_send_command_hdevice(int key, int device_index, bool online) {
    return SendKey(IrCall::Function::SendH, key, device_index, online);
}

extern "C" bool irkt_irbl_send_command_zdevice(int key, int device_index, bool online) {
    return SendKey(IrCall::Function::SendZ, key, device_index, online);
}

extern "C" int irkt_irbl_set_aircon_states_and_send_command(int device_index, const char* mode,
                                                            const char* power,
                                                            const char* cooling_setpoint,
                                                            const char* fan_speed) {
    IrCall call{};
    call.function = IrCall::Function::Aircon;
    call.deviceIndex = device_index;
    call.mode = mode != nullptr ? mode : "";
    call.power = power != nullptr ? power : "";
    call.coolingSetpoint = cooling_setpoint != nullptr ? cooling_setpoint : "";
    call.fanSpeed = fan_speed != nullptr ? fan_speed : "";
    int result;
    {
        std::lock_guard<std::mutex> lock(sim::State().mutex);
        result = sim::State().airconResult;
    }
    if (const auto backend = sim::Backend()) {
        const infrared::AcState state{call.power, call.mode, call.coolingSetpoint, call.fanSpeed};
        call.time = std::chrono::steady_clock::now();
        result = sim::Fill(call, backend->SendAircon(sim::Pairing(), device_index, state)) ? 0 : -1;
    }
    sim::Record(call);
    return result;
}

extern "C" char* irkt_irbl_get_supported_keymap_hcodeset(const char* codeset, bool online) {
    return sim::KeyMap(IrCall::Function::KeyMapH, codeset, online);
}

extern "C" char* irkt_irbl_get_supported_keymap_zcodeset(const char* codeset, bool online) {
    return sim::KeyMap(IrCall::Function::KeyMapZ, codeset, online);
}

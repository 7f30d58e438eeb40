#include "CStateDirectory.h"

#include <glib.h>
#include <json-glib/json-glib.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "infrared/formats/CAtomicFile.h"
#include "CApplianceTypes.h"
#include "CPlatformSetup.h"
#include "GlibHandles.h"
#include "JsonValue.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

// json-glib's message already carries "<data>:LINE:COLUMN: ..."; only the file name is ours.
bool CheckJson(const std::string& text, std::string& error) {
    GObjectPtr<JsonParser> parser(json_parser_new());
    GError* raw = nullptr;
    if (json_parser_load_from_data(parser.get(), text.data(), static_cast<gssize>(text.size()), &raw)) return true;
    const GErrorPtr failure(raw);
    std::string message = failure->message;
    const std::string prefix = "<data>:";
    if (message.rfind(prefix, 0) == 0) message = "line " + message.substr(prefix.size());
    error = message;
    return false;
}

bool ReadState(const std::string& path, std::string& text, std::string& error) {
    bool missing = false;
    if (infrared::CAtomicFile::Read(path, text, &missing)) return true;
    if (missing) {
        text.clear();
        return true;
    }
    error = path + ": cannot read: " + std::strerror(errno);
    return false;
}

}  // namespace

bool CStateDirectory::Load(std::string& error) {
    if (::g_mkdir_with_parents(directory_.c_str(), 0750) != 0) {
        error = directory_ + ": cannot create the state directory: " + std::strerror(errno);
        return false;
    }
    std::string text;
    if (!ReadState(PairingPath(), text, error)) return false;
    if (!text.empty()) {
        std::vector<PairedDevice> devices;
        std::string reason;
        if (!CheckJson(text, reason) || !CPlatformSetup::ParsePairing(text, devices, reason)) {
            error = PairingPath() + ": " + reason;
            return false;
        }
        pairing_ = text;
    }
    if (!ReadState(AcPath(), text, error)) return false;
    std::string reason;
    if (!text.empty() && !ParseAc(text, acStates_, reason)) {
        error = AcPath() + ": " + reason;
        return false;
    }
    return true;
}

bool CStateDirectory::SavePairing(const std::string& text, std::string& error) {
    if (!infrared::CAtomicFile::Write(PairingPath(), text, error, hook_)) return false;
    pairing_ = text;
    return true;
}

bool CStateDirectory::SaveAcState(const std::string& codeset, const AcState& state, std::string& error) {
    std::map<std::string, AcState> next = acStates_;
    next[codeset] = state;
    if (!infrared::CAtomicFile::Write(AcPath(), AcText(next), error, hook_)) return false;
    acStates_ = std::move(next);
    return true;
}

std::string CStateDirectory::AcText(const std::map<std::string, AcState>& states) {
    JsonValue root(common::json::kObject);
    for (const auto& [codeset, state] : states) {
        JsonValue entry(common::json::kObject);
        entry["power"] = state.power;
        entry["mode"] = state.mode;
        entry["setpoint"] = state.setpoint;
        entry["fan"] = state.fan;
        root[codeset] = entry;
    }
    return root.toString(true) + "\n";
}

bool CStateDirectory::ParseAc(const std::string& text, std::map<std::string, AcState>& out, std::string& error) {
    if (!CheckJson(text, error)) return false;
    const JsonValue root = JsonValue::Create(text);
    if (root.type() != common::json::kObject) {
        error = "line 1: needs an object of codeset names";
        return false;
    }
    std::map<std::string, AcState> states;
    for (const std::string& codeset : root.getMemberNames()) {
        const JsonValue& entry = root[codeset];
        const auto bad = [&](const std::string& what) {
            error = "\"" + codeset + "\": " + what;
            return false;
        };
        if (entry.type() != common::json::kObject) return bad("needs an object");
        const auto word = [&](const char* field) { return entry[field].isString() ? entry[field].asString() : ""; };
        if (!entry["setpoint"].isInt()) return bad("\"setpoint\" needs a whole number");
        const int64_t setpoint = entry["setpoint"].asInt64();
        const std::string problem = CApplianceTypes::AcStateProblem(word("power"), word("mode"), setpoint, word("fan"));
        if (!problem.empty()) return bad(problem);
        states[codeset] = AcState{word("power"), word("mode"), static_cast<int>(setpoint), word("fan")};
    }
    out = std::move(states);
    return true;
}

}  // namespace ircontrol::host

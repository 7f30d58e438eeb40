#include "ImportSupport.h"

#include "JsonValue.h"
#include "infrared/CIrBackend.h"
#include "infrared/codeset/CAcStateTable.h"

namespace irtest {

std::shared_ptr<const infrared::CCodesetLibrary> Library(const std::vector<std::string>& codesets) {
    std::string text = "{\"codesets\":[";
    for (std::size_t i = 0; i < codesets.size(); ++i) text += (i > 0 ? "," : "") + codesets[i];
    return infrared::CCodesetLibrary::Parse(text + "]}");
}

std::vector<std::string> SendAll(const std::shared_ptr<const infrared::CCodesetLibrary>& library,
                                 const std::string& codeset, const std::string& mode2) {
    using namespace infrared;
    CIrBackend backend(library, CIrBackend::OpenTransmitter("mode2:" + mode2, *library));
    const std::string pairing = "{\"dev_info\":[{\"codeset\":" + common::json::JsonValue(codeset).toString() +
                                ",\"device_index\":1}]}";
    const Codeset& found = *library->Find(codeset);
    std::vector<std::string> names;
    for (const auto& key : found.keys) {
        names.push_back(backend.SendKey(pairing, key.code, 1).ok ? key.name : "");
    }
    for (const auto& state : found.states) {
        AcState request{state.power, state.mode, state.hasSetpoint ? std::to_string(static_cast<int>(state.setpoint)) : "",
                        state.fan};
        const auto result = backend.SendAircon(pairing, 1, request);
        // Several captures may say the same; the one the table picks is the one sent.
        names.push_back(result.ok ? CAcStateTable::Find(found, request).frame.name : "");
    }
    return names;
}

std::vector<std::string> Presses(const std::vector<std::string>& keys) {
    std::vector<std::string> out;
    for (const auto& key : keys) {
        if (out.empty() || out.back() != key) out.push_back(key);
    }
    return out;
}

}  // namespace irtest

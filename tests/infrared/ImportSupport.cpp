#include "ImportSupport.h"

#include "infrared/CIrBackend.h"
#include "infrared/transmit/CMode2Sink.h"

namespace irtest {

std::shared_ptr<const infrared::CCodesetLibrary> Library(const std::vector<std::string>& codesets) {
    std::string text = "{\"codesets\":[";
    for (std::size_t i = 0; i < codesets.size(); ++i) text += (i > 0 ? "," : "") + codesets[i];
    return infrared::CCodesetLibrary::Parse(text + "]}");
}

std::vector<std::string> SendAll(const std::shared_ptr<const infrared::CCodesetLibrary>& library,
                                 const std::string& codeset, const std::string& mode2) {
    using namespace infrared;
    const Codeset& found = *library->Find(codeset);
    std::vector<const CodesetKey*> frames;
    for (const auto& key : found.keys) frames.push_back(&key);
    for (const auto& state : found.states) frames.push_back(&state.frame);
    CMode2Sink sink(mode2);
    std::vector<std::string> names;
    bool toggle = false;
    for (const CodesetKey* frame : frames) {
        Transmission t{found.name, frame->name, 1, {}};
        CIrBackend::EncodeFrame(found, *frame, toggle = !toggle, t);
        sink.Transmit(t);
        names.push_back(frame->name);
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

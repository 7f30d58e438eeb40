#include "infrared/codeset/Codeset.h"

namespace infrared {
namespace {

struct ProtocolWord {
    Protocol protocol;
    const char* name;
    bool kernel;
};

const ProtocolWord kProtocols[] = {
    {Protocol::Nec, "nec", true},       {Protocol::NecX, "necx", true},
    {Protocol::Nec32, "nec32", true},   {Protocol::Rc5, "rc5", true},
    {Protocol::Rc6Mode0, "rc6_0", true}, {Protocol::Sony12, "sony12", true},
    {Protocol::Sony15, "sony15", true}, {Protocol::Sony20, "sony20", true},
    {Protocol::Jvc, "jvc", true},       {Protocol::Sanyo, "sanyo", true},
    {Protocol::Sharp, "sharp", true},   {Protocol::Raw, "raw", false},
    {Protocol::Pronto, "pronto", false}, {Protocol::Aircon, "aircon", false},
    {Protocol::AcStates, "ac_states", false},
};

}  // namespace

const char* ProtocolName(Protocol protocol) {
    for (const auto& word : kProtocols) {
        if (word.protocol == protocol) return word.name;
    }
    return "?";
}

bool ProtocolFromName(const std::string& name, Protocol& out) {
    for (const auto& word : kProtocols) {
        if (name == word.name) {
            out = word.protocol;
            return true;
        }
    }
    return false;
}

bool HasKernelEncoder(Protocol protocol) {
    for (const auto& word : kProtocols) {
        if (word.protocol == protocol) return word.kernel;
    }
    return false;
}

const CodesetKey* Codeset::FindKey(int code) const {
    for (const auto& key : keys) {
        if (key.code == code) return &key;
    }
    return nullptr;
}

}  // namespace infrared

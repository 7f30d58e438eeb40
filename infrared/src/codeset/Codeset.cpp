#include "infrared/codeset/Codeset.h"

#include <algorithm>

namespace infrared {
namespace {

struct ProtocolWord {
    Protocol protocol;
    const char* name;
    bool kernel;
    bool scancode;
};

const ProtocolWord kProtocols[] = {
    {Protocol::Nec, "nec", true, true},          {Protocol::NecX, "necx", true, true},
    {Protocol::Nec32, "nec32", true, true},      {Protocol::Rc5, "rc5", true, true},
    {Protocol::Rc5x, "rc5x", true, true},        {Protocol::Rc6Mode0, "rc6_0", true, true},
    {Protocol::Sony12, "sony12", true, true},    {Protocol::Sony15, "sony15", true, true},
    {Protocol::Sony20, "sony20", true, true},    {Protocol::Jvc, "jvc", true, true},
    {Protocol::Sanyo, "sanyo", true, true},      {Protocol::Sharp, "sharp", true, true},
    {Protocol::Nec42, "nec42", false, true},     {Protocol::Kaseikyo, "kaseikyo", false, true},
    {Protocol::Rca, "rca", false, true},         {Protocol::Pioneer, "pioneer", false, true},
    {Protocol::Raw, "raw", false, false},        {Protocol::Pronto, "pronto", false, false},
    {Protocol::Aircon, "aircon", false, false},   {Protocol::AcStates, "ac_states", false, false},
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

bool HasScancode(Protocol protocol) {
    for (const auto& word : kProtocols) {
        if (word.protocol == protocol) return word.scancode;
    }
    return false;
}

std::vector<std::string> PowerWords(const AcFrameFormat& frame) {
    std::vector<std::string> words;
    for (const auto& value : frame.power.values) words.push_back(value.first);
    auto has = [&](const char* word) { return std::find(words.begin(), words.end(), word) != words.end(); };
    if (!frame.offFrame.empty() && !has("off")) words.emplace_back("off");
    if (has("off") && !has("on")) words.insert(words.begin(), "on");
    return words;
}

const CodesetKey* Codeset::FindKey(int code) const {
    for (const auto& key : keys) {
        if (key.code == code) return &key;
    }
    return nullptr;
}

}  // namespace infrared

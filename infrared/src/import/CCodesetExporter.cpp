#include "infrared/import/CCodesetExporter.h"

#include <algorithm>
#include <stdexcept>

#include "infrared/CIrBackend.h"
#include "infrared/formats/CFlipperIrFile.h"
#include "infrared/formats/CLircdConf.h"

namespace infrared {
namespace {

// The keys, or the captured states, in file order.
std::vector<const CodesetKey*> Frames(const Codeset& codeset) {
    if (codeset.protocol == Protocol::Aircon) {
        throw std::invalid_argument("codeset " + codeset.name + " describes a frame, not keys or captured states");
    }
    std::vector<const CodesetKey*> frames;
    for (const auto& key : codeset.keys) frames.push_back(&key);
    for (const auto& state : codeset.states) frames.push_back(&state.frame);
    return frames;
}

// The Flipper parsed signal of a scancode; false when the protocol has none.
bool Parsed(const CodesetKey& key, FlipperSignal& s) {
    const std::uint64_t code = key.scancode;
    const auto set = [&](const char* protocol, std::uint64_t address, std::uint64_t command) {
        s.protocol = protocol;
        s.address = static_cast<std::uint32_t>(address);
        s.command = static_cast<std::uint32_t>(command);
        return true;
    };
    switch (key.protocol) {
        case Protocol::Nec: return set("NEC", code >> 8, code & 0xff);
        case Protocol::NecX: return set("NECext", (code >> 16) | ((code >> 8) & 0xff) << 8, (code & 0xff) | (~code & 0xff) << 8);
        case Protocol::Nec32: return set("NECext", code >> 16, code & 0xffff);
        case Protocol::Nec42: {
            const std::uint64_t a = code >> 16, c = code & 0xffff;
            const bool plain = (a >> 13) == (~a & 0x1fff) && (c >> 8) == (~c & 0xff);
            return plain ? set("NEC42", a & 0x1fff, c & 0xff) : set("NEC42ext", a, c);
        }
        case Protocol::Rc5: return set((code & 0x40) != 0 ? "RC5X" : "RC5", code >> 8, code & 0x3f);
        case Protocol::Rc5x: return set("RC5X", code >> 8, code & 0x3f);
        case Protocol::Rc6Mode0: return set("RC6", code >> 8, code & 0xff);
        case Protocol::Sony12: return set("SIRC", code >> 16, code & 0x7f);
        case Protocol::Sony15: return set("SIRC15", code >> 16, code & 0x7f);
        case Protocol::Sony20: return set("SIRC20", (code >> 16) | ((code >> 8) & 0xff) << 5, code & 0x7f);
        case Protocol::Kaseikyo: return set("Kaseikyo", code >> 16, code & 0x3ff);
        case Protocol::Rca: return set("RCA", code >> 8, code & 0xff);
        case Protocol::Pioneer: return set("Pioneer", code >> 8, code & 0xff);
        default: return false;
    }
}

}  // namespace

std::string CCodesetExporter::ToLircd(const Codeset& codeset) {
    LircRemote remote;
    remote.name = codeset.name;
    remote.encoding = LircRemote::Encoding::Raw;
    remote.frequency = codeset.carrier;
    remote.dutyCycle = codeset.dutyCycle;
    remote.gap = UINT32_MAX;
    for (const CodesetKey* key : Frames(codeset)) {
        // A toggling protocol sends one of two frames per press: both are written under the key's name.
        const bool toggles = key->protocol == Protocol::Rc5 || key->protocol == Protocol::Rc5x || key->protocol == Protocol::Rc6Mode0;
        for (const bool toggle : {false, true}) {
            if (toggle && !toggles) break;
            Transmission t;
            CIrBackend::EncodeFrame(codeset, *key, toggle, t);
            LircButton button;
            button.name = key->name;
            button.durations = t.train.durations;
            remote.buttons.push_back(std::move(button));
            // lircd takes the shortest silence after a signal as its end.
            remote.gap = std::min(remote.gap, std::max<std::uint32_t>(t.train.trailingGap, 1));
        }
    }
    if (remote.buttons.empty()) throw std::invalid_argument("codeset " + codeset.name + " has no keys");
    return CLircdConf::Write({remote});
}

std::string CCodesetExporter::ToFlipper(const Codeset& codeset) {
    std::vector<FlipperSignal> signals;
    for (const CodesetKey* key : Frames(codeset)) {
        FlipperSignal s;
        s.name = key->name;
        if (Parsed(*key, s)) {
            signals.push_back(std::move(s));
            continue;
        }
        Transmission t;
        CIrBackend::EncodeFrame(codeset, *key, false, t);
        s.raw = true;
        s.frequency = std::min<std::uint32_t>(std::max<std::uint32_t>(t.train.carrier, 10000), 56000);
        s.dutyCycle = t.train.dutyCycle / 100.0;
        s.data = t.train.durations;
        if (s.data.size() > CFlipperIrFile::kMaxRawValues) {
            throw std::invalid_argument("key " + key->name + " is longer than a Flipper raw signal holds");
        }
        signals.push_back(std::move(s));
    }
    if (signals.empty()) throw std::invalid_argument("codeset " + codeset.name + " has no keys");
    return CFlipperIrFile::Write(signals);
}

}  // namespace infrared

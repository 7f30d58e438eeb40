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

// The Flipper parsed signal of a kernel-layout scancode; false when the protocol has none.
bool Parsed(const CodesetKey& key, FlipperSignal& s) {
    const std::uint32_t code = key.scancode;
    switch (key.protocol) {
        case Protocol::Nec: s.protocol = "NEC", s.address = code >> 8, s.command = code & 0xff; return true;
        case Protocol::NecX:
            s.protocol = "NECext", s.address = (code >> 16) | ((code >> 8) & 0xff) << 8;
            s.command = (code & 0xff) | (~code & 0xff) << 8;
            return true;
        case Protocol::Nec32: s.protocol = "NECext", s.address = code >> 16, s.command = code & 0xffff; return true;
        case Protocol::Rc5:
            s.protocol = (code & 0x40) != 0 ? "RC5X" : "RC5", s.address = code >> 8, s.command = code & 0x3f;
            return true;
        case Protocol::Rc6Mode0: s.protocol = "RC6", s.address = code >> 8, s.command = code & 0xff; return true;
        case Protocol::Sony12: s.protocol = "SIRC", s.address = code >> 16, s.command = code & 0x7f; return true;
        case Protocol::Sony15: s.protocol = "SIRC15", s.address = code >> 16, s.command = code & 0x7f; return true;
        case Protocol::Sony20:
            s.protocol = "SIRC20", s.address = (code >> 16) | ((code >> 8) & 0xff) << 5, s.command = code & 0x7f;
            return true;
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
        Transmission t;
        CIrBackend::EncodeFrame(codeset, *key, false, t);
        LircButton button;
        button.name = key->name;
        button.durations = t.train.durations;
        remote.buttons.push_back(std::move(button));
        // lircd takes the shortest silence after a signal as its end.
        remote.gap = std::min(remote.gap, std::max<std::uint32_t>(t.train.trailingGap, 1));
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

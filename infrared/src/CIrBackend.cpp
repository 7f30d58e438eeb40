#include "infrared/CIrBackend.h"

#include <set>

#include "JsonValue.h"
#include "infrared/encode/CKeyEncoder.h"
#include "infrared/encode/CProntoCode.h"
#include "infrared/transmit/CLircDevice.h"
#include "infrared/transmit/CLircTransmitter.h"
#include "infrared/transmit/CMode2Sink.h"

namespace infrared {
namespace {

constexpr std::uint32_t kRawGap = 50000;  // raw codes carry no gap of their own

// Appends copies of a raw or Pronto press, each followed by its gap.
PulseTrain Copies(const PulseTrain& once, std::uint32_t repeats) {
    PulseTrain train = once;
    for (std::uint32_t i = 0; i < repeats; ++i) {
        train.durations.push_back(once.trailingGap);
        train.durations.insert(train.durations.end(), once.durations.begin(), once.durations.end());
    }
    return train;
}

}  // namespace

CIrBackend::CIrBackend(std::shared_ptr<const CCodesetLibrary> codesets, std::unique_ptr<ITransmitter> transmitter)
    : codesets_(std::move(codesets)), transmitter_(std::move(transmitter)) {}

std::unique_ptr<ITransmitter> CIrBackend::OpenTransmitter(const std::string& device, const CCodesetLibrary& codesets) {
    const std::string dryRun = "mode2:";
    if (device.compare(0, dryRun.size(), dryRun) == 0) {
        if (device.size() == dryRun.size()) throw CTransmitError("mode2: needs a file name (mode2:FILE)");
        return std::make_unique<CMode2Sink>(device.substr(dryRun.size()));
    }
    std::vector<std::pair<std::string, std::uint32_t>> carriers;
    std::set<std::uint32_t> seen;
    for (const auto& codeset : codesets.Codesets()) {
        if (codeset.protocol == Protocol::Pronto) {
            for (const auto& key : codeset.keys) {
                const std::uint32_t carrier = CProntoCode::Parse(key.pronto).carrier;
                if (seen.insert(carrier).second) carriers.emplace_back(codeset.name, carrier);
            }
        } else if (seen.insert(codeset.carrier).second) {
            carriers.emplace_back(codeset.name, codeset.carrier);
        }
    }
    return std::make_unique<CLircTransmitter>(device, std::make_shared<CLircDevice>(), carriers);
}

const Codeset& CIrBackend::pairedCodeset(const std::string& pairing, int deviceIndex) const {
    using common::json::JsonValue;
    const JsonValue root = JsonValue::Create(pairing);
    const JsonValue& list = root.type() == common::json::kObject ? root["dev_info"] : JsonValue::Null();
    if (list.type() != common::json::kArray) throw CTransmitError("the paired-device list is missing or not usable");
    for (unsigned i = 0; i < list.size(); ++i) {
        const JsonValue& entry = list[i];
        if (entry.type() != common::json::kObject || !entry["device_index"].isInt() || !entry["codeset"].isString()) {
            continue;
        }
        if (entry["device_index"].asInt64() != deviceIndex) continue;
        const std::string name = entry["codeset"].asString();
        const Codeset* codeset = codesets_->Find(name);
        if (codeset == nullptr) throw CTransmitError("codeset " + name + " is not in the codesets file");
        return *codeset;
    }
    throw CTransmitError("no codeset is paired at device index " + std::to_string(deviceIndex));
}

CIrBackend::Result CIrBackend::SendKey(const std::string& pairing, int key, int deviceIndex) {
    std::lock_guard<std::mutex> lock(mutex_);
    Transmission t;
    t.emitter = deviceIndex;
    t.what = "key " + std::to_string(key);
    try {
        const Codeset& codeset = pairedCodeset(pairing, deviceIndex);
        t.codeset = codeset.name;
        const CodesetKey* found = codeset.FindKey(key);
        if (codeset.protocol == Protocol::Aircon || found == nullptr) {
            throw CTransmitError("codeset " + codeset.name + " has no key " + std::to_string(key));
        }
        t.what += " (" + found->name + ")";
        t.protocol = codeset.protocol;
        if (codeset.protocol == Protocol::Raw) {
            PulseTrain once;
            once.carrier = codeset.carrier;
            once.dutyCycle = codeset.dutyCycle;
            once.durations = found->raw;
            once.trailingGap = kRawGap;
            t.train = Copies(once, codeset.repeats);
        } else if (codeset.protocol == Protocol::Pronto) {
            t.train = Copies(CProntoCode::Parse(found->pronto, codeset.dutyCycle), codeset.repeats);
        } else {
            bool& toggle = toggles_[codeset.name];
            t.train = CKeyEncoder::Encode(codeset.protocol, found->scancode, toggle, codeset.repeats, codeset.carrier,
                                          codeset.dutyCycle);
            toggle = !toggle;
            t.hasScancode = true;
            t.scancode = found->scancode;
            t.repeats = codeset.repeats;
        }
    } catch (const std::exception& e) {
        return refused(std::move(t), e);
    }
    return send(std::move(t));
}

CIrBackend::Result CIrBackend::SendAircon(const std::string& pairing, int deviceIndex, const AcState& state) {
    std::lock_guard<std::mutex> lock(mutex_);
    Transmission t;
    t.emitter = deviceIndex;
    t.what = "ac " + state.power + " " + state.mode + " " + state.setpoint + " " + state.fan;
    t.protocol = Protocol::Aircon;
    try {
        const Codeset& codeset = pairedCodeset(pairing, deviceIndex);
        t.codeset = codeset.name;
        if (codeset.protocol != Protocol::Aircon) {
            throw CTransmitError("codeset " + codeset.name + " is not an air conditioner's");
        }
        const auto bytes = CAcFrameEncoder::BuildFrame(codeset.frame, state);
        t.train = CAcFrameEncoder::Encode(codeset.frame, bytes, codeset.carrier, codeset.dutyCycle);
    } catch (const std::exception& e) {
        return refused(std::move(t), e);
    }
    return send(std::move(t));
}

CIrBackend::Result CIrBackend::refused(Transmission transmission, const std::exception& why) {
    Result result;
    result.error = why.what();
    result.transmission = std::move(transmission);
    return result;
}

CIrBackend::Result CIrBackend::send(Transmission transmission) {
    Result result;
    try {
        result.onAir = transmitter_->Transmit(transmission);
        result.ok = true;
    } catch (const std::exception& e) {
        result.error = e.what();
    }
    result.transmission = std::move(transmission);
    return result;
}

}  // namespace infrared

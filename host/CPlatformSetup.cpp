#include "CPlatformSetup.h"

#include <sys/stat.h>

#include <cstdint>
#include <fstream>
#include <sstream>

#include "JsonValue.h"
#include "infrared/formats/CAtomicFile.h"
#include "sim/Simulator.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

// One paired appliance of each kind, as the pairing component would store it.
const char kDefaultPairing[] =
    R"({"dev_info":[)"
    R"({"codeset":"HFAN0001","device_index":1,"type":"oic.d.fan"},)"
    R"({"codeset":"HPUR0002","device_index":2,"type":"oic.d.airpurifier"},)"
    R"({"codeset":"HHUM0003","device_index":3,"type":"x.com.zq.d.humidifier"},)"
    R"({"codeset":"HRBC0004","device_index":4,"type":"oic.d.robotcleaner"},)"
    R"({"codeset":"ZAC00005","device_index":5,"type":"oic.d.airconditioner"}]})";

// False with the reason after "cannot read ... file X": a directory opens as a stream on Linux
// and reads as empty, which would otherwise be reported as "not valid JSON".
bool ReadFile(const std::string& path, std::string& text, std::string& why) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        why = ": no such file";
        return false;
    }
    if (S_ISDIR(info.st_mode)) {
        why = ": it is a directory";
        return false;
    }
    std::ifstream in(path);
    if (!in) {
        why = ": permission denied or unreadable";
        return false;
    }
    std::ostringstream buffer;
    buffer << in.rdbuf();
    text = buffer.str();
    return true;
}

// The file named by --<option>, or false with "cannot read --<option> file X: <why>" and
// *badPath set (a mistake on the command line rather than in the file's contents).
bool ReadOptionFile(const std::string& option, const std::string& path, std::string& text, std::string& error,
                    bool* badPath) {
    std::string why;
    if (ReadFile(path, text, why)) return true;
    error = "cannot read --" + option + " file " + path + why;
    if (badPath != nullptr) *badPath = true;
    return false;
}

// The keys of learned codeset `from` into codeset `into` of the same name. A key that carries the
// codeset's protocol or carrier implicitly keeps them explicitly where `into` differs.
void OverlayKeys(const JsonValue& from, JsonValue& into) {
    const JsonValue& target = into;  // const reads create no members
    for (const std::string& name : from["keys"].getMemberNames()) {
        JsonValue key = from["keys"][name];
        if (key.type() != common::json::kObject) continue;
        for (const char* member : {"protocol", "carrier", "duty_cycle"}) {
            if (!key.isMember(member) && from.isMember(member) && !(from[member] == target[member])) {
                key[member] = from[member];
            }
        }
        for (const std::string& other : target["keys"].getMemberNames()) {
            if (other != name && target["keys"][other]["code"] == key["code"]) into["keys"].removeMember(other);
        }
        into["keys"][name] = key;
    }
}

}  // namespace

CPlatformSetup::CPlatformSetup() : pairingText_(kDefaultPairing), codesetsText_(sim::IrBlaster::DefaultCodesets()) {
    std::string unused;  // the embedded texts are checked by the tests
    ParsePairing(pairingText_, devices_, unused, &pairingJson_);
    sim::IrBlaster::CodesetKeyMaps(codesetsText_, catalogue_, unused);
    index();
}

KeyMap KeyMap::Parse(const std::string& text) {
    KeyMap map;
    map.text = text;
    map.json = JsonValue::Create(text);
    if (map.json.type() == common::json::kObject) {
        for (const auto& name : map.json.getMemberNames()) {
            if (map.json[name].isInt()) map.keys.emplace_back(name, map.json[name].asInt());
        }
    }
    return map;
}

void CPlatformSetup::index() {
    keyMaps_.clear();
    keyMaps_.reserve(catalogue_.size());
    // A codeset given twice keeps its last key map, as the IR library's catalogue would.
    for (const auto& [codeset, text] : catalogue_) keyMaps_[codeset] = host::KeyMap::Parse(text);
}

const KeyMap* CPlatformSetup::KeyMap(const std::string& codeset) const {
    const auto found = keyMaps_.find(codeset);
    return found == keyMaps_.end() ? nullptr : &found->second;
}

bool CPlatformSetup::Load(const PlatformOptions& options, std::string& error, bool* badPath) {
    if (badPath != nullptr) *badPath = false;
    if (!options.devicesFile.empty()) {
        if (!ReadOptionFile("devices", options.devicesFile, pairingText_, error, badPath)) return false;
        if (!ParsePairing(pairingText_, devices_, error, &pairingJson_)) {
            error = options.devicesFile + ": " + error;
            return false;
        }
    }
    if (!options.catalogueFile.empty()) {
        std::string text;
        if (!ReadOptionFile("catalogue", options.catalogueFile, text, error, badPath)) return false;
        if (!ParseCatalogue(text, catalogue_, error)) {
            error = options.catalogueFile + ": " + error;
            return false;
        }
        catalogueGiven_ = true;
    }
    codesetsFile_ = options.codesetsFile;
    learnedFile_ = options.learnedFile;
    // Checked now, so a bad file is refused before anything starts.
    if ((!codesetsFile_.empty() || !learnedFile_.empty()) && !readCodesets(error, badPath)) return false;
    index();
    irDevice_ = options.irDevice;
    year_ = options.year.value_or(kDefaultYear);
    mbrSupport_ = options.mbrSupport.value_or(true);
    return true;
}

void CPlatformSetup::Apply() const {
    sim::Settings::SetString(kDevicesKey, pairingText_);
    applyCodesets();
    sim::SystemInfo::SetYear(year_);
    sim::SystemInfo::SetMbrSupport(mbrSupport_);
}

void CPlatformSetup::applyCodesets() const {
    std::string unused;  // checked when read; the embedded codesets are checked by the tests
    sim::IrBlaster::SetCodesets(codesetsText_, unused);
    // The codesets' key maps, or those of --catalogue, which replaces them.
    for (const auto& [name, keyMap] : sim::IrBlaster::Catalogue()) sim::IrBlaster::RemoveKeyMap(name);
    for (const auto& [codeset, keyMap] : catalogue_) sim::IrBlaster::SetKeyMap(codeset, keyMap);
}

bool CPlatformSetup::readCodesets(std::string& error, bool* badPath) {
    std::string text = sim::IrBlaster::DefaultCodesets();
    if (!codesetsFile_.empty() && !ReadOptionFile("codesets", codesetsFile_, text, error, badPath)) return false;
    std::vector<std::pair<std::string, std::string>> keyMaps;
    if (!sim::IrBlaster::CodesetKeyMaps(text, keyMaps, error)) {
        error = codesetsFile_ + ": " + error;
        return false;
    }
    std::string learned;
    bool missing = false;
    if (!learnedFile_.empty() && !infrared::CAtomicFile::Read(learnedFile_, learned, &missing) && !missing) {
        error = learnedFile_ + ": cannot read the learned keys";
        return false;
    }
    if (!learned.empty() && (!Overlay(text, learned, text, error) || !sim::IrBlaster::CodesetKeyMaps(text, keyMaps, error))) {
        error = learnedFile_ + ": " + error;
        return false;
    }
    codesetsText_ = std::move(text);
    if (!catalogueGiven_) catalogue_ = std::move(keyMaps);
    return true;
}

bool CPlatformSetup::ReloadCodesets(std::string& error) {
    if (codesetsFile_.empty() && learnedFile_.empty()) {
        error = "no --codesets file to read again";
        return false;
    }
    if (!readCodesets(error, nullptr)) return false;
    index();
    applyCodesets();
    return true;
}

bool CPlatformSetup::Reload(const PlatformOptions& options, std::string& error) {
    CPlatformSetup next;
    PlatformOptions others = options;
    others.devicesFile.clear();
    if (!next.Load(others, error)) return false;
    if (next.irDevice_ != irDevice_ && !sim::IrBlaster::SetTransmitter(next.irDevice_, error)) {
        error = next.irDevice_ + ": " + error;
        return false;
    }
    next.pairingText_ = pairingText_;
    next.pairingJson_ = pairingJson_;
    next.devices_ = devices_;
    *this = std::move(next);
    applyCodesets();
    return true;
}

const std::string& CPlatformSetup::LearnInto(const PlatformOptions& options) {
    return options.learnedFile.empty() ? options.codesetsFile : options.learnedFile;
}

bool CPlatformSetup::Overlay(const std::string& codesets, const std::string& learned, std::string& out,
                             std::string& error) {
    std::vector<std::pair<std::string, std::string>> unused;
    if (!sim::IrBlaster::CodesetKeyMaps(learned, unused, error)) return false;
    JsonValue document = JsonValue::Create(codesets);
    JsonValue& into = document["codesets"];
    const JsonValue over = JsonValue::Create(learned);
    for (unsigned i = 0; i < over["codesets"].size(); ++i) {
        const JsonValue& codeset = over["codesets"][i];
        const JsonValue& existing = into;
        unsigned at = 0;
        while (at < existing.size() && existing[at]["name"].asString() != codeset["name"].asString()) ++at;
        if (at == existing.size()) {
            into.append(codeset);
        } else if (existing[at]["keys"].type() == common::json::kObject &&
                   codeset["keys"].type() == common::json::kObject) {
            OverlayKeys(codeset, into[at]);
        } else {
            into[at] = codeset;  // an air conditioner's, or a key codeset learned over one
        }
    }
    out = document.toString(true) + "\n";
    return true;
}

bool CPlatformSetup::AttachTransmitter(std::string& error) const {
    if (irDevice_.empty()) return true;
    if (sim::IrBlaster::SetTransmitter(irDevice_, error)) return true;
    error = "--ir-device " + irDevice_ + ": " + error;
    return false;
}

bool CPlatformSetup::SetPairing(const std::string& text, std::string& error) {
    if (!ParsePairing(text, devices_, error, &pairingJson_)) return false;
    pairingText_ = text;
    sim::Settings::SetString(kDevicesKey, pairingText_);
    return true;
}

std::string CPlatformSetup::PairedCodeset(const std::string& type) const {
    for (const auto& device : devices_) {
        if (device.type == type) return device.codeset;
    }
    return std::string();
}

bool CPlatformSetup::ParsePairing(const std::string& text, std::vector<PairedDevice>& out, std::string& error,
                                  JsonValue* parsed) {
    const JsonValue root = JsonValue::Create(text);
    if (root.isNull()) {
        error = "the pairing list is not valid JSON";
        return false;
    }
    if (root.type() != common::json::kObject || root["dev_info"].type() != common::json::kArray) {
        error = "the pairing list must be a JSON object with a \"dev_info\" array";
        return false;
    }
    const JsonValue& list = root["dev_info"];
    std::vector<PairedDevice> devices;
    for (unsigned i = 0; i < list.size(); ++i) {
        const JsonValue& entry = list[i];
        if (entry.type() != common::json::kObject || !entry["codeset"].isString() || !entry["device_index"].isInt()) {
            error = "dev_info[" + std::to_string(i) + "] needs a string \"codeset\" and an integer \"device_index\"";
            return false;
        }
        const int64_t index = entry["device_index"].asInt64();
        if (index < INT32_MIN || index > INT32_MAX) {
            error = "dev_info[" + std::to_string(i) + "] \"device_index\" is out of range";
            return false;
        }
        PairedDevice device;
        device.codeset = entry["codeset"].asString();
        device.deviceIndex = static_cast<int>(index);
        if (entry["type"].isString()) device.type = entry["type"].asString();
        devices.push_back(device);
    }
    out = std::move(devices);
    if (parsed != nullptr) *parsed = root;
    return true;
}

bool CPlatformSetup::ParseCatalogue(const std::string& text, std::vector<std::pair<std::string, std::string>>& out,
                                    std::string& error) {
    const JsonValue root = JsonValue::Create(text);
    if (root.type() != common::json::kObject) {
        error = root.isNull() ? "the catalogue is not valid JSON"
                              : "the catalogue must be a JSON object {\"<codeset>\": \"<key map text>\"}";
        return false;
    }
    std::vector<std::pair<std::string, std::string>> catalogue;
    for (const auto& codeset : root.getMemberNames()) {
        const JsonValue& value = root[codeset];
        // A key map may be given as its text or as the JSON it is.
        catalogue.emplace_back(codeset, value.isString() ? value.asString() : value.toString());
    }
    out = std::move(catalogue);
    return true;
}

}  // namespace ircontrol::host

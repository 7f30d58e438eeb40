#include "CPlatformSetup.h"

#include <sys/stat.h>

#include <cstdint>
#include <fstream>
#include <sstream>

#include "JsonValue.h"
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
    if (!options.codesetsFile.empty()) {
        if (!ReadOptionFile("codesets", options.codesetsFile, codesetsText_, error, badPath)) return false;
        // Checked now, so a bad file is refused before anything starts.
        std::vector<std::pair<std::string, std::string>> keyMaps;
        if (!sim::IrBlaster::CodesetKeyMaps(codesetsText_, keyMaps, error)) {
            error = options.codesetsFile + ": " + error;
            return false;
        }
        if (!catalogueGiven_) catalogue_ = std::move(keyMaps);
    }
    index();
    irDevice_ = options.irDevice;
    year_ = options.year.value_or(kDefaultYear);
    mbrSupport_ = options.mbrSupport.value_or(true);
    return true;
}

void CPlatformSetup::Apply() const {
    sim::Settings::SetString(kDevicesKey, pairingText_);
    std::string unused;  // checked by Load(); the embedded codesets are checked by the tests
    sim::IrBlaster::SetCodesets(codesetsText_, unused);
    // The codesets' key maps, or those of --catalogue, which replaces them.
    for (const auto& [name, keyMap] : sim::IrBlaster::Catalogue()) sim::IrBlaster::RemoveKeyMap(name);
    for (const auto& [codeset, keyMap] : catalogue_) sim::IrBlaster::SetKeyMap(codeset, keyMap);
    sim::SystemInfo::SetYear(year_);
    sim::SystemInfo::SetMbrSupport(mbrSupport_);
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

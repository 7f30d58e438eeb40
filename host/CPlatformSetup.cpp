#include "CPlatformSetup.h"

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

// The key maps the IR blaster gives for those codesets; the plugin only logs them.
const std::vector<std::pair<std::string, std::string>> kDefaultCatalogue = {
    {"HFAN0001", R"({"power":10,"speed_up":11,"speed_down":12,"swing":13,"timer":14,"mode":76})"},
    {"HPUR0002", R"({"power":10,"fan_up":11,"fan_down":12,"sleep":13,"timer":14,"mode":76})"},
    {"HHUM0003", R"({"power":10,"mist_up":11,"mist_down":12,"auto":13,"timer":14,"mode":76})"},
    {"HRBC0004", R"({"power":10,"home":28,"start":39})"},
    {"ZAC00005", R"({"modes":["auto","cool","dry","fan","heat"],"fan":["low","medium","high","auto"]})"},
};

bool ReadFile(const std::string& path, std::string& text) {
    std::ifstream in(path);
    if (!in) return false;
    std::ostringstream buffer;
    buffer << in.rdbuf();
    text = buffer.str();
    return true;
}

}  // namespace

CPlatformSetup::CPlatformSetup() : pairingText_(kDefaultPairing), catalogue_(kDefaultCatalogue) {
    std::string unused;
    ParsePairing(pairingText_, devices_, unused);
}

bool CPlatformSetup::Load(const Options& options, std::string& error) {
    if (!options.devicesFile.empty()) {
        if (!ReadFile(options.devicesFile, pairingText_)) {
            error = "cannot read --devices file " + options.devicesFile;
            return false;
        }
        if (!ParsePairing(pairingText_, devices_, error)) {
            error = options.devicesFile + ": " + error;
            return false;
        }
    }
    if (!options.catalogueFile.empty()) {
        std::string text;
        if (!ReadFile(options.catalogueFile, text)) {
            error = "cannot read --catalogue file " + options.catalogueFile;
            return false;
        }
        if (!ParseCatalogue(text, catalogue_, error)) {
            error = options.catalogueFile + ": " + error;
            return false;
        }
    }
    year_ = options.year.value_or(kDefaultYear);
    mbrSupport_ = options.mbrSupport.value_or(true);
    return true;
}

void CPlatformSetup::Apply() const {
    sim::Settings::SetString(kDevicesKey, pairingText_);
    for (const auto& [name, keyMap] : sim::IrBlaster::Catalogue()) sim::IrBlaster::RemoveKeyMap(name);
    for (const auto& [codeset, keyMap] : catalogue_) sim::IrBlaster::SetKeyMap(codeset, keyMap);
    sim::SystemInfo::SetYear(year_);
    sim::SystemInfo::SetMbrSupport(mbrSupport_);
}

bool CPlatformSetup::SetPairing(const std::string& text, std::string& error) {
    if (!ParsePairing(text, devices_, error)) return false;
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

bool CPlatformSetup::ParsePairing(const std::string& text, std::vector<PairedDevice>& out, std::string& error) {
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

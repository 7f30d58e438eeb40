#include "Defaults.h"

#include "JsonValue.h"

namespace irhost {
namespace {

const std::vector<std::pair<std::string, std::string>> kTypes = {
    {"fan", "oic.d.fan"},
    {"purifier", "oic.d.airpurifier"},
    {"humidifier", "x.com.zq.d.humidifier"},
    {"cleaner", "oic.d.robotcleaner"},
    {"ac", "oic.d.airconditioner"},
};

}  // namespace

const std::string& DefaultPairingJson() {
    static const std::string text =
        R"({"dev_info":[)"
        R"({"codeset":"HFAN0001","device_index":1,"type":"oic.d.fan"},)"
        R"({"codeset":"HPUR0002","device_index":2,"type":"oic.d.airpurifier"},)"
        R"({"codeset":"HHUM0003","device_index":3,"type":"x.com.zq.d.humidifier"},)"
        R"({"codeset":"HRBC0004","device_index":4,"type":"oic.d.robotcleaner"},)"
        R"({"codeset":"ZAC00005","device_index":5,"type":"oic.d.airconditioner"}]})";
    return text;
}

const std::vector<std::pair<std::string, std::string>>& DefaultCatalogue() {
    static const std::vector<std::pair<std::string, std::string>> catalogue = {
        {"HFAN0001", R"({"power":10,"speed_up":11,"speed_down":12,"swing":13,"timer":14,"mode":76})"},
        {"HPUR0002", R"({"power":10,"fan_up":11,"fan_down":12,"sleep":13,"timer":14,"mode":76})"},
        {"HHUM0003", R"({"power":10,"mist_up":11,"mist_down":12,"auto":13,"timer":14,"mode":76})"},
        {"HRBC0004", R"({"power":10,"home":28,"start":39})"},
        {"ZAC00005", R"({"modes":["auto","cool","dry","fan","heat"],"fan":["low","medium","high","auto"]})"},
    };
    return catalogue;
}

std::string ResolveType(const std::string& nameOrType) {
    for (const auto& [name, type] : kTypes) {
        if (nameOrType == name || nameOrType == type) return type;
    }
    return nameOrType.find('.') != std::string::npos ? nameOrType : std::string();
}

std::string ShortName(const std::string& type) {
    for (const auto& [name, full] : kTypes) {
        if (type == full) return name;
    }
    return type;
}

bool ParsePairing(const std::string& text, std::vector<PairedDevice>& out, std::string& error) {
    using common::json::JsonValue;
    const JsonValue root = JsonValue::Create(text);
    if (root.type() != common::json::kObject || root["dev_info"].type() != common::json::kArray) {
        error = "the pairing list must be a JSON object with a \"dev_info\" array";
        return false;
    }
    const JsonValue& list = root["dev_info"];
    out.clear();
    for (unsigned i = 0; i < list.size(); ++i) {
        const JsonValue& entry = list[i];
        if (entry.type() != common::json::kObject || !entry.isMember("codeset") ||
            !entry.isMember("device_index") || !entry["codeset"].isString() || !entry["device_index"].isInt()) {
            error = "dev_info[" + std::to_string(i) + "] needs a string \"codeset\" and an integer \"device_index\"";
            return false;
        }
        PairedDevice device;
        device.codeset = entry["codeset"].asString();
        device.deviceIndex = static_cast<int>(entry["device_index"].asInt64());
        if (entry.isMember("type") && entry["type"].isString()) device.type = entry["type"].asString();
        out.push_back(device);
    }
    return true;
}

bool ParseCatalogue(const std::string& text, std::vector<std::pair<std::string, std::string>>& out,
                    std::string& error) {
    using common::json::JsonValue;
    const JsonValue root = JsonValue::Create(text);
    if (root.type() != common::json::kObject) {
        error = "the catalogue must be a JSON object {\"<codeset>\": \"<key map text>\"}";
        return false;
    }
    out.clear();
    for (const auto& codeset : root.getMemberNames()) {
        const JsonValue& value = root[codeset];
        out.emplace_back(codeset, value.isString() ? value.asString() : value.toString());
    }
    return true;
}

}  // namespace irhost

#include "CJsonPrinter.h"

#include "CApplianceTypes.h"
#include "CResultJson.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

JsonValue DeviceJson(const PairedDevice& device, const KeyMap* keyMap) {
    JsonValue object;
    object["codeset"] = device.codeset;
    object["deviceIndex"] = device.deviceIndex;
    object["type"] = device.type;
    JsonValue& keys = object["acceptedKeys"];
    keys = JsonValue(common::json::kArray);
    for (int key : CApplianceTypes::AllowedKeys(device.type)) keys.append(JsonValue(key));
    // A key map that is not JSON keeps its text beside a null.
    if (keyMap == nullptr || !keyMap->json.isNull()) {
        object["keyMap"] = keyMap != nullptr ? keyMap->json : JsonValue();
    } else {
        object["keyMap"] = JsonValue();
        object["keyMapText"] = keyMap->text;
    }
    return object;
}

}  // namespace

void CJsonPrinter::line(const JsonValue& object) { out_ << object.toString() << "\n"; }

void CJsonPrinter::Platform(const CPlatformSetup& setup, int irDelayMs, int timeoutMs) {
    JsonValue object;
    object["platform"]["year"] = setup.Year();
    object["platform"]["mbrSupport"] = setup.MbrSupport();
    object["platform"]["irDelayMs"] = irDelayMs;
    object["platform"]["timeoutMs"] = timeoutMs;
    line(object);
}

void CJsonPrinter::Service(const sim::ServiceInfo& service) {
    JsonValue object;
    object["service"] = service.name;
    object["description"] = service.description;
    JsonValue& properties = object["properties"];
    properties = JsonValue(common::json::kArray);
    for (const auto& p : service.properties) {
        JsonValue entry;
        entry["name"] = p.name;
        entry["type"] = p.type;
        entry["description"] = p.description;
        properties.append(std::move(entry));
    }
    line(object);
}

void CJsonPrinter::Result(const RequestResult& result, const std::string& note) {
    JsonValue object = CResultJson::Build(result);
    if (!note.empty()) object["note"] = note;
    line(object);
    out_.flush();  // a serve client waits for it
}

void CJsonPrinter::Late(const RequestResult& result, std::size_t) {
    JsonValue object = CResultJson::Build(result);
    object["late"] = true;
    line(object);
}

void CJsonPrinter::Summary(std::size_t steps, std::size_t unexpected) {
    JsonValue object;
    object["summary"]["requests"] = static_cast<long long>(steps);
    object["summary"]["unexpected"] = static_cast<long long>(unexpected);
    line(object);
}

void CJsonPrinter::Devices(const CPlatformSetup& setup, const Request& request) {
    if (request.line == 0) {
        for (const auto& device : setup.Devices()) line(DeviceJson(device, setup.KeyMap(device.codeset)));
        return;
    }
    JsonValue object;
    CResultJson::Tag(object, request);
    object["command"] = "devices";
    JsonValue& all = object["devices"];
    all = JsonValue(common::json::kArray);
    for (const auto& device : setup.Devices()) all.append(DeviceJson(device, setup.KeyMap(device.codeset)));
    out_ << object.toString() << std::endl;
}

void CJsonPrinter::LineError(const Request& request, const std::string& error) {
    JsonValue object;
    CResultJson::Tag(object, request);
    object["error"] = error;
    out_ << object.toString() << std::endl;
}

}  // namespace ircontrol::host

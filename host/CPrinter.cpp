#include "CPrinter.h"

#include <algorithm>
#include <cstdio>

#include "CApplianceTypes.h"
#include "JsonValue.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

constexpr std::size_t kLabelWidth = 18;
constexpr std::size_t kRequestWidth = 30;
constexpr std::size_t kVerdictWidth = 10;
constexpr std::size_t kDetailColumn = kLabelWidth + kRequestWidth + kVerdictWidth;

std::string Pad(const std::string& text, std::size_t width) {
    return text.size() >= width ? text + " " : text + std::string(width - text.size(), ' ');
}

// The host property type numbers the service registers with.
const char* TypeName(int type) {
    switch (type) {
        case 0: return "bool";
        case 1: return "int";
        case 3: return "string";
        case 4: return "json";
        case 6: return "double";
        default: return "?";
    }
}

}  // namespace

std::string CPrinter::Transmission(const sim::IrCall& call) {
    const std::string index = "#" + std::to_string(call.deviceIndex);
    std::string text;
    switch (call.function) {
        case sim::IrCall::Function::SendH: text = "hdevice " + index + " key " + std::to_string(call.key); break;
        case sim::IrCall::Function::SendZ: text = "zdevice " + index + " key " + std::to_string(call.key); break;
        case sim::IrCall::Function::Aircon:
            text = "aircon  " + index + " mode=" + call.mode + " power=" + call.power +
                   " setpoint=" + call.coolingSetpoint + " fan=" + call.fanSpeed;
            break;
        default: return sim::ToString(call.function);
    }
    // With a transmitter attached: what went on air, or why nothing did.
    if (!call.transmitError.empty()) return text + " (not sent: " + call.transmitError + ")";
    if (!call.waveform.empty()) {
        char onAir[64];
        std::snprintf(onAir, sizeof onAir, " (%zu pulses and spaces, %.1f ms on air)", call.waveform.size(),
                      static_cast<double>(call.onAir.count()) / 1000.0);
        text += onAir;
    }
    return text;
}

std::string CPrinter::ExchangeJson(const ircontrol::host::Exchange& exchange, const std::string& note) {
    JsonValue line;
    line["property"] = exchange.property;
    line["payload"] = exchange.payload;
    line["transaction"] = static_cast<long long>(exchange.transaction);
    if (exchange.answer) {
        line["answer"]["errorCode"] = exchange.answer->first;
        line["answer"]["description"] = exchange.answer->second;
    } else {
        line["answer"] = JsonValue();
    }
    JsonValue& ir = line["ir"];
    ir = JsonValue(common::json::kArray);
    for (const auto& call : exchange.transmissions) {
        JsonValue entry;
        entry["function"] = sim::ToString(call.function);
        entry["deviceIndex"] = call.deviceIndex;
        if (call.function == sim::IrCall::Function::Aircon) {
            entry["mode"] = call.mode;
            entry["power"] = call.power;
            entry["coolingSetpoint"] = call.coolingSetpoint;
            entry["fanSpeed"] = call.fanSpeed;
        } else {
            entry["key"] = call.key;
            entry["online"] = call.online;
        }
        if (!call.waveform.empty()) {
            entry["onAirUs"] = static_cast<long long>(call.onAir.count());
            entry["carrier"] = static_cast<long long>(call.carrier);
            JsonValue& waveform = entry["waveform"];
            waveform = JsonValue(common::json::kArray);
            for (const auto d : call.waveform) waveform.append(JsonValue(static_cast<long long>(d)));
        }
        if (!call.transmitError.empty()) entry["transmitError"] = call.transmitError;
        ir.append(std::move(entry));
    }
    if (!note.empty()) line["note"] = note;
    return line.toString();
}

void CPrinter::Service(const sim::ServiceInfo& service) {
    if (json_) {
        JsonValue line;
        line["service"] = service.name;
        line["description"] = service.description;
        JsonValue& properties = line["properties"];
        properties = JsonValue(common::json::kArray);
        for (const auto& p : service.properties) {
            JsonValue entry;
            entry["name"] = p.name;
            entry["type"] = p.type;
            entry["description"] = p.description;
            properties.append(std::move(entry));
        }
        out_ << line.toString() << "\n";
        return;
    }
    out_ << "service  " << service.name << "  (" << service.description << ")\n";
    auto properties = service.properties;  // registration follows a hash order; show it sorted
    std::sort(properties.begin(), properties.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    for (const auto& p : properties) {
        out_ << "  property  " << Pad(p.name, 16) << Pad(TypeName(p.type), 8) << p.description << "\n";
    }
    out_ << "\n";
}

void CPrinter::ExchangeHeader() {
    if (json_) return;
    out_ << Pad("appliance", kLabelWidth) << Pad("request", kRequestWidth) << Pad("answer", kVerdictWidth)
         << "IR transmission / description\n";
}

void CPrinter::Exchange(const ircontrol::host::Exchange& exchange, const std::string& note) {
    if (json_) {
        out_ << ExchangeJson(exchange, note) << "\n";
        return;
    }
    std::string verdict = "no answer";
    std::string detail = "(none within the timeout)";
    if (exchange.answer) {
        const bool ok = exchange.answer->first == "ok";
        verdict = ok ? "ok" : "refused";
        detail = ok ? "" : exchange.answer->first + ": " + exchange.answer->second;
    }
    const std::string row = Pad(exchange.label, kLabelWidth) + Pad(exchange.summary, kRequestWidth) +
                            Pad(verdict, kVerdictWidth);
    const std::string indent(kDetailColumn, ' ');
    if (exchange.transmissions.empty()) {
        out_ << row << (detail.empty() ? "(nothing transmitted)" : detail) << "\n";
    } else {
        for (std::size_t i = 0; i < exchange.transmissions.size(); ++i) {
            out_ << (i == 0 ? row : indent) << Transmission(exchange.transmissions[i]) << "\n";
        }
        if (!detail.empty()) out_ << indent << detail << "\n";
    }
    if (!note.empty()) out_ << indent << "(" << note << ")\n";
}

void CPrinter::Summary(std::size_t steps, std::size_t unexpected) {
    if (json_) {
        JsonValue line;
        line["summary"]["requests"] = static_cast<long long>(steps);
        line["summary"]["unexpected"] = static_cast<long long>(unexpected);
        out_ << line.toString() << "\n";
        return;
    }
    out_ << "\n"
         << (unexpected == 0 ? "every answer was the expected one"
                             : std::to_string(unexpected) + " answer(s) differed from the expected ones")
         << "\n";
}

void CPrinter::Devices(const std::vector<PairedDevice>& devices,
                       const std::vector<std::pair<std::string, std::string>>& catalogue) {
    if (!json_) out_ << Pad("appliance", 12) << Pad("codeset", 12) << Pad("index", 7) << "key map\n";
    for (const auto& device : devices) {
        std::string keyMap;
        for (const auto& [codeset, text] : catalogue) {
            if (codeset == device.codeset) keyMap = text;
        }
        if (json_) {
            JsonValue line;
            line["codeset"] = device.codeset;
            line["deviceIndex"] = device.deviceIndex;
            line["type"] = device.type;
            line["keyMap"] = keyMap;
            out_ << line.toString() << "\n";
        } else {
            out_ << Pad(device.type.empty() ? "?" : CApplianceTypes::ShortName(device.type), 12)
                 << Pad(device.codeset, 12) << Pad("#" + std::to_string(device.deviceIndex), 7)
                 << (keyMap.empty() ? "(no key map)" : keyMap) << "\n";
        }
    }
}

}  // namespace ircontrol::host

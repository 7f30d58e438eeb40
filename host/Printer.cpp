#include "Printer.h"

#include <algorithm>
#include <cstdio>

#include "JsonValue.h"

namespace irhost {
namespace {

using common::json::JsonValue;

std::string Pad(const std::string& text, std::size_t width) {
    return text.size() >= width ? text + " " : text + std::string(width - text.size(), ' ');
}

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

std::string Printer::Transmission(const sim::IrCall& call) {
    const std::string index = "#" + std::to_string(call.deviceIndex);
    switch (call.function) {
        case sim::IrCall::Function::SendH: return "hdevice " + index + " key " + std::to_string(call.key);
        case sim::IrCall::Function::SendZ: return "zdevice " + index + " key " + std::to_string(call.key);
        case sim::IrCall::Function::Aircon:
            return "aircon  " + index + " mode=" + call.mode + " power=" + call.power +
                   " setpoint=" + call.coolingSetpoint + " fan=" + call.fanSpeed;
        default: return sim::ToString(call.function);
    }
}

std::string Printer::ExchangeJson(const irhost::Exchange& exchange) {
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
        ir.append(std::move(entry));
    }
    return line.toString();
}

void Printer::Service(const sim::ServiceInfo& service) {
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
    std::sort(properties.begin(), properties.end(),
              [](const auto& a, const auto& b) { return a.name < b.name; });
    for (const auto& p : properties) {
        out_ << "  property  " << Pad(p.name, 16) << Pad(TypeName(p.type), 8) << p.description << "\n";
    }
    out_ << "\n";
}

void Printer::ExchangeHeader() {
    if (json_) return;
    out_ << Pad("appliance", 18) << Pad("request", 30) << Pad("answer", 10) << "IR transmission / description\n";
}

void Printer::Exchange(const irhost::Exchange& exchange) {
    if (json_) {
        out_ << ExchangeJson(exchange) << "\n";
        return;
    }
    std::string verdict = "no answer";
    std::string detail = "(none within the timeout)";
    if (exchange.answer) {
        verdict = exchange.answer->first == "ok" ? "ok" : "refused";
        detail = exchange.answer->first == "ok" ? "" : exchange.answer->first + ": " + exchange.answer->second;
    }
    std::string line = Pad(exchange.label, 18) + Pad(exchange.summary, 30) + Pad(verdict, 10);
    if (exchange.transmissions.empty()) {
        out_ << line << (detail.empty() ? "(nothing transmitted)" : detail) << "\n";
        return;
    }
    for (std::size_t i = 0; i < exchange.transmissions.size(); ++i) {
        out_ << (i == 0 ? line : std::string(58, ' ')) << Transmission(exchange.transmissions[i]) << "\n";
    }
    if (!detail.empty()) out_ << std::string(58, ' ') << detail << "\n";
}

void Printer::Devices(const std::vector<PairedDevice>& devices,
                      const std::vector<std::pair<std::string, std::string>>& catalogue) {
    for (const auto& device : devices) {
        std::string keyMap = "(no key map)";
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
            out_ << Pad(ShortName(device.type.empty() ? "?" : device.type), 12) << Pad(device.codeset, 12)
                 << Pad("#" + std::to_string(device.deviceIndex), 6) << keyMap << "\n";
        }
    }
}

void Printer::Note(const std::string& text) {
    if (!json_) out_ << text << "\n";
}

}  // namespace irhost

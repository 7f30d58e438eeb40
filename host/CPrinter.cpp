#include "CPrinter.h"

#include <algorithm>
#include <chrono>

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

long long Microseconds(std::chrono::steady_clock::duration d) {
    return static_cast<long long>(std::chrono::duration_cast<std::chrono::microseconds>(d).count());
}

// The line number and client id every output object about a serve line carries.
void Tag(JsonValue& line, const Request& request) {
    if (request.line > 0) line["line"] = static_cast<long long>(request.line);
    if (request.id) line["id"] = *request.id;
}

JsonValue TransmissionJson(const Transmission& t, std::chrono::steady_clock::time_point sent) {
    const sim::IrCall& call = t.call;
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
    // On-air start and end, in microseconds from the set callback.
    entry["onAirStartUs"] = Microseconds(call.time - sent);
    entry["onAirEndUs"] = Microseconds(call.onAirEnd - sent);
    entry["late"] = t.late;
    return entry;
}

}  // namespace

std::string CPrinter::Transmission(const sim::IrCall& call) {
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

std::string CPrinter::ResultJson(const RequestResult& result, const std::string& note) {
    JsonValue line;
    Tag(line, result.request);
    line["command"] = ToString(result.request.kind);
    line["property"] = result.property;
    const JsonValue payload = JsonValue::Create(result.payload);
    if (!payload.isNull() || result.payload == "null") {
        line["payload"] = payload;
    } else {
        line["payload"] = JsonValue();
        line["payloadText"] = result.payload;
    }
    line["transaction"] = static_cast<long long>(result.transaction);
    if (result.answer) {
        line["answer"]["errorCode"] = result.answer->first;
        line["answer"]["description"] = result.answer->second;
        if (result.answerLate) line["answer"]["late"] = true;
    } else {
        line["answer"] = JsonValue();
    }
    line["outcome"] = ToString(result.outcome);
    if (!result.reason.empty()) line["reason"] = result.reason;
    if (result.elapsed) line["elapsedUs"] = static_cast<long long>(result.elapsed->count());
    JsonValue& ir = line["ir"];
    ir = JsonValue(common::json::kArray);
    for (const auto& t : result.transmissions) ir.append(TransmissionJson(t, result.sent));
    if (!note.empty()) line["note"] = note;
    return line.toString();
}

void CPrinter::Platform(const CPlatformSetup& setup, int irDelayMs, int timeoutMs) {
    if (json_) {
        JsonValue line;
        line["platform"]["year"] = setup.Year();
        line["platform"]["mbrSupport"] = setup.MbrSupport();
        line["platform"]["irDelayMs"] = irDelayMs;
        line["platform"]["timeoutMs"] = timeoutMs;
        out_ << line.toString() << "\n";
        return;
    }
    out_ << "platform  model year " << setup.Year() << ", IR service flag " << (setup.MbrSupport() ? "on" : "off")
         << "; on-air time " << irDelayMs << " ms, answer timeout " << timeoutMs << " ms\n";
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
    out_ << "service   " << service.name << "  (" << service.description << ")\n";
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

void CPrinter::Result(const RequestResult& result, const std::string& note) {
    if (json_) {
        out_ << ResultJson(result, note) << "\n";
        return;
    }
    std::string verdict = ToString(result.outcome);
    std::string detail;
    if (result.answer && result.outcome != Outcome::Ok) detail = result.answer->first + ": " + result.answer->second;
    const std::string prefix = result.request.line > 0 ? "#" + std::to_string(result.request.line) + " " : "";
    const std::string row = Pad(prefix + result.label, kLabelWidth) + Pad(result.summary, kRequestWidth) +
                            Pad(verdict, kVerdictWidth);
    const std::string indent(kDetailColumn, ' ');
    std::vector<std::string> lines;
    for (const auto& t : result.transmissions) lines.push_back(Transmission(t.call) + (t.late ? " (late)" : ""));
    if (!detail.empty()) lines.push_back(detail);
    if (!result.reason.empty()) lines.push_back("reason: " + result.reason);
    if (lines.empty()) lines.push_back("(nothing transmitted)");
    for (std::size_t i = 0; i < lines.size(); ++i) out_ << (i == 0 ? row : indent) << lines[i] << "\n";
    if (!note.empty()) out_ << indent << "(" << note << ")\n";
}

void CPrinter::Late(const RequestResult& result, std::size_t firstNew) {
    if (json_) {
        JsonValue line = JsonValue::Create(ResultJson(result));
        line["late"] = true;
        out_ << line.toString() << "\n";
        return;
    }
    const std::string who = result.request.line > 0 ? "line " + std::to_string(result.request.line)
                                                    : "transaction " + std::to_string(result.transaction);
    std::string news;
    for (std::size_t i = firstNew; i < result.transmissions.size(); ++i) {
        news += (news.empty() ? "" : "; ") + Transmission(result.transmissions[i].call);
    }
    if (result.answer) {
        news += (news.empty() ? "answer " : "; answer ") + result.answer->first;
        if (!result.reason.empty()) news += " (" + result.reason + ")";
    }
    out_ << "late for " << who << " (" << result.label << " " << result.summary << "): " << news << "\n";
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

void CPrinter::LineError(const Request& request, const std::string& error) {
    JsonValue reply;
    Tag(reply, request);
    reply["error"] = error;
    out_ << reply.toString() << std::endl;
}

void CPrinter::Devices(const CPlatformSetup& setup, const Request& request) {
    // One JSON object per appliance on the command line; one object with them all for a serve line.
    JsonValue all(common::json::kArray);
    const bool serving = request.line > 0;
    if (!json_) {
        out_ << Pad("appliance", 12) << Pad("codeset", 12) << Pad("index", 7) << Pad("accepts (service)", 26)
             << "key map (IR library)\n";
    }
    for (const auto& device : setup.Devices()) {
        const std::string* keyMap = setup.KeyMap(device.codeset);
        const auto& allowed = CApplianceTypes::AllowedKeys(device.type);
        std::string accepts;
        for (int key : allowed) accepts += (accepts.empty() ? "" : ",") + std::to_string(key);
        if (device.type == "oic.d.airconditioner") accepts = "a state (ac)";
        if (accepts.empty()) accepts = "-";
        if (json_) {
            JsonValue line;
            line["codeset"] = device.codeset;
            line["deviceIndex"] = device.deviceIndex;
            line["type"] = device.type;
            JsonValue& keys = line["acceptedKeys"];
            keys = JsonValue(common::json::kArray);
            for (int key : allowed) keys.append(JsonValue(key));
            const JsonValue parsed = keyMap != nullptr ? JsonValue::Create(*keyMap) : JsonValue();
            if (keyMap == nullptr || !parsed.isNull()) {
                line["keyMap"] = parsed;
            } else {
                line["keyMap"] = JsonValue();
                line["keyMapText"] = *keyMap;
            }
            if (serving) {
                all.append(std::move(line));
            } else {
                out_ << line.toString() << "\n";
            }
        } else {
            out_ << Pad(device.type.empty() ? "?" : CApplianceTypes::ShortName(device.type), 12)
                 << Pad(device.codeset, 12) << Pad("#" + std::to_string(device.deviceIndex), 7) << Pad(accepts, 26)
                 << (keyMap == nullptr ? "(none)" : *keyMap) << "\n";
        }
    }
    if (json_ && serving) {
        JsonValue line;
        Tag(line, request);
        line["command"] = "devices";
        line["devices"] = std::move(all);
        out_ << line.toString() << std::endl;
    }
}

}  // namespace ircontrol::host

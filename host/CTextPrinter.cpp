#include "CTextPrinter.h"

#include <vyrf.h>

#include <algorithm>
#include <vector>

#include "CApplianceTypes.h"
#include "CPrinter.h"
#include "ServiceContract.h"

namespace ircontrol::host {
namespace {

constexpr std::size_t kLabelWidth = 18;
constexpr std::size_t kRequestWidth = 30;
constexpr std::size_t kVerdictWidth = 10;
constexpr std::size_t kDetailColumn = kLabelWidth + kRequestWidth + kVerdictWidth;

std::string Pad(const std::string& text, std::size_t width) {
    return text.size() >= width ? text + " " : text + std::string(width - text.size(), ' ');
}

// The host property types a service registers its properties with.
const char* TypeName(int type) {
    switch (type) {
        case VYRF_PROPERTY_TYPE_BOOL: return "bool";
        case VYRF_PROPERTY_TYPE_INT: return "int";
        case VYRF_PROPERTY_TYPE_STRING: return "string";
        case VYRF_PROPERTY_TYPE_JSON: return "json";
        case VYRF_PROPERTY_TYPE_DOUBLE: return "double";
        default: return "?";
    }
}

std::string LinePrefix(const Request& request) {
    return request.line > 0 ? "#" + std::to_string(request.line) + " " : "";
}

}  // namespace

void CTextPrinter::Platform(const CPlatformSetup& setup, int irDelayMs, int timeoutMs) {
    out_ << "platform  model year " << setup.Year() << ", IR service flag " << (setup.MbrSupport() ? "on" : "off")
         << "; on-air time " << irDelayMs << " ms, answer timeout " << timeoutMs << " ms\n";
}

void CTextPrinter::Service(const sim::ServiceInfo& service) {
    out_ << "service   " << service.name << "  (" << service.description << ")\n";
    auto properties = service.properties;  // registration follows a hash order; show it sorted
    std::sort(properties.begin(), properties.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    for (const auto& p : properties) {
        out_ << "  property  " << Pad(p.name, 16) << Pad(TypeName(p.type), 8) << p.description << "\n";
    }
    out_ << "\n";
}

void CTextPrinter::ExchangeHeader() {
    out_ << Pad("appliance", kLabelWidth) << Pad("request", kRequestWidth) << Pad("answer", kVerdictWidth)
         << "IR transmission / description\n";
}

void CTextPrinter::Result(const RequestResult& result, const std::string& note) {
    std::string detail;
    if (result.answer && result.outcome != Outcome::Ok) detail = result.answer->first + ": " + result.answer->second;
    const std::string row = Pad(LinePrefix(result.request) + result.label, kLabelWidth) +
                            Pad(result.summary, kRequestWidth) + Pad(ToString(result.outcome), kVerdictWidth);
    const std::string indent(kDetailColumn, ' ');
    std::vector<std::string> lines;
    for (const auto& t : result.transmissions) {
        lines.push_back(CPrinter::Transmission(t.call) + (t.late ? " (late)" : ""));
    }
    if (!detail.empty()) lines.push_back(detail);
    if (!result.reason.empty()) lines.push_back("reason: " + result.reason);
    if (lines.empty()) lines.push_back("(nothing transmitted)");
    for (std::size_t i = 0; i < lines.size(); ++i) out_ << (i == 0 ? row : indent) << lines[i] << "\n";
    if (!note.empty()) out_ << indent << "(" << note << ")\n";
}

void CTextPrinter::Late(const RequestResult& result, std::size_t firstNew) {
    const std::string who = result.request.line > 0 ? "line " + std::to_string(result.request.line)
                                                    : "transaction " + std::to_string(result.transaction);
    std::string news;
    for (std::size_t i = firstNew; i < result.transmissions.size(); ++i) {
        news += (news.empty() ? "" : "; ") + CPrinter::Transmission(result.transmissions[i].call);
    }
    if (result.answer) {
        news += (news.empty() ? "answer " : "; answer ") + result.answer->first;
        if (!result.reason.empty()) news += " (" + result.reason + ")";
    }
    out_ << "late for " << who << " (" << result.label << " " << result.summary << "): " << news << "\n";
}

void CTextPrinter::Summary(std::size_t, std::size_t unexpected) {
    out_ << "\n"
         << (unexpected == 0 ? "every answer was the expected one"
                             : std::to_string(unexpected) + " answer(s) differed from the expected ones")
         << "\n";
}

void CTextPrinter::Devices(const CPlatformSetup& setup, const Request&) {
    out_ << Pad("appliance", 12) << Pad("codeset", 12) << Pad("index", 7) << Pad("accepts (service)", 26)
         << "key map (IR library)\n";
    for (const auto& device : setup.Devices()) {
        const KeyMap* keyMap = setup.KeyMap(device.codeset);
        std::string accepts;
        for (int key : CApplianceTypes::AllowedKeys(device.type)) {
            accepts += (accepts.empty() ? "" : ",") + std::to_string(key);
        }
        if (device.type == contract::kOcfAirConditioner) accepts = "a state (ac)";
        if (accepts.empty()) accepts = "-";
        out_ << Pad(device.type.empty() ? "?" : CApplianceTypes::ShortName(device.type), 12)
             << Pad(device.codeset, 12) << Pad("#" + std::to_string(device.deviceIndex), 7) << Pad(accepts, 26)
             << (keyMap == nullptr ? "(none)" : keyMap->text) << "\n";
    }
}

void CTextPrinter::LineError(const Request& request, const std::string& error) {
    out_ << LinePrefix(request) << "error: " << error << "\n";
}

}  // namespace ircontrol::host

#include "Request.h"

#include <climits>

#include "CRequestParser.h"

namespace ircontrol::host {

const char* ToString(RequestKind kind) {
    switch (kind) {
        case RequestKind::Key: return "key";
        case RequestKind::Ac: return "ac";
        case RequestKind::Set: return "set";
        case RequestKind::Devices: return "devices";
    }
    return "?";
}

std::optional<RequestKind> RequestKindFrom(const std::string& name) {
    for (RequestKind kind : {RequestKind::Key, RequestKind::Ac, RequestKind::Set, RequestKind::Devices}) {
        if (name == ToString(kind)) return kind;
    }
    return std::nullopt;
}

const std::vector<RequestField>& FieldsOf(RequestKind kind) {
    static const std::vector<RequestField> none;
    static const std::vector<RequestField> key = {
        {"type", "fan, purifier, humidifier, cleaner, ac, or a full OCF device type"},
        {"codeset", "codeset name (default: the paired one of that type)"},
        {"key", "key code, or a key name from the codeset's key map (e.g. power)"}};
    static const std::vector<RequestField> ac = {
        {"codeset", "codeset name (default: the paired air conditioner)"},
        {"power", "ON or OFF (default ON)"},
        {"mode", "AUTO, COLD, DEHUMI, VENT or HEAT (default COLD)"},
        {"setpoint", "cooling set point, a whole number (default 24)"},
        {"fan", "LOW, MEDIUM, HIGH or AUTO (default AUTO)"}};
    static const std::vector<RequestField> set = {
        {"name", "property name (default setKeyEvent)"},
        {"value", "the value's text"},
        {"kind", "json, string, int or bool (default json)"}};
    switch (kind) {
        case RequestKind::Key: return key;
        case RequestKind::Ac: return ac;
        case RequestKind::Set: return set;
        case RequestKind::Devices: break;
    }
    return none;
}

const char* ToString(ValueKind kind) {
    switch (kind) {
        case ValueKind::Json: return "json";
        case ValueKind::String: return "string";
        case ValueKind::Int: return "int";
        case ValueKind::Bool: return "bool";
    }
    return "?";
}

std::optional<ValueKind> ValueKindFrom(const std::string& name) {
    for (ValueKind kind : {ValueKind::Json, ValueKind::String, ValueKind::Int, ValueKind::Bool}) {
        if (name == ToString(kind)) return kind;
    }
    return std::nullopt;
}

bool ToHostProperty(const std::string& name, ValueKind kind, const std::string& text, sim::HostProperty& out) {
    switch (kind) {
        case ValueKind::Json: out = sim::HostProperty::Json(name, text); return true;
        case ValueKind::String: out = sim::HostProperty::String(name, text); return true;
        case ValueKind::Int: {
            long long number = 0;
            if (CRequestParser::ParseInteger(text, INT_MIN, INT_MAX, number) != CRequestParser::Number::Ok) return false;
            out = sim::HostProperty::Int(name, static_cast<int>(number));
            return true;
        }
        case ValueKind::Bool:
            if (text != "true" && text != "false") return false;
            out = sim::HostProperty::Bool(name, text == "true");
            return true;
    }
    return false;
}

const char* ToString(Outcome outcome) {
    switch (outcome) {
        case Outcome::Ok: return "ok";
        case Outcome::Refused: return "refused";
        case Outcome::Unanswered: return "unanswered";
        case Outcome::NoAnswer: return "no answer";
        case Outcome::Listed: return "listed";
    }
    return "?";
}

}  // namespace ircontrol::host

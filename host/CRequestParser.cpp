#include "CRequestParser.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cmath>

#include "CApplianceTypes.h"
#include "JsonValue.h"
#include "Nearest.h"
#include "ServiceContract.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;


std::string Value(const NamedValues& values, const std::string& name, const std::string& fallback) {
    const auto found = values.find(name);
    return found == values.end() ? fallback : found->second;
}

// A JSON member as the text the command line would have given: strings as they are, whole
// numbers without a fraction (22.0 is 22), anything else as its JSON.
std::string MemberText(const JsonValue& v) {
    if (v.isString()) return v.asString();
    if (v.isDouble()) {
        const double d = v.asDouble();
        if (std::isfinite(d) && d == std::floor(d) && std::fabs(d) < 9.0e15) {
            return std::to_string(static_cast<long long>(d));
        }
    }
    return v.toString();
}

}  // namespace

CRequestParser::Number CRequestParser::ParseInteger(const std::string& text, long long min, long long max,
                                                    long long& out) {
    std::size_t i = 0;
    const bool negative = !text.empty() && text[0] == '-';
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) i = 1;
    if (i >= text.size()) return Number::NotANumber;
    // Digits are summed with saturation, so 99999999999999999999 is out of range, not garbage.
    unsigned long long magnitude = 0;
    bool huge = false;
    for (; i < text.size(); ++i) {
        if (!std::isdigit(static_cast<unsigned char>(text[i]))) return Number::NotANumber;
        if (magnitude > (ULLONG_MAX - 9) / 10) {
            huge = true;
        } else {
            magnitude = magnitude * 10 + static_cast<unsigned>(text[i] - '0');
        }
    }
    if (huge || magnitude > static_cast<unsigned long long>(LLONG_MAX)) return Number::OutOfRange;
    const long long value = negative ? -static_cast<long long>(magnitude) : static_cast<long long>(magnitude);
    if (value < min || value > max) return Number::OutOfRange;
    out = value;
    return Number::Ok;
}

std::string CRequestParser::name(const std::string& value) const {
    return style_ == Style::Json ? "\"" + value + "\"" : "--" + value;
}

bool CRequestParser::Parse(const std::string& command, const NamedValues& values, Request& out,
                           std::string& error) const {
    const auto kind = RequestKindFrom(command);
    if (!kind) {
        error = command.empty() ? name("command") + " is required (key, ac, set or devices)"
                                : name("command") + " must be key, ac, set or devices, not '" + command + "'";
        return false;
    }
    Request request;
    request.kind = *kind;
    request.values = values;
    request.id = out.id;
    request.line = out.line;
    bool ok = true;
    switch (*kind) {
        case RequestKind::Key: ok = key(values, request, error); break;
        case RequestKind::Ac: ok = ac(values, request, error); break;
        case RequestKind::Set: ok = set(values, request, error); break;
        case RequestKind::Devices: break;
    }
    if (!ok) {
        error = command + ": " + error;
        return false;
    }
    out = std::move(request);
    return true;
}

bool CRequestParser::ParseLine(const std::string& text, long line, Request& out, std::string& error) const {
    return ParseObject(JsonValue::Create(text), line, out, error);
}

bool CRequestParser::ParseObject(const JsonValue& root, long line, Request& out, std::string& error) const {
    out = Request();
    out.line = line;
    if (root.type() != common::json::kObject) {
        error = root.isNull() ? "not valid JSON" : "not a JSON object";
        return false;
    }
    NamedValues values;
    for (const auto& member : root.getMemberNames()) values[member] = MemberText(root[member]);
    if (values.count("id")) out.id = values["id"];
    const std::string command = Value(values, "command", "");
    values.erase("command");
    values.erase("id");
    if (const auto kind = RequestKindFrom(command)) {
        std::vector<std::string> known;
        for (const RequestField& field : FieldsOf(*kind)) known.push_back(field.name);
        for (const auto& entry : values) {
            if (std::find(known.begin(), known.end(), entry.first) != known.end()) continue;
            error = command + ": unknown field \"" + entry.first + "\"";
            const std::string hint = Nearest(entry.first, known);
            if (!hint.empty()) error += " (did you mean \"" + hint + "\"?)";
            return false;
        }
    }
    return Parse(command, values, out, error);
}

bool CRequestParser::keyCode(const std::string& text, Request& out, std::string& error) const {
    long long code = 0;
    switch (ParseInteger(text, INT_MIN, INT_MAX, code)) {
        case Number::Ok:
            out.key = static_cast<int>(code);
            return true;
        case Number::OutOfRange:
            error = name("key") + " " + text + " is out of range (a key code is at most " +
                    std::to_string(INT_MAX) + ")";
            return false;
        case Number::NotANumber: break;
    }
    // Not a number: a key name, looked up in the key map the IR library gives for the codeset.
    const KeyMap* keyMap = setup_.KeyMap(out.codeset);
    if (keyMap == nullptr) {
        error = "no key map for codeset " + out.codeset + " to look up the key name '" + text + "'";
        return false;
    }
    std::string names;
    for (const auto& [keyName, code] : keyMap->keys) {
        if (keyName == text) {
            out.key = code;
            out.keyName = text;
            return true;
        }
        names += (names.empty() ? "" : ", ") + keyName;
    }
    error = "'" + text + "' is neither a key code nor a key name in " + out.codeset + "'s key map" +
            (names.empty() ? " (it names no keys)" : " (" + names + ")");
    return false;
}

bool CRequestParser::key(const NamedValues& values, Request& out, std::string& error) const {
    if (!values.count("type")) {
        error = name("type") + " is required (fan, purifier, humidifier, cleaner, ac)";
        return false;
    }
    out.type = CApplianceTypes::Resolve(values.at("type"));
    if (out.type.empty()) {
        error = "unknown " + name("type") + " '" + values.at("type") +
                "' (fan, purifier, humidifier, cleaner, ac, or a full OCF device type)";
        return false;
    }
    out.codeset = Value(values, "codeset", setup_.PairedCodeset(out.type));
    if (out.codeset.empty()) {
        error = "no paired " + CApplianceTypes::ShortName(out.type) + "; give " + name("codeset");
        return false;
    }
    if (!values.count("key")) {
        error = name("key") + " is required (a key code, or a key name from the codeset's key map)";
        return false;
    }
    return keyCode(values.at("key"), out, error);
}

bool CRequestParser::ac(const NamedValues& values, Request& out, std::string& error) const {
    out.type = contract::kOcfAirConditioner;
    out.ac.power = Value(values, "power", out.ac.power);
    out.ac.mode = Value(values, "mode", out.ac.mode);
    out.ac.fan = Value(values, "fan", out.ac.fan);
    if (values.count("setpoint")) {
        long long setpoint = 0;
        const Number parsed = ParseInteger(values.at("setpoint"), INT_MIN, INT_MAX, setpoint);
        if (parsed != Number::Ok) {
            error = name("setpoint") + (parsed == Number::OutOfRange ? " is out of range" : " needs a whole number") +
                    ", not '" + values.at("setpoint") + "'";
            return false;
        }
        out.ac.setpoint = static_cast<int>(setpoint);
    }
    out.codeset = Value(values, "codeset", setup_.PairedCodeset(contract::kOcfAirConditioner));
    if (out.codeset.empty()) {
        error = "no paired air conditioner; give " + name("codeset");
        return false;
    }
    return true;
}

bool CRequestParser::set(const NamedValues& values, Request& out, std::string& error) const {
    if (!values.count("value")) {
        error = name("value") + " is required";
        return false;
    }
    out.property = Value(values, "name", out.property);
    out.text = values.at("value");
    const std::string kindText = Value(values, "kind", ToString(out.valueKind));
    const auto kind = ValueKindFrom(kindText);
    if (!kind) {
        error = name("kind") + " must be json, string, int or bool, not '" + kindText + "'";
        return false;
    }
    out.valueKind = *kind;
    sim::HostProperty unused;
    if (ToHostProperty(out.property, out.valueKind, out.text, unused)) return true;
    error = out.valueKind == ValueKind::Int ? name("value") + " '" + out.text + "' is not an integer"
                                            : name("value") + " must be true or false for " + name("kind") + " bool";
    return false;
}

}  // namespace ircontrol::host

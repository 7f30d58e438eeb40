#include "CSession.h"

#include <chrono>

#include "CApplianceTypes.h"
#include "CCommandLine.h"
#include "JsonValue.h"

namespace ircontrol::host {

using common::json::JsonValue;

std::string CSession::KeyPayload(const std::string& type, const std::string& codeset, int key) {
    JsonValue payload;
    payload["x.com.korvan.deviceType"] = type;
    payload["x.com.korvan.codesetName"] = codeset;
    payload["x.com.korvan.codesetKey"] = key;
    return payload.toString();
}

std::string CSession::AcPayload(const std::string& codeset, const AcState& state) {
    JsonValue payload;
    payload["x.com.korvan.deviceType"] = "oic.d.airconditioner";
    payload["x.com.korvan.codesetName"] = codeset;
    payload["x.com.korvan.codesetKey"] = 0;
    JsonValue& ac = payload["x.com.korvan.acState"];
    ac["x.com.korvan.power"] = state.power;
    ac["x.com.korvan.mode"] = state.mode;
    ac["x.com.korvan.coolingSetpoint"] = state.setpoint;
    ac["x.com.korvan.fanSpeed"] = state.fan;
    return payload.toString();
}

Exchange CSession::Key(const std::string& type, const std::string& codeset, int key, int waitMs) {
    Exchange exchange;
    exchange.label = CApplianceTypes::ShortName(type);
    exchange.summary = "key " + std::to_string(key) + " (" + codeset + ")";
    exchange.property = "setKeyEvent";
    exchange.payload = KeyPayload(type, codeset, key);
    return send(exchange, sim::HostProperty::Json(exchange.property, exchange.payload), waitMs);
}

Exchange CSession::Ac(const std::string& codeset, const AcState& state) {
    Exchange exchange;
    exchange.label = "ac";
    exchange.summary = state.power + " " + state.mode + " " + std::to_string(state.setpoint) + " " +
                       state.fan + " (" + codeset + ")";
    exchange.property = "setKeyEvent";
    exchange.payload = AcPayload(codeset, state);
    return send(exchange, sim::HostProperty::Json(exchange.property, exchange.payload), -1);
}

bool CSession::Set(const std::string& name, const std::string& kind, const std::string& value,
                  Exchange& out, std::string& error, int waitMs) {
    Exchange exchange;
    exchange.label = name;
    exchange.summary = kind + " " + (value.size() > 40 ? value.substr(0, 37) + "..." : value);
    exchange.property = name;
    exchange.payload = value;
    sim::HostProperty property;
    if (kind == "json") {
        property = sim::HostProperty::Json(name, value);
    } else if (kind == "string") {
        property = sim::HostProperty::String(name, value);
    } else if (kind == "int") {
        int number = 0;
        if (!CCommandLine::ParseInt(value, number)) {
            error = "--value '" + value + "' is not an integer";
            return false;
        }
        property = sim::HostProperty::Int(name, number);
    } else if (kind == "bool") {
        if (value != "true" && value != "false") {
            error = "--value must be true or false for --kind bool";
            return false;
        }
        property = sim::HostProperty::Bool(name, value == "true");
    } else {
        error = "--kind must be json, string, int or bool, not '" + kind + "'";
        return false;
    }
    out = send(exchange, property, waitMs);
    return true;
}

Exchange CSession::send(Exchange exchange, const sim::HostProperty& property, int waitMs) {
    return SendList(std::move(exchange), {property}, waitMs);
}

Exchange CSession::SendList(Exchange exchange, const std::vector<sim::HostProperty>& properties, int waitMs) {
    sim::IrBlaster::ClearJournal();
    exchange.transaction = sim::Host::SendSet("ircontrol", properties);
    const int wait = waitMs >= 0 ? waitMs : timeoutMs_;
    if (auto result = sim::Host::WaitResult(exchange.transaction, std::chrono::milliseconds(wait))) {
        std::string code, description;
        for (const auto& p : result->properties) {
            if (p.name == "errorCode") code = p.text;
            if (p.name == "description") description = p.text;
        }
        exchange.answer = std::make_pair(code, description);
    }
    for (const auto& call : sim::IrBlaster::Journal()) {
        if (call.function == sim::IrCall::Function::SendH || call.function == sim::IrCall::Function::SendZ ||
            call.function == sim::IrCall::Function::Aircon) {
            exchange.transmissions.push_back(call);
        }
    }
    return exchange;
}

}  // namespace ircontrol::host

#include "CResultJson.h"

#include "ServiceContract.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

long long Microseconds(std::chrono::steady_clock::duration d) {
    return static_cast<long long>(std::chrono::duration_cast<std::chrono::microseconds>(d).count());
}

}  // namespace

void CResultJson::Tag(JsonValue& object, const Request& request) {
    if (request.line > 0) object["line"] = static_cast<long long>(request.line);
    if (request.id) object["id"] = *request.id;
}

JsonValue CResultJson::Transmission(const host::Transmission& t, std::chrono::steady_clock::time_point sent) {
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
    entry["onAirStartUs"] = Microseconds(call.time - sent);
    entry["onAirEndUs"] = Microseconds(call.onAirEnd - sent);
    entry["onAirUs"] = Microseconds(call.onAirEnd - call.time);
    entry["late"] = t.late;
    // With a transmitter attached: the carrier and the waveform that went on air, or why not.
    if (!call.waveform.empty()) {
        entry["carrier"] = static_cast<long long>(call.carrier);
        JsonValue& waveform = entry["waveform"];
        waveform = JsonValue(common::json::kArray);
        for (const auto d : call.waveform) waveform.append(JsonValue(static_cast<long long>(d)));
    }
    if (!call.transmitError.empty()) entry["transmitError"] = call.transmitError;
    return entry;
}

JsonValue CResultJson::Build(const RequestResult& result) {
    JsonValue object;
    Tag(object, result.request);
    object["command"] = ToString(result.request.kind);
    object["property"] = result.property;
    // The payload as the JSON it is, so a client reads it without parsing a string; a payload
    // that is not JSON (a set request may send anything) keeps its text beside a null.
    if (!result.payloadJson.isNull() || result.payload == "null") {
        object["payload"] = result.payloadJson;
    } else {
        object["payload"] = JsonValue();
        object["payloadText"] = result.payload;
    }
    object["transaction"] = static_cast<long long>(result.transaction);
    if (result.answer) {
        object["answer"][contract::kAnswerErrorCode] = result.answer->first;
        object["answer"][contract::kAnswerDescription] = result.answer->second;
        if (result.answerLate) object["answer"]["late"] = true;
    } else {
        object["answer"] = JsonValue();
    }
    object["outcome"] = ToString(result.outcome);
    if (!result.reason.empty()) object["reason"] = result.reason;
    if (result.elapsed) object["elapsedUs"] = static_cast<long long>(result.elapsed->count());
    JsonValue& ir = object["ir"];
    ir = JsonValue(common::json::kArray);
    for (const auto& t : result.transmissions) ir.append(Transmission(t, result.sent));
    return object;
}

}  // namespace ircontrol::host

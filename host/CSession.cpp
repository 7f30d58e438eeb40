#include "CSession.h"

#include <algorithm>

#include "CApplianceTypes.h"
#include "CReason.h"
#include "JsonValue.h"
#include "ServiceContract.h"

namespace ircontrol::host {

using common::json::JsonValue;

namespace {

constexpr std::chrono::milliseconds kSlice(20);

bool IsTransmission(const sim::IrCall& call) {
    return call.function == sim::IrCall::Function::SendH || call.function == sim::IrCall::Function::SendZ ||
           call.function == sim::IrCall::Function::Aircon;
}

// The parser has checked a set request's value against its kind; one that does not fit (a
// Request built by hand) goes as JSON text, which the service refuses on its own.
sim::HostProperty PropertyOf(const RequestResult& result) {
    const Request& r = result.request;
    sim::HostProperty property = sim::HostProperty::Json(result.property, result.payload);
    if (r.kind == RequestKind::Set) ToHostProperty(result.property, r.valueKind, r.text, property);
    return property;
}

void TakeAnswer(const sim::SetResult& answer, RequestResult& result) {
    std::string code, description;
    for (const auto& p : answer.properties) {
        if (p.name == contract::kAnswerErrorCode) code = p.text;
        if (p.name == contract::kAnswerDescription) description = p.text;
    }
    result.answer = std::make_pair(code, description);
    result.elapsed = std::chrono::duration_cast<std::chrono::microseconds>(answer.time - result.sent);
}

}  // namespace

JsonValue CSession::KeyPayload(const std::string& type, const std::string& codeset, int key) {
    JsonValue payload;
    payload[contract::kAttrDeviceType] = type;
    payload[contract::kAttrCodesetName] = codeset;
    payload[contract::kAttrCodesetKey] = key;
    return payload;
}

JsonValue CSession::AcPayload(const std::string& codeset, const AcState& state) {
    JsonValue payload;
    payload[contract::kAttrDeviceType] = contract::kOcfAirConditioner;
    payload[contract::kAttrCodesetName] = codeset;
    payload[contract::kAttrCodesetKey] = 0;
    JsonValue& ac = payload[contract::kAttrAcState];
    ac[contract::kAttrPower] = state.power;
    ac[contract::kAttrMode] = state.mode;
    ac[contract::kAttrCoolingSetpoint] = state.setpoint;
    ac[contract::kAttrFanSpeed] = state.fan;
    return payload;
}

bool CSession::AcStateOf(const JsonValue& payload, std::string& codeset, AcState& out) {
    if (payload.type() != common::json::kObject || !payload[contract::kAttrDeviceType].isString() ||
        payload[contract::kAttrDeviceType].asString() != contract::kOcfAirConditioner ||
        !payload[contract::kAttrCodesetName].isString()) {
        return false;
    }
    const JsonValue& ac = payload[contract::kAttrAcState];
    if (ac.type() != common::json::kObject || !ac[contract::kAttrCoolingSetpoint].isInt()) return false;
    for (const char* word : {contract::kAttrPower, contract::kAttrMode, contract::kAttrFanSpeed}) {
        if (!ac[word].isString()) return false;
    }
    const AcState state{ac[contract::kAttrPower].asString(), ac[contract::kAttrMode].asString(), 0,
                        ac[contract::kAttrFanSpeed].asString()};
    const int64_t setpoint = ac[contract::kAttrCoolingSetpoint].asInt64();
    if (!CApplianceTypes::AcStateProblem(state.power, state.mode, setpoint, state.fan).empty()) return false;
    codeset = payload[contract::kAttrCodesetName].asString();
    out = state;
    out.setpoint = static_cast<int>(setpoint);
    return true;
}

RequestResult CSession::Describe(const Request& request) {
    RequestResult result;
    result.request = request;
    switch (request.kind) {
        case RequestKind::Key:
            result.label = CApplianceTypes::ShortName(request.type);
            result.summary = "key " + std::to_string(request.key) +
                             (request.keyName.empty() ? "" : " " + request.keyName) + " (" + request.codeset + ")";
            result.property = contract::kPropSetKeyEvent;
            result.payloadJson = KeyPayload(request.type, request.codeset, request.key);
            result.payload = result.payloadJson.toString();
            break;
        case RequestKind::Ac: {
            const AcState& s = request.ac;
            result.label = "ac";
            result.summary = s.power + " " + s.mode + " " + std::to_string(s.setpoint) + " " + s.fan + " (" +
                             request.codeset + ")";
            result.property = contract::kPropSetKeyEvent;
            result.payloadJson = AcPayload(request.codeset, s);
            result.payload = result.payloadJson.toString();
            break;
        }
        case RequestKind::Set:
            result.label = request.property;
            result.summary = std::string(ToString(request.valueKind)) + " " +
                             (request.text.size() > 24 ? request.text.substr(0, 21) + "..." : request.text);
            result.property = request.property;
            result.payload = request.text;
            result.payloadJson = JsonValue::Create(request.text);  // the one parse of a given text
            break;
        case RequestKind::Devices:
            result.label = "devices";
            break;
    }
    return result;
}

RequestResult CSession::Send(const Request& request) {
    RequestResult result = Describe(request);
    if (request.kind == RequestKind::Devices) {
        CReason::Explain(result, timeoutMs_);
        return result;
    }
    const sim::HostProperty property = PropertyOf(result);
    return SendProperties(std::move(result), {property});
}

RequestResult CSession::SendProperties(RequestResult result, const std::vector<sim::HostProperty>& properties) {
    result.sent = std::chrono::steady_clock::now();
    result.transaction = sim::Host::SendSet(contract::kServiceName, properties);
    // Waits in slices, so a request the service leaves unanswered on purpose (its log says so)
    // does not hold the tool for the whole timeout.
    const auto deadline = result.sent + std::chrono::milliseconds(timeoutMs_);
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (auto answer = sim::Host::WaitResult(result.transaction, std::min(left, kSlice))) {
            TakeAnswer(*answer, result);
            break;
        }
        collect(result);
        CReason::Explain(result, timeoutMs_);
        if (result.outcome == Outcome::Unanswered || left <= kSlice) break;
    }
    collect(result);
    CReason::Explain(result, timeoutMs_);
    if (result.outcome == Outcome::Ok && acStateListener_) tellAcStates(properties);
    return result;
}

// The payload as sent, not the request's own fields: a state the page sent as a raw property
// is the same state as one the ac shortcut built.
void CSession::tellAcStates(const std::vector<sim::HostProperty>& properties) const {
    for (const sim::HostProperty& property : properties) {
        if (property.name != contract::kPropSetKeyEvent || property.kind != sim::HostProperty::Kind::Json) continue;
        std::string codeset;
        AcState state;
        if (AcStateOf(JsonValue::Create(property.text), codeset, state)) acStateListener_(codeset, state);
    }
}

bool CSession::collect(RequestResult& result) const {
    // The journal drops its oldest calls when full, so positions in it shift: what is new is what
    // was recorded after the last transmission already taken. A transmission that went on air
    // after the tool's wait for the answer ended is late.
    const auto deadline = result.sent + std::chrono::milliseconds(timeoutMs_);
    const uint64_t taken = result.transmissions.empty() ? 0 : result.transmissions.back().call.sequence;
    bool added = false;
    for (const sim::IrCall& call : sim::IrBlaster::JournalFor(result.transaction)) {
        if (!IsTransmission(call) || call.sequence <= taken) continue;
        result.transmissions.push_back({call, call.time > deadline});
        added = true;
    }
    const auto lines = sim::Log::LinesFor(result.transaction);
    if (lines.size() > result.log.size()) {
        result.log = lines;
        added = true;
    }
    return added;
}

bool CSession::Refresh(RequestResult& result, std::chrono::milliseconds wait) const {
    if (result.transaction == 0 || result.answer) return false;
    bool added = false;
    if (auto answer = sim::Host::WaitResult(result.transaction, wait)) {
        TakeAnswer(*answer, result);
        result.answerLate = true;
        added = true;
    }
    added = collect(result) || added;
    if (added) CReason::Explain(result, timeoutMs_);
    return added;
}

}  // namespace ircontrol::host

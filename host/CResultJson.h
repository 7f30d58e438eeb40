// The one result model: what came of a request, as the JSON object that `--json`, `serve` and the
// web API all serialise (the web adds its own members to it). Built once from a RequestResult;
// nothing reads it back from text. Stateless; throws nothing but std::bad_alloc.
#pragma once

#include <chrono>

#include "JsonValue.h"
#include "Request.h"

namespace ircontrol::host {

class CResultJson {
public:
    // {"line"?,"id"?,"command","property","payload"(+"payloadText" when it is not JSON),
    //  "transaction","answer":{"errorCode","description","late"?}|null,"outcome","reason"?,
    //  "elapsedUs"?,"ir":[transmission, ...]}
    static common::json::JsonValue Build(const RequestResult& result);
    // {"function","deviceIndex",<key or AC words>,"onAirStartUs","onAirEndUs","onAirUs","late",
    //  "carrier"?,"waveform"?,"transmitError"?}; times are from `sent`, the set callback.
    static common::json::JsonValue Transmission(const host::Transmission& transmission,
                                                std::chrono::steady_clock::time_point sent);
    // The serve line number and the client's id, which every object about a serve line carries.
    static void Tag(common::json::JsonValue& object, const Request& request);
};

}  // namespace ircontrol::host

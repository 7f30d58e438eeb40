#include "CWebApi.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <utility>
#include <vector>

#include "CApplianceTypes.h"
#include "CRequestParser.h"
#include "ServiceContract.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

constexpr std::size_t kLookAgain = 10;  // timeouts to wait, at most, for a late answer

JsonValue IntList(const std::vector<int>& values) {
    JsonValue list(common::json::kArray);
    for (int value : values) list.append(JsonValue(value));
    return list;
}

JsonValue WordList(const std::vector<std::string>& words) {
    JsonValue list(common::json::kArray);
    for (const auto& word : words) list.append(JsonValue(word));
    return list;
}

// A member as the command line would take it: strings as they are, anything else as JSON text.
std::string Text(const JsonValue& value) { return value.isString() ? value.asString() : value.toString(); }

bool MethodIn(const std::string& method, const std::string& allowed) {
    std::size_t start = 0;
    while (start <= allowed.size()) {
        const std::size_t end = std::min(allowed.find(", ", start), allowed.size());
        if (allowed.compare(start, end - start, method) == 0 && end - start == method.size()) return true;
        start = end + 2;
    }
    return false;
}

}  // namespace

CWebApi::CWebApi(CJobRunner& runner, CRequestRecorder& recorder, CSession& session, CPlatformSetup& setup,
                 CWebLearn& learn, std::function<void()> pairingChanged)
    : runner_(runner),
      recorder_(recorder),
      session_(session),
      setup_(setup),
      learn_(learn),
      pairingChanged_(std::move(pairingChanged)),
      followUp_(session, kLookAgain) {}

std::string CWebApi::Allowed(const std::string& path) {
    if (path == "/api/requests" || path == "/api/key" || path == "/api/ac") return "POST";
    if (path == "/api/devices") return "GET, PUT";
    if (path == "/api/events") return "GET";
    if (path == "/api/learn") return "POST, DELETE";
    return "";
}

bool CWebApi::Accepts(const std::string& method, const std::string& path) {
    return MethodIn(method, Allowed(path));
}

WebReply CWebApi::Error(unsigned status, const std::string& message) { return ErrorReply(status, message); }

WebReply ErrorReply(unsigned status, const std::string& message) {
    JsonValue body;
    body["error"] = message;
    body["status"] = static_cast<int>(status);
    return WebReply{status, body.toString(), ""};
}

void CWebApi::Handle(const std::string& method, const std::string& path, bool wait, const std::string& body,
                     Done done) {
    const std::string allowed = Allowed(path);
    if (allowed.empty()) return done(Error(404, "no such resource: " + path));
    if (!MethodIn(method, allowed)) {
        WebReply reply = Error(405, method + " is not allowed on " + path + " (allowed: " + allowed + ")");
        reply.allow = allowed;
        return done(reply);
    }
    try {
        if (path == "/api/devices") return method == "GET" ? devices(done) : putDevices(body, done);
        if (path == "/api/learn" && method == "DELETE") return done(learn_.Cancel());
        const JsonValue parsed = JsonValue::Create(body);
        if (parsed.isNull()) return done(Error(400, "the body is not valid JSON"));
        if (path == "/api/learn") return done(learn_.Start(parsed));
        if (path == "/api/requests") return request(parsed, wait, done);
        return shortcut(path == "/api/key" ? "key" : "ac", parsed, wait, done);
    } catch (const std::exception& e) {
        done(Error(400, std::string("unusable request: ") + e.what()));
    }
}

void CWebApi::request(const JsonValue& body, bool wait, Done done) {
    if (body.type() == common::json::kArray) return properties(body, wait, done);
    if (body.type() != common::json::kObject) {
        return done(Error(400, "the body must be an object {\"name\", \"value\"} or a list of properties"));
    }
    if (body.isMember("properties")) return properties(body["properties"], wait, done);
    JsonValue line = body;
    line["command"] = "set";
    // A value given as JSON is sent as its text.
    if (body.isMember("value") && !body["value"].isString()) line["value"] = body["value"].toString();
    submit(line, wait, done);
}

void CWebApi::shortcut(const std::string& command, const JsonValue& body, bool wait, Done done) {
    if (body.type() != common::json::kObject) return done(Error(400, "the body must be a JSON object"));
    JsonValue line = body;
    line["command"] = command;
    submit(line, wait, done);
}

void CWebApi::properties(const JsonValue& list, bool wait, Done done) {
    if (list.type() != common::json::kArray || list.size() == 0) {
        return done(Error(400, "\"properties\" must be a non-empty list"));
    }
    std::vector<sim::HostProperty> properties;
    RequestResult described;
    described.request.kind = RequestKind::Set;
    described.label = "properties";
    for (unsigned i = 0; i < list.size(); ++i) {
        const JsonValue& entry = list[i];
        const std::string where = "properties[" + std::to_string(i) + "]";
        if (entry.type() != common::json::kObject || !entry.isMember("value")) {
            return done(Error(400, where + " must be an object with \"name\" and \"value\""));
        }
        const std::string name = entry.isMember("name") ? Text(entry["name"]) : std::string(contract::kPropSetKeyEvent);
        const std::string kind = entry.isMember("kind") ? Text(entry["kind"]) : ToString(ValueKind::Json);
        const std::string value = Text(entry["value"]);
        const auto valueKind = ValueKindFrom(kind);
        sim::HostProperty property;
        if (!valueKind || !ToHostProperty(name, *valueKind, value, property)) {
            return done(Error(400, where + ": \"" + value + "\" is not a value of kind \"" + kind +
                                       "\" (json, string, int or bool)"));
        }
        properties.push_back(std::move(property));
        described.property += (i == 0 ? "" : ",") + name;
    }
    described.summary = std::to_string(properties.size()) + " properties";
    described.payload = list.toString();
    described.payloadJson = list;
    described.request.property = described.property;
    described.request.text = described.payload;
    JsonValue request;
    request["properties"] = list;
    enqueue(request, wait,
            [this, described, properties](RequestResult& out, std::string&) {
                out = session_.SendProperties(described, properties);
                return true;
            },
            done);
}

void CWebApi::submit(const JsonValue& line, bool wait, Done done) {
    enqueue(line, wait,
            [this, line](RequestResult& out, std::string& error) {
                const CRequestParser parser(setup_, CRequestParser::Style::Json);
                Request request;
                if (!parser.ParseObject(line, 0, request, error)) return false;
                if (request.kind == RequestKind::Devices) {
                    error = "devices: use GET /api/devices";
                    return false;
                }
                out = session_.Send(request);
                return true;
            },
            done);
}

void CWebApi::enqueue(const JsonValue& request, bool wait, CRequestRecorder::Send send, Done done) {
    const uint64_t id = recorder_.NextId();
    const bool posted = runner_.Post([this, id, request, send, wait, done] {
        try {
            RequestResult kept;
            const JsonValue result = recorder_.Run(id, request, send, &kept);
            if (wait) done(WebReply{result.isMember("error") ? 400u : 200u, result.toString(), ""});
            follow(id, kept);
        } catch (const std::exception& e) {
            if (wait) done(Error(500, std::string("the request failed: ") + e.what()));
        }
    });
    if (!posted) return done(Error(503, "too many requests queued; try again"));
    if (!wait) {
        JsonValue accepted;
        accepted["id"] = static_cast<long long>(id);
        accepted["queued"] = true;
        done(WebReply{202, accepted.toString(), ""});
    }
}

// A request that had no answer in time may still get one (the blaster was on air longer than
// the timeout): look again for a while, one timeout at a time behind the requests queued since,
// and show what came, marked late.
void CWebApi::follow(uint64_t id, const RequestResult& result) {
    followUp_.Follow(result, id);
    if (!followUp_.Empty() && !looking_) lookAgain();
}

void CWebApi::lookAgain() {
    looking_ = runner_.Post([this] {
        followUp_.Look(std::chrono::milliseconds(session_.TimeoutMs()),
                       [this](uint64_t id, const RequestResult& result, std::size_t) { recorder_.Late(id, result); });
        looking_ = false;
        if (!followUp_.Empty()) lookAgain();
    });
}

void CWebApi::devices(Done done) {
    if (!runner_.Post([this, done] { done(WebReply{200, devicesJson().toString(), ""}); })) {
        done(Error(503, "too many requests queued; try again"));
    }
}

void CWebApi::putDevices(const std::string& body, Done done) {
    const bool posted = runner_.Post([this, body, done] {
        std::string error;
        if (!setup_.SetPairing(body, error)) return done(Error(400, error));
        if (pairingChanged_) pairingChanged_();
        JsonValue list = devicesJson();
        JsonValue event;
        event["type"] = "devices";
        event["count"] = list["devices"].size();
        recorder_.Announce(event);
        done(WebReply{200, list.toString(), ""});
    });
    if (!posted) done(Error(503, "too many requests queued; try again"));
}

JsonValue CWebApi::devicesJson() const {
    JsonValue result;
    result["pairing"] = setup_.PairingJson();
    JsonValue& list = result["devices"];
    list = JsonValue(common::json::kArray);
    for (const auto& device : setup_.Devices()) {
        JsonValue entry;
        entry["codeset"] = device.codeset;
        entry["device_index"] = device.deviceIndex;
        entry["type"] = device.type;
        entry["kind"] = CApplianceTypes::ShortName(device.type);
        const std::vector<int>& allowed = CApplianceTypes::AllowedKeys(device.type);
        entry["allowed"] = IntList(allowed);
        JsonValue keys(common::json::kArray);
        const KeyMap* keyMap = setup_.KeyMap(device.codeset);
        entry["keyMap"] = keyMap != nullptr ? JsonValue(keyMap->text) : JsonValue();
        for (const auto& [name, code] : keyMap != nullptr ? keyMap->keys : std::vector<std::pair<std::string, int>>()) {
            JsonValue key;
            key["name"] = name;
            key["code"] = code;
            key["allowed"] = std::find(allowed.begin(), allowed.end(), code) != allowed.end();
            keys.append(std::move(key));
        }
        entry["keys"] = keys;
        if (device.type == contract::kOcfAirConditioner) {
            for (const char* field : {"power", "mode", "fan"}) entry["ac"][field] = WordList(CApplianceTypes::AcWords(field));
        }
        list.append(std::move(entry));
    }
    return result;
}

}  // namespace ircontrol::host

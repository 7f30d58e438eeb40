// The request model every front end of the host tool shares (command line, serve's JSON lines,
// the web API): a Request describes one thing to do, parsed once by CRequestParser from named
// values; a RequestResult is what came of it, filled by CSession and turned into the one result
// object by CResultJson. Plain values: copyable, no thread affinity, nothing here throws.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "JsonValue.h"
#include "sim/Simulator.h"
#include "ServiceContract.h"

namespace ircontrol::host {

enum class RequestKind { Key, Ac, Set, Devices };

// How a set request's value is typed on the host.
enum class ValueKind { Json, String, Int, Bool };

// A named value a request kind takes, with the help the command line shows for it.
struct RequestField {
    const char* name;
    const char* help;
};

// Named values as a front end received them: "--type fan" or {"type":"fan"} both give
// {"type","fan"}. Numbers arrive as their text ("22", never "22.0": the parser normalises).
using NamedValues = std::map<std::string, std::string>;

// An air conditioner's target state in the service's own words.
struct AcState {
    std::string power = "ON";
    std::string mode = "COLD";
    int setpoint = 24;
    std::string fan = "AUTO";
};

struct Request {
    RequestKind kind = RequestKind::Key;
    NamedValues values;              // as given, for echoing
    std::optional<std::string> id;   // the client's "id", echoed in every output about it
    long line = 0;                   // serve's input line number (1-based); 0 elsewhere

    // Resolved by the parser. Key and Ac:
    std::string type;                // OCF device type
    std::string codeset;
    int key = 0;                     // Key: the code sent
    std::string keyName;             // Key: the key-map name it was given by, if any
    AcState ac;                      // Ac
    // Set: the property, how its value is typed on the host, the value's text.
    std::string property = contract::kPropSetKeyEvent;
    ValueKind valueKind = ValueKind::Json;
    std::string text;
};

const char* ToString(RequestKind kind);              // "key", "ac", "set", "devices"
std::optional<RequestKind> RequestKindFrom(const std::string& name);
// The named values a kind takes, in the order --help shows them (devices: none).
const std::vector<RequestField>& FieldsOf(RequestKind kind);

const char* ToString(ValueKind kind);                // "json", "string", "int", "bool"
std::optional<ValueKind> ValueKindFrom(const std::string& name);
// The host property `name` = `text` typed as `kind`: false when the text is not a value of that
// kind (int: a whole number in int's range; bool: true or false).
bool ToHostProperty(const std::string& name, ValueKind kind, const std::string& text, sim::HostProperty& out);

// One IR transmission made by the request's own job.
struct Transmission {
    sim::IrCall call;
    bool late = false;  // went on air after the tool's wait for the request's answer had ended
};

enum class Outcome {
    Ok,          // answered "ok"
    Refused,     // answered with another errorCode
    Unanswered,  // the service deliberately sends no answer to this request
    NoAnswer,    // nothing within the timeout (late, or dropped)
    Listed,      // devices: nothing is sent to the plugin
};

struct RequestResult {
    Request request;
    std::string label;     // appliance kind or property, for display
    std::string summary;   // what was asked, in a few words
    std::string property;  // the property set
    std::string payload;   // its value's text as sent
    common::json::JsonValue payloadJson;  // the same as JSON, null when the text is not JSON
    uint64_t transaction = 0;
    std::chrono::steady_clock::time_point sent{};  // when the set callback was called
    std::optional<std::pair<std::string, std::string>> answer;  // errorCode, description
    bool answerLate = false;  // the answer came after the tool had stopped waiting
    Outcome outcome = Outcome::NoAnswer;
    std::string reason;    // one line for every outcome but Ok and Listed
    std::vector<Transmission> transmissions;
    std::vector<sim::LogLine> log;  // the plugin's lines logged while serving this request
    std::optional<std::chrono::microseconds> elapsed;  // from the set callback to the answer
};

const char* ToString(Outcome outcome);  // "ok", "refused", "unanswered", "no answer", "listed"

}  // namespace ircontrol::host

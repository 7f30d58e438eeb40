#include "CMqttDoor.h"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>

#include "CPrinter.h"
#include "CResultJson.h"
#include "CRequestParser.h"
#include "GlibHandles.h"
#include "JsonValue.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

std::string Trim(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

std::vector<std::string> Levels(const std::string& topic) {
    std::vector<std::string> levels;
    std::size_t start = 0;
    for (std::size_t slash; (slash = topic.find('/', start)) != std::string::npos; start = slash + 1) {
        levels.push_back(topic.substr(start, slash - start));
    }
    levels.push_back(topic.substr(start));
    return levels;
}

// For echoing a client's text in a reason: short, and valid UTF-8 whatever came in.
std::string Quote(const std::string& text) {
    const std::string cut = text.substr(0, 40);
    const GCharPtr valid(g_utf8_make_valid(cut.data(), static_cast<gssize>(cut.size())));
    return "\"" + std::string(valid.get()) + (text.size() > cut.size() ? "...\"" : "\"");
}

std::string Upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

}  // namespace

CMqttDoor::CMqttDoor(const HomeConfig& config, IMqttClient& client, Post post, CSession& session,
                     CPlatformSetup& setup, CStateDirectory* state, Log log)
    : config_(config), discovery_(config), client_(client), post_(std::move(post)), session_(session),
      setup_(setup), state_(state), log_(std::move(log)) {
    if (state_ != nullptr) acStates_ = state_->AcStates();
}

void CMqttDoor::Attach() {
    client_.SetHandlers([this] { connected(); },
                        [this](const std::string& topic, const std::string& payload) { received(topic, payload); },
                        log_);
}

void CMqttDoor::connected() {
    // Subscriptions first, on the network thread: a command sent right after "online" is not missed.
    const std::string& base = config_.baseTopic;
    for (const std::string& pattern : {base + "/+/key", base + "/+/+/set", discovery_.Raw(), discovery_.Pairing()}) {
        if (!client_.Subscribe(pattern)) log_("mqtt: cannot subscribe to " + pattern);
    }
    if (!post_([this] {
            announced_.clear();  // a new connection: everything again
            announce();
        })) {
        log_("mqtt: the worker is full; discovery waits for the next connection");
    }
}

void CMqttDoor::received(const std::string& topic, const std::string& payload) {
    if (payload.size() > kMaxPayload) {
        publishError(topic, "payload of " + std::to_string(payload.size()) + " bytes; at most " +
                                std::to_string(kMaxPayload) + " are read");
        return;
    }
    if (!post_([this, topic, payload] { handle(topic, payload); })) {
        publishError(topic, "too many requests queued; try again");
    }
}

std::vector<MqttMessage> CMqttDoor::retained(const CDiscovery& discovery, const std::vector<MqttMessage>& configs) const {
    std::vector<MqttMessage> messages = {{discovery.Availability(), "online"}};
    messages.insert(messages.end(), configs.begin(), configs.end());
    for (const PairedDevice& device : setup_.Devices()) {
        const auto last = acStates_.find(device.codeset);
        if (device.type != contract::kOcfAirConditioner || last == acStates_.end()) continue;
        const auto states = discovery.States(device.codeset, last->second);
        messages.insert(messages.end(), states.begin(), states.end());
    }
    return messages;
}

void CMqttDoor::announce() {
    const std::vector<MqttMessage> configs = discovery_.Configs(setup_);
    std::vector<MqttMessage> messages = retained(discovery_, configs);  // "online" first
    const std::vector<MqttMessage> removals = CDiscovery::Removals(announced_, configs);
    messages.insert(messages.begin() + 1, removals.begin(), removals.end());
    bool all = true;
    for (const MqttMessage& message : messages) all = client_.Publish(message.topic, message.payload, true) && all;
    if (!all) log_("mqtt: not everything was published; it is again on the next connection");
    announced_ = configs;
}

void CMqttDoor::Retract(const HomeConfig& next, bool sameBroker) {
    const CDiscovery following(next);
    const std::vector<MqttMessage> after =
        sameBroker ? retained(following, following.Configs(setup_)) : std::vector<MqttMessage>();
    // The configs as announced: the setup may already hold a reloaded catalogue.
    for (const MqttMessage& message : CDiscovery::Removals(retained(discovery_, announced_), after)) {
        if (!client_.Publish(message.topic, message.payload, true)) log_("mqtt: " + message.topic + " was not taken back");
    }
}

void CMqttDoor::Reconfigure(const HomeConfig& next) {
    config_ = next;
    discovery_ = CDiscovery(next);
    announced_.clear();  // announced under the old topics, taken back by Retract()
}

void CMqttDoor::PairingChanged() {
    if (state_ != nullptr) {
        std::string error;
        if (!state_->SavePairing(setup_.PairingText(), error)) log_("state: " + error);
    }
    announce();
}

const PairedDevice* CMqttDoor::paired(const std::string& codeset) const {
    for (const PairedDevice& device : setup_.Devices()) {
        if (device.codeset == codeset) return &device;
    }
    return nullptr;
}

void CMqttDoor::handle(const std::string& topic, const std::string& payload) {
    try {
        const std::string& base = config_.baseTopic;
        if (topic == discovery_.Raw()) return raw(topic, payload);
        if (topic == discovery_.Pairing()) return pairing(topic, payload);
        if (topic.rfind(base + "/", 0) != 0) return publishError(topic, "not one of the service's topics");
        const std::vector<std::string> levels = Levels(topic.substr(base.size() + 1));
        if (levels.size() == 2 && levels[1] == "key") return key(topic, levels[0], payload);
        if (levels.size() == 3 && levels[2] == "set") return climate(topic, levels[0], levels[1], payload);
        publishError(topic, "not one of the service's topics");
    } catch (const std::exception& e) {
        // The session throws only when the service is gone; the door keeps answering.
        publishError(topic, std::string("the request failed: ") + e.what());
    }
}

void CMqttDoor::key(const std::string& topic, const std::string& codeset, const std::string& payload) {
    const PairedDevice* device = paired(codeset);
    if (device == nullptr) return publishError(topic, "no paired appliance uses codeset " + codeset);
    const CRequestParser parser(setup_, CRequestParser::Style::Json);
    Request request;
    std::string error;
    if (!parser.Parse("key", {{"type", device->type}, {"codeset", codeset}, {"key", Trim(payload)}}, request, error)) {
        return publishError(topic, error);
    }
    send(topic, request);
}

void CMqttDoor::climate(const std::string& topic, const std::string& codeset, const std::string& field,
                        const std::string& payload) {
    const PairedDevice* device = paired(codeset);
    if (device == nullptr || device->type != contract::kOcfAirConditioner) {
        return publishError(topic, "no paired air conditioner uses codeset " + codeset);
    }
    const ClimateModel model = CDiscovery::Climate(setup_.KeyMap(codeset));
    AcState next = acStates_.count(codeset) > 0 ? acStates_[codeset] : AcState();
    const std::string value = Trim(payload);
    if (field == "mode") {
        if (std::find(model.modes.begin(), model.modes.end(), value) == model.modes.end()) {
            return publishError(topic, Quote(value) + " is not one of this air conditioner's modes");
        }
        next.power = value == "off" ? "OFF" : "ON";
        if (value != "off") next.mode = *CDiscovery::ServiceMode(value);
    } else if (field == "temperature") {
        char* end = nullptr;
        const double number = std::strtod(value.c_str(), &end);
        if (value.empty() || end != value.c_str() + value.size() || !std::isfinite(number) ||
            number != std::floor(number) || number < model.minTemp || number > model.maxTemp) {
            return publishError(topic, "needs a whole number from " + std::to_string(model.minTemp) + " to " +
                                           std::to_string(model.maxTemp) + ", not " + Quote(value));
        }
        next.setpoint = static_cast<int>(number);
    } else if (field == "fan_mode") {
        if (std::find(model.fanModes.begin(), model.fanModes.end(), value) == model.fanModes.end()) {
            return publishError(topic, Quote(value) + " is not one of this air conditioner's fan modes");
        }
        next.fan = Upper(value);
    } else {
        return publishError(topic, "not one of the service's topics");
    }
    const CRequestParser parser(setup_, CRequestParser::Style::Json);
    Request request;
    std::string error;
    const NamedValues values = {{"codeset", codeset}, {"power", next.power}, {"mode", next.mode},
                                {"setpoint", std::to_string(next.setpoint)}, {"fan", next.fan}};
    if (!parser.Parse("ac", values, request, error)) return publishError(topic, error);
    send(topic, request);
}

void CMqttDoor::raw(const std::string& topic, const std::string& payload) {
    const CRequestParser parser(setup_, CRequestParser::Style::Json);
    Request request;
    std::string error;
    if (!parser.ParseLine(payload, 0, request, error)) return publishError(topic, error);
    if (request.kind == RequestKind::Devices) {
        std::ostringstream listing;
        request.line = 1;  // one object with every device, as serve answers the line
        CPrinter::Make(listing, true)->Devices(setup_, request);
        client_.Publish(discovery_.Result(), listing.str(), false);
        return;
    }
    send(topic, request);
}

void CMqttDoor::pairing(const std::string& topic, const std::string& payload) {
    std::string error;
    if (!setup_.SetPairing(payload, error)) return publishError(topic, error);
    PairingChanged();
    JsonValue result(common::json::kObject);
    result["topic"] = topic;
    result["outcome"] = "ok";
    result["devices"] = static_cast<unsigned>(setup_.Devices().size());
    client_.Publish(discovery_.Result(), result.toString(), false);
}

void CMqttDoor::send(const std::string& topic, const Request& request) {
    const RequestResult result = session_.Send(request);
    // The one result model every door serialises, with the command's topic and the answer's
    // members where a subscriber looks first.
    JsonValue message = CResultJson::Build(result);
    message["topic"] = topic;
    if (result.answer) {
        message[contract::kAnswerErrorCode] = result.answer->first;
        message[contract::kAnswerDescription] = result.answer->second;
    }
    if (!client_.Publish(discovery_.Result(), message.toString(), false)) log_("mqtt: a result was not published");
}

void CMqttDoor::AcStateAnswered(const std::string& codeset, const AcState& state) {
    // IR has no way back: the state the appliance was last told is the state it is in.
    acStates_[codeset] = state;
    if (paired(codeset) == nullptr) return;
    for (const MqttMessage& message : discovery_.States(codeset, state)) {
        client_.Publish(message.topic, message.payload, true);
    }
}

void CMqttDoor::publishError(const std::string& topic, const std::string& reason) {
    JsonValue message(common::json::kObject);
    message["topic"] = topic;
    message["outcome"] = "error";
    const GCharPtr valid(g_utf8_make_valid(reason.data(), static_cast<gssize>(reason.size())));
    message["reason"] = std::string(valid.get());
    log_("mqtt: " + topic + ": " + reason);
    if (!client_.Publish(discovery_.Result(), message.toString(), false)) log_("mqtt: an error was not published");
}

}  // namespace ircontrol::host

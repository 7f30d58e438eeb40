#include "CFrameReport.h"

#include <cinttypes>
#include <cstdio>

namespace ircontrol::host {

using common::json::JsonType;
using common::json::JsonValue;
using infrared::DecodedFrame;

std::string CFrameReport::Scancode(std::uint64_t scancode) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%04" PRIx64, scancode);
    return text;
}

JsonValue CFrameReport::Json(const DecodedFrame& frame, std::size_t index) {
    JsonValue out(JsonType::kObject);
    out["frame"] = JsonValue(static_cast<long long>(index));
    out["startUs"] = JsonValue(static_cast<long long>(frame.startUs));
    out["durationUs"] = JsonValue(static_cast<long long>(frame.durationUs));
    switch (frame.kind) {
        case DecodedFrame::Kind::Key:
            out["protocol"] = JsonValue(infrared::ProtocolName(frame.protocol));
            out["scancode"] = JsonValue(Scancode(frame.scancode));
            out["repeat"] = JsonValue(frame.repeat);
            out["toggle"] = frame.toggle ? JsonValue(*frame.toggle) : JsonValue();
            if (!frame.codeset.empty()) {
                out["codeset"] = JsonValue(frame.codeset);
                out["key"] = JsonValue(frame.key);
                out["code"] = JsonValue(frame.code);
            }
            break;
        case DecodedFrame::Kind::Aircon: {
            out["protocol"] = JsonValue("aircon");
            out["family"] = JsonValue(frame.family);
            out["codeset"] = JsonValue(frame.codeset);
            JsonValue& state = out["state"];
            state["power"] = JsonValue(frame.state.power);
            state["mode"] = JsonValue(frame.state.mode);
            state["setpoint"] = JsonValue(frame.state.setpoint);
            state["fan"] = JsonValue(frame.state.fan);
            std::string bytes;
            char hex[3];
            for (const std::uint8_t b : frame.bytes) {
                std::snprintf(hex, sizeof hex, "%02x", b);
                bytes += hex;
            }
            out["bytes"] = JsonValue(bytes);
            break;
        }
        case DecodedFrame::Kind::Raw: {
            out["protocol"] = JsonValue("raw");
            JsonValue durations(JsonType::kArray);
            for (const std::uint32_t d : frame.durations) durations.append(JsonValue(static_cast<long long>(d)));
            out["durations"] = durations;
            if (frame.carrier != 0) out["carrier"] = JsonValue(static_cast<long long>(frame.carrier));
            out["pronto"] = JsonValue(frame.pronto);
            break;
        }
    }
    return out;
}

std::string CFrameReport::Summary(const DecodedFrame& frame) {
    switch (frame.kind) {
        case DecodedFrame::Kind::Key:
            return std::string(infrared::ProtocolName(frame.protocol)) + " " + Scancode(frame.scancode) +
                   (frame.repeat ? " (repeat)" : "");
        case DecodedFrame::Kind::Aircon:
            return "aircon " + frame.family + " " + frame.state.power + " " + frame.state.mode + " " +
                   frame.state.setpoint + " " + frame.state.fan;
        case DecodedFrame::Kind::Raw: return "raw " + std::to_string(frame.durations.size()) + " durations";
    }
    return std::string();
}

std::string CFrameReport::Text(const JsonValue& report) {
    char at[32];
    std::snprintf(at, sizeof at, "%.3f s", static_cast<double>(report["startUs"].asInt64()) / 1e6);
    std::string line = "frame " + std::to_string(report["frame"].asInt64()) + " at " + at + ": ";
    const std::string protocol = report["protocol"].asString();
    if (protocol == "aircon") {
        const JsonValue& state = report["state"];
        line += "aircon " + report["family"].asString() + " (" + report["codeset"].asString() + ") " +
                state["power"].asString() + " " + state["mode"].asString() + " " + state["setpoint"].asString() +
                " " + state["fan"].asString() + ", bytes " + report["bytes"].asString();
    } else if (protocol == "raw") {
        line += "raw, " + std::to_string(report["durations"].size()) + " durations, pronto " +
                report["pronto"].asString();
    } else {
        line += protocol + " " + report["scancode"].asString();
        if (report["repeat"].asBool()) line += " repeat";
        if (report["toggle"].isBool()) line += std::string(" toggle ") + (report["toggle"].asBool() ? "1" : "0");
        if (report.isMember("codeset")) {
            line += " (" + report["codeset"].asString() + " " + report["key"].asString() + ", code " +
                    std::to_string(report["code"].asInt()) + ")";
        }
    }
    return line;
}

}  // namespace ircontrol::host

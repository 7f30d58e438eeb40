#include "CReason.h"

#include <optional>
#include "ServiceContract.h"

namespace ircontrol::host {
namespace {

// A log line's message without the "File.cpp : Function(42)  " the plugin puts before it.
std::string Message(const std::string& text) {
    const std::size_t at = text.find(")  ");
    std::string message = at == std::string::npos ? text : text.substr(at + 3);
    while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) message.pop_back();
    return message;
}

// The message of the request's newest log line that contains `marker`.
std::optional<std::string> Find(const RequestResult& result, const std::string& marker) {
    for (auto line = result.log.rbegin(); line != result.log.rend(); ++line) {
        if (line->text.find(marker) != std::string::npos) return Message(line->text);
    }
    return std::nullopt;
}

std::string After(const std::string& message, const std::string& marker) {
    const std::size_t at = message.find(marker);
    return at == std::string::npos ? message : message.substr(at + marker.size());
}

// "unsupported key(error:5)" -> "unsupported key (code 5)"
std::string Readable(const std::string& cause) {
    const std::size_t open = cause.rfind("(error:");
    if (open == std::string::npos || cause.back() != ')') return cause;
    const std::string code = cause.substr(open + 7, cause.size() - open - 8);
    return cause.substr(0, open) + " (code " + code + ")";
}

}  // namespace

void CReason::Explain(RequestResult& result, int timeoutMs) {
    result.reason.clear();
    if (result.request.kind == RequestKind::Devices) {
        result.outcome = Outcome::Listed;
        return;
    }
    if (result.answer) {
        if (result.answer->first == "ok") {
            result.outcome = Outcome::Ok;
            return;
        }
        result.outcome = Outcome::Refused;
        const auto cause = Find(result, "error occured: ");
        result.reason = cause ? Readable(After(*cause, "error occured: "))
                              : result.answer->first + ": " + result.answer->second;
        return;
    }
    // The cases the service leaves unanswered on purpose say so in its log.
    result.outcome = Outcome::Unanswered;
    if (Find(result, "there is no deviceType obj")) {
        result.reason = std::string("no \"") + contract::kAttrDeviceType + "\" in the payload: the service sends no answer to that";
    } else if (const auto dropped = Find(result, "set request dropped: ")) {
        result.reason = "the service dropped the request (" + Readable(After(*dropped, "set request dropped: ")) +
                        "): it sends no answer";
    } else if (const auto unknown = Find(result, " not found in map")) {
        result.reason = "the service has no property \"" + unknown->substr(0, unknown->find(" not found in map")) +
                        "\": it sends no answer";
    } else {
        result.outcome = Outcome::NoAnswer;
        result.reason = "no answer within " + std::to_string(timeoutMs) + " ms";
    }
}

}  // namespace ircontrol::host

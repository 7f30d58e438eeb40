#include "Request.h"

namespace ircontrol::host {

const char* ToString(RequestKind kind) {
    switch (kind) {
        case RequestKind::Key: return "key";
        case RequestKind::Ac: return "ac";
        case RequestKind::Set: return "set";
        case RequestKind::Devices: return "devices";
    }
    return "?";
}

std::optional<RequestKind> RequestKindFrom(const std::string& name) {
    for (RequestKind kind : {RequestKind::Key, RequestKind::Ac, RequestKind::Set, RequestKind::Devices}) {
        if (name == ToString(kind)) return kind;
    }
    return std::nullopt;
}

const char* ToString(Outcome outcome) {
    switch (outcome) {
        case Outcome::Ok: return "ok";
        case Outcome::Refused: return "refused";
        case Outcome::Unanswered: return "unanswered";
        case Outcome::NoAnswer: return "no answer";
        case Outcome::Listed: return "listed";
    }
    return "?";
}

}  // namespace ircontrol::host

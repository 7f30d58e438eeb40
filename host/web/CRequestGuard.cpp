#include "CRequestGuard.h"

#include <arpa/inet.h>
#include <glib.h>

#include <algorithm>
#include <cctype>

namespace ircontrol::host {
namespace {

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

std::string WithPort(const std::string& address, unsigned port) {
    const bool v6 = address.find(':') != std::string::npos;
    return (v6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

bool IsIpLiteral(const std::string& address) {
    unsigned char buffer[16];
    return inet_pton(AF_INET, address.c_str(), buffer) == 1 || inet_pton(AF_INET6, address.c_str(), buffer) == 1;
}

}  // namespace

CRequestGuard::CRequestGuard(const std::string& address, unsigned port)
    : anyAddress_(address == "0.0.0.0" || address == "::"), port_(port) {
    hosts_.push_back(Lower(WithPort(address, port)));
    if (IsLoopback(address) || anyAddress_) hosts_.push_back(WithPort("localhost", port));
}

bool CRequestGuard::HostAllowed(const char* host) const {
    if (host == nullptr) return false;
    const std::string wanted = Lower(host);
    if (std::find(hosts_.begin(), hosts_.end(), wanted) != hosts_.end()) return true;
    if (!anyAddress_) return false;
    // Listening on every address: a DNS name could be rebound to us, an address literal cannot.
    const std::string suffix = ":" + std::to_string(port_);
    if (wanted.size() <= suffix.size() || wanted.compare(wanted.size() - suffix.size(), suffix.size(), suffix) != 0) {
        return false;
    }
    std::string address = wanted.substr(0, wanted.size() - suffix.size());
    if (address.size() > 2 && address.front() == '[' && address.back() == ']') {
        address = address.substr(1, address.size() - 2);
    }
    return IsIpLiteral(address);
}

bool CRequestGuard::OriginAllowed(const char* origin) const {
    if (origin == nullptr) return true;
    const std::string text = Lower(origin);
    const std::string scheme = "http://";
    if (text.compare(0, scheme.size(), scheme) != 0) return false;
    return HostAllowed(text.c_str() + scheme.size());
}

std::optional<BodyRefusal> CRequestGuard::CheckBody(const char* contentType, const std::string& body,
                                                    bool truncated) {
    if (truncated || TooLarge(body.size())) return BodyRefusal{413, "the body is larger than 1 MiB"};
    if (!IsJsonType(contentType)) return BodyRefusal{415, "the body must be application/json"};
    if (!g_utf8_validate(body.data(), static_cast<gssize>(body.size()), nullptr)) {
        return BodyRefusal{400, "the body is not valid UTF-8"};
    }
    if (NestingDepth(body, kMaxNesting) > kMaxNesting) {
        return BodyRefusal{400, "the body nests deeper than " + std::to_string(kMaxNesting) + " levels"};
    }
    return std::nullopt;
}

bool CRequestGuard::IsJsonType(const char* contentType) {
    if (contentType == nullptr) return false;
    std::string type = Lower(contentType);
    type = type.substr(0, type.find(';'));
    type.erase(std::remove_if(type.begin(), type.end(), [](unsigned char c) { return std::isspace(c); }), type.end());
    return type == "application/json";
}

int CRequestGuard::NestingDepth(const std::string& text, int limit) {
    int depth = 0;
    int deepest = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString) {
            if (c == '\\') ++i;
            else if (c == '"') inString = false;
            continue;
        }
        if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            deepest = std::max(deepest, ++depth);
            if (deepest > limit) return deepest;
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return deepest;
}

bool CRequestGuard::IsLoopback(const std::string& address) {
    return address == "::1" || address.compare(0, 4, "127.") == 0;
}

bool CRequestGuard::ParseListen(const std::string& text, std::string& address, unsigned& port) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon + 1 >= text.size()) return false;
    std::string host = text.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
    const std::string digits = text.substr(colon + 1);
    if (digits.size() > 5 || digits.find_first_not_of("0123456789") != std::string::npos) return false;
    const unsigned long number = std::stoul(digits);
    if (number > 65535 || !IsIpLiteral(host)) return false;
    address = host;
    port = static_cast<unsigned>(number);
    return true;
}

}  // namespace ircontrol::host

// The checks every HTTP request passes before the API sees it: the Host and Origin headers must
// name the address the server serves (so a page elsewhere, or a rebound DNS name, cannot drive
// it), bodies are JSON, bounded in size and in nesting. Immutable after construction; any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ircontrol::host {

// Why a request body is refused: the HTTP status and a one-line message.
struct BodyRefusal {
    unsigned status;
    std::string message;
};

class CRequestGuard {
public:
    // The address served: "127.0.0.1", "::1", "0.0.0.0" (any), ... and the bound port.
    CRequestGuard(const std::string& address, unsigned port);

    bool HostAllowed(const char* host) const;      // nullptr (no header) is refused
    bool OriginAllowed(const char* origin) const;  // nullptr (no header, not a browser's cross-site call) passes

    // Every check a POST or PUT body passes, in this order: size (`truncated`: more came than
    // was kept, 413), JSON content type (415), UTF-8 (400), nesting (400).
    static std::optional<BodyRefusal> CheckBody(const char* contentType, const std::string& body, bool truncated);
    static bool TooLarge(std::size_t bytes) { return bytes > kMaxBody; }

    static bool IsJsonType(const char* contentType);  // application/json, parameters allowed
    // Depth of the deepest array/object nesting in JSON text (strings skipped), stopping at `limit` + 1.
    static int NestingDepth(const std::string& text, int limit);
    static bool IsLoopback(const std::string& address);
    // "127.0.0.1:8088" / "[::1]:0" -> address and port; false when unusable.
    static bool ParseListen(const std::string& text, std::string& address, unsigned& port);

    static constexpr std::size_t kMaxBody = 1024 * 1024;
    static constexpr int kMaxNesting = 64;

private:
    std::vector<std::string> hosts_;  // host:port texts accepted, lower case
    bool anyAddress_;                  // wildcard listen: any IP literal with the port is accepted
    unsigned port_;
};

}  // namespace ircontrol::host

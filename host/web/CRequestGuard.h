// The checks every HTTP request passes before the API sees it: the Host and Origin headers must
// name the address the server serves (so a page elsewhere, or a rebound DNS name, cannot drive
// it), bodies are JSON, bounded in size and in nesting. Immutable after construction; any thread.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ircontrol::host {

class CRequestGuard {
public:
    // The address served: "127.0.0.1", "::1", "0.0.0.0" (any), ... and the bound port.
    CRequestGuard(const std::string& address, unsigned port);

    bool HostAllowed(const char* host) const;      // nullptr (no header) is refused
    bool OriginAllowed(const char* origin) const;  // nullptr (no header, not a browser's cross-site call) passes

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

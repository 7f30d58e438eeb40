// An answer of the web API: status, JSON body and, for a 405, the methods the path takes.
#pragma once

#include <string>

namespace ircontrol::host {

struct WebReply {
    unsigned status = 200;
    std::string body;   // JSON text
    std::string allow;  // Allow header of a 405
};

// {"error": message, "status": status} with that status.
WebReply ErrorReply(unsigned status, const std::string& message);

}  // namespace ircontrol::host

// The one-line reason shown for a request that was refused or got no answer, derived from the
// plugin's own log lines of that request (the simulator ties them to it). Stateless.
#pragma once

#include <string>

#include "Request.h"

namespace ircontrol::host {

class CReason {
public:
    // Sets result.outcome from the answer and the log, and result.reason for every outcome but
    // ok. `timeoutMs` is how long the tool waited.
    static void Explain(RequestResult& result, int timeoutMs);
};

}  // namespace ircontrol::host

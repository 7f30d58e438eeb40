// One kind of IR-controlled appliance: decides what may be sent to it and sends it.
// Lives for one request, on the queue's worker thread.
#pragma once

#include <string>

#include "common/CNoncopyable.h"

namespace ircontrol {

class IIRDevice : private CNoncopyable {
public:
    virtual ~IIRDevice() = default;
    // Parses the device-info JSON and hands the command to the IR library; throws CException
    // (and the JSON layer's exceptions) on every failure it detects.
    virtual void BlastIR(const std::string& json) = 0;
};

}  // namespace ircontrol

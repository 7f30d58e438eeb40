// The two request handlers. They run only on the queue's worker thread, one request at a time,
// and answer each request exactly once (a key event without a device type is never answered).
// Every std::exception is caught and turned into an error answer.
#pragma once

#include <memory>

#include "common/CRequest.h"

namespace ircontrol {

class CIRControl {
public:
    CIRControl() = default;
    virtual ~CIRControl();

    void Init();
    void Deinit();
    // "setKeyEvent": send one key or an air-conditioner state; answers 0, or 1 on failure.
    void HandleKeyEvent(std::shared_ptr<CRequest> request);
    // "setDeviceEvent": accepted and logged; answers 0, or 2 on failure.
    void HandleDeviceEvent(std::shared_ptr<CRequest> request);
};

}  // namespace ircontrol

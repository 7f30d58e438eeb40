// Turns every call on the IR control into a job on the service's queue, so host threads never
// wait for the IR blaster. Init/Deinit/Handle* run on the caller's thread; the jobs run on the
// queue's worker. Once the queue has stopped, every enqueue throws std::runtime_error (logged
// here and re-thrown).
#pragma once

#include "common/CNoncopyable.h"
#include "common/Types.h"
#include "core/CIRControl.h"

namespace ircontrol {

class CRecvController : private CNoncopyable {
public:
    CRecvController() = default;
    virtual ~CRecvController();

    void Init();    // queues the init job (the queue's worker starts with its first use)
    void Deinit();  // stops the queue for good, then de-initialises the IR control
    void HandleKeyEvent(RequestSharedPtr request);
    void HandleDeviceEvent(RequestSharedPtr request);

private:
    void _AddJobToQueue(ThreadJob job);

    CIRControl irControl_;
};

}  // namespace ircontrol

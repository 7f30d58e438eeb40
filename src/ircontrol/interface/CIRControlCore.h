// Guards the service's start and stop with a flag and a recursive lock, and owns the host
// binding. The plugin's entry points drive its one process-wide instance from host threads.
// Init never lets an exception escape; Deinit's stop path is non-throwing.
#pragma once

#include <mutex>

#include "interface/CIRControlService.h"

namespace ircontrol {

class CIRControlCore {
public:
    CIRControlCore() = default;
    CIRControlCore(const CIRControlCore&) = delete;
    CIRControlCore& operator=(const CIRControlCore&) = delete;

    // Starts the service unless started; a failed start is logged and rolled back.
    void Init();
    // Stops the service if started.
    void Deinit();

private:
    void init();
    void deinit() noexcept;

    std::recursive_mutex mutex_;
    bool initialised_ = false;
    CIRControlService service_;
};

}  // namespace ircontrol

// The plugin's two exported entry points, called by the host framework with C linkage from its
// own threads. Neither lets an exception unwind into the host.
#include <exception>

#include "SystemInfoUtil.h"
#include "common/ServiceLog.h"
#include "interface/CIRControlCore.h"

namespace {
// The one core of this load of the library: built at load, destroyed at unload without calling
// the host (the host stops the service with DestroyPlugin first).
ircontrol::CIRControlCore gIRControlCore;
}  // namespace

extern "C" __attribute__((visibility("default"))) int CreatePlugin() {
    try {
        IRC_LOGE("create ircontrol service plugin, year(%d)", SystemInfoUtil::GetTVYear());
        gIRControlCore.Init();
    } catch (const std::exception& e) {
        IRC_LOGE("CreatePlugin: %s", e.what());
    } catch (...) {
        IRC_LOGE("CreatePlugin: unknown exception");
    }
    return 1;
}

extern "C" __attribute__((visibility("default"))) int DestroyPlugin() {
    try {
        IRC_LOGE("destroy ircontrol service plugin");
        gIRControlCore.Deinit();
    } catch (const std::exception& e) {
        IRC_LOGE("DestroyPlugin: %s", e.what());
    } catch (...) {
        IRC_LOGE("DestroyPlugin: unknown exception");
    }
    return 1;
}

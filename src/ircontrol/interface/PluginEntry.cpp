// The plugin's two exported entry points, called by the host framework with C linkage.
#include "SystemInfoUtil.h"
#include "common/ServiceLog.h"

extern "C" __attribute__((visibility("default"))) int CreatePlugin() {
    IRC_LOGE("create ircontrol service plugin, year(%d)", SystemInfoUtil::GetTVYear());
    return 1;
}

extern "C" __attribute__((visibility("default"))) int DestroyPlugin() {
    IRC_LOGE("destroy ircontrol service plugin");
    return 1;
}

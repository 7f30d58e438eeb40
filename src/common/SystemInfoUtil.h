// Static queries of the TV's feature configuration (system_info). Never throw; log and fall back.
#pragma once

class SystemInfoUtil {
public:
    SystemInfoUtil() = delete;

    // Two-digit model year (e.g. 22), or -1 when it cannot be read.
    static int GetTVYear();
    // Whether this TV supports the IR control service: year 22 or later and the MBR feature flag.
    static bool IsSupportIrService();
};

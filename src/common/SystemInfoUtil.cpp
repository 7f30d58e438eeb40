#include "SystemInfoUtil.h"

#include <system_info.h>

#include "Log.h"

namespace {
constexpr char kTvYearKey[] = "com.korvan/featureconf/product.tv_year";
constexpr char kMbrSupportKey[] = "com.korvan/featureconf/mbr_support";
// The IR control service exists on models from this year on.
constexpr int kFirstIrServiceYear = 22;
}  // namespace

int SystemInfoUtil::GetTVYear() {
    int year = -1;
    if (system_info_get_custom_int(kTvYearKey, &year) != 0) {
        COMMON_LOGE("FMS tv_year failed to read");
        return -1;
    }
    return year;
}

bool SystemInfoUtil::IsSupportIrService() {
    // The year is checked first: the feature key is only meaningful on new enough models.
    if (GetTVYear() < kFirstIrServiceYear) {
        COMMON_LOGE("ircontrol service is Not Supported Under 22 year TV");
        return false;
    }
    bool supported = false;
    if (system_info_get_custom_bool(kMbrSupportKey, &supported) != 0) {
        COMMON_LOGE("Error to get system info for MBR SUPPORT");
        return false;
    }
    COMMON_LOGE("ircontrol service, is_supported: %d", supported ? 1 : 0);
    return supported;
}

#include "SystemInfoUtil.h"

#include <gtest/gtest.h>

#include <optional>

#include "sim/Simulator.h"

namespace {

// Nothing in the plugin asks IsSupportIrService (its start only logs the year, which the
// end-to-end lifecycle test pins): one row per answer and reason. The year comes first, and
// below 22 the flag is never read.
TEST(SystemInfoUtilTest, SupportNeedsYear22AndTheFeatureFlagInThatOrder) {
    struct Case { std::optional<int> year; std::optional<bool> mbr; bool supported; const char* line; };
    const Case cases[] = {
        {std::nullopt, true, false, "FMS tv_year failed to read"},
        {21, std::nullopt, false, "ircontrol service is Not Supported Under 22 year TV"},
        {22, true, true, "ircontrol service, is_supported: 1"},
        {22, false, false, "ircontrol service, is_supported: 0"},
        {23, std::nullopt, false, "Error to get system info for MBR SUPPORT"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        sim::ResetAll();
        sim::SystemInfo::SetYear(c.year);
        sim::SystemInfo::SetMbrSupport(c.mbr);
        EXPECT_EQ(SystemInfoUtil::IsSupportIrService(), c.supported);
        EXPECT_TRUE(sim::Log::Contains(c.line, "VYRF_COMMON"));
    }
}

}  // namespace

#include "SystemInfoUtil.h"

#include <gtest/gtest.h>

#include <optional>

#include "sim/Simulator.h"

namespace {

// The service needs year 22 and then the feature flag; below 22 the flag is never read. An
// unreadable year is -1 with one error line.
TEST(SystemInfoUtilTest, SupportNeedsYear22AndTheFeatureFlagInThatOrder) {
    struct Case { std::optional<int> year; std::optional<bool> mbr; bool supported; const char* line; };
    const Case cases[] = {
        {std::nullopt, true, false, "ircontrol service is Not Supported Under 22 year TV"},
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
        EXPECT_EQ(sim::Log::Contains("MBR SUPPORT"), c.year.value_or(0) >= 22 && !c.mbr);
        sim::Log::Clear();
        EXPECT_EQ(SystemInfoUtil::GetTVYear(), c.year.value_or(-1));
        const auto lines = sim::Log::Lines();
        ASSERT_EQ(lines.size(), c.year ? 0u : 1u);
        if (c.year) continue;
        EXPECT_EQ(lines[0].tag + std::to_string(lines[0].priority), "VYRF_COMMON6");
        EXPECT_NE(lines[0].text.find("SystemInfoUtil.cpp : GetTVYear("), std::string::npos);
        EXPECT_NE(lines[0].text.find(")  FMS tv_year failed to read"), std::string::npos);
    }
}

}  // namespace

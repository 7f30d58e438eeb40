#include "SystemInfoUtil.h"

#include <gtest/gtest.h>

#include <optional>

#include "sim/Simulator.h"

namespace {

class SystemInfoUtilTest : public ::testing::Test {
protected:
    void SetUp() override { sim::ResetAll(); }
};

TEST_F(SystemInfoUtilTest, YearIsReadOrMinusOneWithAnErrorLine) {
    sim::SystemInfo::SetYear(22);
    EXPECT_EQ(SystemInfoUtil::GetTVYear(), 22);
    EXPECT_FALSE(sim::Log::Contains("FMS tv_year failed to read"));
    sim::SystemInfo::SetYear(std::nullopt);
    EXPECT_EQ(SystemInfoUtil::GetTVYear(), -1);
    auto lines = sim::Log::Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].tag, "VYRF_COMMON");
    EXPECT_EQ(lines[0].priority, 6);
    EXPECT_NE(lines[0].text.find("SystemInfoUtil.cpp : GetTVYear("), std::string::npos);
    EXPECT_NE(lines[0].text.find(")  FMS tv_year failed to read"), std::string::npos);
}

TEST_F(SystemInfoUtilTest, SupportNeedsYear22AndTheFeatureFlagInThatOrder) {
    struct Case {
        std::optional<int> year;
        std::optional<bool> mbr;
        bool supported;
        const char* line;
    };
    const Case cases[] = {
        {std::nullopt, true, false, "ircontrol service is Not Supported Under 22 year TV"},
        {21, true, false, "ircontrol service is Not Supported Under 22 year TV"},
        {22, true, true, "ircontrol service, is_supported: 1"},
        {22, false, false, "ircontrol service, is_supported: 0"},
        {23, std::nullopt, false, "Error to get system info for MBR SUPPORT"},
    };
    for (const auto& c : cases) {
        sim::Log::Clear();
        sim::SystemInfo::SetYear(c.year);
        sim::SystemInfo::SetMbrSupport(c.mbr);
        EXPECT_EQ(SystemInfoUtil::IsSupportIrService(), c.supported) << c.line;
        EXPECT_TRUE(sim::Log::Contains(c.line, "VYRF_COMMON")) << c.line;
    }
    // Below year 22 the feature key is never consulted: an unreadable one changes nothing.
    sim::Log::Clear();
    sim::SystemInfo::SetYear(21);
    sim::SystemInfo::SetMbrSupport(std::nullopt);
    EXPECT_FALSE(SystemInfoUtil::IsSupportIrService());
    EXPECT_FALSE(sim::Log::Contains("MBR SUPPORT"));
}

}  // namespace

// Cutting samples into captures: where a capture begins and ends, what is merged, what is lost.
#include "infrared/receive/CCaptureBuilder.h"

#include <gtest/gtest.h>

namespace infrared {
namespace {

using Durations = std::vector<std::uint32_t>;

TEST(CCaptureBuilderTest, EndsAtALongSpaceKeepingTheLastMark) {
    CCaptureBuilder builder(10000);
    EXPECT_FALSE(builder.Space(3000));  // leading silence is nobody's
    EXPECT_FALSE(builder.Mark(500));
    EXPECT_FALSE(builder.Space(9999));
    EXPECT_FALSE(builder.Mark(500));
    EXPECT_FALSE(builder.Space(6000));
    const auto done = builder.Space(4000);  // two samples that add up to the end space
    ASSERT_TRUE(done);
    EXPECT_EQ(done->durations, (Durations{500, 9999, 500}));
    EXPECT_EQ(done->startUs, 3000u);
    EXPECT_FALSE(builder.Collecting());
    EXPECT_FALSE(builder.End()) << "nothing left over";
}

TEST(CCaptureBuilderTest, MergesSplitSamplesAndIgnoresEmptyMarks) {
    CCaptureBuilder builder;
    builder.Mark(100);
    builder.Mark(0);
    builder.Mark(200);
    builder.Space(50);
    builder.Space(50);
    builder.Mark(300);
    EXPECT_EQ(builder.End()->durations, (Durations{300, 100, 300}));
}

TEST(CCaptureBuilderTest, CarrierBelongsToTheCaptureItArrivedIn) {
    CCaptureBuilder builder;
    builder.Mark(100);
    builder.Carrier(38000);
    EXPECT_EQ(builder.End()->carrier, 38000u);
    builder.Mark(100);
    EXPECT_EQ(builder.End()->carrier, 0u);
}

TEST(CCaptureBuilderTest, DiscardDropsThePressUnderWayOnly) {
    CCaptureBuilder builder;
    builder.Mark(100);
    builder.Space(100);
    builder.Discard();
    EXPECT_FALSE(builder.Collecting());
    builder.Mark(700);
    const auto done = builder.End();
    ASSERT_TRUE(done);
    EXPECT_EQ(done->durations, (Durations{700}));
    EXPECT_EQ(done->startUs, 200u) << "the clock keeps running through lost samples";
}

TEST(CCaptureBuilderTest, AnEndlessBurstIsBoundedAndStillEnds) {
    CCaptureBuilder builder;
    for (int i = 0; i < 100000; ++i) {
        builder.Mark(100);
        builder.Space(100);
    }
    const auto done = builder.Space(CCaptureBuilder::kEndSpace);
    ASSERT_TRUE(done);
    EXPECT_LE(done->durations.size(), CCaptureBuilder::kMaxDurations);
    EXPECT_EQ(done->durations.size() % 2, 1u);
}

TEST(CCaptureBuilderTest, HugeSamplesSaturateInsteadOfWrapping) {
    CCaptureBuilder builder(0xffffffffu);
    builder.Mark(0xfffffff0u);
    builder.Mark(0x100u);
    EXPECT_EQ(builder.End()->durations, (Durations{0xffffffffu}));
}

}  // namespace
}  // namespace infrared

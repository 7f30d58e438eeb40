// Cutting samples into captures: where a capture begins and ends, what is merged, what is lost.
#include "infrared/receive/CCaptureBuilder.h"

#include <gtest/gtest.h>

namespace infrared {
namespace {

// Samples are given in turn: 'M'ark, 'S'pace, 'D'iscard, 'E'nd. A carrier belonging to the capture
// it arrived in is pinned through the mode2 and lirc readers.
TEST(CCaptureBuilderTest, CutsMergesAndTimesCaptures) {
    const struct {
        const char* name;
        std::vector<std::pair<char, std::uint32_t>> samples;
        std::vector<Capture> captures;  // durations, carrier, start
    } cases[] = {
        // Leading silence is nobody's; two spaces that add up to the end space end it.
        {"ends at a long space keeping the last mark",
         {{'S', 3000}, {'M', 500}, {'S', 9999}, {'M', 500}, {'S', 6000}, {'S', 4000}},
         {{{500, 9999, 500}, 0, 3000}}},
        {"split samples merged, empty marks ignored",
         {{'M', 100}, {'M', 0}, {'M', 200}, {'S', 50}, {'S', 50}, {'M', 300}, {'E', 0}},
         {{{300, 100, 300}, 0, 0}}},
        // The clock keeps running through lost samples.
        {"discard drops the press under way only",
         {{'M', 100}, {'S', 100}, {'D', 0}, {'M', 700}, {'E', 0}},
         {{{700}, 0, 200}}},
        {"huge samples saturate instead of wrapping",
         {{'M', 0xfffffff0u}, {'M', 0x100u}, {'E', 0}},
         {{{0xffffffffu}, 0, 0}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CCaptureBuilder builder(10000);
        std::vector<Capture> captures;
        for (const auto& [kind, value] : c.samples) {
            std::optional<Capture> done;
            if (kind == 'M') done = builder.Mark(value);
            if (kind == 'S') done = builder.Space(value);
            if (kind == 'D') builder.Discard();
            if (kind == 'E') done = builder.End();
            if (done) captures.push_back(*done);
        }
        ASSERT_EQ(captures.size(), c.captures.size());
        for (std::size_t i = 0; i < captures.size(); ++i) {
            EXPECT_EQ(std::tie(captures[i].durations, captures[i].carrier, captures[i].startUs),
                      std::tie(c.captures[i].durations, c.captures[i].carrier, c.captures[i].startUs));
        }
    }
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
}

}  // namespace
}  // namespace infrared

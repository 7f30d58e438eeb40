// Pronto hex: carrier and durations from the frequency word, and refusals for what is not a
// learned Pronto code; written codes read back.
#include "infrared/encode/CProntoCode.h"

#include <gtest/gtest.h>

#include "ErrorOf.h"

namespace infrared {
namespace {

TEST(CProntoCodeTest, ConvertsPeriodsToMicrosecondsAtTheCodesCarrier) {
    // 0x006D = 109 units of 0.241246 us: a 26.3 us period, 38.0 kHz.
    const PulseTrain train = CProntoCode::Parse("0000 006D 0002 0001 0156 00AB 0015 0040 0015 0600", 25);
    EXPECT_EQ(std::tie(train.carrier, train.dutyCycle), std::make_tuple(38029u, 25u));
    // 342, 171, 21, 64, 21 periods of 26.296 us; the last space becomes the gap.
    EXPECT_EQ(train.durations, (std::vector<std::uint32_t>{8993, 4497, 552, 1683, 552}));
    EXPECT_EQ(train.trailingGap, 40390u);
}

TEST(CProntoCodeTest, RefusesWhatIsNotALearnedCode) {
    const std::pair<const char*, const char*> cases[] = {
        {"0000 006D 0001", "at least 4 words"},
        {"0100 006D 0001 0000 0010 0020", "only learned (0000)"},
        {"0000 0000 0001 0000 0010 0020", "frequency word must not be 0"},
        {"0000 006D 0000 0000", "no bursts"},
        {"0000 006D 0002 0000 0010 0020", "do not match"},
        {"0000 006D 0001 0000 0010 0000", "a burst of 0 periods"},
        {"0000 006D 0001 0000 0010 00G0", "not a 4-digit hex word"},
    };
    for (const auto& [text, says] : cases) {
        const std::string error = irtest::ErrorOf<std::invalid_argument>([&] { CProntoCode::Parse(text); });
        EXPECT_NE(error.find(says), std::string::npos) << text << " -> " << error;
    }
}

// A written code reads back within a carrier period; an unknown carrier is written as 38 kHz, and
// what a word cannot hold is clamped, never wrapped. (A known carrier: the frame decoder's tests.)
TEST(CProntoCodeTest, FormatWritesUnknownCarriersAs38kHzAndClampsLongDurations) {
    const PulseTrain back = CProntoCode::Parse(CProntoCode::Format({563, 5000000, 563}, 0, 40000));
    EXPECT_NEAR(back.carrier, 38000, 380);
    ASSERT_EQ(back.durations.size(), 3u);
    EXPECT_NEAR(back.durations[0], 563, 27);
    EXPECT_NEAR(back.durations[1], 0xffff * 1e6 / 38000, 0xffff * 1e6 / 38000 / 500);  // the carrier word rounds
    EXPECT_NEAR(back.trailingGap, 40000, 27);
}

}  // namespace
}  // namespace infrared

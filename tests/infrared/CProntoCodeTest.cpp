// Pronto hex: carrier and durations from the frequency word, once and repeat sequences, and
// refusals for what is not a learned Pronto code.
#include "infrared/encode/CProntoCode.h"

#include <gtest/gtest.h>

namespace infrared {
namespace {

TEST(CProntoCodeTest, ConvertsPeriodsToMicrosecondsAtTheCodesCarrier) {
    // 0x006D = 109 units of 0.241246 us: a 26.3 us period, 38.0 kHz.
    const PulseTrain train = CProntoCode::Parse("0000 006D 0002 0001 0156 00AB 0015 0040 0015 0600", 25);
    EXPECT_EQ(train.carrier, 38029u);
    EXPECT_EQ(train.dutyCycle, 25u);
    // 342, 171, 21, 64, 21 periods of 26.296 us; the last space becomes the gap.
    EXPECT_EQ(train.durations, (std::vector<std::uint32_t>{8993, 4497, 552, 1683, 552}));
    EXPECT_EQ(train.trailingGap, 40390u);
}

TEST(CProntoCodeTest, RefusesWhatIsNotALearnedCode) {
    struct Case {
        const char* text;
        const char* says;
    } cases[] = {
        {"0000 006D 0001", "at least 4 words"},
        {"0100 006D 0001 0000 0010 0020", "only learned (0000)"},
        {"0000 0000 0001 0000 0010 0020", "frequency word must not be 0"},
        {"0000 006D 0000 0000", "no bursts"},
        {"0000 006D 0002 0000 0010 0020", "do not match"},
        {"0000 006D 0001 0000 0010 0000", "a burst of 0 periods"},
        {"0000 006D 0001 0000 0010 00G0", "not a 4-digit hex word"},
        {"0000 006D 0001 0000 0010 020", "not a 4-digit hex word"},
    };
    for (const auto& c : cases) {
        try {
            CProntoCode::Parse(c.text);
            ADD_FAILURE() << "accepted: " << c.text;
        } catch (const std::invalid_argument& e) {
            EXPECT_NE(std::string(e.what()).find(c.says), std::string::npos) << c.text << " -> " << e.what();
        }
    }
}

// Written codes read back to the same timings, within one carrier period; what a word cannot
// hold is clamped, never wrapped.
TEST(CProntoCodeTest, FormatReadsBack) {
    struct Case {
        std::uint32_t carrier;
        std::vector<std::uint32_t> durations;
        std::uint32_t gap;
        std::uint32_t expectedCarrier;
    };
    const Case cases[] = {
        {38000, {9000, 4500, 563, 1688, 563}, 40000, 38000},
        {36000, {889, 889, 1778}, 90000, 36000},
        {0, {500}, 20000, 38000},  // unknown carrier: written as 38 kHz
    };
    for (const auto& c : cases) {
        const PulseTrain back = CProntoCode::Parse(CProntoCode::Format(c.durations, c.carrier, c.gap));
        EXPECT_NEAR(back.carrier, c.expectedCarrier, c.expectedCarrier / 100);
        ASSERT_EQ(back.durations.size(), c.durations.size());
        const double period = 1e6 / c.expectedCarrier;
        for (std::size_t i = 0; i < c.durations.size(); ++i) EXPECT_NEAR(back.durations[i], c.durations[i], period);
        EXPECT_NEAR(back.trailingGap, c.gap, period);
    }
    const PulseTrain clamped = CProntoCode::Parse(CProntoCode::Format({5000000}, 38000, 5000000));
    EXPECT_NEAR(clamped.durations[0], 0xffff * 1e6 / 38000, 0xffff * 1e6 / 38000 / 500);  // the carrier word rounds
}

}  // namespace
}  // namespace infrared

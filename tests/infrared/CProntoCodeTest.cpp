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
        {"", "at least 4 words"},
        {"0000 006D 0001", "at least 4 words"},
        {"0100 006D 0001 0000 0010 0020", "only learned (0000)"},
        {"0000 0000 0001 0000 0010 0020", "frequency word must not be 0"},
        {"0000 006D 0000 0000", "no bursts"},
        {"0000 006D 0002 0000 0010 0020", "do not match"},
        {"0000 006D 0001 0000 0010 0020 0030", "do not match"},
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

}  // namespace
}  // namespace infrared

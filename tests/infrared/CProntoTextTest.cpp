// Pronto hex texts into captures, and lines that are not learned codes refused with file:line.
#include "infrared/receive/CProntoText.h"

#include <gtest/gtest.h>

#include "ErrorOf.h"
#include "infrared/encode/CProntoCode.h"
#include "infrared/formats/CFormatError.h"

namespace infrared {
namespace {

// A learned code at 38 kHz (word 006D): two bursts once, one repeated.
const char* const kCode = "0000 006D 0002 0001 0157 00AC 0015 0040 0015 0E6C";

TEST(CProntoTextTest, ReadsOneCapturePerCodeWithItsCarrier) {
    const std::string text = std::string("# from a code list\n\n") + kCode + "\n  " + kCode + "  \n";
    const auto captures = CProntoText::Parse(text, "codes.txt");
    const PulseTrain train = CProntoCode::Parse(kCode);
    ASSERT_EQ(captures.size(), 2u);
    EXPECT_EQ(std::tie(captures[1].durations, captures[1].carrier, captures[1].startUs),
              std::make_tuple(train.durations, train.carrier, train.OnAirMicroseconds() + train.trailingGap));
}

TEST(CProntoTextTest, RefusesALineThatIsNotALearnedCode) {
    const std::pair<std::string, std::string> cases[] = {
        {std::string(kCode) + "\n0000 006D 0001\n", "p:2: a Pronto code needs at least 4 words"},
        {"0000 006D 0001 0000 0010 +fff\n", "p:1: '+fff' is not a 4-digit hex word"},
        {"0000 " + std::string(20000, 'A') + "\n", "p:1: longer than a Pronto code can be"},
    };
    for (const auto& c : cases) {
        const std::string error = irtest::ErrorOf<CFormatError>([&] { CProntoText::Parse(c.first, "p"); });
        EXPECT_EQ(error.rfind(c.second, 0), 0u) << error;
    }
}

}  // namespace
}  // namespace infrared

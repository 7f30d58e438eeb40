// What lircd sends, worked out by hand from lircd.conf's definitions for small remotes.
#include "infrared/encode/CLircdEncoder.h"

#include <gtest/gtest.h>

namespace infrared {
namespace {

using Durations = std::vector<std::uint32_t>;

PulseTrain Send(const std::string& body) {
    const auto remotes = CLircdConf::Parse("begin remote\n  name r\n" + body + "end remote\n", "t.conf");
    return CLircdEncoder::Encode(remotes.at(0), remotes.at(0).buttons.at(0));
}

TEST(CLircdEncoder, SendsWhatLircdSendsForEachEncodingWithTheRemotesCarrier) {
    struct Case { const char* what; std::string body; Durations durations; std::uint32_t gap; };
    const std::string codes = "  begin codes\n    A 0x2\n  end codes\n";
    const Case cases[] = {
        {"space: header, pre_data then data MSB first, ptrail, gap after the trailing space",
         "  bits 2\n  flags SPACE_ENC\n  header 900 450\n  one 100 300\n  zero 100 100\n  ptrail 50\n"
         "  pre_data_bits 1\n  pre_data 1\n  gap 5000\n" + codes,
         {900, 450, 100, 300, 100, 300, 100, 100, 50}, 5000},
        {"REVERSE sends each field LSB first",
         "  bits 2\n  flags SPACE_ENC|REVERSE\n  one 100 300\n  zero 100 100\n  ptrail 50\n  gap 5000\n" + codes,
         {100, 100, 100, 300, 50}, 5000},
        {"CONST_LENGTH pads the whole signal to the gap",
         "  bits 2\n  flags SPACE_ENC|CONST_LENGTH\n  one 100 300\n  zero 100 100\n  ptrail 50\n  gap 5000\n" + codes,
         {100, 300, 100, 100, 50}, 5000 - 650},
        {"no ptrail: the last space runs into the gap",
         "  bits 2\n  flags SPACE_ENC\n  one 100 300\n  zero 100 100\n  gap 5000\n" + codes,
         {100, 300, 100}, 5100},
        {"RC5: 1 is space then pulse, plead fills the first half, halves merge",
         "  bits 2\n  flags RC5\n  one 889 889\n  zero 889 889\n  plead 889\n  gap 90000\n" + codes,
         {889, 889, 1778}, 90889},
        {"RC6: rc6_mask doubles its bit, header first",
         "  bits 3\n  flags RC6\n  header 2666 889\n  one 444 444\n  zero 444 444\n  rc6_mask 0x2\n  gap 90000\n"
         "  begin codes\n    A 0x5\n  end codes\n",
         {2666, 889 + 444, 444 + 888, 888 + 444, 444}, 90000},
        {"min_repeat sends the repeat code after the gap",
         "  bits 1\n  flags SPACE_ENC\n  header 900 450\n  one 100 300\n  zero 100 100\n  ptrail 50\n"
         "  repeat 900 225\n  min_repeat 1\n  gap 5000\n  begin codes\n    A 0x1\n  end codes\n",
         {900, 450, 100, 300, 50, 5000, 900, 225, 50}, 5000},
        {"two codes on one button are sent in turn",
         "  bits 1\n  flags SPACE_ENC\n  one 100 300\n  zero 100 100\n  ptrail 50\n  gap 5000\n"
         "  begin codes\n    A 0x1 0x0\n  end codes\n",
         {100, 300, 50, 5000, 100, 100, 50}, 5000},
        {"raw codes as written, then the gap",
         "  flags RAW_CODES\n  gap 7000\n  begin raw_codes\n    name A\n      100 200 300\n  end raw_codes\n",
         {100, 200, 300}, 7000},
    };
    for (const auto& c : cases) {
        const PulseTrain train = Send(c.body);
        EXPECT_EQ(std::tie(train.durations, train.trailingGap), std::tie(c.durations, c.gap)) << c.what;
    }
    // The remote's carrier and duty cycle go with the train; without a gap, lircd's default.
    const PulseTrain train = Send("  bits 1\n  one 1 1\n  zero 1 1\n  frequency 36000\n  duty_cycle 25\n"
                                  "  begin codes\n    A 1\n  end codes\n");
    EXPECT_EQ(std::make_tuple(train.carrier, train.dutyCycle, train.trailingGap),
              std::make_tuple(36000u, 25u, CLircdEncoder::kDefaultGap + 1));
}

}  // namespace
}  // namespace infrared

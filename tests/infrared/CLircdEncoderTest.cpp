// What lircd sends, worked out by hand from lircd.conf's definitions for small remotes.
#include "infrared/encode/CLircdEncoder.h"

#include <gtest/gtest.h>

namespace infrared {
namespace {

using Durations = std::vector<std::uint32_t>;

PulseTrain Send(const std::string& body) {
    const auto remotes = CLircdConf::Parse("begin remote\nname r\n" + body + "end remote\n", "t.conf");
    return CLircdEncoder::Encode(remotes.at(0), remotes.at(0).buttons.at(0));
}

TEST(CLircdEncoder, SendsWhatLircdSendsForEachEncodingWithTheRemotesCarrier) {
    const std::string codes = "begin codes\nA 0x2\nend codes\n", timing = "one 100 300\nzero 100 100\n";
    const std::tuple<std::string, Durations, std::uint32_t> cases[] = {
        // space: header, pre_data then data MSB first, ptrail, gap after the trailing space
        {"bits 2\nflags SPACE_ENC\nheader 900 450\n" + timing + "ptrail 50\npre_data_bits 1\npre_data 1\n"
         "gap 5000\n" + codes,
         {900, 450, 100, 300, 100, 300, 100, 100, 50}, 5000},
        // REVERSE sends each field LSB first
        {"bits 2\nflags SPACE_ENC|REVERSE\n" + timing + "ptrail 50\ngap 5000\n" + codes, {100, 100, 100, 300, 50},
         5000},
        // CONST_LENGTH pads the whole signal to the gap
        {"bits 2\nflags SPACE_ENC|CONST_LENGTH\n" + timing + "ptrail 50\ngap 5000\n" + codes,
         {100, 300, 100, 100, 50}, 5000 - 650},
        // no ptrail: the last space runs into the gap
        {"bits 2\nflags SPACE_ENC\n" + timing + "gap 5000\n" + codes, {100, 300, 100}, 5100},
        // RC5: 1 is space then pulse, plead fills the first half, halves merge
        {"bits 2\nflags RC5\none 889 889\nzero 889 889\nplead 889\ngap 90000\n" + codes, {889, 889, 1778}, 90889},
        // RC6: rc6_mask doubles its bit, header first
        {"bits 3\nflags RC6\nheader 2666 889\none 444 444\nzero 444 444\nrc6_mask 0x2\ngap 90000\n"
         "begin codes\nA 0x5\nend codes\n", {2666, 889 + 444, 444 + 888, 888 + 444, 444}, 90000},
        // min_repeat sends the repeat code after the gap
        {"bits 1\nflags SPACE_ENC\nheader 900 450\n" + timing + "ptrail 50\nrepeat 900 225\nmin_repeat 1\ngap 5000\n"
         "begin codes\nA 0x1\nend codes\n", {900, 450, 100, 300, 50, 5000, 900, 225, 50}, 5000},
        // two codes on one button are sent in turn
        {"bits 1\nflags SPACE_ENC\n" + timing + "ptrail 50\ngap 5000\nbegin codes\nA 0x1 0x0\nend codes\n",
         {100, 300, 50, 5000, 100, 100, 50}, 5000},
        // raw codes as written, then the gap
        {"flags RAW_CODES\ngap 7000\nbegin raw_codes\nname A\n100 200 300\nend raw_codes\n", {100, 200, 300}, 7000},
    };
    for (const auto& [body, durations, gap] : cases) {
        const PulseTrain train = Send(body);
        EXPECT_EQ(std::tie(train.durations, train.trailingGap), std::tie(durations, gap)) << body;
    }
    // The remote's carrier and duty cycle go with the train; without a gap, lircd's default.
    const PulseTrain train = Send("bits 2\none 1 1\nzero 1 1\nfrequency 36000\nduty_cycle 25\n" + codes);
    EXPECT_EQ(std::make_tuple(train.carrier, train.dutyCycle, train.trailingGap),
              std::make_tuple(36000u, 25u, CLircdEncoder::kDefaultGap + 1));
}

}  // namespace
}  // namespace infrared

// mode2 text into captures: what lirc's tools and the dry-run sink write, and hostile input
// refused with file:line.
#include "infrared/receive/CMode2Text.h"

#include <gtest/gtest.h>

#include <random>

#include "ErrorOf.h"
#include "infrared/formats/CFormatError.h"

namespace infrared {
namespace {

// A timeout or a comment line (the dry-run sink's header of each transmission) ends a capture,
// however short the silence after it; a carrier belongs to the capture after it.
TEST(CMode2TextTest, ReadsSamplesCommentsTimeoutsAndCarriers) {
    const std::string text =
        "# recorded by mode2\nspace 16777215\npulse 9000\nspace 4500\r\n  pulse\t560  \ntimeout 125000\n"
        "carrier 36000\npulse 300\n\nspace 300\npulse 300\n"
        "# the next transmission\nspace 100\npulse 200\n";
    const auto captures = CMode2Text::Parse(text, "a.txt");
    const std::uint64_t second = 16777215u + 9000 + 4500 + 560 + 125000;
    const Capture expected[] = {{{9000, 4500, 560}, 0, 16777215u}, {{300, 300, 300}, 36000, second},
                                {{200}, 0, second + 1000}};
    ASSERT_EQ(captures.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(std::tie(captures[i].durations, captures[i].carrier, captures[i].startUs),
                  std::tie(expected[i].durations, expected[i].carrier, expected[i].startUs));
    }
}

TEST(CMode2TextTest, RefusesABadLineWithItsNumberAndReason) {
    const std::pair<const char*, const char*> cases[] = {
        {"pulse 100\nspce 100\n", "f:2: 'spce' is not pulse, space, timeout or carrier"},
        {"pulse 12x\n", "f:1: expected a whole number"},
        {"pulse 60000001\n", "f:1: expected a whole number"},
    };
    for (const auto& c : cases) {
        const std::string error = irtest::ErrorOf<CFormatError>([&] { CMode2Text::Parse(c.first, "f"); });
        EXPECT_EQ(error.rfind(c.second, 0), 0u) << error;
    }
}

// No fuzz target reads mode2 text: random lines of its words are read whole or refused.
TEST(CMode2TextTest, RandomBytesAreReadOrRefusedNeverMore) {
    std::mt19937 random(20261123);
    const std::string alphabet = "pulsespacetimeoutcarrier 0123456789#\n\t\r-x";
    for (int round = 0; round < 2000; ++round) {
        std::string text(random() % 200, ' ');
        for (char& c : text) c = alphabet[random() % alphabet.size()];
        try {
            for (const auto& capture : CMode2Text::Parse(text, "r")) EXPECT_EQ(capture.durations.size() % 2, 1u);
        } catch (const CFormatError& error) {
            EXPECT_EQ(std::string(error.what()).rfind("r:", 0), 0u) << error.what();
        }
    }
}

}  // namespace
}  // namespace infrared

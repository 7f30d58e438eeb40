// mode2 text into captures: what lirc's tools and the dry-run sink write, and hostile input
// refused with file:line.
#include "infrared/receive/CMode2Text.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "FileTree.h"
#include "IrsimReceive.h"
#include "infrared/encode/CKeyEncoder.h"
#include "infrared/formats/CFormatError.h"
#include "infrared/transmit/CMode2Sink.h"

namespace infrared {
namespace {

using Durations = std::vector<std::uint32_t>;

TEST(CMode2TextTest, ReadsSamplesCommentsTimeoutsAndCarriers) {
    const std::string text =
        "# recorded by mode2\n"
        "space 16777215\n"
        "pulse 9000\n"
        "space 4500\r\n"
        "  pulse\t560  \n"
        "timeout 125000\n"
        "carrier 36000\n"
        "pulse 300\n"
        "\n"
        "space 300\n"
        "pulse 300\n";
    const auto captures = CMode2Text::Parse(text, "a.txt");
    ASSERT_EQ(captures.size(), 2u);
    EXPECT_EQ(captures[0].durations, (Durations{9000, 4500, 560}));
    EXPECT_EQ(captures[0].startUs, 16777215u);
    EXPECT_EQ(captures[1].durations, (Durations{300, 300, 300}));
    EXPECT_EQ(captures[1].carrier, 36000u);
    EXPECT_EQ(captures[1].startUs, 16777215u + 9000 + 4500 + 560 + 125000);
}

TEST(CMode2TextTest, RefusesABadLineWithItsNumberAndReason) {
    struct Case {
        const char* text;
        const char* message;
    };
    const std::vector<Case> cases = {
        {"pulse 100\nspce 100\n", "f:2: 'spce' is not pulse, space, timeout or carrier"},
        {"pulse 12x\n", "f:1: expected a whole number"},
        {"pulse 60000001\n", "f:1: expected a whole number"},
        {"# ok\n\nspace 10\nPULSE 10\n", "f:4: 'PULSE'"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        try {
            CMode2Text::Parse(c.text, "f");
            ADD_FAILURE() << "accepted";
        } catch (const CFormatError& error) {
            EXPECT_EQ(std::string(error.what()).rfind(c.message, 0), 0u) << error.what();
        }
    }
}

TEST(CMode2TextTest, RandomBytesAreReadOrRefusedNeverMore) {
    std::mt19937 random(20261123);
    const std::string alphabet = "pulsespacetimeoutcarrier 0123456789#\n\t\r-x";
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        const int length = static_cast<int>(random() % 200);
        for (int i = 0; i < length; ++i) text += alphabet[random() % alphabet.size()];
        try {
            for (const auto& capture : CMode2Text::Parse(text, "r")) {
                ASSERT_EQ(capture.durations.size() % 2, 1u) << text;
            }
        } catch (const CFormatError& error) {
            ASSERT_EQ(std::string(error.what()).rfind("r:", 0), 0u) << error.what();
        }
    }
}

TEST(CMode2TextTest, TellsMode2FromOtherTexts) {
    EXPECT_TRUE(CMode2Text::Looks("# header\n\n  pulse 100\n"));
    EXPECT_TRUE(CMode2Text::Looks("timeout 100\n"));
    EXPECT_FALSE(CMode2Text::Looks("0000 006D 0000 0001 0010 0010\n"));
    EXPECT_FALSE(CMode2Text::Looks("Filetype: IR signals file\n"));
    EXPECT_FALSE(CMode2Text::Looks("# only a comment\n"));
}

// Each transmission the dry-run sink writes reads back as one capture with its pulses exactly,
// however short the protocol's gap (the sink's header line separates them).
TEST(CMode2TextTest, ReadsOneCapturePerDryRunTransmission) {
    const std::string path = irtest::TempDir() + "/sink.txt";
    std::vector<Durations> sent;
    {
        CMode2Sink sink(path);
        for (const Protocol protocol : {Protocol::Nec, Protocol::Rc5, Protocol::Sony12, Protocol::Sharp}) {
            Transmission t;
            t.codeset = "T";
            t.what = "key";
            t.emitter = 1;
            t.train = CKeyEncoder::Encode(protocol, 0x0102, false, 1, 38000, 33);
            sent.push_back(t.train.durations);
            sink.Transmit(t);
        }
    }
    const auto captures = CMode2Text::Parse(irtest::ReadText(path), path);
    ASSERT_EQ(captures.size(), sent.size());
    for (std::size_t i = 0; i < sent.size(); ++i) EXPECT_EQ(captures[i].durations, sent[i]) << i;
}

}  // namespace
}  // namespace infrared

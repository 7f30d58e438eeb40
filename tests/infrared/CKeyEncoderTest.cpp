// One key of each protocol family is encoded, written through the dry-run file and decoded by
// lirc's irsimreceive against a lircd.conf written here from the protocol's published timings:
// the decoder must name the key that was sent, and no other. The other layouts of a family (necx,
// nec32, sanyo, sony15) are held by the decoder's published captures and round trips; rc5's
// second key sends the command's seventh bit as rc5x does.
#include "infrared/encode/CKeyEncoder.h"

#include <gtest/gtest.h>

#include <sstream>

#include "IrsimReceive.h"
#include "infrared/transmit/CMode2Sink.h"

namespace infrared {
namespace {

struct KeyCase {
    std::string key;
    std::uint64_t scancode;
    std::uint64_t lircCode;  // the bits as lircd reads them, computed by hand from the layout
    std::vector<std::string> expected;  // decoded names, in order
};

struct ProtocolCase {
    const char* name;
    Protocol protocol;
    std::string remote;  // lircd.conf body without "begin codes"
    std::vector<KeyCase> keys;
};

std::uint64_t NecCode(std::uint32_t a, std::uint32_t na, std::uint32_t c, std::uint32_t nc) {
    return a | na << 8 | c << 16 | static_cast<std::uint64_t>(nc) << 24;  // REVERSE: first bit is bit 0
}

// A lircd.conf remote's parameters (without its codes), from the protocol's published timings.
std::string Remote(unsigned bits, const char* flags, const std::string& lines) {
    return "  bits " + std::to_string(bits) + "\n  flags " + flags + "\n  eps 30\n  aeps 100\n" + lines;
}

const char kSpace[] = "SPACE_ENC|CONST_LENGTH|REVERSE", kPlain[] = "SPACE_ENC|REVERSE";
const char kNec[] = "header 9000 4500\none 563 1688\nzero 563 563\nptrail 563\ngap 108000\n";

std::vector<ProtocolCase> Cases() {
    const std::vector<std::string> one = {"KEY_POWER"};
    return {
        {"nec", Protocol::Nec, Remote(32, kSpace, kNec), {{"KEY_POWER", 0x0408, NecCode(0x04, 0xfb, 0x08, 0xf7), one}}},
        {"jvc", Protocol::Jvc,
         Remote(16, kSpace, "header 8400 4200\none 526 1578\nzero 526 526\nptrail 526\ngap 60000\n"),
         {{"KEY_POWER", 0x03c1, 0x03 | 0xc1 << 8, one}}},
        // The second frame inverts command, expansion and check bits.
        {"sharp", Protocol::Sharp, Remote(15, kPlain, "one 320 1680\nzero 320 680\nptrail 320\ngap 40000\n"),
         {{"KEY_POWER", 0x1116, 0x11 | 0x16 << 5 | 1 << 13, {"KEY_POWER", "KEY_POWER_CHECK"}}}},
        {"sony20", Protocol::Sony20, Remote(20, kSpace, "header 2400 600\none 1200 600\nzero 600 600\ngap 45000\n"),
         {{"KEY_POWER", 0x1a5b15, 0x15 | 0x1a << 7 | 0x5b << 12, {"KEY_POWER", "KEY_POWER", "KEY_POWER"}}}},
        // S2 (inverted command bit 6), toggle 0, address, 6 command bits
        {"rc5", Protocol::Rc5,
         Remote(13, "RC5|CONST_LENGTH", "one 889 889\nzero 889 889\nplead 889\ngap 113778\ntoggle_bit_mask 0x800\n"),
         {{"KEY_POWER", 0x0c0c, 1u << 12 | 0x0c << 6 | 0x0c, one},
          {"KEY_MODE", 0x1f4c, 0x1f << 6 | 0x0c, {"KEY_MODE"}}}},
        // 26-bit address 0x1234567 and command 0xbeef, no complements
        {"nec42", Protocol::Nec42, Remote(42, kSpace, kNec),
         {{"KEY_POWER", 0x1234567beefULL, 0x1234567ULL | 0xbeefULL << 26, one}}},
        // vendor 0x3254, genres 4 and 1, command 0x1b: bytes 54 32 40 b1 01 f0 on air
        {"kaseikyo", Protocol::Kaseikyo,
         Remote(48, kPlain, "header 3456 1728\none 432 1296\nzero 432 432\nptrail 432\ngap 130000\n"),
         {{"KEY_POWER", 0x325441001bULL, 0xf001b1403254ULL, one}}},
        // address 0xf, command 0x54, then both inverted
        {"rca", Protocol::Rca,
         Remote(24, kPlain, "header 4000 4000\none 500 2000\nzero 500 1000\nptrail 500\ngap 8000\n"),
         {{"KEY_POWER", 0xf54, 0xf | 0x54 << 4 | 0xab << 16, one}}},
        // two frames per press
        {"pioneer", Protocol::Pioneer,
         Remote(32, kPlain, "header 8500 4225\none 500 1500\nzero 500 500\nptrail 500\ngap 26000\n"),
         {{"KEY_POWER", 0xaf36, NecCode(0xaf, 0x50, 0x36, 0xc9), {"KEY_POWER", "KEY_POWER"}}}},
        // lircd keeps RC-6 codes with every bit inverted (it reads a 1 as space-then-mark).
        {"rc6_0", Protocol::Rc6Mode0,
         Remote(21, "RC6|CONST_LENGTH",
                "header 2664 888\none 444 444\nzero 444 444\nrc6_mask 0x10000\ngap 107000\ntoggle_bit_mask 0x10000\n"),
         {{"KEY_POWER", 0x800c, ~(1u << 20 | 0x800c) & 0x1fffff, one}}},
    };
}

std::string Conf(const ProtocolCase& c) {
    std::ostringstream out;
    out << "begin remote\n  name TEST_" << c.name << "\n" << c.remote << "  begin codes\n" << std::hex;
    for (const auto& key : c.keys) {
        out << "    " << key.key << " 0x" << key.lircCode << "\n";
        if (c.protocol == Protocol::Sharp) {
            const std::uint64_t second = (key.lircCode & 0x1f) | ((key.lircCode >> 5 & 0xff) ^ 0xff) << 5 | 1 << 14;
            out << "    " << key.key << "_CHECK 0x" << second << "\n";
        }
    }
    out << "  end codes\nend remote\n";
    return out.str();
}

class CKeyEncoderDecodeTest : public ::testing::TestWithParam<ProtocolCase> {};

TEST_P(CKeyEncoderDecodeTest, IrsimreceiveDecodesTheKeySent) {
    const ProtocolCase& c = GetParam();
    for (const auto& key : c.keys) {
        SCOPED_TRACE(key.key);
        const std::string file = irtest::TempDir() + "/sent.txt";
        {
            CMode2Sink sink(file);
            Transmission t;
            t.emitter = 1;
            t.train = CKeyEncoder::Encode(c.protocol, key.scancode, false, 0, 38000, 50);
            EXPECT_EQ(std::tie(t.train.carrier, t.train.dutyCycle), std::make_tuple(38000u, 50u));
            sink.Transmit(t);
        }
        const irtest::Decoded decoded = irtest::IrsimReceive(Conf(c), file);
        ASSERT_TRUE(decoded.ran) << decoded.error;
        EXPECT_EQ(decoded.keys, key.expected) << decoded.output;
    }
}

INSTANTIATE_TEST_SUITE_P(Protocols, CKeyEncoderDecodeTest, ::testing::ValuesIn(Cases()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(CKeyEncoderTest, ToggleKeepsTheFramePeriodAndRepeatsAddWholeCopies) {
    const auto period = [](const PulseTrain& train) { return train.OnAirMicroseconds() + train.trailingGap; };
    for (const Protocol protocol : {Protocol::Rc5, Protocol::Rc6Mode0}) {
        const auto off = CKeyEncoder::Encode(protocol, 0x0c0c, false, 0, 36000, 33);
        const auto on = CKeyEncoder::Encode(protocol, 0x0c0c, true, 0, 36000, 33);
        EXPECT_NE(off.durations, on.durations) << ProtocolName(protocol);
        EXPECT_EQ(period(off), period(on)) << ProtocolName(protocol);
    }
    const auto once = CKeyEncoder::Encode(Protocol::Nec, 0x0408, false, 0, 38000, 33);
    EXPECT_EQ(period(CKeyEncoder::Encode(Protocol::Nec, 0x0408, false, 2, 38000, 33)), 3 * period(once));
    EXPECT_THROW(CKeyEncoder::Encode(Protocol::Raw, 1, false, 0, 38000, 33), std::invalid_argument);
}

}  // namespace
}  // namespace infrared

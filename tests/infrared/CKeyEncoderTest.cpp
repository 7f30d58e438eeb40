// One key of each protocol family the encoder has a path for is encoded, written through the
// dry-run file and decoded by lirc's irsimreceive against a lircd.conf written here from the
// protocol's published timings: the decoder must name the key that was sent, and no other. The
// other layouts of a family (necx, nec32, sanyo, sony12/15) are held by the decoder's round trips.
#include "infrared/encode/CKeyEncoder.h"

#include <gtest/gtest.h>

#include <sstream>

#include "IrsimReceive.h"
#include "infrared/transmit/CMode2Sink.h"

namespace infrared {
namespace {

std::uint64_t NecCode(std::uint32_t a, std::uint32_t na, std::uint32_t c, std::uint32_t nc) {
    return a | na << 8 | c << 16 | static_cast<std::uint64_t>(nc) << 24;  // REVERSE: first bit is bit 0
}

const char kSpace[] = "  flags SPACE_ENC|CONST_LENGTH|REVERSE\n", kPlain[] = "  flags SPACE_ENC|REVERSE\n";
const char kNec[] = "header 9000 4500\none 563 1688\nzero 563 563\nptrail 563\ngap 108000\n";
const char kRc5[] = "bits 13\nflags RC5|CONST_LENGTH\none 889 889\nzero 889 889\nplead 889\ngap 113778\n"
                    "toggle_bit_mask 0x800\n";

TEST(CKeyEncoderTest, IrsimreceiveDecodesTheKeySentForEachProtocolFamily) {
    // Name, protocol, scancode, the lircd.conf parameters (bits, flags and the published timings),
    // the codes as lircd reads them (worked out from the layout), the keys irsimreceive names.
    using Codes = std::vector<std::pair<std::string, std::uint64_t>>;
    const std::tuple<const char*, Protocol, std::uint64_t, std::string, Codes, std::vector<std::string>> cases[] = {
        {"nec", Protocol::Nec, 0x0408, "bits 32\n" + std::string(kSpace) + kNec,
         {{"POWER", NecCode(0x04, 0xfb, 0x08, 0xf7)}}, {"POWER"}},
        {"jvc", Protocol::Jvc, 0x03c1,
         "bits 16\n" + std::string(kSpace) + "header 8400 4200\none 526 1578\nzero 526 526\nptrail 526\ngap 60000\n",
         {{"POWER", 0x03 | 0xc1 << 8}}, {"POWER"}},
        // The second frame inverts command, expansion and check bits.
        {"sharp", Protocol::Sharp, 0x1116,
         "bits 15\n" + std::string(kPlain) + "one 320 1680\nzero 320 680\nptrail 320\ngap 40000\n",
         {{"POWER", 0x11 | 0x16 << 5 | 1 << 13}, {"CHECK", 0x11 | (0x16 ^ 0xff) << 5 | 1 << 14}}, {"POWER", "CHECK"}},
        {"sony20", Protocol::Sony20, 0x1a5b15,
         "bits 20\n" + std::string(kSpace) + "header 2400 600\none 1200 600\nzero 600 600\ngap 45000\n",
         {{"POWER", 0x15 | 0x1a << 7 | 0x5b << 12}}, {"POWER", "POWER", "POWER"}},
        // S2 (the inverted command bit 6), toggle 0, address, 6 command bits; then with bit 6 set.
        {"rc5", Protocol::Rc5, 0x0c0c, kRc5, {{"POWER", 1u << 12 | 0x0c << 6 | 0x0c}}, {"POWER"}},
        {"rc5x", Protocol::Rc5, 0x1f4c, kRc5, {{"MODE", 0x1f << 6 | 0x0c}}, {"MODE"}},
        // 26-bit address 0x1234567 and command 0xbeef, no complements
        {"nec42", Protocol::Nec42, 0x1234567beefULL, "bits 42\n" + std::string(kSpace) + kNec,
         {{"POWER", 0x1234567ULL | 0xbeefULL << 26}}, {"POWER"}},
        // vendor 0x3254, genres 4 and 1, command 0x1b: bytes 54 32 40 b1 01 f0 on air
        {"kaseikyo", Protocol::Kaseikyo, 0x325441001bULL,
         "bits 48\n" + std::string(kPlain) + "header 3456 1728\none 432 1296\nzero 432 432\nptrail 432\ngap 130000\n",
         {{"POWER", 0xf001b1403254ULL}}, {"POWER"}},
        // address 0xf, command 0x54, then both inverted
        {"rca", Protocol::Rca, 0xf54,
         "bits 24\n" + std::string(kPlain) + "header 4000 4000\none 500 2000\nzero 500 1000\nptrail 500\ngap 8000\n",
         {{"POWER", 0xf | 0x54 << 4 | 0xab << 16}}, {"POWER"}},
        // two frames per press
        {"pioneer", Protocol::Pioneer, 0xaf36,
         "bits 32\n" + std::string(kPlain) + "header 8500 4225\none 500 1500\nzero 500 500\nptrail 500\ngap 26000\n",
         {{"POWER", NecCode(0xaf, 0x50, 0x36, 0xc9)}}, {"POWER", "POWER"}},
        // lircd keeps RC-6 codes with every bit inverted (it reads a 1 as space-then-mark).
        {"rc6_0", Protocol::Rc6Mode0, 0x800c,
         "bits 21\n  flags RC6|CONST_LENGTH\nheader 2664 888\none 444 444\nzero 444 444\nrc6_mask 0x10000\n"
         "gap 107000\ntoggle_bit_mask 0x10000\n",
         {{"POWER", ~(1u << 20 | 0x800c) & 0x1fffff}}, {"POWER"}},
    };
    for (const auto& [name, protocol, scancode, remote, codes, keys] : cases) {
        SCOPED_TRACE(name);
        const std::string file = irtest::TempDir() + "/sent.txt";
        {
            CMode2Sink sink(file);
            Transmission t;
            t.emitter = 1;
            t.train = CKeyEncoder::Encode(protocol, scancode, false, 0, 38000, 50);
            EXPECT_EQ(std::tie(t.train.carrier, t.train.dutyCycle), std::make_tuple(38000u, 50u));
            sink.Transmit(t);
        }
        std::ostringstream conf;
        conf << "begin remote\nname " << name << "\neps 30\naeps 100\n" << remote << "begin codes\n" << std::hex;
        for (const auto& [key, code] : codes) conf << key << " 0x" << code << "\n";
        conf << "end codes\nend remote\n";
        const irtest::Decoded decoded = irtest::IrsimReceive(conf.str(), file);
        ASSERT_TRUE(decoded.ran) << decoded.error;
        EXPECT_EQ(decoded.keys, keys) << decoded.output;
    }
}

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

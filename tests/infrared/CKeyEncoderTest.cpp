// Every scancode protocol is encoded, written through the dry-run file and decoded by lirc's
// irsimreceive against a lircd.conf written here from the protocol's published timings: the
// decoder must name the key that was sent, and no other.
#include "infrared/encode/CKeyEncoder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

#include "IrsimReceive.h"
#include "infrared/transmit/CMode2Sink.h"

namespace infrared {
namespace {

struct KeyCase {
    std::string key;
    std::uint32_t scancode;
    std::uint64_t lircCode;  // the bits as lircd reads them, computed by hand from the layout
    std::vector<std::string> expected;  // decoded names, in order
};

struct ProtocolCase {
    const char* name;
    Protocol protocol;
    std::string remote;  // lircd.conf body without "begin codes"
    std::vector<KeyCase> keys;
};

void PrintTo(const ProtocolCase& c, std::ostream* out) { *out << c.name; }

std::uint64_t NecCode(std::uint32_t a, std::uint32_t na, std::uint32_t c, std::uint32_t nc) {
    return a | na << 8 | c << 16 | static_cast<std::uint64_t>(nc) << 24;  // REVERSE: first bit is bit 0
}

const char kNecTiming[] =
    "  flags SPACE_ENC|CONST_LENGTH|REVERSE\n  eps 30\n  aeps 100\n  header 9000 4500\n"
    "  one 563 1688\n  zero 563 563\n  ptrail 563\n  gap 108000\n";

std::vector<ProtocolCase> Cases() {
    return {
        {"nec", Protocol::Nec, std::string("  bits 32\n") + kNecTiming,
         {{"KEY_POWER", 0x0408, NecCode(0x04, 0xfb, 0x08, 0xf7), {"KEY_POWER"}},
          {"KEY_MODE", 0x04f0, NecCode(0x04, 0xfb, 0xf0, 0x0f), {"KEY_MODE"}}}},
        {"necx", Protocol::NecX, std::string("  bits 32\n") + kNecTiming,
         {{"KEY_POWER", 0x12345a, NecCode(0x12, 0x34, 0x5a, 0xa5), {"KEY_POWER"}}}},
        {"nec32", Protocol::Nec32, std::string("  bits 32\n") + kNecTiming,
         // address 0x34 / 0x12 and command 0x5a / 0x78: neither byte pair is complementary
         {{"KEY_POWER", 0x12347856, NecCode(0x34, 0x12, 0x56, 0x78), {"KEY_POWER"}}}},
        {"sanyo", Protocol::Sanyo,
         "  bits 42\n  flags SPACE_ENC|CONST_LENGTH|REVERSE\n  eps 30\n  aeps 100\n  header 9000 4500\n"
         "  one 563 1688\n  zero 563 563\n  ptrail 563\n  gap 108000\n",
         {{"KEY_POWER", 0x1c3d2, 0x1c3ULL | (0x1c3ULL ^ 0x1fff) << 13 | 0xd2ULL << 26 | (0xd2ULL ^ 0xff) << 34,
           {"KEY_POWER"}}}},
        {"jvc", Protocol::Jvc,
         "  bits 16\n  flags SPACE_ENC|CONST_LENGTH|REVERSE\n  eps 30\n  aeps 100\n  header 8400 4200\n"
         "  one 526 1578\n  zero 526 526\n  ptrail 526\n  gap 60000\n",
         {{"KEY_POWER", 0x03c1, 0x03 | 0xc1 << 8, {"KEY_POWER"}}}},
        {"sharp", Protocol::Sharp,
         "  bits 15\n  flags SPACE_ENC|REVERSE\n  eps 30\n  aeps 100\n"
         "  one 320 1680\n  zero 320 680\n  ptrail 320\n  gap 40000\n",
         // The second frame inverts command, expansion and check bits.
         {{"KEY_POWER", 0x1116, 0x11 | 0x16 << 5 | 1 << 13, {"KEY_POWER", "KEY_POWER_CHECK"}}}},
        {"sony12", Protocol::Sony12,
         "  bits 12\n  flags SPACE_ENC|CONST_LENGTH|REVERSE\n  eps 30\n  aeps 100\n  header 2400 600\n"
         "  one 1200 600\n  zero 600 600\n  gap 45000\n",
         {{"KEY_POWER", 0x010015, 0x15 | 0x01 << 7, {"KEY_POWER", "KEY_POWER", "KEY_POWER"}}}},
        {"sony15", Protocol::Sony15,
         "  bits 15\n  flags SPACE_ENC|CONST_LENGTH|REVERSE\n  eps 30\n  aeps 100\n  header 2400 600\n"
         "  one 1200 600\n  zero 600 600\n  gap 45000\n",
         {{"KEY_POWER", 0x970015, 0x15 | 0x97 << 7, {"KEY_POWER", "KEY_POWER", "KEY_POWER"}}}},
        {"sony20", Protocol::Sony20,
         "  bits 20\n  flags SPACE_ENC|CONST_LENGTH|REVERSE\n  eps 30\n  aeps 100\n  header 2400 600\n"
         "  one 1200 600\n  zero 600 600\n  gap 45000\n",
         {{"KEY_POWER", 0x1a5b15, 0x15 | 0x1a << 7 | 0x5b << 12, {"KEY_POWER", "KEY_POWER", "KEY_POWER"}}}},
        {"rc5", Protocol::Rc5,
         "  bits 13\n  flags RC5|CONST_LENGTH\n  eps 30\n  aeps 100\n  one 889 889\n  zero 889 889\n"
         "  plead 889\n  gap 113778\n  toggle_bit_mask 0x800\n",
         // S2 (inverted command bit 6), toggle 0, address, 6 command bits
         {{"KEY_POWER", 0x0c0c, 1u << 12 | 0x0c << 6 | 0x0c, {"KEY_POWER"}},
          {"KEY_MODE", 0x1f4c, 0u << 12 | 0x1f << 6 | 0x0c, {"KEY_MODE"}}}},
        {"rc6_0", Protocol::Rc6Mode0,
         "  bits 21\n  flags RC6|CONST_LENGTH\n  eps 30\n  aeps 100\n  header 2664 888\n"
         "  one 444 444\n  zero 444 444\n  rc6_mask 0x10000\n  gap 107000\n  toggle_bit_mask 0x10000\n",
         // lircd keeps RC-6 codes with every bit inverted (it reads a 1 as space-then-mark).
         {{"KEY_POWER", 0x800c, ~(1u << 20 | 0x800c) & 0x1fffff, {"KEY_POWER"}}}},
    };
}

std::string Conf(const ProtocolCase& c) {
    std::ostringstream out;
    out << "begin remote\n  name TEST_" << c.name << "\n" << c.remote << "  begin codes\n";
    for (const auto& key : c.keys) {
        out << "    " << key.key << " 0x" << std::hex << key.lircCode << std::dec << "\n";
        if (c.protocol == Protocol::Sharp) {
            const std::uint64_t second = (key.lircCode & 0x1f) | ((key.lircCode >> 5 & 0xff) ^ 0xff) << 5 | 1 << 14;
            out << "    " << key.key << "_CHECK 0x" << std::hex << second << std::dec << "\n";
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
            t.codeset = c.name;
            t.what = key.key;
            t.emitter = 1;
            t.train = CKeyEncoder::Encode(c.protocol, key.scancode, false, 0, 38000, 33);
            sink.Transmit(t);
        }
        const irtest::Decoded decoded = irtest::IrsimReceive(Conf(c), file);
        ASSERT_TRUE(decoded.ran) << decoded.error;
        EXPECT_EQ(decoded.keys, key.expected) << decoded.output;
    }
}

INSTANTIATE_TEST_SUITE_P(Protocols, CKeyEncoderDecodeTest, ::testing::ValuesIn(Cases()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(CKeyEncoderTest, ToggleFlipsOnlyTheToggleBitOfRc5AndRc6) {
    for (const Protocol protocol : {Protocol::Rc5, Protocol::Rc6Mode0}) {
        const auto off = CKeyEncoder::Encode(protocol, 0x0c0c, false, 0, 36000, 33);
        const auto on = CKeyEncoder::Encode(protocol, 0x0c0c, true, 0, 36000, 33);
        EXPECT_NE(off.durations, on.durations) << ProtocolName(protocol);
        EXPECT_EQ(off.OnAirMicroseconds() + off.trailingGap, on.OnAirMicroseconds() + on.trailingGap)
            << ProtocolName(protocol) << ": the frame period must not depend on the toggle";
    }
}

TEST(CKeyEncoderTest, TrainsStartAndEndWithAPulseAndKeepTheGap) {
    for (const auto& c : Cases()) {
        const auto train = CKeyEncoder::Encode(c.protocol, c.keys[0].scancode, false, 1, 38000, 50);
        SCOPED_TRACE(c.name);
        ASSERT_FALSE(train.durations.empty());
        EXPECT_EQ(train.durations.size() % 2, 1u);
        EXPECT_GT(train.trailingGap, 2000u);
        EXPECT_EQ(train.carrier, 38000u);
        EXPECT_EQ(train.dutyCycle, 50u);
        for (const auto d : train.durations) EXPECT_GT(d, 0u);
    }
}

TEST(CKeyEncoderTest, RepeatsAddWholeCopies) {
    const auto once = CKeyEncoder::Encode(Protocol::Nec, 0x0408, false, 0, 38000, 33);
    const auto thrice = CKeyEncoder::Encode(Protocol::Nec, 0x0408, false, 2, 38000, 33);
    EXPECT_EQ(thrice.durations.size(), 3 * once.durations.size() + 2);
    EXPECT_EQ(thrice.OnAirMicroseconds() + thrice.trailingGap, 3 * (once.OnAirMicroseconds() + once.trailingGap));
}

TEST(CKeyEncoderTest, RefusesProtocolsWithoutScancodes) {
    for (const Protocol protocol : {Protocol::Raw, Protocol::Pronto, Protocol::Aircon}) {
        EXPECT_THROW(CKeyEncoder::Encode(protocol, 1, false, 0, 38000, 33), std::invalid_argument);
    }
}

// The kernel may stand in for the user-space encoder only where it sends the very same train.
TEST(CKeyEncoderTest, KernelEncodesOnlyAOneFramePressWithoutCopiesOrToggle) {
    struct Case {
        Protocol protocol;
        std::uint32_t repeats;
        bool kernel;
    } cases[] = {
        {Protocol::Nec, 0, true},       {Protocol::NecX, 0, true},     {Protocol::Nec32, 0, true},
        {Protocol::Jvc, 0, true},       {Protocol::Sanyo, 0, true},    {Protocol::Nec, 1, false},
        {Protocol::Rc5, 0, false},      {Protocol::Rc6Mode0, 0, false},  // toggle bit
        {Protocol::Sony12, 0, false},   {Protocol::Sony20, 0, false},  {Protocol::Sharp, 0, false},  // frames
        {Protocol::Raw, 0, false},      {Protocol::Pronto, 0, false},  {Protocol::Aircon, 0, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(CKeyEncoder::KernelMayEncode(c.protocol, c.repeats), c.kernel)
            << ProtocolName(c.protocol) << " repeats " << c.repeats;
        // Where it may, one frame of the user-space train is all there is to send.
        if (c.kernel) {
            EXPECT_EQ(CKeyEncoder::FramesPerPress(c.protocol), 1u);
        }
    }
}

}  // namespace
}  // namespace infrared

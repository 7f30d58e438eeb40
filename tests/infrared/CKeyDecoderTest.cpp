// Every key protocol's frames, over a grid of scancodes, decode back to the scancode the encoder
// was given: clean, and distorted the way remotes and receivers distort them (a clock off by up
// to 30 %, jitter, marks stretched with their spaces shortened, noise before the frame).
#include "infrared/decode/CKeyDecoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "infrared/encode/CKeyEncoder.h"

namespace infrared {
namespace {

struct Layout {
    Protocol protocol;
    std::uint64_t mask;  // the scancode bits the layout has
    std::uint32_t carrier;
    // Makes a random scancode one this protocol's decoder must report as itself (not as an
    // alias: nec32 with complementary bytes is nec, rc5 with a command of 64+ is rc5x, ...).
    std::uint64_t (*fit)(std::uint64_t);
};

std::uint64_t Keep(std::uint64_t sc) { return sc; }
// Breaks a complement by changing one byte of the pair when it happens to hold.
std::uint64_t BreakPair(std::uint64_t sc, unsigned low, unsigned high) {
    if (((sc >> low ^ sc >> high) & 0xff) == 0xff) sc ^= std::uint64_t{1} << high;
    return sc;
}

const Layout kLayouts[] = {
    {Protocol::Nec, 0xffff, 38000, Keep},
    {Protocol::NecX, 0xffffff, 38000, [](std::uint64_t sc) { return BreakPair(sc, 8, 16); }},
    {Protocol::Nec32, 0xffffffff, 38000, [](std::uint64_t sc) { return BreakPair(sc, 0, 8); }},
    {Protocol::Rc5, 0x1f3f, 36000, Keep},
    {Protocol::Rc5x, 0x1f7f, 36000, [](std::uint64_t sc) { return sc | 0x40; }},
    {Protocol::Rc6Mode0, 0xffff, 36000, Keep},
    {Protocol::Sony12, 0x1f007f, 40000, Keep},
    {Protocol::Sony15, 0xff007f, 40000, Keep},
    {Protocol::Sony20, 0x1fff7f, 40000, Keep},
    {Protocol::Jvc, 0xffff, 38000, Keep},
    {Protocol::Sanyo, 0x1fffff, 38000, Keep},
    {Protocol::Sharp, 0x1fff, 38000, Keep},
    {Protocol::Nec42, 0x3ffffffffffULL, 38000, [](std::uint64_t sc) { return BreakPair(sc, 0, 8); }},
    {Protocol::Kaseikyo, 0x3ffffff03ffULL, 38000, Keep},
    {Protocol::Rca, 0xfff, 38000, Keep},
    {Protocol::Pioneer, 0xffff, 40000, Keep},
};

class CKeyDecoderGridTest : public ::testing::TestWithParam<Layout> {};

// 300 scancodes per protocol, each clean and with one seeded distortion.
TEST_P(CKeyDecoderGridTest, FramesDecodeBackToTheScancodeSent) {
    const Layout& layout = GetParam();
    const Protocol p = layout.protocol;
    std::mt19937 rng(20261123u + static_cast<unsigned>(p));
    std::uniform_int_distribution<std::uint64_t> any;
    std::uniform_real_distribution<double> scale(0.7, 1.3);
    std::uniform_int_distribution<std::uint32_t> stretch(0, 200);
    std::uniform_int_distribution<int> count(1, 3), noiseMark(30, 400), noiseSpace(2500, 30000);
    const bool toggles = p == Protocol::Rc5 || p == Protocol::Rc5x || p == Protocol::Rc6Mode0;
    for (int n = 0; n < 300; ++n) {
        const std::uint64_t sc = layout.fit(n == 0 ? 0 : n == 1 ? layout.mask : any(rng) & layout.mask) & layout.mask;
        const bool toggle = n % 2 == 1;
        const auto clean = CKeyEncoder::Encode(p, sc, toggle, 0, layout.carrier, 33).durations;
        for (const bool distort : {false, true}) {
            const double clock = distort ? scale(rng) : 1;
            const std::uint32_t more = distort ? stretch(rng) : 0;
            std::vector<std::uint32_t> durations;
            // Noise comes after silence and leaves 2.5 ms before the frame (a receiver's gain
            // settles well within it); nearer noise would be part of the frame.
            for (int i = distort ? count(rng) : 0; i > 0; --i) {
                durations.push_back(static_cast<std::uint32_t>(noiseMark(rng)));
                durations.push_back(static_cast<std::uint32_t>(noiseSpace(rng)));
            }
            std::uniform_real_distribution<double> jitter(distort ? -0.05 : 0, distort ? 0.05 : 0);
            for (std::size_t i = 0; i < clean.size(); ++i) {
                const double d = clean[i] * clock * (1 + jitter(rng)) + (i % 2 == 0 ? double(more) : -double(more));
                durations.push_back(static_cast<std::uint32_t>(std::max(1.0, d)));
            }
            // NEC and Pioneer frames differ by 6 % in timing, less than a remote's clock may be off:
            // for them the receiver must report the carrier. All others decode without it.
            const bool twin = p == Protocol::Nec || p == Protocol::Pioneer;
            std::optional<KeyMatch> match;
            for (std::size_t i = 0; i < durations.size() && !match; i += 2) {
                match = CKeyDecoder::DecodeAt(durations, i, twin && distort ? layout.carrier : 0, std::nullopt);
            }
            SCOPED_TRACE(testing::Message() << "0x" << std::hex << sc << (distort ? " distorted" : " clean"));
            ASSERT_TRUE(match);
            EXPECT_EQ(std::tie(match->protocol, match->scancode, match->repeat), std::make_tuple(p, sc, false));
            ASSERT_EQ(match->toggle, toggles ? std::optional<bool>(toggle) : std::nullopt);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Protocols, CKeyDecoderGridTest, ::testing::ValuesIn(kLayouts),
                         [](const auto& info) { return std::string(ProtocolName(info.param.protocol)); });

// Frames that break a protocol's own checks, or are cut short, are not that protocol's keys (a
// Pioneer frame with a broken check still is a valid nec32 frame).
TEST(CKeyDecoderTest, DamagedFramesAreNotKeys) {
    const struct {
        const char* what;
        Protocol protocol;
        std::uint64_t scancode;
        std::size_t flip;  // index of a space to turn from zero to one or back (0: none)
        std::size_t cut;   // durations dropped from the end
    } cases[] = {
        {"rca address check", Protocol::Rca, 0x354, 2 + 2 * 12 + 1, 0},
        {"pioneer command check", Protocol::Pioneer, 0xaf36, 2 + 2 * 24 + 1, 0},
        {"kaseikyo vendor parity", Protocol::Kaseikyo, 0x325441001b, 2 + 2 * 3 + 1, 0},
        {"kaseikyo check byte", Protocol::Kaseikyo, 0x325441001b, 2 + 2 * 45 + 1, 0},
        {"nec cut", Protocol::Nec, 0x0408, 0, 6},
        {"rc6 cut", Protocol::Rc6Mode0, 0x800c, 0, 8},
    };
    for (const auto& c : cases) {
        auto durations = CKeyEncoder::Encode(c.protocol, c.scancode, false, 0, 38000, 33).durations;
        // only the first copy
        const auto gap = std::find_if(durations.begin() + 1, durations.end(), [](std::uint32_t d) { return d > 6000; });
        durations.erase(gap, durations.end());
        // A bit's space swapped between the frame's shortest and longest bit spaces: 0 and 1.
        std::uint32_t zero = UINT32_MAX, one = 0;
        for (std::size_t i = 3; i < durations.size(); i += 2) {
            zero = std::min(zero, durations[i]);
            one = std::max(one, durations[i]);
        }
        if (c.flip != 0) durations[c.flip] = durations[c.flip] == one ? zero : one;
        durations.resize(durations.size() - c.cut);
        const auto match = CKeyDecoder::DecodeFrame(durations);
        EXPECT_TRUE(!match || match->protocol != c.protocol) << c.what;
    }
}

}  // namespace
}  // namespace infrared

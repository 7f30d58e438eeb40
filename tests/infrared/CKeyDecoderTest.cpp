// Every key protocol's frames, over a grid of scancodes, decode back to the scancode the encoder
// was given: clean, and distorted the way remotes and receivers distort them (a clock off by up
// to 30 %, jitter, marks stretched with their spaces shortened, noise before the frame).
#include "infrared/decode/CKeyDecoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>

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
std::uint64_t BreakPair(std::uint64_t sc, unsigned low, unsigned high, std::uint64_t width) {
    const std::uint64_t all = (std::uint64_t{1} << width) - 1;
    if (((sc >> low ^ sc >> high) & all) == all) sc ^= std::uint64_t{1} << high;
    return sc;
}

const Layout kLayouts[] = {
    {Protocol::Nec, 0xffff, 38000, Keep},
    {Protocol::NecX, 0xffffff, 38000, [](std::uint64_t sc) { return BreakPair(sc, 8, 16, 8); }},
    {Protocol::Nec32, 0xffffffff, 38000, [](std::uint64_t sc) { return BreakPair(sc, 0, 8, 8); }},
    {Protocol::Rc5, 0x1f3f, 36000, Keep},
    {Protocol::Rc5x, 0x1f7f, 36000, [](std::uint64_t sc) { return sc | 0x40; }},
    {Protocol::Rc6Mode0, 0xffff, 36000, Keep},
    {Protocol::Sony12, 0x1f007f, 40000, Keep},
    {Protocol::Sony15, 0xff007f, 40000, Keep},
    {Protocol::Sony20, 0x1fff7f, 40000, Keep},
    {Protocol::Jvc, 0xffff, 38000, Keep},
    {Protocol::Sanyo, 0x1fffff, 38000, Keep},
    {Protocol::Sharp, 0x1fff, 38000, Keep},
    {Protocol::Nec42, 0x3ffffffffffULL, 38000, [](std::uint64_t sc) { return BreakPair(sc, 0, 8, 8); }},
    {Protocol::Kaseikyo, 0x3ffffff03ffULL, 38000, Keep},
    {Protocol::Rca, 0xfff, 38000, Keep},
    {Protocol::Pioneer, 0xffff, 40000, Keep},
};

struct Distortion {
    double scale = 1;      // the remote's clock
    double jitter = 0;     // each duration independently, +-
    std::uint32_t stretch = 0;  // receiver: marks longer, spaces that much shorter
    bool noise = false;    // short pulses before the frame
};

std::vector<std::uint32_t> Distort(const std::vector<std::uint32_t>& clean, const Distortion& how, std::mt19937& rng) {
    std::vector<std::uint32_t> out;
    if (how.noise) {
        // Noise comes after silence and leaves some before the frame (2.5 ms: a receiver's
        // automatic gain settles well within it); nearer noise would be part of the frame.
        std::uniform_int_distribution<int> count(1, 3), mark(30, 400), space(2500, 30000);
        for (int i = count(rng); i > 0; --i) {
            out.push_back(static_cast<std::uint32_t>(mark(rng)));
            out.push_back(static_cast<std::uint32_t>(space(rng)));
        }
    }
    std::uniform_real_distribution<double> jitter(-how.jitter, how.jitter);
    for (std::size_t i = 0; i < clean.size(); ++i) {
        double d = clean[i] * how.scale * (1 + jitter(rng));
        d += i % 2 == 0 ? double(how.stretch) : -double(how.stretch);
        out.push_back(static_cast<std::uint32_t>(std::max(1.0, d)));
    }
    return out;
}

// The first key frame found scanning from the start, as a receiver's caller would.
std::optional<KeyMatch> FirstFrame(const std::vector<std::uint32_t>& d, std::uint32_t carrier) {
    for (std::size_t i = 0; i < d.size(); i += 2) {
        if (auto match = CKeyDecoder::DecodeAt(d, i, carrier, std::nullopt)) return match;
    }
    return std::nullopt;
}

class CKeyDecoderGridTest : public ::testing::TestWithParam<Layout> {};

void PrintTo(const Layout& layout, std::ostream* out) { *out << ProtocolName(layout.protocol); }

// 300 scancodes per protocol, each clean and with one seeded distortion.
TEST_P(CKeyDecoderGridTest, FramesDecodeBackToTheScancodeSent) {
    const Layout& layout = GetParam();
    std::mt19937 rng(20261123u + static_cast<unsigned>(layout.protocol));
    std::uniform_int_distribution<std::uint64_t> any;
    std::uniform_real_distribution<double> scale(0.7, 1.3);
    std::uniform_int_distribution<std::uint32_t> stretch(0, 200);
    int failures = 0, tried = 0;
    std::ostringstream examples;
    for (int n = 0; n < 300; ++n) {
        std::uint64_t sc = n == 0 ? 0 : n == 1 ? layout.mask : any(rng) & layout.mask;
        sc = layout.fit(sc) & layout.mask;
        const bool toggle = n % 2 == 1;
        const auto train = CKeyEncoder::Encode(layout.protocol, sc, toggle, 0, layout.carrier, 33);
        for (int variant = 0; variant < 2; ++variant) {
            Distortion how;
            if (variant == 1) how = {scale(rng), 0.05, stretch(rng), true};
            const auto durations = Distort(train.durations, how, rng);
            // NEC and Pioneer frames differ by 6 % in timing, less than a remote's clock may be off:
            // for them the receiver must report the carrier. All others decode without it.
            const bool twin = layout.protocol == Protocol::Nec || layout.protocol == Protocol::Pioneer;
            const auto match = FirstFrame(durations, twin && variant == 1 ? layout.carrier : 0);
            ++tried;
            const bool toggles = layout.protocol == Protocol::Rc5 || layout.protocol == Protocol::Rc5x ||
                                 layout.protocol == Protocol::Rc6Mode0;
            const bool ok = match && match->protocol == layout.protocol && match->scancode == sc && !match->repeat &&
                            match->toggle == (toggles ? std::optional<bool>(toggle) : std::nullopt);
            if (!ok && ++failures <= 5) {
                examples << "\n  0x" << std::hex << sc << std::dec << " scale " << how.scale << " stretch " << how.stretch
                         << " -> " << (match ? ProtocolName(match->protocol) : "nothing") << " 0x" << std::hex
                         << (match ? match->scancode : 0) << std::dec;
            }
        }
    }
    EXPECT_EQ(failures, 0) << failures << " of " << tried << " frames misread:" << examples.str();
}

INSTANTIATE_TEST_SUITE_P(Protocols, CKeyDecoderGridTest, ::testing::ValuesIn(kLayouts),
                         [](const auto& info) { return std::string(ProtocolName(info.param.protocol)); });

// Frames whose bytes happen to hold the checks are reported as the kernel names them, with the
// scancode that encoder takes for the same frame.
TEST(CKeyDecoderTest, AliasesAreReportedInTheKernelsLayout) {
    struct Case {
        Protocol sent;
        std::uint64_t scancode;
        Protocol protocol;
        std::uint64_t expected;
    };
    const Case cases[] = {
        {Protocol::Nec32, 0xfb04f708, Protocol::Nec, 0x0408},
        {Protocol::Nec32, 0x1234f708, Protocol::NecX, 0x341208},
        {Protocol::NecX, 0x04fb08, Protocol::Nec, 0x0408},
        {Protocol::Rc5, 0x0c4c, Protocol::Rc5x, 0x0c4c},
        {Protocol::Rc5x, 0x0c0c, Protocol::Rc5, 0x0c0c},
        {Protocol::Nec42, (0x1c3ULL | (0x1c3ULL ^ 0x1fff) << 13) << 16 | 0xd2 | (0xd2 ^ 0xff) << 8, Protocol::Sanyo,
         0x1c3d2},
    };
    for (const Case& c : cases) {
        const auto train = CKeyEncoder::Encode(c.sent, c.scancode, false, 0, 38000, 33);
        const auto match = CKeyDecoder::DecodeAt(train.durations, 0, 0, std::nullopt);
        ASSERT_TRUE(match) << ProtocolName(c.sent);
        EXPECT_EQ(std::tie(match->protocol, match->scancode), std::tie(c.protocol, c.expected)) << ProtocolName(c.sent);
    }
}

// Frames that break a protocol's own checks, or are cut short, are not that protocol's keys (a
// Pioneer frame with a broken check still is a valid nec32 frame).
TEST(CKeyDecoderTest, DamagedFramesAreNotKeys) {
    struct Case {
        const char* what;
        Protocol protocol;
        std::uint64_t scancode;
        std::size_t flip;  // index of a space to turn from zero to one or back (0: none)
        std::size_t cut;   // durations dropped from the end
    };
    const Case cases[] = {
        {"rca address check", Protocol::Rca, 0x354, 2 + 2 * 12 + 1, 0},
        {"pioneer command check", Protocol::Pioneer, 0xaf36, 2 + 2 * 24 + 1, 0},
        {"kaseikyo parity", Protocol::Kaseikyo, 0x3254410000 | 0x1b, 2 + 2 * 17 + 1, 0},
        {"kaseikyo check byte", Protocol::Kaseikyo, 0x3254410000 | 0x1b, 2 + 2 * 45 + 1, 0},
        {"nec cut", Protocol::Nec, 0x0408, 0, 6},
        {"sony cut", Protocol::Sony12, 0x010015, 0, 0},
        {"rc6 cut", Protocol::Rc6Mode0, 0x800c, 0, 8},
    };
    for (const Case& c : cases) {
        auto durations = CKeyEncoder::Encode(c.protocol, c.scancode, false, 0, 38000, 33).durations;
        // only the first copy
        durations.resize(std::find_if(durations.begin() + 1, durations.end(), [](std::uint32_t d) { return d > 6000; }) -
                         durations.begin());
        if (c.flip != 0) {
            std::uint32_t& space = durations[c.flip];
            space = space > 1.5 * durations[c.flip - 1] ? durations[c.flip - 1] : 3 * durations[c.flip - 1];
        }
        durations.resize(durations.size() - c.cut);
        if (c.protocol == Protocol::Sony12) durations.resize(durations.size() - 4);
        const auto match = CKeyDecoder::DecodeFrame(durations);
        EXPECT_TRUE(!match || match->protocol != c.protocol) << c.what;
    }
}

}  // namespace
}  // namespace infrared

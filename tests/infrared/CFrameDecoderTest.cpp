// Captures are split into frames, copies of a press folded, noise skipped, keys named by the
// loaded codesets, and what no protocol explains kept as one clean raw frame; the published
// captures and the Flipper test vectors decode as their publishers say.
#include "infrared/decode/CFrameDecoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>

#include "SharedVectors.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/encode/CKeyEncoder.h"
#include "infrared/encode/CProntoCode.h"

namespace infrared {
namespace {

using Kind = DecodedFrame::Kind;

// Appends a train (and the silence after it) to a capture being built.
void Append(std::vector<std::uint32_t>& capture, const std::vector<std::uint32_t>& train, std::uint32_t gap) {
    if (!capture.empty() && capture.size() % 2 == 1) capture.push_back(gap);
    capture.insert(capture.end(), train.begin(), train.end());
}

std::vector<std::uint32_t> Key(Protocol p, std::uint64_t sc, bool toggle = false, std::uint32_t repeats = 0) {
    return CKeyEncoder::Encode(p, sc, toggle, repeats, 38000, 33).durations;
}

std::string Describe(const std::vector<DecodedFrame>& frames) {
    std::ostringstream out;
    for (const auto& f : frames) {
        out << "\n  " << (f.kind == Kind::Key ? ProtocolName(f.protocol) : f.kind == Kind::Raw ? "raw" : "aircon")
            << " 0x" << std::hex << f.scancode << std::dec << (f.repeat ? " repeat" : "")
            << (f.toggle ? (*f.toggle ? " toggle 1" : " toggle 0") : "") << " at " << f.startUs << " for "
            << f.durationUs;
    }
    return out.str();
}

struct Expected {
    Protocol protocol;
    std::uint64_t scancode;
    bool repeat;
    std::optional<bool> toggle;
};

struct Scenario {
    const char* what;
    std::vector<std::uint32_t> capture;
    std::vector<Expected> frames;
};

std::vector<Scenario> Scenarios() {
    const std::vector<std::uint32_t> ditto{9000, 2250, 563};
    std::vector<Scenario> out;
    {
        Scenario s{"nec press held for two repeats", Key(Protocol::Nec, 0x0408), {}};
        Append(s.capture, ditto, 40000);
        Append(s.capture, ditto, 96000);
        s.frames = {{Protocol::Nec, 0x0408, false, {}}, {Protocol::Nec, 0x0408, true, {}}, {Protocol::Nec, 0x0408, true, {}}};
        out.push_back(s);
    }
    out.push_back({"sony press, three copies", Key(Protocol::Sony15, 0x970015), {{Protocol::Sony15, 0x970015, false, {}}}});
    out.push_back({"sharp press, frame and check frame", Key(Protocol::Sharp, 0x1116), {{Protocol::Sharp, 0x1116, false, {}}}});
    out.push_back({"jvc press with header-less copies", Key(Protocol::Jvc, 0x03c1, false, 2), {{Protocol::Jvc, 0x03c1, false, {}}}});
    out.push_back({"pioneer press, two frames", Key(Protocol::Pioneer, 0xaf36), {{Protocol::Pioneer, 0xaf36, false, {}}}});
    {
        Scenario s{"two rc5 presses", Key(Protocol::Rc5, 0x0c0c, false, 1), {}};
        Append(s.capture, Key(Protocol::Rc5, 0x0c0c, true), 90000);
        s.frames = {{Protocol::Rc5, 0x0c0c, false, false}, {Protocol::Rc5, 0x0c0c, false, true}};
        out.push_back(s);
    }
    {
        Scenario s{"one nec key pressed twice, a second apart", Key(Protocol::Nec, 0x0408), {}};
        Append(s.capture, Key(Protocol::Nec, 0x0408), 1000000);
        s.frames = {{Protocol::Nec, 0x0408, false, {}}, {Protocol::Nec, 0x0408, false, {}}};
        out.push_back(s);
    }
    {
        Scenario s{"noise, then an rc6 key, then a kaseikyo key", {120, 3000, 60, 800, 300}, {}};
        Append(s.capture, Key(Protocol::Rc6Mode0, 0x800c), 9000);
        Append(s.capture, Key(Protocol::Kaseikyo, 0x3254410000 | 0x1b), 300000);
        s.frames = {{Protocol::Rc6Mode0, 0x800c, false, false}, {Protocol::Kaseikyo, 0x325441001b, false, {}}};
        out.push_back(s);
    }
    return out;
}

TEST(CFrameDecoderTest, SplitsFoldsAndReportsEachPress) {
    const CFrameDecoder decoder(nullptr);
    for (const Scenario& s : Scenarios()) {
        Capture capture;
        capture.durations = s.capture;
        const auto frames = decoder.Decode(capture);
        ASSERT_EQ(frames.size(), s.frames.size()) << s.what << Describe(frames);
        for (std::size_t i = 0; i < frames.size(); ++i) {
            EXPECT_EQ(frames[i].kind, Kind::Key) << s.what;
            EXPECT_EQ(frames[i].protocol, s.frames[i].protocol) << s.what << Describe(frames);
            EXPECT_EQ(frames[i].scancode, s.frames[i].scancode) << s.what << Describe(frames);
            EXPECT_EQ(frames[i].repeat, s.frames[i].repeat) << s.what << Describe(frames);
            EXPECT_EQ(frames[i].toggle, s.frames[i].toggle) << s.what << Describe(frames);
        }
    }
}

TEST(CFrameDecoderTest, FramesCarryTheirTimeOnTheCapturesClock) {
    Capture capture;
    capture.startUs = 5000000;
    capture.durations = {100, 20000};  // noise, then silence
    const auto press = Key(Protocol::Sony12, 0x010015);
    Append(capture.durations, press, 20000);
    const auto frames = CFrameDecoder(nullptr).Decode(capture);
    ASSERT_EQ(frames.size(), 1u) << Describe(frames);
    EXPECT_EQ(frames[0].startUs, 5000000u + 100 + 20000);
    std::uint64_t length = 0;
    for (const auto d : press) length += d;
    EXPECT_EQ(frames[0].durationUs, length) << "three copies, first mark to last mark";
}

TEST(CFrameDecoderTest, UnknownSignalIsOneCleanRawFrameWithItsPronto) {
    const std::vector<std::uint32_t> copy{3000, 3000, 1000, 500, 1000, 2000, 1000, 500, 3000};
    Capture capture;
    capture.carrier = 40000;
    for (int i = 0; i < 3; ++i) Append(capture.durations, copy, 30000);
    capture.durations[5] += 10;  // a glitch inside the second duration's neighbours is merged away
    capture.durations.insert(capture.durations.begin() + 2, {20, 15});
    const auto frames = CFrameDecoder(nullptr).Decode(capture);
    ASSERT_EQ(frames.size(), 1u) << Describe(frames);
    const DecodedFrame& raw = frames[0];
    EXPECT_EQ(raw.kind, Kind::Raw);
    EXPECT_EQ(raw.carrier, 40000u);
    ASSERT_EQ(raw.durations.size(), copy.size());
    const PulseTrain back = CProntoCode::Parse(raw.pronto);
    EXPECT_NEAR(back.carrier, 40000.0, 200);
    ASSERT_EQ(back.durations.size(), copy.size());
    for (std::size_t i = 0; i < copy.size(); ++i) {
        EXPECT_NEAR(raw.durations[i], copy[i], 60) << i;
        EXPECT_NEAR(back.durations[i], raw.durations[i], 26) << "one carrier period at most, " << i;
    }
}

// Every key of the shipped codesets, sent as the library sends it, is named by the decoder.
TEST(CFrameDecoderTest, KeysOfLoadedCodesetsAreNamed) {
    const auto library = CCodesetLibrary::Parse(DefaultCodesetsText());
    const CFrameDecoder decoder(library);
    int named = 0;
    for (const Codeset& codeset : library->Codesets()) {
        for (const CodesetKey& key : codeset.keys) {
            Capture capture;
            if (HasScancode(codeset.protocol)) {
                capture.durations = Key(codeset.protocol, key.scancode);
            } else if (codeset.protocol == Protocol::Pronto) {
                capture.durations = CProntoCode::Parse(key.pronto).durations;
            } else {
                continue;
            }
            const auto frames = decoder.Decode(capture);
            ASSERT_FALSE(frames.empty()) << codeset.name << " " << key.name;
            EXPECT_EQ(frames[0].codeset, codeset.name) << key.name;
            EXPECT_EQ(frames[0].key, key.name) << codeset.name;
            EXPECT_EQ(frames[0].code, key.code) << codeset.name << " " << key.name;
            ++named;
        }
    }
    EXPECT_GT(named, 10);
}

// Hostile captures: nothing crashes, every frame lies within the capture.
TEST(CFrameDecoderTest, JunkNeverCrashesAndFramesStayInside) {
    std::mt19937 rng(7);
    std::uniform_int_distribution<std::uint32_t> small(0, 3000), any;
    const CFrameDecoder decoder(nullptr);
    for (int round = 0; round < 200; ++round) {
        Capture capture;
        capture.durations.resize(rng() % 700);
        for (auto& d : capture.durations) d = round % 3 == 0 ? any(rng) : small(rng);
        std::uint64_t total = 0;
        for (const auto d : capture.durations) total += d;
        for (const DecodedFrame& f : decoder.Decode(capture)) {
            EXPECT_LE(f.startUs + f.durationUs, total) << round;
            if (f.kind == Kind::Raw) {
                EXPECT_EQ(f.durations.size() % 2, 1u) << round;
            }
        }
    }
    EXPECT_TRUE(decoder.Decode(Capture{}).empty());
    EXPECT_TRUE(decoder.Decode(Capture{{0, 0, 0}, 0, 0}).empty());
}

// The published captures' conventions (docs/codesets.md, "Decoding"): `value` holds the frame's
// bits in arrival order with the first bit highest, the kernel layouts count the first bit as
// bit 0; their NEC address is 8 bits when its complement follows, else 16 bits, low byte first.
std::uint64_t Reverse(std::uint64_t value, unsigned bits) {
    std::uint64_t out = 0;
    for (unsigned i = 0; i < bits; ++i) out |= (value >> i & 1) << (bits - 1 - i);
    return out;
}

std::uint64_t ReverseBytes(std::uint64_t value, unsigned bytes) {
    std::uint64_t out = 0;
    for (unsigned i = 0; i < bytes; ++i) out |= Reverse(value >> (8 * (bytes - 1 - i)) & 0xff, 8) << (8 * i);
    return out;
}

// What the capture must decode to, as (protocol, scancode); nullopt for a protocol this library
// does not have (RC-6 mode 6A, Denon's variant of Sharp, 40-bit Panasonic, the AC protocols).
std::optional<Expected> Published(const irtest::PublishedCapture& c) {
    const std::uint64_t a = c.address.value_or(0), cmd = c.command.value_or(0);
    if (c.protocol == "NEC" || c.protocol == "NEC_LIKE") {
        if (c.repeat && c.bits == 0) return Expected{Protocol::Nec, 0, true, {}};
        if (c.address && c.command) {
            if (a <= 0xff) return Expected{Protocol::Nec, a << 8 | cmd, false, {}};
            return Expected{Protocol::NecX, (a & 0xff) << 16 | (a >> 8) << 8 | cmd, false, {}};
        }
        if (c.value) {  // the bytes as sent, in nec32's layout, which takes any 32 bits
            const std::uint64_t b = ReverseBytes(*c.value, 4);
            return Expected{Protocol::Nec32, (b >> 8 & 0xff) << 24 | (b & 0xff) << 16 | (b >> 24) << 8 | (b >> 16 & 0xff), false, {}};
        }
        return Expected{Protocol::Nec32, 0, false, {}};  // no value published: any NEC frame
    }
    if (c.protocol == "SONY" && c.bits == 12) return Expected{Protocol::Sony12, a << 16 | cmd, false, {}};
    if (c.protocol == "JVC") return Expected{Protocol::Jvc, a << 8 | cmd, false, {}};
    if (c.protocol == "SHARP") return Expected{Protocol::Sharp, a << 8 | cmd, false, {}};
    // Their LC7461 address and command are read first bit highest, too.
    if (c.protocol == "SANYO_LC7461") return Expected{Protocol::Sanyo, Reverse(a, 13) << 8 | Reverse(cmd, 8), false, {}};
    if (c.protocol == "PIONEER") return Expected{Protocol::Pioneer, a, false, {}};
    if (c.protocol == "PANASONIC" && c.bits == 48 && c.value) {
        const std::uint64_t b = Reverse(*c.value, 48);
        const std::uint64_t address = (b >> 38 & 3) << 24 | (b & 0xffff) << 8 | (b >> 20 & 0xf) << 4 | (b >> 24 & 0xf);
        return Expected{Protocol::Kaseikyo, address << 16 | (b >> 28 & 0x3ff), false, {}};
    }
    return std::nullopt;
}

// Two keys send the same frame (nec and nec32 spellings of one frame count as one).
bool SameFrame(Protocol p1, std::uint64_t s1, Protocol p2, std::uint64_t s2) {
    if (p1 == p2 && s1 == s2) return true;
    if (!HasScancode(p1) || !HasScancode(p2)) return false;
    return CKeyEncoder::Encode(p1, s1, false, 0, 38000, 33).durations ==
           CKeyEncoder::Encode(p2, s2, false, 0, 38000, 33).durations;
}

TEST(CFrameDecoderVectorsTest, PublishedCapturesDecodeToTheirValues) {
    const auto captures = irtest::ReadCaptures();
    if (!captures) GTEST_SKIP() << "no " << irtest::SharedIrDir() << "/vectors/captures.json: published captures not checked";
    const CFrameDecoder decoder(nullptr);
    int checked = 0;
    for (const auto& c : *captures) {
        const auto expected = Published(c);
        if (!expected) continue;
        ++checked;
        Capture capture;
        capture.durations = c.durations;
        const auto frames = decoder.Decode(capture);
        SCOPED_TRACE(c.protocol + " " + c.source + Describe(frames));
        ASSERT_FALSE(frames.empty());
        const DecodedFrame& f = frames[0];
        ASSERT_EQ(f.kind, Kind::Key);
        EXPECT_EQ(f.repeat, expected->repeat);
        if (expected->repeat) continue;
        if (expected->protocol == Protocol::Nec32 && expected->scancode == 0) {
            EXPECT_TRUE(f.protocol == Protocol::Nec || f.protocol == Protocol::NecX || f.protocol == Protocol::Nec32);
        } else {
            EXPECT_TRUE(SameFrame(f.protocol, f.scancode, expected->protocol, expected->scancode))
                << "expected " << ProtocolName(expected->protocol) << " 0x" << std::hex << expected->scancode;
        }
    }
    EXPECT_GE(checked, 10);
}

// The Flipper format's names and numbers in this library's layouts (docs/codesets.md).
std::optional<Expected> FlipperKey(const irtest::FlipperMessage& m) {
    const std::uint64_t a = m.address, c = m.command;
    const std::string& p = m.protocol;
    if (p == "NEC") return Expected{Protocol::Nec, a << 8 | c, m.repeat, {}};
    if (p == "NECext") return Expected{Protocol::Nec32, a << 16 | c, m.repeat, {}};
    if (p == "NEC42") return Expected{Protocol::Sanyo, a << 8 | c, m.repeat, {}};
    if (p == "NEC42ext") return Expected{Protocol::Nec42, a << 16 | c, m.repeat, {}};
    if (p == "RC5") return Expected{Protocol::Rc5, a << 8 | c, m.repeat, {}};
    if (p == "RC5X") return Expected{Protocol::Rc5x, a << 8 | 0x40 | c, m.repeat, {}};
    if (p == "RC6") return Expected{Protocol::Rc6Mode0, a << 8 | c, m.repeat, {}};
    if (p == "SIRC") return Expected{Protocol::Sony12, a << 16 | c, false, {}};
    if (p == "SIRC15") return Expected{Protocol::Sony15, a << 16 | c, false, {}};
    if (p == "SIRC20") return Expected{Protocol::Sony20, (a & 0x1f) << 16 | (a >> 5) << 8 | c, false, {}};
    if (p == "Kaseikyo") return Expected{Protocol::Kaseikyo, a << 16 | c, m.repeat, {}};
    if (p == "RCA") return Expected{Protocol::Rca, a << 8 | c, m.repeat, {}};
    if (p == "Pioneer") return Expected{Protocol::Pioneer, a << 8 | c, m.repeat, {}};
    return std::nullopt;
}

bool IsNec(Protocol p) { return p == Protocol::Nec || p == Protocol::NecX || p == Protocol::Nec32; }

// Each Flipper message must lie within a frame decoded as that key (copies of a press are one
// frame here, where the Flipper lists each), and every key frame must hold a message. The vectors
// cut a capture at the silence before each decoded frame, so a message's frame starts where its
// timings do, except the first one's, which may follow frames the Flipper did not decode.
TEST(CFrameDecoderVectorsTest, FlipperTestVectorsDecodeAsStated) {
    const auto messages = irtest::ReadFlipperDecodeVectors();
    if (!messages) GTEST_SKIP() << "no " << irtest::SharedIrDir() << "/vectors/flipper-irtest.json: Flipper vectors not checked";
    std::vector<std::pair<std::string, std::vector<const irtest::FlipperMessage*>>> sources;
    for (const auto& m : *messages) {
        if (sources.empty() || sources.back().first != m.source) sources.push_back({m.source, {}});
        sources.back().second.push_back(&m);
    }
    const CFrameDecoder decoder(nullptr);
    int checked = 0, wrong = 0;
    for (const auto& [source, list] : sources) {
        Capture capture;
        struct Span {
            std::uint64_t from, to;  // where the message's frame may start
            Expected key;
        };
        std::vector<Span> expected;
        for (const auto* m : list) {
            std::uint64_t at = 0;
            for (const auto d : capture.durations) at += d;
            if (!capture.durations.empty()) at += m->timings[0];
            Append(capture.durations, std::vector<std::uint32_t>(m->timings.begin() + 1, m->timings.end()), m->timings[0]);
            std::uint64_t end = at;
            for (std::size_t i = 1; i < m->timings.size(); ++i) end += m->timings[i];
            auto key = FlipperKey(*m);
            ASSERT_TRUE(key) << m->protocol;
            expected.push_back({at, expected.empty() ? end : at, *key});
        }
        const auto frames = decoder.Decode(capture);
        ++checked;
        std::ostringstream problems;
        std::vector<bool> held(frames.size(), false);
        for (const auto& [from, to, key] : expected) {
            const bool ditto = key.repeat && (IsNec(key.protocol) || key.protocol == Protocol::Sanyo ||
                                              key.protocol == Protocol::Nec42);
            bool found = false;
            for (std::size_t i = 0; i < frames.size() && !found; ++i) {
                const DecodedFrame& f = frames[i];
                if (f.kind != Kind::Key || to + 1000 < f.startUs || from >= f.startUs + f.durationUs + 1000) continue;
                found = ditto ? f.repeat : !f.repeat && SameFrame(f.protocol, f.scancode, key.protocol, key.scancode);
                held[i] = held[i] || found;
            }
            if (!found) problems << "\n  no " << ProtocolName(key.protocol) << " 0x" << std::hex << key.scancode << std::dec
                                 << (ditto ? " repeat" : "") << " at " << from;
        }
        for (std::size_t i = 0; i < frames.size(); ++i) {
            // The Flipper's receiver keeps only the second frame of a two-frame Pioneer key (25.5 ms
            // apart, under its 26 ms end-of-frame silence); a capture that ends mid-frame leaves a
            // raw frame here that the Flipper drops.
            const bool pioneerFirst = i + 1 < frames.size() && frames[i].protocol == Protocol::Pioneer &&
                                      frames[i + 1].protocol == Protocol::Pioneer;
            if (!held[i] && frames[i].kind == Kind::Key && !pioneerFirst) {
                problems << "\n  an extra frame " << Describe({frames[i]});
            }
        }
        if (!problems.str().empty() && ++wrong <= 8) ADD_FAILURE() << source << ":" << problems.str();
    }
    EXPECT_EQ(wrong, 0) << wrong << " of " << checked << " captures";
}

}  // namespace
}  // namespace infrared

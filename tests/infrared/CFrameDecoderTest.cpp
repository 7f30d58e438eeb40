// Captures are split into frames, copies of a press folded, noise skipped, keys named by the
// loaded codesets, and what no protocol explains kept as one clean raw frame; the published
// captures and the Flipper test vectors decode as their publishers say.
#include "infrared/decode/CFrameDecoder.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace infrared

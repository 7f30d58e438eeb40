// Captures are split into frames, copies of a press folded, noise skipped, keys named by the
// loaded codesets, and what no protocol explains kept as one clean raw frame; published captures
// of real air conditioners' remotes decode as their publisher says.
#include "infrared/decode/CFrameDecoder.h"

#include <gtest/gtest.h>

#include "AcVectors.h"

#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/encode/CKeyEncoder.h"
#include "infrared/encode/CProntoCode.h"

namespace infrared {
namespace {

using Kind = DecodedFrame::Kind;
using Durations = std::vector<std::uint32_t>;

// The trains one after another, each after the silence given with it (the first one's unused).
Durations Join(const std::vector<std::pair<std::uint32_t, Durations>>& trains) {
    Durations capture;
    for (const auto& [gap, train] : trains) {
        if (!capture.empty()) capture.push_back(gap);
        capture.insert(capture.end(), train.begin(), train.end());
    }
    return capture;
}

Durations Key(Protocol p, std::uint64_t sc, bool toggle = false, std::uint32_t repeats = 0) {
    return CKeyEncoder::Encode(p, sc, toggle, repeats, 38000, 33).durations;
}

std::vector<DecodedFrame> Decode(const Durations& durations, std::shared_ptr<const CCodesetLibrary> library = nullptr) {
    Capture capture;
    capture.durations = durations;
    return CFrameDecoder(std::move(library)).Decode(capture);
}

// A key frame: protocol, scancode, whether it is a repeat frame, its toggle bit.
using Expected = std::tuple<Protocol, std::uint64_t, bool, std::optional<bool>>;

TEST(CFrameDecoderTest, SplitsFoldsAndReportsEachPress) {
    const Durations ditto{9000, 2250, 563};
    const Protocol nec = Protocol::Nec, rc5 = Protocol::Rc5, jvc = Protocol::Jvc;
    const struct {
        const char* what;
        Durations capture;
        std::vector<Expected> frames;
    } scenarios[] = {
        {"nec press, a second later again and held for two repeats",
         Join({{0, Key(nec, 0x0408)}, {1000000, Key(nec, 0x0408)}, {40000, ditto}, {96000, ditto}}),
         {{nec, 0x0408, false, {}}, {nec, 0x0408, false, {}}, {nec, 0x0408, true, {}}, {nec, 0x0408, true, {}}}},
        {"sharp press, frame and check frame", Key(Protocol::Sharp, 0x1116), {{Protocol::Sharp, 0x1116, false, {}}}},
        {"jvc press with header-less copies", Key(jvc, 0x03c1, false, 2), {{jvc, 0x03c1, false, {}}}},
        {"nec-timed frames under half a frame apart: a pioneer press",
         Join({{0, Key(nec, 0xaf36)}, {25000, Key(nec, 0xaf36)}}),
         {{Protocol::Pioneer, 0xaf36, false, {}}}},
        {"two rc5 presses",
         Join({{0, Key(rc5, 0x0c0c, false, 1)}, {90000, Key(rc5, 0x0c0c, true)}}),
         {{rc5, 0x0c0c, false, false}, {rc5, 0x0c0c, false, true}}},
        {"noise, then a kaseikyo key",
         Join({{0, {120, 3000, 60, 800, 300}}, {9000, Key(Protocol::Kaseikyo, 0x325441001b)}}),
         {{Protocol::Kaseikyo, 0x325441001b, false, {}}}},
    };
    for (const auto& s : scenarios) {
        const auto frames = Decode(s.capture);
        SCOPED_TRACE(s.what);
        ASSERT_EQ(frames.size(), s.frames.size());
        std::uint64_t length = 0;
        for (const auto d : s.capture) length += d;
        EXPECT_EQ(frames.back().startUs + frames.back().durationUs, length) << "copies held up to the capture's end";
        for (std::size_t i = 0; i < frames.size(); ++i) {
            const DecodedFrame& f = frames[i];
            EXPECT_EQ(std::tie(f.protocol, f.scancode, f.repeat, f.toggle), s.frames[i]);
        }
    }
}

// Silence before the first mark and a burst too short to be a signal still count on the
// capture's clock.
TEST(CFrameDecoderTest, UnknownSignalIsOneCleanRawFrameWithItsPronto) {
    const Durations copy{3000, 3000, 1000, 500, 1000, 2000, 1000, 500, 3000};
    Capture capture;
    capture.carrier = 40000;
    capture.startUs = 5000000;
    capture.durations = Join({{0, {0}}, {20000, {100}}, {60000, copy}, {30000, copy}, {30000, copy}});
    capture.durations[9] += 10;
    capture.durations.insert(capture.durations.begin() + 6, {20, 15});  // a glitch, merged away
    std::uint64_t length = 0;
    for (const auto d : capture.durations) length += d;
    const auto frames = CFrameDecoder(nullptr).Decode(capture);
    ASSERT_EQ(frames.size(), 1u);
    const DecodedFrame& raw = frames[0];
    EXPECT_EQ(std::tie(raw.kind, raw.carrier), std::make_tuple(Kind::Raw, capture.carrier));
    EXPECT_EQ(std::tie(raw.startUs, raw.durationUs), std::make_tuple(5000000u + 80100, length - 80100));
    ASSERT_EQ(raw.durations.size(), copy.size());
    for (std::size_t i = 0; i < copy.size(); ++i) EXPECT_NEAR(raw.durations[i], copy[i], 60) << i;
    EXPECT_EQ(CProntoCode::Parse(raw.pronto).durations.size(), copy.size());
}

// Every key of the shipped codesets, sent as the library sends it (a Sony key as three copies),
// is one frame, from the first mark to the last, named by its own codeset. Air-conditioner
// frames are named through the key learner's tests.
TEST(CFrameDecoderTest, ShippedKeysAreWholeAndNamed) {
    const auto library = CCodesetLibrary::Parse(DefaultCodesetsText());
    int keys = 0;
    for (const Codeset& codeset : library->Codesets()) {
        for (const CodesetKey& key : codeset.keys) {
            const bool pronto = codeset.protocol == Protocol::Pronto;
            if (!pronto && !HasScancode(codeset.protocol)) continue;
            const Durations train =
                pronto ? CProntoCode::Parse(key.pronto).durations : Key(codeset.protocol, key.scancode);
            std::uint64_t length = 0;
            for (const auto d : train) length += d;
            const auto frames = Decode(train, library);
            ASSERT_EQ(frames.size(), 1u) << codeset.name << " " << key.name;
            EXPECT_EQ(std::tie(frames[0].codeset, frames[0].key, frames[0].code, frames[0].durationUs),
                      std::tie(codeset.name, key.name, key.code, length));
            ++keys;
        }
    }
    EXPECT_GT(keys, 10);
}

// Real remotes' timings, not ours: captures of the shipped air-conditioner families name their
// family and read back as the published bytes.
TEST(CFrameDecoderVectorsTest, PublishedAirConditionerCapturesDecodeToTheirBytes) {
    const auto json = irtest::SharedIr("vectors/captures.json");
    if (json.isNull()) GTEST_SKIP() << "../shared/ir/vectors/captures.json is not beside the repository";
    const auto library = CCodesetLibrary::Parse(DefaultCodesetsText());
    int aircon = 0;
    for (unsigned i = 0; i < json["captures"].size(); ++i) {
        const auto& c = json["captures"][i];
        SCOPED_TRACE(c["source"].asString());
        Durations durations;
        for (unsigned d = 0; d < c["durations"].size(); ++d) durations.push_back(c["durations"][d].asInt64());
        const Codeset* codeset = irtest::ShippedFamily(c["protocol"].asString());
        if (codeset == nullptr) continue;
        const auto bytes = irtest::RecordBytes(c["expected"], codeset->frame.bytes.size());
        if (bytes.empty() || !irtest::SameModel(codeset->frame, bytes)) continue;
        const auto frames = Decode(durations, library);
        ASSERT_FALSE(frames.empty());
        EXPECT_EQ(frames[0].kind, Kind::Aircon);
        EXPECT_EQ(std::tie(frames[0].family, frames[0].bytes), std::tie(codeset->family, bytes));
        ++aircon;
    }
    EXPECT_GT(aircon, 15);
}

}  // namespace
}  // namespace infrared

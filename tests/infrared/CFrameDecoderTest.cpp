// Captures are split into frames, copies of a press folded, noise skipped, keys named by the
// loaded codesets, and what no protocol explains kept as one clean raw frame; the published
// captures and the Flipper test vectors decode as their publishers say.
#include "infrared/decode/CFrameDecoder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <sstream>

#include "AcVectors.h"
#include "ImportSupport.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/encode/CKeyEncoder.h"
#include "infrared/encode/CProntoCode.h"
#include "infrared/import/CCodesetImporter.h"

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

std::string Describe(const std::vector<DecodedFrame>& frames) {
    std::ostringstream out;
    for (const auto& f : frames) {
        out << "\n  " << (f.kind == Kind::Key ? ProtocolName(f.protocol) : f.kind == Kind::Raw ? "raw" : "aircon")
            << " 0x" << std::hex << f.scancode << std::dec << (f.repeat ? " repeat" : "") << " at " << f.startUs;
    }
    return out.str();
}

// Two keys send the same frame (nec and nec32 spellings of one frame count as one).
bool SameFrame(Protocol p1, std::uint64_t s1, Protocol p2, std::uint64_t s2) {
    if (p1 == p2 && s1 == s2) return true;
    return HasScancode(p1) && HasScancode(p2) && Key(p1, s1) == Key(p2, s2);
}

struct Expected {
    Protocol protocol;
    std::uint64_t scancode;
    bool repeat;
    std::optional<bool> toggle;
};

TEST(CFrameDecoderTest, SplitsFoldsAndReportsEachPress) {
    const Durations ditto{9000, 2250, 563};
    const Protocol nec = Protocol::Nec, rc5 = Protocol::Rc5;
    const struct {
        const char* what;
        Durations capture;
        std::vector<Expected> frames;
    } scenarios[] = {
        {"nec press held for two repeats",
         Join({{0, Key(nec, 0x0408)}, {40000, ditto}, {96000, ditto}}),
         {{nec, 0x0408, false, {}}, {nec, 0x0408, true, {}}, {nec, 0x0408, true, {}}}},
        {"sharp press, frame and check frame", Key(Protocol::Sharp, 0x1116), {{Protocol::Sharp, 0x1116, false, {}}}},
        {"jvc press with header-less copies",
         Key(Protocol::Jvc, 0x03c1, false, 2),
         {{Protocol::Jvc, 0x03c1, false, {}}}},
        {"pioneer press, two frames", Key(Protocol::Pioneer, 0xaf36), {{Protocol::Pioneer, 0xaf36, false, {}}}},
        {"two rc5 presses",
         Join({{0, Key(rc5, 0x0c0c, false, 1)}, {90000, Key(rc5, 0x0c0c, true)}}),
         {{rc5, 0x0c0c, false, false}, {rc5, 0x0c0c, false, true}}},
        {"one nec key pressed twice, a second apart",
         Join({{0, Key(nec, 0x0408)}, {1000000, Key(nec, 0x0408)}}),
         {{nec, 0x0408, false, {}}, {nec, 0x0408, false, {}}}},
        {"noise, then an rc6 key, then a kaseikyo key",
         Join({{0, {120, 3000, 60, 800, 300}},
               {9000, Key(Protocol::Rc6Mode0, 0x800c)},
               {300000, Key(Protocol::Kaseikyo, 0x325441001b)}}),
         {{Protocol::Rc6Mode0, 0x800c, false, false}, {Protocol::Kaseikyo, 0x325441001b, false, {}}}},
    };
    for (const auto& s : scenarios) {
        const auto frames = Decode(s.capture);
        SCOPED_TRACE(s.what + Describe(frames));
        ASSERT_EQ(frames.size(), s.frames.size());
        for (std::size_t i = 0; i < frames.size(); ++i) {
            const Expected& e = s.frames[i];
            EXPECT_EQ(frames[i].kind, Kind::Key);
            EXPECT_EQ(std::tie(frames[i].protocol, frames[i].scancode, frames[i].repeat, frames[i].toggle),
                      std::tie(e.protocol, e.scancode, e.repeat, e.toggle));
        }
    }
}

TEST(CFrameDecoderTest, FramesCarryTheirTimeOnTheCapturesClock) {
    const auto press = Key(Protocol::Sony12, 0x010015);
    std::uint64_t length = 0;
    for (const auto d : press) length += d;
    for (const std::uint32_t noise : {100u, 20u}) {  // a pulse, then a glitch merged away: its time still counts
        Capture capture;
        capture.startUs = 5000000;
        capture.durations = Join({{0, {noise}}, {20000, press}});
        const auto frames = CFrameDecoder(nullptr).Decode(capture);
        ASSERT_EQ(frames.size(), 1u) << Describe(frames);
        EXPECT_EQ(frames[0].startUs, 5000000u + noise + 20000);
        EXPECT_EQ(frames[0].durationUs, length) << "three copies, first mark to last mark";
    }
}

TEST(CFrameDecoderTest, UnknownSignalIsOneCleanRawFrameWithItsPronto) {
    const Durations copy{3000, 3000, 1000, 500, 1000, 2000, 1000, 500, 3000};
    Capture capture;
    capture.carrier = 40000;
    capture.durations = Join({{0, copy}, {30000, copy}, {30000, copy}});
    capture.durations[5] += 10;
    capture.durations.insert(capture.durations.begin() + 2, {20, 15});  // a glitch, merged away
    const auto frames = CFrameDecoder(nullptr).Decode(capture);
    ASSERT_EQ(frames.size(), 1u) << Describe(frames);
    const DecodedFrame& raw = frames[0];
    EXPECT_EQ(raw.kind, Kind::Raw);
    EXPECT_EQ(raw.carrier, 40000u);
    const PulseTrain back = CProntoCode::Parse(raw.pronto);
    EXPECT_NEAR(back.carrier, 40000.0, 200);
    ASSERT_EQ(raw.durations.size(), copy.size());
    ASSERT_EQ(back.durations.size(), copy.size());
    for (std::size_t i = 0; i < copy.size(); ++i) {
        EXPECT_NEAR(raw.durations[i], copy[i], 60) << i;
        EXPECT_NEAR(back.durations[i], raw.durations[i], 26) << "one carrier period at most, " << i;
    }
}

// Every key and air-conditioner frame of the shipped codesets, sent as the library sends it (a
// Sony key as three copies), is one frame named by its own codeset, also when a key press follows.
TEST(CFrameDecoderTest, ShippedKeysAndAirConditionerFramesAreWholeAndNamed) {
    const auto library = CCodesetLibrary::Parse(DefaultCodesetsText());
    int keys = 0, families = 0;
    for (const Codeset& codeset : library->Codesets()) {
        for (const CodesetKey& key : codeset.keys) {
            const bool pronto = codeset.protocol == Protocol::Pronto;
            if (!pronto && !HasScancode(codeset.protocol)) continue;
            const auto frames = Decode(pronto ? CProntoCode::Parse(key.pronto).durations
                                              : Key(codeset.protocol, key.scancode), library);
            ASSERT_EQ(frames.size(), 1u) << codeset.name << " " << key.name << Describe(frames);
            EXPECT_EQ(std::tie(frames[0].codeset, frames[0].key, frames[0].code),
                      std::tie(codeset.name, key.name, key.code));
            ++keys;
        }
        if (codeset.protocol != Protocol::Aircon) continue;
        const AcFrameFormat& f = codeset.frame;
        const AcState state{"on", f.mode.values.front().first, std::to_string(static_cast<int>(f.setpoint.max)),
                            f.fan.values.front().first};
        const auto bytes = CAcFrameEncoder::BuildFrame(f, state);
        const auto train = CAcFrameEncoder::Encode(f, bytes, codeset.carrier, codeset.dutyCycle).durations;
        const auto frames = Decode(Join({{0, train}, {200000, Key(Protocol::Nec, 0x0408)}}), library);
        SCOPED_TRACE(codeset.name + " " + codeset.family + Describe(frames));
        ASSERT_EQ(frames.size(), 2u);
        EXPECT_EQ(frames[0].kind, Kind::Aircon);
        EXPECT_EQ(std::tie(frames[0].codeset, frames[0].family, frames[0].bytes, frames[0].state.power),
                  std::tie(codeset.name, codeset.family, bytes, state.power));
        EXPECT_EQ(frames[1].protocol, Protocol::Nec);
        ++families;
    }
    EXPECT_GT(keys, 10);
    EXPECT_GT(families, 10);
}

// Hostile captures: nothing crashes, every frame lies within the capture.
TEST(CFrameDecoderTest, JunkNeverCrashesAndFramesStayInside) {
    std::mt19937 rng(7);
    std::uniform_int_distribution<std::uint32_t> small(0, 3000), any;
    for (int round = 0; round < 200; ++round) {
        Durations durations(rng() % 700);
        for (auto& d : durations) d = round % 3 == 0 ? any(rng) : small(rng);
        std::uint64_t total = 0;
        for (const auto d : durations) total += d;
        for (const DecodedFrame& f : Decode(durations)) {
            EXPECT_LE(f.startUs + f.durationUs, total) << round;
            EXPECT_TRUE(f.kind != Kind::Raw || f.durations.size() % 2 == 1) << round;
        }
    }
    EXPECT_TRUE(Decode({}).empty());
    EXPECT_TRUE(Decode({0, 0, 0}).empty());
}

// The published captures and Flipper test vectors beside the repository (nothing when absent).
// A capture's `expected` is what that library decoded, in its own conventions.
struct PublishedCapture {
    std::string protocol, source;
    Durations durations;  // mark first
    unsigned bits = 0;
    std::optional<std::uint64_t> value, address, command;
    bool repeat = false;
    irtest::JsonValue expected;
};

// One decoded message of the Flipper test vectors; `timings` start with the silence before it.
struct FlipperMessage {
    std::string protocol, source;
    std::uint32_t address = 0, command = 0;
    bool repeat = false;
    Durations timings;
};

std::optional<std::uint64_t> Hex(const irtest::JsonValue& value) {
    if (!value.isString()) return std::nullopt;
    return std::strtoull(value.asString().c_str(), nullptr, 16);
}

Durations DurationsOf(const irtest::JsonValue& list) {
    Durations out;
    for (unsigned i = 0; i < list.size(); ++i) out.push_back(static_cast<std::uint32_t>(list[i].asInt64()));
    return out;
}

std::optional<std::vector<PublishedCapture>> ReadCaptures() {
    const auto json = irtest::SharedIr("vectors/captures.json");
    if (json.isNull()) return std::nullopt;
    std::vector<PublishedCapture> out;
    for (unsigned i = 0; i < json["captures"].size(); ++i) {
        const auto& c = json["captures"][i];
        const auto& e = c["expected"];
        out.push_back({c["protocol"].asString(), c["source"].asString(), DurationsOf(c["durations"]),
                       static_cast<unsigned>(e["bits"].asInt64()), Hex(e["value"]), Hex(e["address"]),
                       Hex(e["command"]), e["repeat"].isBool() && e["repeat"].asBool(), e});
    }
    return out;
}

std::optional<std::vector<FlipperMessage>> ReadFlipperDecodeVectors() {
    const auto json = irtest::SharedIr("vectors/flipper-irtest.json");
    if (json.isNull()) return std::nullopt;
    std::vector<FlipperMessage> out;
    for (unsigned i = 0; i < json.size(); ++i) {
        const auto& e = json[i];
        if (e["direction"].asString() != "decode") continue;
        out.push_back({e["protocol"].asString(), e["source"].asString(),
                       static_cast<std::uint32_t>(e["address"].asInt64()),
                       static_cast<std::uint32_t>(e["command"].asInt64()), e["repeat"].asBool(),
                       DurationsOf(e["timings"])});
    }
    return out;
}

const std::string kShared = IRC_SOURCE_DIR "/../shared/ir";

// The published captures' conventions (docs/codesets.md, "Decoding"): `value` holds the frame's
// bits in arrival order with the first bit highest, the kernel layouts count the first bit as
// bit 0; their NEC address is 8 bits when its complement follows, else 16 bits, low byte first.
std::uint64_t Reverse(std::uint64_t value, unsigned bits) {
    std::uint64_t out = 0;
    for (unsigned i = 0; i < bits; ++i) out |= (value >> i & 1) << (bits - 1 - i);
    return out;
}

// What the capture must decode to; nullopt for a protocol this library does not have (RC-6
// mode 6A, Denon's variant of Sharp, 40-bit Panasonic, the AC protocols).
std::optional<Expected> Published(const PublishedCapture& c) {
    const std::uint64_t a = c.address.value_or(0), cmd = c.command.value_or(0);
    if (c.protocol == "NEC" || c.protocol == "NEC_LIKE") {
        if (c.repeat && c.bits == 0) return Expected{Protocol::Nec, 0, true, {}};
        if (c.address && c.command) {
            if (a <= 0xff) return Expected{Protocol::Nec, a << 8 | cmd, false, {}};
            return Expected{Protocol::NecX, (a & 0xff) << 16 | (a >> 8) << 8 | cmd, false, {}};
        }
        if (!c.value) return Expected{Protocol::Nec32, 0, false, {}};  // no value published: any NEC frame
        std::uint64_t b = 0;  // the bytes as sent, in nec32's layout, which takes any 32 bits
        for (unsigned i = 0; i < 4; ++i) b |= Reverse(*c.value >> (8 * (3 - i)) & 0xff, 8) << (8 * i);
        return Expected{
            Protocol::Nec32, (b >> 8 & 0xff) << 24 | (b & 0xff) << 16 | (b >> 24) << 8 | (b >> 16 & 0xff), false, {}};
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

TEST(CFrameDecoderVectorsTest, PublishedCapturesDecodeToTheirValues) {
    const auto captures = ReadCaptures();
    if (!captures) GTEST_SKIP() << "no " << kShared << "/vectors/captures.json: not checked";
    int checked = 0;
    for (const auto& c : *captures) {
        const auto expected = Published(c);
        if (!expected) continue;
        ++checked;
        const auto frames = Decode(c.durations);
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

// The key the importer makes of a Flipper message (its mapping is pinned by hand in its own test).
Expected Imported(const FlipperMessage& m) {
    char fields[96];
    std::snprintf(fields, sizeof fields, "address: %02X %02X %02X %02X\ncommand: %02X %02X %02X %02X\n",
                  m.address & 0xff, m.address >> 8 & 0xff, m.address >> 16 & 0xff, m.address >> 24, m.command & 0xff,
                  m.command >> 8 & 0xff, m.command >> 16 & 0xff, m.command >> 24);
    CCodesetImporter::Options options;
    options.kindGiven = true;
    const ImportedFile report = CCodesetImporter::ImportText(
        "Filetype: IR signals file\nVersion: 1\nname: K\ntype: parsed\nprotocol: " + m.protocol + "\n" + fields, "v.ir",
        options);
    EXPECT_EQ(report.codesets.size(), 1u) << m.source << ": " << report.error;
    if (report.codesets.empty()) return {Protocol::Raw, 0, false, {}};
    const auto library = irtest::Library({report.codesets[0].json});
    const CodesetKey& key = library->Codesets()[0].keys[0];
    const bool ditto = m.repeat && (key.protocol == Protocol::Nec || key.protocol == Protocol::NecX ||
                                    key.protocol == Protocol::Nec32 || key.protocol == Protocol::Sanyo ||
                                    key.protocol == Protocol::Nec42);
    return {key.protocol, key.scancode, ditto, {}};
}

// Each Flipper message must lie within a frame decoded as that key (copies of a press are one
// frame here, where the Flipper lists each), and every key frame must hold a message. The vectors
// cut a capture at the silence before each decoded frame, so a message's frame starts where its
// timings do, except the first one's, which may follow frames the Flipper did not decode.
TEST(CFrameDecoderVectorsTest, FlipperTestVectorsDecodeAsStated) {
    const auto messages = ReadFlipperDecodeVectors();
    if (!messages) GTEST_SKIP() << "no " << kShared << "/vectors/flipper-irtest.json: not checked";
    std::vector<std::vector<const FlipperMessage*>> sources;
    for (const auto& m : *messages) {
        if (sources.empty() || sources.back()[0]->source != m.source) sources.emplace_back();
        sources.back().push_back(&m);
    }
    int wrong = 0;
    for (const auto& list : sources) {
        struct Span {
            std::uint64_t from, to;  // where the message's frame may start
            Expected key;
        };
        std::vector<Span> expected;
        std::vector<std::pair<std::uint32_t, Durations>> trains;
        std::uint64_t at = 0;
        for (const auto* m : list) {
            if (!trains.empty()) at += m->timings[0];
            trains.push_back({m->timings[0], Durations(m->timings.begin() + 1, m->timings.end())});
            std::uint64_t end = at;
            for (const auto d : trains.back().second) end += d;
            expected.push_back({at, expected.empty() ? end : at, Imported(*m)});
            at = end;
        }
        const auto frames = Decode(Join(trains));
        std::ostringstream problems;
        std::vector<bool> held(frames.size(), false);
        for (const auto& [from, to, key] : expected) {
            bool found = false;
            for (std::size_t i = 0; i < frames.size() && !found; ++i) {
                const DecodedFrame& f = frames[i];
                if (f.kind != Kind::Key || to + 1000 < f.startUs || from >= f.startUs + f.durationUs + 1000) continue;
                found =
                    key.repeat ? f.repeat : !f.repeat && SameFrame(f.protocol, f.scancode, key.protocol, key.scancode);
                held[i] = held[i] || found;
            }
            if (!found)
                problems << "\n  no " << ProtocolName(key.protocol) << " 0x" << std::hex << key.scancode << " at "
                         << from;
        }
        for (std::size_t i = 0; i < frames.size(); ++i) {
            // The Flipper's receiver keeps only the second frame of a two-frame Pioneer key (25.5 ms
            // apart, under its 26 ms end-of-frame silence); a capture that ends mid-frame leaves a
            // raw frame here that the Flipper drops.
            const bool pioneerFirst = i + 1 < frames.size() && frames[i].protocol == Protocol::Pioneer &&
                                      frames[i + 1].protocol == Protocol::Pioneer;
            if (!held[i] && frames[i].kind == Kind::Key && !pioneerFirst)
                problems << "\n  an extra frame" << Describe({frames[i]});
        }
        if (!problems.str().empty() && ++wrong <= 8) ADD_FAILURE() << list[0]->source << ":" << problems.str();
    }
    EXPECT_EQ(wrong, 0) << wrong << " of " << sources.size() << " captures";
}

// Real air-conditioner captures of the shipped families name their family among all codesets
// and read back as the published bytes (their words: the AC encoder's published-states test).
TEST(CFrameDecoderVectorsTest, PublishedAirConditionerCapturesDecodeToTheirBytes) {
    const auto captures = ReadCaptures();
    if (!captures) GTEST_SKIP() << "no " << kShared << "/vectors/captures.json: not checked";
    const auto library = CCodesetLibrary::Parse(DefaultCodesetsText());
    int checked = 0;
    for (const auto& c : *captures) {
        const Codeset* codeset = irtest::ShippedFamily(c.protocol);
        if (codeset == nullptr) continue;
        const auto expected = irtest::RecordBytes(c.expected, codeset->frame.bytes.size());
        if (expected.empty() || !irtest::SameModel(codeset->frame, expected)) continue;
        const auto frames = Decode(c.durations, library);
        SCOPED_TRACE(codeset->family + " " + c.source + Describe(frames));
        ASSERT_FALSE(frames.empty());
        EXPECT_EQ(frames[0].kind, Kind::Aircon);
        EXPECT_EQ(std::tie(frames[0].family, frames[0].bytes), std::tie(codeset->family, expected));
        ++checked;
    }
    EXPECT_GT(checked, 15);
}

}  // namespace
}  // namespace infrared

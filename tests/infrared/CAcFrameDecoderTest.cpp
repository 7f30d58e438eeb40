// Reading air-conditioner frames back: the published captures of every shipped family, every
// state each family offers sent and read back (also with the timings stretched and squeezed),
// and frames that must not be taken for a family's.
#include "infrared/decode/CAcFrameDecoder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>

#include "AcVectors.h"

namespace infrared {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::vector<std::uint32_t> Scaled(const std::vector<std::uint32_t>& d, double factor) {
    std::vector<std::uint32_t> out;
    for (const auto v : d) out.push_back(static_cast<std::uint32_t>(v * factor));
    return out;
}

std::vector<const Codeset*> Families() {
    std::vector<const Codeset*> out;
    for (const auto& codeset : irtest::ShippedLibrary().Codesets()) {
        if (codeset.protocol == Protocol::Aircon) out.push_back(&codeset);
    }
    return out;
}

// The words read back: what was sent, except fields the frame does not carry (empty).
void ExpectSameState(const AcState& got, const AcState& sent, bool offFrame) {
    EXPECT_EQ(got.power, sent.power);
    if (offFrame) return;
    EXPECT_TRUE(got.mode == sent.mode || (sent.power == "off" && got.mode.empty())) << got.mode;  // off as a mode code
    EXPECT_TRUE(got.fan == sent.fan || got.fan.empty()) << got.fan;
    EXPECT_TRUE(got.setpoint == sent.setpoint || got.setpoint.empty()) << got.setpoint;
}

TEST(CAcFrameDecoderTest, EveryStateOfEveryFamilyReadsBackAfterSending) {
    const auto families = Families();
    ASSERT_GE(families.size(), 17u);
    for (const Codeset* codeset : families) {
        const AcFrameFormat& f = codeset->frame;
        int states = 0;
        for (const auto& [power, ignoredP] : f.power.values) {
            for (const auto& [mode, ignoredM] : f.mode.values) {
                for (const auto& [fan, ignoredF] : f.fan.values) {
                    for (int degrees = static_cast<int>(std::ceil(f.setpoint.min)); degrees <= f.setpoint.max; ++degrees) {
                        const AcState sent{power, mode, std::to_string(degrees), fan};
                        SCOPED_TRACE(codeset->family + " " + power + " " + mode + " " + sent.setpoint + " " + fan);
                        const Bytes bytes = CAcFrameEncoder::BuildFrame(f, sent);
                        const PulseTrain train = CAcFrameEncoder::Encode(f, bytes, codeset->carrier, codeset->dutyCycle);
                        for (const double factor : {1.0, 1.25, 0.8}) {
                            const auto got = CAcFrameDecoder::Decode(*codeset, Scaled(train.durations, factor));
                            ASSERT_TRUE(got.has_value()) << "timings x" << factor;
                            EXPECT_EQ(got->codeset, codeset);
                            EXPECT_EQ(got->bytes, bytes);
                            ExpectSameState(got->state, sent, !f.offFrame.empty() && power == "off");
                        }
                        ++states;
                    }
                }
            }
        }
        EXPECT_GT(states, 0) << codeset->family;
    }
}

// A frame of one family is not taken for another's, and damaged frames are refused.
TEST(CAcFrameDecoderTest, RefusesOtherFamiliesAndDamagedFrames) {
    const auto families = Families();
    for (const Codeset* from : families) {
        const Bytes bytes = CAcFrameEncoder::BuildFrame(from->frame, {"on", "cool", "24", "auto"});
        const auto train = CAcFrameEncoder::Encode(from->frame, bytes, from->carrier, from->dutyCycle).durations;
        for (const Codeset* to : families) {
            const bool sameFrame = to->frame.sections.size() == from->frame.sections.size() && to->frame.bytes == from->frame.bytes;
            if (to == from || sameFrame) continue;  // LG and LG2 share a payload and differ only in timing
            EXPECT_FALSE(CAcFrameDecoder::Decode(*to, train)) << from->family << " read as " << to->family;
        }
        SCOPED_TRACE(from->family);
        std::vector<std::uint32_t> flipped = train;
        for (std::size_t i = 1; i + 1 < flipped.size(); i += 2) {
            if (flipped[i] == from->frame.timing.zeroSpace) {
                flipped[i] = from->frame.timing.oneSpace;  // one bit changed: a checksum or an inverted copy disagrees
                break;
            }
        }
        const auto damaged = CAcFrameDecoder::Decode(*from, flipped);
        if (damaged) {
            EXPECT_NE(damaged->bytes, bytes);
        }
        if (!from->frame.checksums.empty()) {
            EXPECT_FALSE(damaged) << "a changed bit passed the checksum";
        }
        const std::size_t firstCopy = (train.size() + 1) / (from->frame.timing.repeats + 1);
        const std::vector<std::uint32_t> truncated(train.begin(), train.begin() + static_cast<long>(firstCopy / 4) * 2 + 1);
        EXPECT_FALSE(CAcFrameDecoder::Decode(*from, truncated));
        EXPECT_FALSE(CAcFrameDecoder::Decode(*from, {}));
        EXPECT_FALSE(CAcFrameDecoder::Decode(*from, {9000, 4500}));
        EXPECT_FALSE(CAcFrameDecoder::Decode(*from, std::vector<std::uint32_t>(5001, 0)));
        EXPECT_FALSE(CAcFrameDecoder::Decode(*from, std::vector<std::uint32_t>(4001, 0xffffffffu)));
    }
}

// Real captures (published with the bytes and, through the state records, the state they
// mean) of every shipped family decode to those bytes and words.
TEST(CAcFrameDecoderTest, PublishedCapturesDecodeToTheirBytesAndState) {
    const auto captures = irtest::SharedIr("vectors/captures.json");
    const auto states = irtest::SharedIr("vectors/states.json");
    if (captures.isNull() || states.isNull()) GTEST_SKIP() << "../shared/ir/vectors/ is not beside the repository";
    int decoded = 0, otherModel = 0, withWords = 0;
    const auto& list = captures["captures"];
    for (unsigned i = 0; i < list.size(); ++i) {
        const auto& capture = list[i];
        const Codeset* codeset = irtest::ShippedFamily(capture["protocol"].asString());
        if (codeset == nullptr) continue;
        const Bytes expected = irtest::RecordBytes(capture["expected"], codeset->frame.bytes.size());
        if (expected.empty()) continue;
        SCOPED_TRACE(codeset->family + " " + capture["source"].asString());
        if (!irtest::SameModel(codeset->frame, expected)) {
            ++otherModel;
            continue;
        }
        std::vector<std::uint32_t> durations;
        for (unsigned k = 0; k < capture["durations"].size(); ++k) durations.push_back(static_cast<std::uint32_t>(capture["durations"][k].asInt()));
        const auto got = CAcFrameDecoder::Decode(*codeset, durations);
        ASSERT_TRUE(got.has_value());
        EXPECT_EQ(got->bytes, expected);
        ++decoded;
        const auto& pairs = states["pairs"];
        for (unsigned s = 0; s < pairs.size(); ++s) {
            if (irtest::ShippedFamily(pairs[s]["protocol"].asString()) != codeset) continue;
            if (irtest::RecordBytes(pairs[s], expected.size()) != expected) continue;
            const irtest::StatedWords words = irtest::Words(pairs[s]["fields"]);
            if (!words.state.power.empty()) {
            EXPECT_EQ(got->state.power, words.state.power);
        }
            if (!words.state.mode.empty()) {
            EXPECT_EQ(got->state.mode, words.state.mode);
        }
            if (!words.state.fan.empty()) {
            EXPECT_EQ(got->state.fan, words.state.fan);
        }
            if (!words.state.setpoint.empty()) {
            EXPECT_EQ(got->state.setpoint, words.state.setpoint);
        }
            ++withWords;
            break;
        }
    }
    std::cout << decoded << " captures decoded (" << withWords << " with published state words), " << otherModel
              << " of other models of a family\n";
    EXPECT_GT(decoded, 15);
}

}  // namespace
}  // namespace infrared

// Reading air-conditioner frames back: every state each shipped family offers sent and read back
// (also with the timings stretched and squeezed), and frames that must not be taken for a
// family's.
#include "infrared/decode/CAcFrameDecoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>

#include "AcVectors.h"

namespace infrared {
namespace {

std::vector<const Codeset*> Families() {
    std::vector<const Codeset*> out;
    for (const auto& codeset : irtest::ShippedLibrary().Codesets()) {
        if (codeset.protocol == Protocol::Aircon) out.push_back(&codeset);
    }
    return out;
}

// Every state of every family (half degrees where the family has them) is read back as sent,
// also with the timings stretched and squeezed, except words the frame does not carry (empty;
// an off frame carries no other word, off may be a mode code).
TEST(CAcFrameDecoderTest, EveryStateOfEveryFamilyReadsBackAfterSending) {
    const auto families = Families();
    ASSERT_GE(families.size(), 17u);
    for (const Codeset* codeset : families) {
        const AcFrameFormat& f = codeset->frame;
        const double step = f.setpoint.half ? 0.5 : 1;
        for (const std::string& power : PowerWords(f)) {
            for (const auto& [mode, ignoredM] : f.mode.values) {
                for (const auto& [fan, ignoredF] : f.fan.values) {
                    for (double degrees = std::ceil(f.setpoint.min); degrees <= f.setpoint.max; degrees += step) {
                        std::ostringstream setpoint;
                        setpoint << degrees;
                        const AcState sent{power, mode, setpoint.str(), fan};
                        SCOPED_TRACE(codeset->family + " " + power + " " + mode + " " + sent.setpoint + " " + fan);
                        const auto bytes = CAcFrameEncoder::BuildFrame(f, sent);
                        const auto train = CAcFrameEncoder::Encode(f, bytes, codeset->carrier, codeset->dutyCycle);
                        const bool offFrame = !f.offFrame.empty() && power == "off";
                        for (const double factor : {1.0, 1.25, 0.8}) {
                            std::vector<std::uint32_t> scaled;
                            for (const auto d : train.durations) scaled.push_back(std::uint32_t(d * factor));
                            const auto got = CAcFrameDecoder::Decode(*codeset, scaled);
                            ASSERT_TRUE(got.has_value()) << "timings x" << factor;
                            const AcState& s = got->state;
                            EXPECT_EQ(std::tie(got->codeset, got->bytes, s.power),
                                      std::tie(codeset, bytes, sent.power));
                            EXPECT_TRUE(offFrame || s.mode == mode || (power == "off" && s.mode.empty())) << s.mode;
                            EXPECT_TRUE(offFrame || s.fan == fan || s.fan.empty()) << s.fan;
                            EXPECT_TRUE(offFrame || s.setpoint == sent.setpoint || s.setpoint.empty()) << s.setpoint;
                        }
                    }
                }
            }
        }
    }
}

// A frame of one family is not taken for another's, and damaged frames are refused.
TEST(CAcFrameDecoderTest, RefusesOtherFamiliesAndDamagedFrames) {
    const auto families = Families();
    for (const Codeset* from : families) {
        const auto bytes = CAcFrameEncoder::BuildFrame(from->frame, {"on", "cool", "24", "auto"});
        const auto train = CAcFrameEncoder::Encode(from->frame, bytes, from->carrier, from->dutyCycle).durations;
        for (const Codeset* to : families) {
            if (to == from) continue;  // LG and LG2 share a payload too: only their timings tell them apart
            EXPECT_FALSE(CAcFrameDecoder::Decode(*to, train)) << from->family << " read as " << to->family;
        }
        SCOPED_TRACE(from->family);
        // The last 0 of the first copy becomes a 1: it lies in a check byte or an inverted copy,
        // which must then disagree.
        const std::size_t firstCopy = (train.size() + 1) / (from->frame.timing.repeats + 1);
        std::vector<std::uint32_t> flipped = train;
        for (std::size_t i = firstCopy - 2; i > 0; --i) {
            if (i % 2 == 1 && flipped[i] == from->frame.timing.zeroSpace) {
                flipped[i] = from->frame.timing.oneSpace;
                break;
            }
        }
        const auto damaged = CAcFrameDecoder::Decode(*from, flipped);
        const bool inverted = std::any_of(from->frame.sections.begin(), from->frame.sections.end(),
                                          [](const FrameSection& s) { return s.inversion != Inversion::None; });
        const bool checked = !from->frame.checksums.empty() || inverted;
        EXPECT_TRUE(!damaged || (!checked && damaged->bytes != bytes)) << "a changed bit passed the check";
        const auto cut = train.begin() + static_cast<long>(firstCopy / 4) * 2 + 1;
        EXPECT_FALSE(CAcFrameDecoder::Decode(*from, std::vector<std::uint32_t>(train.begin(), cut))) << "cut short";
    }
}

}  // namespace
}  // namespace infrared

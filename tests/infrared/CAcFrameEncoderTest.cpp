// The generic air-conditioner encoder: the shipped families against the published state bytes
// and transmissions, the pulses read back into bytes by an independent reader, and each checksum
// rule and field kind driven by data alone.
#include "infrared/encode/CAcFrameEncoder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

#include "AcVectors.h"
#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/decode/CAcFrameDecoder.h"
#include "Mode2File.h"
#include "infrared/codeset/DefaultCodesets.h"

namespace infrared {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::vector<Bytes> ReadBack(const PulseTrain& train, const FrameTiming& t) {
    return irtest::ReadFrames(train.durations, t);
}

const Codeset& Shipped(const std::string& name) {
    static const auto library = CCodesetLibrary::Parse(DefaultCodesetsText());
    const Codeset* codeset = library->Find(name);
    if (codeset == nullptr) throw std::logic_error(name + " is not shipped");
    return *codeset;
}

// Every field the encoder writes, as (slot, the word it belongs to) so a disagreement names it.
struct Written {
    FrameSlot slot;
    const char* what;
};

std::vector<Written> WrittenSlots(const AcFrameFormat& f, const AcState& state) {
    std::vector<Written> out;
    for (const auto& slot : f.mode.slots) out.push_back({slot, "mode"});
    if (!state.power.empty()) {
        for (const auto& slot : f.power.slots) out.push_back({slot, "power"});
    }
    const ModeRule* rule = nullptr;
    for (const auto& r : f.modeRules) rule = r.mode == state.mode ? &r : rule;
    if (rule != nullptr) {
        for (const auto& set : rule->set) out.push_back({set.slot, "mode's companion bits"});
    }
    if (rule == nullptr || !rule->ignoresFan) {
        for (const auto& slot : f.fan.slots) out.push_back({slot, "fan"});
    }
    if (rule == nullptr || !rule->ignoresSetpoint) out.push_back({f.setpoint.slot, "set point"});
    return out;
}

// The published state records: the encoder, given the record's words and the family's default
// template, writes the same bits in every field it sets (or bits the family reads as the same
// word), and the family's checksum rules give the published check bytes.
TEST(CAcFrameEncoderTest, PublishedStatesAgreeOnEveryFieldTheEncoderSetsAndOnTheChecksum) {
    const auto vectors = irtest::SharedIr("vectors/states.json");
    if (vectors.isNull()) GTEST_SKIP() << "../shared/ir/vectors/states.json is not beside the repository";
    int compared = 0, otherModel = 0, notExpressible = 0;
    const auto& pairs = vectors["pairs"];
    for (unsigned i = 0; i < pairs.size(); ++i) {
        const auto& record = pairs[i];
        const Codeset* codeset = irtest::ShippedFamily(record["protocol"].asString());
        if (codeset == nullptr) continue;
        const AcFrameFormat& f = codeset->frame;
        const Bytes published = irtest::RecordBytes(record, f.bytes.size());
        SCOPED_TRACE(codeset->family + " " + record["text"].asString());
        if (!irtest::SameModel(f, published)) {
            ++otherModel;
            continue;
        }
        if (!irtest::KnownChecksumException(codeset->family, record)) {
            for (const auto& rule : f.checksums) {
                if (published.size() != f.bytes.size()) break;
                EXPECT_EQ(published[rule.slot.byte] & rule.slot.mask, CAcFrameEncoder::ComputeChecksum(rule, published));
            }
        }
        irtest::StatedWords words = irtest::Words(record["fields"]);
        if (words.state.power == "off" && !f.offFrame.empty()) {
            EXPECT_EQ(published, f.offFrame);
            ++compared;
            continue;
        }
        if (!words.expressible) {
            ++notExpressible;
            continue;
        }
        AcState state = words.state;
        if (state.power.empty()) state.power = "on";
        Bytes built;
        try {
            built = CAcFrameEncoder::BuildFrame(f, state);
        } catch (const std::invalid_argument& e) {  // a set point outside the range the family offers
            std::cout << codeset->family << ": " << e.what() << "\n";
            ++notExpressible;
            continue;
        }
        const auto readBuilt = CAcFrameDecoder::ReadState(f, built);
        const auto readPublished = CAcFrameDecoder::ReadState(f, published);
        for (const auto& w : WrittenSlots(f, words.state)) {
            const bool sameBits = (built[w.slot.byte] & w.slot.mask) == (published[w.slot.byte] & w.slot.mask);
            const bool sameWords = readBuilt && readPublished && readBuilt->fan == readPublished->fan &&
                                   readBuilt->power == readPublished->power;
            EXPECT_TRUE(sameBits || sameWords) << w.what << " in byte " << w.slot.byte;
        }
        ++compared;
    }
    std::cout << compared << " published states compared, " << otherModel << " of other models of a family, "
              << notExpressible << " not expressible in the library's words\n";
    EXPECT_GT(compared, 75);
}

TEST(CAcFrameEncoderTest, PulsesReadBackIntoTheFrameOncePerCopy) {
    const Codeset& ac = Shipped("ZAC00005");
    for (const AcState& state : {AcState{"on", "cool", "24", "auto"}, AcState{"off", "heat", "16", "low"}}) {
        const Bytes frame = CAcFrameEncoder::BuildFrame(ac.frame, state);
        const PulseTrain train = CAcFrameEncoder::Encode(ac.frame, frame, ac.carrier, ac.dutyCycle);
        EXPECT_EQ(train.carrier, 38000u);
        EXPECT_EQ(train.trailingGap, ac.frame.timing.gap);
        const auto frames = ReadBack(train, ac.frame.timing);
        EXPECT_EQ(frames, std::vector<Bytes>(1 + ac.frame.timing.repeats, frame));
    }
}

// The published transmissions: for a frame of the family's size and the family's number of
// copies, every mark and space (and the carrier and duty cycle) as sent.
TEST(CAcFrameEncoderTest, TimingsMatchThePublishedTransmissionsMarkForMark) {
    const auto vectors = irtest::SharedIr("vectors/sends.json");
    if (vectors.isNull()) GTEST_SKIP() << "../shared/ir/vectors/sends.json is not beside the repository";
    int compared = 0;
    const auto& sends = vectors["sends"];
    for (unsigned i = 0; i < sends.size(); ++i) {
        const auto& send = sends[i];
        const Codeset* codeset = irtest::ShippedFamily(send["protocol"].asString());
        if (codeset == nullptr || send["pairs"].size() == 0) continue;
        const AcFrameFormat& f = codeset->frame;
        const auto& input = send["input"];
        const Bytes bytes = irtest::RecordBytes(input, f.bytes.size());
        const bool sizeFits = input["nbits"].isNull() ? bytes.size() == f.bytes.size()
                                                      : input["nbits"].asInt() == static_cast<int>(8 * f.bytes.size() - f.sections[0].skipBits);
        if (!sizeFits || input["repeat"].asInt() != static_cast<int>(f.timing.repeats)) continue;
        SCOPED_TRACE(codeset->family + " " + send["source"].asString());
        const PulseTrain train = CAcFrameEncoder::Encode(f, bytes, codeset->carrier, codeset->dutyCycle);
        std::vector<std::uint32_t> ours = train.durations;
        ours.push_back(train.trailingGap);
        std::vector<std::uint32_t> published;
        for (unsigned p = 0; p < send["pairs"].size(); ++p) {
            for (unsigned k = 0; k < 2; ++k) {
                if (!send["pairs"][p][k].isNull()) published.push_back(static_cast<std::uint32_t>(send["pairs"][p][k].asInt()));
            }
        }
        EXPECT_EQ(train.carrier, static_cast<std::uint32_t>(send["carrier_hz"].asInt()));
        EXPECT_EQ(train.dutyCycle, static_cast<std::uint32_t>(send["duty_percent"].asInt()));
        ASSERT_EQ(ours.size(), published.size());
        for (std::size_t k = 0; k < ours.size(); ++k) {
            EXPECT_LE(std::abs(static_cast<long>(ours[k]) - static_cast<long>(published[k])), 1) << "at duration " << k;
        }
        ++compared;
    }
    std::cout << compared << " published transmissions compared\n";
    EXPECT_GT(compared, 20);
}

// A made-up codeset that uses what the shipped one does not: most significant bit first, a
// value spread over two bytes, half degrees, a shifted set point, no header.
const char kTestCodesets[] = R"({"codesets":[{"name":"T","protocol":"aircon",
  "timing":{"mark":500,"one":1500,"zero":500,"trailer":500,"gap":20000},
  "bit_order":"msb",
  "frame":{"bytes":[161,0,0,0,0],
    "power":{"byte":1,"mask":"0x80","values":{"on":"0x80","off":0}},
    "mode":{"slots":[{"byte":1,"mask":"0x07"},{"byte":3}],"values":{"cool":[1,"0xc1"],"heat":[4,"0xc4"]}},
    "setpoint":{"byte":2,"mask":"0xfc","shift":2,"offset":16,"scale":2,"min":16,"max":31.5},
    "fan":{"byte":1,"mask":"0x30","values":{"low":"0x10","high":"0x30"}},
    "checksum":{"rule":"RULE","byte":4,"from":0,"to":3}}}]})";

Codeset TestCodeset(const std::string& rule) {
    std::string text = kTestCodesets;
    text.replace(text.find("RULE"), 4, rule);
    return CCodesetLibrary::Parse(text)->Codesets().at(0);
}

TEST(CAcFrameEncoderTest, EachChecksumRuleAndFieldKindComesFromTheDescription) {
    // on (0x80) | fan high (0x30) | heat (4) = 0xb4; set point 22.5 -> 13 << 2 = 0x34; heat 0xc4.
    const Bytes body = {0xa1, 0xb4, 0x34, 0xc4};
    struct Case {
        const char* rule;
        std::uint8_t sum;
    } cases[] = {
        {"byte_sum", static_cast<std::uint8_t>(0xa1 + 0xb4 + 0x34 + 0xc4)},
        {"nibble_sum", 0xa + 0x1 + 0xb + 0x4 + 0x3 + 0x4 + 0xc + 0x4},
        {"xor", 0xa1 ^ 0xb4 ^ 0x34 ^ 0xc4},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rule);
        const Codeset codeset = TestCodeset(c.rule);
        Bytes expected = body;
        expected.push_back(c.sum);
        const Bytes frame = CAcFrameEncoder::BuildFrame(codeset.frame, {"on", "heat", "22.5", "high"});
        EXPECT_EQ(frame, expected);
        const auto back = ReadBack(CAcFrameEncoder::Encode(codeset.frame, frame, 38000, 33), codeset.frame.timing);
        EXPECT_EQ(back, std::vector<Bytes>{expected});
    }
}

TEST(CAcFrameEncoderTest, RefusesStatesTheCodesetCannotExpress) {
    const Codeset& ac = Shipped("ZAC00005");
    const Codeset half = TestCodeset("xor");
    struct Case {
        const Codeset* codeset;
        AcState state;
        const char* reason;
    } cases[] = {
        {&ac, {"on", "vent", "24", "auto"}, "mode 'vent'"},
        {&ac, {"standby", "cool", "24", "auto"}, "power 'standby'"},
        {&ac, {"on", "cool", "24", "turbo"}, "fan speed 'turbo'"},
        {&ac, {"on", "cool", "15", "auto"}, "outside"},
        {&ac, {"on", "cool", "32", "auto"}, "outside"},
        {&ac, {"on", "cool", "24.5", "auto"}, "finer"},
        {&ac, {"on", "cool", "", "auto"}, "not a number"},
        {&ac, {"on", "cool", "24C", "auto"}, "not a number"},
        {&ac, {"on", "cool", "nan", "auto"}, "not a number"},
        {&half, {"on", "cool", "22.25", "low"}, "finer"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        try {
            CAcFrameEncoder::BuildFrame(c.codeset->frame, c.state);
            ADD_FAILURE() << "accepted";
        } catch (const std::invalid_argument& e) {
            EXPECT_NE(std::string(e.what()).find(c.reason), std::string::npos) << e.what();
        }
    }
}

}  // namespace
}  // namespace infrared

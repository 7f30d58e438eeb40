// The generic air-conditioner encoder: the shipped codeset's frames byte for byte, the pulses
// read back into bytes by an independent reader, and each checksum rule and field kind driven
// by data alone.
#include "infrared/encode/CAcFrameEncoder.h"

#include <gtest/gtest.h>

#include "infrared/codeset/CCodesetLibrary.h"
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

struct FrameCase {
    AcState state;
    Bytes expected;
};

// Mitsubishi Electric layout: 23 CB 26 01 00, power (byte 5), mode (6), set point - 16 (7),
// 0x30 (8), fan | vane auto 0x40 (9), zeros, byte sum of 0..16 (17). Sums worked out by hand.
const std::vector<FrameCase> kMitsubishi = {
    {{"on", "cool", "24", "auto"},
     {0x23, 0xcb, 0x26, 0x01, 0x00, 0x20, 0x18, 0x08, 0x30, 0xc0, 0, 0, 0, 0, 0, 0, 0, 0x45}},
    {{"off", "heat", "16", "low"},
     {0x23, 0xcb, 0x26, 0x01, 0x00, 0x00, 0x08, 0x00, 0x30, 0x41, 0, 0, 0, 0, 0, 0, 0, 0x8e}},
    {{"on", "dry", "31", "high"},
     {0x23, 0xcb, 0x26, 0x01, 0x00, 0x20, 0x10, 0x0f, 0x30, 0x43, 0, 0, 0, 0, 0, 0, 0, 0xc7}},
    {{"on", "auto", "22", "medium"},
     {0x23, 0xcb, 0x26, 0x01, 0x00, 0x20, 0x20, 0x06, 0x30, 0x42, 0, 0, 0, 0, 0, 0, 0, 0xcd}},
};

TEST(CAcFrameEncoderTest, ShippedCodesetBuildsTheDocumentedFrames) {
    const Codeset& ac = Shipped("ZAC00005");
    for (const auto& c : kMitsubishi) {
        SCOPED_TRACE(c.state.power + " " + c.state.mode + " " + c.state.setpoint + " " + c.state.fan);
        EXPECT_EQ(CAcFrameEncoder::BuildFrame(ac.frame, c.state), c.expected);
    }
}

TEST(CAcFrameEncoderTest, PulsesReadBackIntoTheFrameOncePerCopy) {
    const Codeset& ac = Shipped("ZAC00005");
    for (const auto& c : kMitsubishi) {
        const PulseTrain train = CAcFrameEncoder::Encode(ac.frame, c.expected, ac.carrier, ac.dutyCycle);
        EXPECT_EQ(train.carrier, 38000u);
        EXPECT_EQ(train.trailingGap, ac.frame.timing.gap);
        const auto frames = ReadBack(train, ac.frame.timing);
        EXPECT_EQ(frames, std::vector<Bytes>(1 + ac.frame.timing.repeats, c.expected));
    }
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
        {&ac, {"on", "fan", "24", "auto"}, "mode 'fan'"},
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

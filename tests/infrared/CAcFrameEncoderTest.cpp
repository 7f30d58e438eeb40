// The generic air-conditioner encoder: the shipped families against the published state bytes
// and transmissions, and each checksum rule, bit order and field kind driven by data alone.
#include "infrared/encode/CAcFrameEncoder.h"

#include <gtest/gtest.h>

#include <cctype>
#include <sstream>

#include "AcVectors.h"
#include "ErrorOf.h"
#include "FileTree.h"
#include "infrared/decode/CAcFrameDecoder.h"

namespace infrared {
namespace {

using Bytes = std::vector<std::uint8_t>;
using irtest::JsonValue;

// A published field's word in the library's terms (lower case; a remote's "auto0" is auto fan).
std::string Word(const JsonValue& field) {
    std::string name = field.type() == common::json::kObject ? field["name"].asString() : "";
    for (auto& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return name == "auto0" ? "auto" : name;
}

// The words the decoder reads from a frame, to compare two frames field by field; power only
// where the record states it.
std::string Read(const AcFrameFormat& f, const Bytes& bytes, bool power) {
    const auto s = CAcFrameDecoder::ReadState(f, bytes);
    return s ? (power ? s->power : "") + " " + s->mode + " " + s->setpoint + " " + s->fan : "(unreadable)";
}

// The published state records: the family's checksum rules give the published check bytes, and
// the frame the encoder builds from the record's words reads as the same words as the published
// one (two codes a family reads as one word, as auto fan with or without its flag, are alike).
TEST(CAcFrameEncoderTest, PublishedStatesAgreeWithTheFramesBuiltFromTheirWordsAndOnTheChecksum) {
    const auto vectors = irtest::SharedIr("vectors/states.json");
    if (vectors.isNull()) GTEST_SKIP() << "../shared/ir/vectors/states.json is not beside the repository";
    // The protocol descriptions name a record's source only to list its check byte as known to be off.
    const std::string facts = irtest::ReadText(IRC_SOURCE_DIR "/../shared/ir/ac-protocols.json");
    int compared = 0;
    for (unsigned i = 0; i < vectors["pairs"].size(); ++i) {
        const auto& record = vectors["pairs"][i];
        const Codeset* codeset = irtest::ShippedFamily(record["protocol"].asString());
        const Bytes published = codeset ? irtest::RecordBytes(record, codeset->frame.bytes.size()) : Bytes();
        if (codeset == nullptr || !irtest::SameModel(codeset->frame, published)) continue;
        const AcFrameFormat& f = codeset->frame;
        SCOPED_TRACE(codeset->family + " " + record["text"].asString());
        for (const auto& rule : f.checksums) {
            if (published.size() != f.bytes.size() || facts.find(record["sources"][0].asString()) != facts.npos) break;
            EXPECT_EQ(published[rule.slot.byte] & rule.slot.mask, CAcFrameEncoder::ComputeChecksum(rule, published));
        }
        const JsonValue& fields = record["fields"];
        std::ostringstream degrees;
        if (fields["temp"].type() == common::json::kObject && fields["temp"]["unit"].asString() == "C") {
            degrees << fields["temp"]["value"].asDouble();
        }
        const bool power = fields["power"].isBool();
        const AcState state{power && !fields["power"].asBool() ? "off" : "on", Word(fields["mode"]), degrees.str(),
                            Word(fields["fan"])};
        Bytes built;
        // Words the library does not have, or a set point out of its range: not comparable.
        const auto build = [&] { built = CAcFrameEncoder::BuildFrame(f, state); };
        if (irtest::ErrorOf<std::invalid_argument>(build) != "(no error)") continue;
        if (Read(f, published, power) == "(unreadable)") continue;  // a frame of a button the family does not send
        EXPECT_EQ(Read(f, built, power), Read(f, published, power));
        ++compared;
    }
    std::cout << compared << " published states compared\n";
    EXPECT_GT(compared, 75);
}

// The published transmissions: for a frame of the family's size and the family's number of
// copies, every mark and space (and the carrier and duty cycle) as sent, within 1 us.
TEST(CAcFrameEncoderTest, TimingsMatchThePublishedTransmissionsMarkForMark) {
    const auto vectors = irtest::SharedIr("vectors/sends.json");
    if (vectors.isNull()) GTEST_SKIP() << "../shared/ir/vectors/sends.json is not beside the repository";
    int compared = 0;
    for (unsigned i = 0; i < vectors["sends"].size(); ++i) {
        const auto& send = vectors["sends"][i];
        const Codeset* codeset = irtest::ShippedFamily(send["protocol"].asString());
        if (codeset == nullptr || send["pairs"].size() == 0) continue;
        const AcFrameFormat& f = codeset->frame;
        const Bytes bytes = irtest::RecordBytes(send["input"], f.bytes.size());
        const int bits = static_cast<int>(8 * f.bytes.size() - f.sections[0].skipBits);
        const JsonValue& nbits = send["input"]["nbits"];
        const bool sizeFits = nbits.isNull() ? bytes.size() == f.bytes.size() : nbits.asInt() == bits;
        if (!sizeFits || send["input"]["repeat"].asInt() != static_cast<int>(f.timing.repeats)) continue;
        SCOPED_TRACE(codeset->family + " " + send["source"].asString());
        PulseTrain train = CAcFrameEncoder::Encode(f, bytes, codeset->carrier, codeset->dutyCycle);
        train.durations.push_back(train.trailingGap);
        std::vector<long> diffs;
        for (unsigned p = 0; p < send["pairs"].size(); ++p) {
            for (unsigned k = 0; k < 2 && !send["pairs"][p][k].isNull(); ++k) {
                const std::int64_t ours = diffs.size() < train.durations.size() ? train.durations[diffs.size()] : 0;
                diffs.push_back(std::labs(ours - send["pairs"][p][k].asInt64()));
            }
        }
        EXPECT_EQ(std::make_tuple(train.carrier, train.dutyCycle, train.durations.size()),
                  std::make_tuple(static_cast<std::uint32_t>(send["carrier_hz"].asInt()),
                                  static_cast<std::uint32_t>(send["duty_percent"].asInt()), diffs.size()));
        EXPECT_LE(*std::max_element(diffs.begin(), diffs.end()), 1);
        ++compared;
    }
    std::cout << compared << " published transmissions compared\n";
    EXPECT_GT(compared, 20);
}

// A hand-worked Mitsubishi Electric frame (it runs without the published data): 23 CB 26 01 00,
// power in byte 5, fan mode with its companion nibble in byte 8, set point - 16 with the
// half-degree bit 0x10 in 7, fan | vane 0x40 in 9, the sum of bytes 0-16 in 17.
TEST(CAcFrameEncoderTest, ShippedCodesetSendsTheFrameWorkedOutFromItsLayout) {
    const Codeset& ac = *irtest::ShippedLibrary().Find("ZAC00005");
    const Bytes expected = {0x23, 0xcb, 0x26, 0x01, 0x00, 0x20, 0x38, 0x16, 0x37, 0x42, 0, 0, 0, 0, 0, 0, 0, 0xfc};
    EXPECT_EQ(CAcFrameEncoder::BuildFrame(ac.frame, {"on", "fan", "22.5", "medium"}), expected);
    const PulseTrain train = CAcFrameEncoder::Encode(ac.frame, expected, ac.carrier, ac.dutyCycle);
    EXPECT_EQ(std::tie(train.carrier, train.trailingGap), std::tie(ac.carrier, ac.frame.timing.gap));
    const auto decoded = CAcFrameDecoder::Decode(ac, train.durations);
    EXPECT_EQ(decoded ? decoded->bytes : Bytes(), expected);
}

// A made-up codeset that uses what the shipped one does not: most significant bit first, a
// value spread over two bytes, half degrees, a shifted set point, no header, a nibble sum (the
// other rules and bit orders: the published states and transmissions).
TEST(CAcFrameEncoderTest, FieldKindsChecksumAndBitOrderComeFromTheDescription) {
    const AcFrameFormat f = CCodesetLibrary::Parse(R"({"codesets":[{"name":"T","protocol":"aircon",
      "timing":{"mark":500,"one":1500,"zero":500,"trailer":500,"gap":20000}, "bit_order":"msb",
      "frame":{"bytes":[161,0,0,0,0], "power":{"byte":1,"mask":"0x80","values":{"on":"0x80","off":0}},
        "mode":{"slots":[{"byte":1,"mask":"0x07"},{"byte":3}],"values":{"cool":[1,"0xc1"],"heat":[4,"0xc4"]}},
        "setpoint":{"byte":2,"mask":"0xfc","shift":2,"offset":16,"scale":2,"min":16,"max":31.5},
        "fan":{"byte":1,"mask":"0x30","values":{"low":"0x10","high":"0x30"}},
        "checksum":{"rule":"nibble_sum","byte":4,"from":0,"to":3}}}]})")->Codesets()[0].frame;
    // on (0x80) | fan high (0x30) | heat (4) = 0xb4; set point 22.5 -> 13 << 2 = 0x34; heat 0xc4.
    const std::uint8_t sum = 0xa + 0x1 + 0xb + 0x4 + 0x3 + 0x4 + 0xc + 0x4;
    EXPECT_EQ(CAcFrameEncoder::BuildFrame(f, {"on", "heat", "22.5", "high"}), (Bytes{0xa1, 0xb4, 0x34, 0xc4, sum}));
    // 0xa1 most significant bit first: 1 0 1 0 0 0 0 1, then the trailer.
    EXPECT_EQ(CAcFrameEncoder::Encode(f, {0xa1}, 38000, 33).durations,
              (std::vector<std::uint32_t>{500, 1500, 500, 500, 500, 1500, 500, 500, 500, 500, 500, 500, 500, 500, 500,
                                          1500, 500}));
}

TEST(CAcFrameEncoderTest, RefusesStatesTheCodesetCannotExpress) {
    const AcFrameFormat& f = irtest::ShippedLibrary().Find("ZAC00005")->frame;
    const std::pair<AcState, const char*> cases[] = {
        {{"on", "vent", "24", "auto"}, "mode 'vent'"},     {{"standby", "cool", "24", "auto"}, "power 'standby'"},
        {{"on", "cool", "24", "turbo"}, "fan speed 'turbo'"}, {{"on", "cool", "15", "auto"}, "outside"},
        {{"on", "cool", "24.25", "auto"}, "finer"},       {{"on", "cool", "24C", "auto"}, "not a number"},
        {{"on", "cool", "nan", "auto"}, "not a number"},
    };
    for (const auto& [state, reason] : cases) {
        const auto error = irtest::ErrorOf<std::invalid_argument>([&] { CAcFrameEncoder::BuildFrame(f, state); });
        EXPECT_NE(error.find(reason), std::string::npos) << error;
    }
}

}  // namespace
}  // namespace infrared

#include "infrared/formats/CFlipperIrFile.h"

#include <gtest/gtest.h>

#include "FileTree.h"
#include "infrared/formats/CFormatError.h"

using infrared::CFlipperIrFile;
using infrared::CFormatError;
using infrared::FlipperSignal;

namespace {

const std::string kHeader = "Filetype: IR signals file\nVersion: 1\n";

const std::string kTwoSignals = kHeader +
    "#\n# a comment\nname: Power\ntype: parsed\nprotocol: NECext\naddress: 82 21 00 00\ncommand: 1F E0 00 00\n"
    "#\r\nname: Fan_speed\r\ntype: raw\r\nfrequency: 38000\r\nduty_cycle: 0.330000\r\ndata: 1224 443 1252\r\n";

// Every member of a signal, to compare whole signals.
auto Members(const FlipperSignal& s) {
    return std::tie(s.name, s.line, s.raw, s.protocol, s.address, s.command, s.frequency, s.dutyCycle, s.data);
}

// Comments and CRLF lines are read; a written file reads back as the same signals (but lines).
TEST(CFlipperIrFile, ReadsParsedAndRawSignalsWithTheirLinesAndWritesThemBack) {
    const auto signals = CFlipperIrFile::Parse(kTwoSignals, "fan.ir");
    ASSERT_EQ(signals.size(), 2u);
    FlipperSignal power{"Power", 5, false, "NECext", 0x2182, 0xE01F, 0, 0, {}};  // little-endian bytes
    FlipperSignal fan{"Fan_speed", 11, true, "", 0, 0, 38000, 0.33, {1224, 443, 1252}};
    EXPECT_EQ(Members(signals[0]), Members(power));
    EXPECT_EQ(Members(signals[1]), Members(fan));
    auto again = CFlipperIrFile::Parse(CFlipperIrFile::Write(signals), "again.ir");
    ASSERT_EQ(again.size(), 2u);
    again[0].line = 5;
    again[1].line = 11;
    EXPECT_EQ(Members(again[0]), Members(power));
    EXPECT_EQ(Members(again[1]), Members(fan));
}

TEST(CFlipperIrFile, ChecksFieldWidthsPerProtocol) {
    struct Case { const char* protocol; const char* address; const char* command; bool ok; };
    const Case cases[] = {
        {"NEC", "FF 00 00 00", "FF 00 00 00", true},     {"NEC", "00 01 00 00", "00 00 00 00", false},
        {"RC5", "1F 00 00 00", "3F 00 00 00", true},     {"RC5", "1F 00 00 00", "40 00 00 00", false},
        {"RC5X", "1F 00 00 00", "7F 00 00 00", true},    {"SIRC20", "FF 1F 00 00", "7F 00 00 00", true},
        {"SIRC20", "FF 3F 00 00", "7F 00 00 00", false}, {"Kaseikyo", "FF FF FF 03", "FF 03 00 00", true},
        {"Kaseikyo", "FF FF FF 04", "00 00 00 00", false}, {"RCA", "10 00 00 00", "00 00 00 00", false},
        {"Nec", "00 00 00 00", "00 00 00 00", false},   // names are case-sensitive
    };
    for (const auto& c : cases) {
        const std::string text = kHeader + "name: K\ntype: parsed\nprotocol: " + c.protocol + "\naddress: " + c.address +
                                 "\ncommand: " + c.command + "\n";
        if (c.ok) {
            EXPECT_NO_THROW(CFlipperIrFile::Parse(text, "f.ir")) << c.protocol << " " << c.address << " " << c.command;
        } else {
            EXPECT_THROW(CFlipperIrFile::Parse(text, "f.ir"), CFormatError) << c.protocol << " " << c.address << " " << c.command;
        }
    }
}

TEST(CFlipperIrFile, RefusesHostileFilesNamingFileAndLine) {
    struct Case { std::string text; std::size_t line; const char* reason; };
    const std::string rawStart = kHeader + "name: R\ntype: raw\nfrequency: 38000\nduty_cycle: 0.33\n";
    std::string tooMany = rawStart + "data:";
    for (int i = 0; i < 1025; ++i) tooMany += " 500";
    const Case cases[] = {
        {"", 0, "empty file"},
        {"Filetype: IR signals file\n", 1, "ends after"},
        {"Filetype: Flipper SubGhz\nVersion: 1\n", 1, "not an IR signals file"},
        {"Filetype: IR signals file\nVersion: 2\n", 2, "version 2"},
        {kHeader + "name: P\ntype: parsed\nprotocol: NEC\naddress: 01 00 00 00\n", 3, "has no command"},
        {kHeader + "name: P\ntype: parsed\nprotocol: NEC\naddress: 01 00 00\ncommand: 01 00 00 00\n", 6, "4 hex bytes"},
        {kHeader + "name: P\ntype: parsed\nprotocol: NEC\naddress: 0x1 00 00 00\ncommand: 01 00 00 00\n", 6, "4 hex bytes"},
        {kHeader + "name: P\ntype: weird\n", 4, "parsed or raw"},
        {kHeader + "type: raw\n", 3, "before the first name"},
        {kHeader + "name: P\ncolour: red\n", 4, "unknown key"},
        {kHeader + "name: P\ntype: raw\ntype: raw\n", 5, "twice"},
        {kHeader + "name: P\nthis line has no colon\n", 4, "key: value"},
        {kHeader + "name: P\ntype: raw\nprotocol: NEC\n", 5, "does not belong"},
        {rawStart + "data: 500 -1 500\n", 7, "data value 2"},
        {rawStart + "data: \n", 7, "empty"},
        {tooMany, 7, "more than 1024"},
        {kHeader + "name: R\ntype: raw\nfrequency: 9999\nduty_cycle: 0.33\ndata: 1\n", 5, "frequency"},
        {kHeader + "name: R\ntype: raw\nfrequency: 38000\nduty_cycle: 1.5\ndata: 1\n", 6, "duty_cycle"},
        {kHeader + std::string("name: R\ntype: r\0aw\n", 20), 4, "binary"},
        {kHeader + "name: Sp\xe5" "ed\n", 3, "not UTF-8"},
    };
    for (const auto& c : cases) {
        try {
            CFlipperIrFile::Parse(c.text, "bad.ir");
            ADD_FAILURE() << "accepted: " << c.text.substr(0, 80);
        } catch (const CFormatError& e) {
            EXPECT_EQ(e.File(), "bad.ir");
            EXPECT_EQ(e.Line(), c.line) << e.what();
            EXPECT_NE(e.Reason().find(c.reason), std::string::npos) << e.what() << " (wanted " << c.reason << ")";
            EXPECT_EQ(std::string(e.what()).rfind("bad.ir:" + std::to_string(c.line) + ": ", 0), 0u) << e.what();
        }
    }
}

TEST(CFlipperIrFile, RefusesEnormousCountsOfSignalsWithoutReadingOn) {
    std::string text = kHeader;
    for (std::size_t i = 0; i <= CFlipperIrFile::kMaxSignals; ++i) {
        text += "name: K\ntype: parsed\nprotocol: NEC\naddress: 01 00 00 00\ncommand: 02 00 00 00\n";
    }
    try {
        CFlipperIrFile::Parse(text, "many.ir");
        ADD_FAILURE() << "accepted more than the signal limit";
    } catch (const CFormatError& e) {
        EXPECT_EQ(e.Line(), 3 + 5 * CFlipperIrFile::kMaxSignals) << e.what();
    }
}

}  // namespace

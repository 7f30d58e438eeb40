#include "infrared/formats/CFlipperIrFile.h"

#include <gtest/gtest.h>

#include "infrared/formats/CFormatError.h"

namespace infrared {
namespace {

const std::string kHeader = "Filetype: IR signals file\nVersion: 1\n";

std::string Parsed(const char* protocol, const char* address, const char* command) {
    return std::string("name: K\ntype: parsed\nprotocol: ") + protocol + "\naddress: " + address + "\ncommand: " +
           command + "\n";
}

// Comments and CRLF lines are read; each protocol's widest address and command are accepted.
// (Write: the exporter's tests import what it writes.)
TEST(CFlipperIrFile, ReadsParsedAndRawSignalsWithTheirLines) {
    const auto s = CFlipperIrFile::Parse(
        kHeader + "#\n# a comment\nname: Power\ntype: parsed\nprotocol: NECext\naddress: 82 21 00 00\n"
                  "command: 1F E0 00 00\n#\r\nname: Fan_speed\r\ntype: raw\r\nfrequency: 38000\r\n"
                  "duty_cycle: 0.330000\r\ndata: 1224 443 1252\r\n",
        "fan.ir");
    ASSERT_EQ(s.size(), 2u);
    // Address and command are little-endian bytes.
    EXPECT_EQ(std::tie(s[0].name, s[0].line, s[0].raw, s[0].protocol, s[0].address, s[0].command),
              std::make_tuple("Power", 5u, false, "NECext", 0x2182u, 0xE01Fu));
    EXPECT_EQ(std::tie(s[1].name, s[1].line, s[1].raw, s[1].frequency, s[1].dutyCycle, s[1].data),
              std::make_tuple("Fan_speed", 11u, true, 38000u, 0.33, std::vector<std::uint32_t>{1224, 443, 1252}));
    EXPECT_NO_THROW(CFlipperIrFile::Parse(kHeader + Parsed("NEC", "FF 00 00 00", "FF 00 00 00") +
                                              Parsed("RC5X", "1F 00 00 00", "7F 00 00 00") +
                                              Parsed("SIRC20", "FF 1F 00 00", "7F 00 00 00") +
                                              Parsed("Kaseikyo", "FF FF FF 03", "FF 03 00 00"), "wide.ir"));
}

TEST(CFlipperIrFile, RefusesBadFilesNamingFileAndLine) {
    const std::string rawStart = kHeader + "name: R\ntype: raw\nfrequency: 38000\nduty_cycle: 0.33\n";
    std::string many = kHeader;
    for (std::size_t i = 0; i <= CFlipperIrFile::kMaxSignals; ++i) many += Parsed("NEC", "01 00 00 00", "02 00 00 00");
    const std::tuple<std::string, std::size_t, const char*> cases[] = {
        {"", 0, "empty file"},
        {"Filetype: IR signals file\nVersion: 2\n", 2, "version 2"},
        {kHeader + "name: P\ntype: parsed\nprotocol: NEC\naddress: 01 00 00\ncommand: 01 00 00 00\n", 6, "4 hex bytes"},
        {kHeader + Parsed("NEC", "00 01 00 00", "00 00 00 00"), 6, "address does not fit NEC"},
        {kHeader + Parsed("RC5", "1F 00 00 00", "40 00 00 00"), 7, "command does not fit RC5"},
        {kHeader + Parsed("Nec", "00 00 00 00", "00 00 00 00"), 5, "unknown protocol 'Nec'"},  // case-sensitive
        {rawStart + "data: 500 -1 500\n", 7, "data value 2"},
        {kHeader + std::string("name: R\ntype: r\0aw\n", 20), 4, "binary"},
        {kHeader + "name: Sp\xe5" "ed\n", 3, "not UTF-8"},
        {many, 3 + 5 * CFlipperIrFile::kMaxSignals, "more than 4096 signals"},
    };
    for (const auto& [text, line, reason] : cases) {
        try {
            CFlipperIrFile::Parse(text, "bad.ir");
            ADD_FAILURE() << "accepted: " << reason;
        } catch (const CFormatError& e) {
            EXPECT_EQ(e.Line(), line) << e.what();
            EXPECT_EQ(std::string(e.what()).rfind("bad.ir:" + std::to_string(line) + ": ", 0), 0u) << e.what();
            EXPECT_NE(e.Reason().find(reason), std::string::npos) << e.what();
        }
    }
}

}  // namespace
}  // namespace infrared

// Import: Flipper files and lircd.conf remotes become codesets of the library's keys or states;
// what cannot be imported is explained with file and line.
#include "infrared/import/CCodesetImporter.h"

#include <gtest/gtest.h>

#include "AcVectors.h"
#include "ImportSupport.h"
#include "infrared/encode/CAcFrameEncoder.h"
#include "infrared/encode/CKeyEncoder.h"

namespace infrared {
namespace {

const std::string kHeader = "Filetype: IR signals file\nVersion: 1\n";

ImportedFile Import(const std::string& text, ApplianceKind kind = ApplianceKind::Fan, bool recognise = false) {
    CCodesetImporter::Options options;
    options.kindGiven = true;
    options.kind = kind;
    options.recognise = recognise;
    if (recognise) options.name = "MINE";
    return CCodesetImporter::ImportText(text, "Fans/Acme/Acme_Fan.ir", options);
}

std::string Raw(const std::string& name, const std::vector<std::uint32_t>& durations) {
    std::string text = "name: " + name + "\ntype: raw\nfrequency: 38000\nduty_cycle: 0.33\ndata:";
    for (const auto d : durations) text += " " + std::to_string(d);
    return text + "\n";
}

std::string Parsed(const char* name, const char* protocol, const char* address, const char* command) {
    return std::string("name: ") + name + "\ntype: parsed\nprotocol: " + protocol + "\naddress: " + address +
           "\ncommand: " + command + "\n";
}

// Parsed signals become keys of the protocol's kernel layout (worked out by hand from the
// format's description), raw captures of a known protocol too; noise stays raw; a name used
// twice gets a suffix and a free code.
TEST(CCodesetImporter, SignalsBecomeProtocolOrRawKeysWithTableCodes) {
    const auto rc6 = CKeyEncoder::Encode(Protocol::Rc6Mode0, 0x93a0, false, 0, 36000, 33).durations;
    const ImportedFile report = Import(
        kHeader + Parsed("POWER", "NEC", "04 00 00 00", "08 00 00 00") +
        Parsed("Speed+", "NECext", "82 21 00 00", "1F E0 00 00") + Parsed("Fan_down", "NECext", "82 21 00 00", "12 34 00 00") +
        Parsed("Oscillate", "RC5X", "13 00 00 00", "50 00 00 00") + Parsed("Timer", "Kaseikyo", "41 54 32 00", "1B 00 00 00") +
        Raw("Light", {9000, 4500, 560, 560, 560, 40000}) + Parsed("POWER", "SIRC20", "B5 0F 00 00", "53 00 00 00") +
        Raw("Mode", rc6));
    ASSERT_EQ(report.error, "");
    ASSERT_EQ(report.codesets.size(), 1u);
    EXPECT_EQ(report.codesets[0].name, "Acme_Fan");
    EXPECT_EQ(std::tie(report.codesets[0].protocolKeys, report.codesets[0].rawKeys), std::make_tuple(7u, 1u));
    const std::tuple<const char*, int, Protocol, std::uint64_t> wants[] = {
        {"POWER", 10, Protocol::Nec, 0x0408},           {"Speed+", 11, Protocol::NecX, 0x82211f},
        {"Fan_down", 12, Protocol::Nec32, 0x21823412},  {"Oscillate", 13, Protocol::Rc5, 0x1350},
        {"Timer", 14, Protocol::Kaseikyo, 0x325441001bULL}, {"Light", 1000, Protocol::Raw, 0},
        {"POWER_2", 1001, Protocol::Sony20, 0x157d53},  {"Mode", 76, Protocol::Rc6Mode0, 0x93a0},
    };
    const auto library = irtest::Library({report.codesets[0].json});
    const Codeset& codeset = library->Codesets()[0];
    for (const auto& [name, code, protocol, scancode] : wants) {
        const CodesetKey* key = codeset.FindKey(code);
        ASSERT_NE(key, nullptr) << name;
        EXPECT_EQ(std::tie(key->name, key->protocol, key->scancode), std::tie(name, protocol, scancode));
    }
    // The trailing space of a raw capture is dropped.
    EXPECT_EQ(codeset.FindKey(1000)->raw, (std::vector<std::uint32_t>{9000, 4500, 560, 560, 560}));
}

// Buttons naming a state become a state table; a button that names none is refused at its line.
TEST(CCodesetImporter, AirConditionerFilesBecomeStateTables) {
    const std::vector<std::uint32_t> raw = {3000, 1500, 500};
    const ImportedFile report = Import(kHeader + Raw("Off", raw) + Raw("Cool_hi", raw) + Raw("Heat_22", raw) +
                                       Raw("TEMP+", raw) + Raw("Dh", raw), ApplianceKind::Aircon);
    ASSERT_EQ(report.codesets.size(), 1u) << report.error;
    ASSERT_EQ(report.refused.size(), 1u);
    EXPECT_EQ(report.refused[0].line, 18u);
    EXPECT_EQ(CCodesetLibrary::KeyMapText(irtest::Library({report.codesets[0].json})->Codesets()[0]),
              R"({"modes":["cool","heat","dry"],"fan":["high"],"setpoint":[22,22],"states":["Off","Cool_hi","Heat_22","Dh"]})");
}

// Captures that are frames of one of the library's air-conditioner codesets are said to be; with
// `recognise` the file becomes that codeset, every state available.
TEST(CCodesetImporter, RecognisedAirConditionerCapturesOfferTheProtocolCodeset) {
    const Codeset& ac = *irtest::ShippedLibrary().Find("ZAC00005");
    std::string text = kHeader;
    for (const char* mode : {"cool", "heat"}) {
        const auto bytes = CAcFrameEncoder::BuildFrame(ac.frame, {"on", mode, "22", "auto"});
        text += Raw(std::string(mode) + "_22", CAcFrameEncoder::Encode(ac.frame, bytes, ac.carrier, ac.dutyCycle).durations);
    }
    const ImportedFile offered = Import(text, ApplianceKind::Aircon);
    EXPECT_EQ(offered.acProtocol, "ZAC00005");
    ASSERT_EQ(offered.codesets.size(), 1u);
    EXPECT_EQ(offered.codesets[0].acStates, 2u);  // without --recognise: the state table
    const ImportedFile taken = Import(text, ApplianceKind::Aircon, true);
    ASSERT_EQ(taken.codesets.size(), 1u);
    const auto library = irtest::Library({taken.codesets[0].json});
    const Codeset& mine = library->Codesets()[0];
    EXPECT_EQ(mine.protocol, Protocol::Aircon);
    EXPECT_EQ(CCodesetLibrary::KeyMapText(mine), CCodesetLibrary::KeyMapText(ac));
}

TEST(CCodesetImporter, RefusesWholeFilesWithFileAndLine) {
    const std::pair<std::string, const char*> cases[] = {
        {"Filetype: IR signals file\nVersion: 3\n", ":2: version 3"},
        {kHeader + Parsed("Temp+", "RCA", "01 00 00 00", "01 00 00 00"), ":0: no signal"},
        {"begin remote\n  name x\n  bits 8\n  one 1 1\n  zero 1 1\n  begin codes\n    A 0x100\n  end codes\nend remote\n",
         ":7: code of 'A' does not fit 8 bits"},
    };
    for (const auto& [text, error] : cases) {
        const ImportedFile report = Import(text, ApplianceKind::Aircon);
        EXPECT_EQ(report.error.rfind("Fans/Acme/Acme_Fan.ir" + std::string(error), 0), 0u) << report.error;
        EXPECT_TRUE(report.codesets.empty());
    }
}

}  // namespace
}  // namespace infrared

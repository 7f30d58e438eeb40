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
    return CCodesetImporter::ImportText(text, "Fans/Acme/Acme_Fan.ir", {"MINE", true, kind, recognise});
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
// format's description), raw captures of a known protocol too; other captures stay raw without
// their trailing space; a name used twice gets a suffix and a free code.
TEST(CCodesetImporter, SignalsBecomeProtocolOrRawKeysWithTableCodes) {
    const auto rc6 = CKeyEncoder::Encode(Protocol::Rc6Mode0, 0x93a0, false, 0, 36000, 33).durations;
    const ImportedFile report = Import(
        kHeader + Parsed("POWER", "NEC", "04 00 00 00", "08 00 00 00") +
        Parsed("Speed+", "NECext", "82 21 00 00", "1F E0 00 00") +
        Parsed("Fan_down", "NECext", "82 21 00 00", "12 34 00 00") +
        Parsed("Oscillate", "RC5X", "13 00 00 00", "50 00 00 00") +
        Parsed("Timer", "Kaseikyo", "41 54 32 00", "1B 00 00 00") + Raw("Light", {9000, 4500, 560, 40000}) +
        Parsed("POWER", "SIRC20", "B5 0F 00 00", "53 00 00 00") + Raw("Mode", rc6));
    ASSERT_EQ(report.codesets.size(), 1u) << report.error;
    const auto library = irtest::Library({report.codesets[0].json});
    std::vector<std::tuple<std::string, int, Protocol, std::uint64_t, std::vector<std::uint32_t>>> keys;
    for (const auto& k : library->Codesets()[0].keys) keys.emplace_back(k.name, k.code, k.protocol, k.scancode, k.raw);
    EXPECT_EQ(keys, (decltype(keys){{"POWER", 10, Protocol::Nec, 0x0408, {}},
                                    {"Speed+", 11, Protocol::NecX, 0x82211f, {}},
                                    {"Fan_down", 12, Protocol::Nec32, 0x21823412, {}},
                                    {"Oscillate", 13, Protocol::Rc5, 0x1350, {}},
                                    {"Timer", 14, Protocol::Kaseikyo, 0x325441001bULL, {}},
                                    {"Light", 1000, Protocol::Raw, 0, {9000, 4500, 560}},
                                    {"POWER_2", 1001, Protocol::Sony20, 0x157d53, {}},
                                    {"Mode", 76, Protocol::Rc6Mode0, 0x93a0, {}}}));
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
              R"({"modes":["cool","heat","dry"],"fan":["high"],"setpoint":[22,22],)"
              R"("states":["Off","Cool_hi","Heat_22","Dh"]})");
}

// Captures that are frames of one of the library's air-conditioner codesets are said to be; with
// `recognise` the file becomes that codeset, every state available.
TEST(CCodesetImporter, RecognisedAirConditionerCapturesOfferTheProtocolCodeset) {
    const Codeset& ac = *irtest::ShippedLibrary().Find("ZAC00005");
    std::string text = kHeader;
    for (const char* mode : {"cool", "heat"}) {
        const auto bytes = CAcFrameEncoder::BuildFrame(ac.frame, {"on", mode, "22", "auto"});
        text += Raw(mode, CAcFrameEncoder::Encode(ac.frame, bytes, ac.carrier, ac.dutyCycle).durations);
    }
    const ImportedFile offered = Import(text, ApplianceKind::Aircon);
    ASSERT_EQ(offered.codesets.size(), 1u);
    EXPECT_EQ(std::tie(offered.acProtocol, offered.codesets[0].acStates), std::make_tuple("ZAC00005", 2u));
    const ImportedFile taken = Import(text, ApplianceKind::Aircon, true);
    ASSERT_EQ(taken.codesets.size(), 1u);
    const auto library = irtest::Library({taken.codesets[0].json});
    EXPECT_EQ(CCodesetLibrary::KeyMapText(library->Codesets()[0]), CCodesetLibrary::KeyMapText(ac));
}

// A reader's refusal and a file with nothing to import both name the file and the line.
TEST(CCodesetImporter, RefusesWholeFilesWithFileAndLine) {
    const std::pair<std::string, const char*> cases[] = {
        {"begin remote\n  name x\n  bits 8\n  one 1 1\n  zero 1 1\n  begin codes\n    A 0x100\n  end codes\n"
         "end remote\n",
         "Acme_Fan.ir:7: code of 'A' does not fit 8 bits"},
        {kHeader + Parsed("Temp+", "RCA", "01 00 00 00", "01 00 00 00"), "Acme_Fan.ir:0: no signal"},
    };
    for (const auto& [text, error] : cases) {
        const ImportedFile report = Import(text, ApplianceKind::Aircon);
        EXPECT_NE(report.error.find(error), std::string::npos) << report.error;
        EXPECT_TRUE(report.codesets.empty());
    }
}

}  // namespace
}  // namespace infrared

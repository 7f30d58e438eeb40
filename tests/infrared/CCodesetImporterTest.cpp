// Import: Flipper files and lircd.conf remotes become codesets whose keys, sent through the
// dry-run file, decode as the original buttons; what cannot be imported is explained.
#include "infrared/import/CCodesetImporter.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "ImportSupport.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/encode/CAcFrameEncoder.h"
#include "infrared/encode/CKeyEncoder.h"
#include "infrared/formats/CFlipperIrFile.h"

namespace infrared {
namespace {

const std::string kShared = IRC_SOURCE_DIR "/../shared/ir";
const std::string kLircRemotes = "/usr/share/lirc/remotes";
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

// What lircd itself sends for every button of `lircdConf` (irsimsend), decoded by irsimreceive
// with the same file: the presses lirc gets back from its own signals.
std::vector<std::string> LircRoundTrip(const std::string& lircdConf) {
    const std::string dir = irtest::TempDir();
    irtest::WriteText(dir + "/lircd.conf", lircdConf);
    // irsimsend writes simsend.out into its working directory; it lives beside irsimreceive.
    const std::string irsimreceive = IRC_IRSIMRECEIVE;
    const std::string irsimsend = irsimreceive.substr(0, irsimreceive.rfind('/') + 1) + "irsimsend";
    const std::string command = "cd '" + dir + "' && '" + irsimsend + "' lircd.conf >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0) return {};
    irtest::WriteText(dir + "/sent.txt", "space 200000\n" + irtest::ReadText(dir + "/simsend.out"));
    const auto presses = irtest::Presses(irtest::IrsimReceive(lircdConf, dir + "/sent.txt").keys);
    (void)std::system(("rm -rf '" + dir + "'").c_str());
    return presses;
}

// Parsed signals become keys of the protocol's kernel layout (worked out by hand from the
// format's description), raw captures of a known protocol too; noise stays raw.
TEST(CCodesetImporter, SignalsBecomeProtocolOrRawKeysWithTableCodes) {
    const auto rc6 = CKeyEncoder::Encode(Protocol::Rc6Mode0, 0x93a0, false, 0, 36000, 33).durations;
    const ImportedFile report = Import(
        kHeader + Parsed("POWER", "NEC", "04 00 00 00", "08 00 00 00") +
        Parsed("Speed+", "NECext", "82 21 00 00", "1F E0 00 00") +
        Parsed("Fan_down", "NECext", "82 21 00 00", "12 34 00 00") +
        Parsed("Oscillate", "RC5X", "13 00 00 00", "50 00 00 00") +
        Parsed("Timer", "Kaseikyo", "41 54 32 00", "1B 00 00 00") + Raw("Light", {9000, 4500, 560, 560, 560, 40000}) +
        Parsed("POWER", "SIRC20", "B5 0F 00 00", "53 00 00 00") + Raw("Mode", rc6) + Raw("Noise", {300, 7000, 1200}));
    ASSERT_EQ(report.error, "");
    ASSERT_EQ(report.codesets.size(), 1u);
    const ImportedCodeset& imported = report.codesets[0];
    EXPECT_EQ(imported.name, "Acme_Fan");
    EXPECT_EQ(imported.protocolKeys, 7u);
    EXPECT_EQ(imported.rawKeys, 2u);
    EXPECT_TRUE(report.refused.empty());
    EXPECT_EQ(imported.freeCodes, (std::vector<std::pair<std::string, int>>{{"Light", 1000}, {"POWER_2", 1001},
                                                                           {"Noise", 1002}}));
    const auto library = irtest::Library({imported.json});
    struct Want {
        const char* name;
        int code;
        Protocol protocol;
        std::uint64_t scancode;
        std::vector<std::uint32_t> raw;
    } wants[] = {
        {"POWER", 10, Protocol::Nec, 0x0408, {}},           {"Speed+", 11, Protocol::NecX, 0x82211f, {}},
        {"Fan_down", 12, Protocol::Nec32, 0x21823412, {}},  {"Oscillate", 13, Protocol::Rc5, 0x1350, {}},
        {"Timer", 14, Protocol::Kaseikyo, 0x325441001bULL, {}},
        {"Light", 1000, Protocol::Raw, 0, {9000, 4500, 560, 560, 560}},  // the trailing space dropped
        {"POWER_2", 1001, Protocol::Sony20, 0x157d53, {}},  {"Mode", 76, Protocol::Rc6Mode0, 0x93a0, {}},
        {"Noise", 1002, Protocol::Raw, 0, {300, 7000, 1200}},
    };
    const Codeset& codeset = library->Codesets()[0];
    ASSERT_EQ(codeset.keys.size(), std::size(wants));
    for (const auto& want : wants) {
        const CodesetKey* key = codeset.FindKey(want.code);
        ASSERT_NE(key, nullptr) << want.name;
        EXPECT_EQ(std::tie(key->name, key->protocol, key->scancode, key->raw),
                  std::tie(want.name, want.protocol, want.scancode, want.raw));
    }
}

TEST(CCodesetImporter, AirConditionerFilesBecomeStateTables) {
    const std::vector<std::uint32_t> raw = {3000, 1500, 500};
    const ImportedFile report = Import(kHeader + Raw("Off", raw) + Raw("Cool_hi", raw) + Raw("Heat_22", raw) +
                                       Raw("TEMP+", raw) + Raw("Dh", raw), ApplianceKind::Aircon);
    ASSERT_EQ(report.error, "");
    ASSERT_EQ(report.codesets.size(), 1u);
    EXPECT_EQ(report.codesets[0].acStates, 4u);
    ASSERT_EQ(report.refused.size(), 1u);
    EXPECT_EQ(report.refused[0].line, 18u);
    const auto library = irtest::Library({report.codesets[0].json});
    EXPECT_EQ(library->Codesets()[0].protocol, Protocol::AcStates);
    EXPECT_EQ(CCodesetLibrary::KeyMapText(library->Codesets()[0]),
              R"({"modes":["cool","heat","dry"],"fan":["high"],"setpoint":[22,22],"states":["Off","Cool_hi","Heat_22","Dh"]})");
}

// Captures that are frames of one of the library's air-conditioner codesets are said to be; with
// `recognise` the file becomes that codeset, every state available.
TEST(CCodesetImporter, RecognisedAirConditionerCapturesOfferTheProtocolCodeset) {
    const auto shipped = CCodesetLibrary::Parse(DefaultCodesetsText());
    const Codeset& ac = *shipped->Find("ZAC00005");
    std::string text = kHeader;
    for (const char* mode : {"cool", "heat"}) {
        const auto bytes = CAcFrameEncoder::BuildFrame(ac.frame, {"on", mode, "22", "auto"});
        text += Raw(std::string(mode) + "_22",
                    CAcFrameEncoder::Encode(ac.frame, bytes, ac.carrier, ac.dutyCycle).durations);
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
    struct Case {
        std::string text;
        const char* error;
    } cases[] = {
        {"Filetype: IR signals file\nVersion: 3\n", ":2: version 3"},
        {kHeader + Parsed("Temp+", "RCA", "01 00 00 00", "01 00 00 00"), ":0: no signal"},
        {"begin remote\n  name x\n  bits 8\n  one 1 1\n  zero 1 1\n  begin codes\n    A 0x100\n  end codes\nend remote\n",
         ":7: code of 'A' does not fit 8 bits"},
        {std::string(3000, '\xff'), ":1: "},
    };
    for (const auto& c : cases) {
        const ImportedFile report = Import(c.text, ApplianceKind::Aircon);
        EXPECT_EQ(report.error.rfind("Fans/Acme/Acme_Fan.ir" + std::string(c.error), 0), 0u) << report.error;
        EXPECT_TRUE(report.codesets.empty());
    }
}

// Every file of the shared sample imports; every refused signal says why and where.
TEST(CCodesetImporter, ImportsEveryFileOfTheSharedSample) {
    const auto files = irtest::FilesUnder(kShared + "/irdb", ".ir");
    if (files.empty()) GTEST_SKIP() << "the shared IR sample is not at " << kShared;
    std::size_t protocolKeys = 0, states = 0;
    for (const auto& file : files) {
        const ImportedFile report = CCodesetImporter::ImportFile(file, {});
        if (!report.error.empty()) {
            // Nothing importable (an air conditioner's toggle buttons only): each signal says why.
            EXPECT_NE(report.error.find("no signal of the file can be imported"), std::string::npos) << report.error;
            EXPECT_EQ(report.refused.size(), CFlipperIrFile::Parse(irtest::ReadText(file), file).size()) << file;
        }
        for (const auto& r : report.refused) EXPECT_TRUE(r.line > 0 && !r.reason.empty()) << file << ": " << r.reason;
        for (const auto& c : report.codesets) {
            EXPECT_NO_THROW(irtest::Library({c.json})) << file;
            protocolKeys += c.protocolKeys;
            states += c.acStates;
        }
    }
    EXPECT_GT(protocolKeys, 0u);
    EXPECT_GT(states, 0u);
}

// Every remote of Debian's lirc-compat-remotes imports, and every key of it, sent through the
// dry-run file, is decoded by irsimreceive with the original file as that key.
TEST(CCodesetImporter, LircCompatRemotesDecodeWithTheirOwnFiles) {
    const auto files = irtest::FilesUnder(kLircRemotes, "");
    if (files.empty()) GTEST_SKIP() << "lirc-compat-remotes is not installed at " << kLircRemotes;
    std::size_t remotes = 0, lircOwn = 0;
    const std::string mode2 = irtest::TempDir() + "/remote.txt";
    for (const auto& file : files) {
        const std::string text = irtest::ReadText(file);
        if (text.find("begin remote") == std::string::npos) continue;  // lircmd.conf, READMEs
        const ImportedFile report = Import(text);
        if (!report.error.empty()) {
            // Only what lircd cannot send either may be refused, and it is named: other
            // encodings, receivers' key maps without timings, templates without buttons.
            bool known = false;
            for (const char* why : {"is not supported", "cannot be sent", "has no buttons"}) {
                known = known || report.error.find(why) != std::string::npos;
            }
            EXPECT_TRUE(known) << report.error;
            continue;
        }
        EXPECT_TRUE(report.refused.empty()) << file << ": " << report.refused[0].reason;
        std::vector<std::string> codesets;
        for (const auto& c : report.codesets) codesets.push_back(c.json);
        const auto library = irtest::Library(codesets);
        std::vector<std::string> sent, decoded;
        for (const auto& c : library->Codesets()) {
            for (const auto& name : irtest::SendAll(library, c.name, mode2)) sent.push_back(name);
            const auto result = irtest::IrsimReceive(text, mode2);
            ASSERT_TRUE(result.ran) << result.error;
            decoded.insert(decoded.end(), result.keys.begin(), result.keys.end());
            ++remotes;
        }
        // Where lirc's own receiver does not decode what lircd sends for the file (irsimsend shows
        // it), there is nothing to hold the import to.
        if (irtest::Presses(decoded) != irtest::Presses(sent) && LircRoundTrip(text) != irtest::Presses(sent)) {
            ++lircOwn;
            continue;
        }
        EXPECT_EQ(irtest::Presses(decoded), irtest::Presses(sent)) << file;
    }
    EXPECT_GT(remotes, 0u);
    EXPECT_LT(lircOwn, 20u) << "files lirc itself does not decode";
}

}  // namespace
}  // namespace infrared

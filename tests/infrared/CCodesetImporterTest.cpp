// Import: Flipper files and lircd.conf remotes become codesets whose keys, sent through the
// dry-run file, decode as the original buttons; what cannot be imported is explained.
#include "infrared/import/CCodesetImporter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <algorithm>
#include <map>
#include <sstream>
#include <set>

#include "ImportSupport.h"
#include "SharedVectors.h"
#include "infrared/CIrBackend.h"
#include "infrared/decode/CFrameDecoder.h"
#include "JsonValue.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/encode/CAcFrameEncoder.h"
#include "infrared/encode/CKeyEncoder.h"
#include "infrared/formats/CFlipperIrFile.h"
#include "infrared/formats/CFormatError.h"
#include "infrared/formats/CLircdConf.h"

namespace infrared {
namespace {

const std::string kShared = IRC_SOURCE_DIR "/../shared/ir";
const std::string kLircRemotes = "/usr/share/lirc/remotes";

ImportedFile Import(const std::string& text, const std::string& file, ApplianceKind kind = ApplianceKind::Fan) {
    CCodesetImporter::Options options;
    options.kindGiven = true;
    options.kind = kind;
    return CCodesetImporter::ImportText(text, file, options);
}

const std::string kFanFile =
    "Filetype: IR signals file\nVersion: 1\n"
    "name: POWER\ntype: parsed\nprotocol: NEC\naddress: 04 00 00 00\ncommand: 08 00 00 00\n"        // 3
    "name: Speed+\ntype: parsed\nprotocol: NECext\naddress: 82 21 00 00\ncommand: 1F E0 00 00\n"    // 8
    "name: Fan_down\ntype: parsed\nprotocol: NECext\naddress: 82 21 00 00\ncommand: 12 34 00 00\n"  // 13
    "name: Oscillate\ntype: parsed\nprotocol: RC5X\naddress: 13 00 00 00\ncommand: 50 00 00 00\n"   // 18
    "name: Timer\ntype: parsed\nprotocol: Kaseikyo\naddress: 41 54 32 00\ncommand: 1B 00 00 00\n"   // 23
    "name: Light\ntype: raw\nfrequency: 38000\nduty_cycle: 0.330000\ndata: 9000 4500 560 560 560 40000\n"  // 28
    "name: POWER\ntype: parsed\nprotocol: SIRC20\naddress: B5 0F 00 00\ncommand: 53 00 00 00\n";   // 33

TEST(CCodesetImporter, FlipperSignalsBecomeProtocolOrRawKeysWithTableCodes) {
    const ImportedFile report = Import(kFanFile, "Fans/Acme/Acme_Fan.ir");
    ASSERT_EQ(report.error, "");
    ASSERT_EQ(report.codesets.size(), 1u);
    const ImportedCodeset& imported = report.codesets[0];
    EXPECT_EQ(imported.name, "Acme_Fan");
    EXPECT_EQ(imported.protocolKeys, 6u);
    EXPECT_EQ(imported.rawKeys, 1u);
    EXPECT_TRUE(report.refused.empty());

    const auto library = irtest::Library({imported.json});
    const Codeset& codeset = *library->Find("Acme_Fan");
    struct Want { const char* name; int code; Protocol protocol; std::uint64_t scancode; };
    const Want wants[] = {
        {"POWER", 10, Protocol::Nec, 0x0408},        {"Speed+", 11, Protocol::NecX, 0x82211f},
        {"Fan_down", 12, Protocol::Nec32, 0x21823412}, {"Oscillate", 13, Protocol::Rc5, 0x1350},
        {"Timer", 14, Protocol::Kaseikyo, 0x325441001bULL}, {"POWER_2", 1001, Protocol::Sony20, 0x157d53},
    };
    for (const auto& want : wants) {
        const CodesetKey* key = nullptr;
        for (const auto& k : codeset.keys) key = k.name == want.name ? &k : key;
        ASSERT_NE(key, nullptr) << want.name;
        EXPECT_EQ(key->code, want.code) << want.name;
        EXPECT_EQ(key->protocol, want.protocol) << want.name;
        EXPECT_EQ(key->scancode, want.scancode) << want.name;
    }
    const CodesetKey* light = codeset.FindKey(1000);
    ASSERT_NE(light, nullptr);
    EXPECT_EQ(light->name, "Light");
    EXPECT_EQ(light->protocol, Protocol::Raw);
    EXPECT_EQ(light->raw, (std::vector<std::uint32_t>{9000, 4500, 560, 560, 560}));  // trailing space dropped
    EXPECT_EQ(imported.freeCodes, (std::vector<std::pair<std::string, int>>{{"Light", 1000}, {"POWER_2", 1001}}));
}

// A raw capture of a frame the decoder knows is stored as that protocol's key; noise stays raw.
TEST(CCodesetImporter, RawCapturesOfKnownProtocolsBecomeProtocolKeys) {
    std::string data;
    for (const auto d : CKeyEncoder::Encode(Protocol::Rc6Mode0, 0x93a0, false, 0, 36000, 33).durations) data += " " + std::to_string(d);
    const std::string text = "Filetype: IR signals file\nVersion: 1\n"
                             "name: Power\ntype: raw\nfrequency: 36000\nduty_cycle: 0.33\ndata:" + data + "\n"
                             "name: Noise\ntype: raw\nfrequency: 38000\nduty_cycle: 0.33\ndata: 300 7000 1200\n";
    const ImportedFile report = Import(text, "fan.ir");
    ASSERT_EQ(report.error, "");
    const auto library = irtest::Library({report.codesets[0].json});
    const Codeset& codeset = library->Codesets()[0];
    ASSERT_EQ(codeset.keys.size(), 2u);
    EXPECT_EQ(codeset.keys[0].protocol, Protocol::Rc6Mode0);
    EXPECT_EQ(codeset.keys[0].scancode, 0x93a0u);
    EXPECT_EQ(codeset.keys[1].protocol, Protocol::Raw);
    EXPECT_EQ(codeset.keys[1].raw, (std::vector<std::uint32_t>{300, 7000, 1200}));
}

TEST(CCodesetImporter, AirConditionerFilesBecomeStateTables) {
    const std::string raw = "type: raw\nfrequency: 38000\nduty_cycle: 0.33\ndata: 3000 1500 500\n";
    const std::string text = "Filetype: IR signals file\nVersion: 1\nname: Off\n" + raw + "name: Cool_hi\n" + raw +
                             "name: Heat_22\n" + raw + "name: TEMP+\n" + raw + "name: Dh\n" + raw;
    const ImportedFile report = Import(text, "ac.ir", ApplianceKind::Aircon);
    ASSERT_EQ(report.error, "");
    ASSERT_EQ(report.codesets.size(), 1u);
    EXPECT_EQ(report.codesets[0].acStates, 4u);
    ASSERT_EQ(report.refused.size(), 1u);
    EXPECT_EQ(report.refused[0].line, 18u);
    const auto library = irtest::Library({report.codesets[0].json});
    const Codeset& codeset = library->Codesets()[0];
    EXPECT_EQ(codeset.protocol, Protocol::AcStates);
    EXPECT_EQ(CCodesetLibrary::KeyMapText(codeset),
              R"({"modes":["cool","heat","dry"],"fan":["high"],"setpoint":[22,22],"states":["Off","Cool_hi","Heat_22","Dh"]})");
}

// Captures that are frames of one of the library's air-conditioner codesets are said to be; with
// `recognise` the file becomes that codeset, every state available.
TEST(CCodesetImporter, RecognisedAirConditionerCapturesOfferTheProtocolCodeset) {
    const auto shipped = CCodesetLibrary::Parse(DefaultCodesetsText());
    const Codeset& ac = *shipped->Find("ZAC00005");
    std::string text = "Filetype: IR signals file\nVersion: 1\n";
    for (const char* mode : {"cool", "heat"}) {
        const auto train = CAcFrameEncoder::Encode(ac.frame, CAcFrameEncoder::BuildFrame(ac.frame, {"on", mode, "22", "auto"}),
                                                   ac.carrier, ac.dutyCycle);
        text += std::string("name: ") + mode + "_22\ntype: raw\nfrequency: 38000\nduty_cycle: 0.33\ndata:";
        for (const auto d : train.durations) text += " " + std::to_string(d);
        text += "\n";
    }
    CCodesetImporter::Options options;
    options.kindGiven = true;
    options.kind = ApplianceKind::Aircon;
    const ImportedFile offered = CCodesetImporter::ImportText(text, "ac.ir", options);
    EXPECT_EQ(offered.acProtocol, "ZAC00005");
    ASSERT_EQ(offered.codesets.size(), 1u);
    EXPECT_EQ(offered.codesets[0].acStates, 2u);  // without --recognise: the state table
    options.recognise = true;
    options.name = "MINE";
    const ImportedFile taken = CCodesetImporter::ImportText(text, "ac.ir", options);
    ASSERT_EQ(taken.codesets.size(), 1u);
    const auto library = irtest::Library({taken.codesets[0].json});
    const Codeset& mine = *library->Find("MINE");
    EXPECT_EQ(mine.protocol, Protocol::Aircon);
    EXPECT_EQ(CCodesetLibrary::KeyMapText(mine), CCodesetLibrary::KeyMapText(ac));
}

TEST(CCodesetImporter, RefusesWholeFilesWithFileAndLine) {
    struct Case { std::string text; const char* error; };
    const Case cases[] = {
        {"Filetype: IR signals file\nVersion: 3\n", "bad.ir:2: version 3"},
        {"Filetype: IR signals file\nVersion: 1\nname: Temp+\ntype: parsed\nprotocol: RCA\naddress: 01 00 00 00\ncommand: 01 00 00 00\n",
         "bad.ir:0: no signal"},
        {"begin remote\n  name x\n  bits 8\n  one 1 1\n  zero 1 1\n  begin codes\n    A 0x100\n  end codes\nend remote\n",
         "bad.ir:7: code of 'A' does not fit 8 bits"},
        {std::string(3000, '\xff'), "bad.ir:1: "},
    };
    for (const auto& c : cases) {
        const ImportedFile report = Import(c.text, "bad.ir", ApplianceKind::Aircon);
        EXPECT_EQ(report.error.rfind(c.error, 0), 0u) << report.error;
        EXPECT_TRUE(report.codesets.empty());
    }
}

// Every file of the shared sample imports; every refused signal says why and where.
TEST(CCodesetImporter, ImportsEveryFileOfTheSharedSample) {
    const auto files = irtest::FilesUnder(kShared + "/irdb", ".ir");
    if (files.empty()) GTEST_SKIP() << "the shared IR sample is not at " << kShared;
    std::size_t protocolKeys = 0, rawKeys = 0, states = 0, refused = 0, emptyFiles = 0;
    for (const auto& file : files) {
        const ImportedFile report = CCodesetImporter::ImportFile(file, {});
        if (!report.error.empty()) {
            // Nothing importable (an air conditioner's toggle buttons only): each signal says why.
            EXPECT_NE(report.error.find("no signal of the file can be imported"), std::string::npos) << report.error;
            EXPECT_EQ(report.refused.size(), CFlipperIrFile::Parse(irtest::ReadText(file), file).size()) << file;
            ++emptyFiles;
        }
        for (const auto& r : report.refused) {
            EXPECT_GT(r.line, 0u) << r.reason;
            EXPECT_FALSE(r.reason.empty());
        }
        refused += report.refused.size();
        for (const auto& c : report.codesets) {
            EXPECT_NO_THROW(irtest::Library({c.json})) << file;
            protocolKeys += c.protocolKeys, rawKeys += c.rawKeys, states += c.acStates;
        }
    }
    std::cout << files.size() << " files: " << protocolKeys << " protocol keys, " << rawKeys << " raw keys, " << states
              << " AC states, " << refused << " refused; " << emptyFiles << " files with nothing to import\n";
    EXPECT_GT(protocolKeys, 0u);
    EXPECT_GT(states, 0u);
}

// The NEC family's 32 bits on air, as the Flipper format lays them out: sent LSB first.
std::uint32_t NecBits(const FlipperSignal& s) {
    if (s.protocol == "NEC") return s.address | (~s.address & 0xff) << 8 | s.command << 16 | (~s.command & 0xffu) << 24;
    return (s.address & 0xffff) | (s.command & 0xffff) << 16;
}

// Each parsed signal of the sample, sent through the dry-run file, is decoded by irsimreceive
// against a remote whose codes are worked out from the file's own address and command.
TEST(CCodesetImporter, SharedSampleParsedSignalsDecodeAsTheFileStatesThem) {
    const auto files = irtest::FilesUnder(kShared + "/irdb", ".ir");
    if (files.empty()) GTEST_SKIP() << "the shared IR sample is not at " << kShared;
    std::string conf = "begin remote\n  name sample\n  bits 32\n  flags SPACE_ENC|REVERSE\n  eps 30\n  aeps 100\n"
                       "  header 9000 4500\n  one 560 1690\n  zero 560 560\n  ptrail 560\n  gap 40000\n  begin codes\n";
    struct One { std::string file, json; std::vector<std::string> expected; };
    std::vector<One> sent;
    std::map<std::uint32_t, std::string> names;
    for (const auto& file : files) {
        const std::string text = irtest::ReadText(file);
        const ImportedFile report = Import(text, file);
        if (report.codesets.empty()) continue;
        One one{file, "", {}};
        std::set<std::string> parsedNames;
        for (const auto& s : CFlipperIrFile::Parse(text, file)) {
            // A name given twice is imported under a new name; only first ones are sent here.
            if (s.raw || !parsedNames.insert(s.name).second) continue;
            const std::uint32_t bits = NecBits(s);
            if (names.emplace(bits, "C" + std::to_string(names.size())).second) {
                char line[64];
                std::snprintf(line, sizeof line, "    %s 0x%08x\n", names[bits].c_str(), bits);
                conf += line;
            }
            one.expected.push_back(names[bits]);
        }
        if (one.expected.empty()) continue;
        // Only the parsed signals are sent: a raw capture may hold the same frame.
        common::json::JsonValue entry = common::json::JsonValue::Create(report.codesets[0].json);
        common::json::JsonValue& keys = entry["keys"];
        for (const auto& name : keys.getMemberNames()) {
            if (parsedNames.count(name) == 0) keys.removeMember(name);
        }
        one.json = entry.toString();
        sent.push_back(std::move(one));
    }
    conf += "  end codes\nend remote\n";
    ASSERT_FALSE(sent.empty());
    const std::string file = irtest::TempDir() + "/one.txt";
    for (const auto& one : sent) {
        const auto library = irtest::Library({one.json});
        irtest::SendAll(library, library->Codesets()[0].name, file);
        const auto decoded = irtest::IrsimReceive(conf, file);
        ASSERT_TRUE(decoded.ran) << decoded.error;
        EXPECT_EQ(decoded.keys, one.expected) << one.file;
    }
}

// Every message of the Flipper format's published decoder vectors, imported as a parsed signal,
// sends the frame of its published capture: both decode to the same key.
TEST(CCodesetImporter, ParsedSignalsSendTheFramesOfThePublishedCaptures) {
    const auto messages = irtest::ReadFlipperDecodeVectors();
    if (!messages) GTEST_SKIP() << "no " << irtest::SharedIrDir() << "/vectors/flipper-irtest.json: not checked";
    const CFrameDecoder decoder(nullptr);
    const auto keys = [&](const std::vector<std::uint32_t>& durations) {
        Capture capture;
        capture.durations = durations;
        std::vector<std::pair<Protocol, std::uint64_t>> out;
        for (const auto& f : decoder.Decode(capture)) {
            if (f.kind == DecodedFrame::Kind::Key && !f.repeat) out.emplace_back(f.protocol, f.scancode);
        }
        return out;
    };
    std::map<std::string, int> checked;
    for (const auto& m : *messages) {
        if (m.repeat || m.timings.size() < 4) continue;
        char fields[96];
        std::snprintf(fields, sizeof fields, "address: %02X %02X %02X %02X\ncommand: %02X %02X %02X %02X\n", m.address & 0xff,
                      m.address >> 8 & 0xff, m.address >> 16 & 0xff, m.address >> 24, m.command & 0xff,
                      m.command >> 8 & 0xff, m.command >> 16 & 0xff, m.command >> 24);
        const ImportedFile report = Import("Filetype: IR signals file\nVersion: 1\nname: K\ntype: parsed\nprotocol: " +
                                           m.protocol + "\n" + fields, "vector.ir");
        ASSERT_EQ(report.codesets.size(), 1u) << m.source << ": " << report.error;
        const auto library = irtest::Library({report.codesets[0].json});
        Transmission t;
        CIrBackend::EncodeFrame(library->Codesets()[0], library->Codesets()[0].keys[0], false, t);
        // A published capture may hold a first frame the vectors do not count (two-frame Pioneer keys).
        const auto published = keys(std::vector<std::uint32_t>(m.timings.begin() + 1, m.timings.end()));
        if (published.empty()) continue;  // a frame the vectors decode only with the capture before it
        const auto sent = keys(t.train.durations);
        ASSERT_FALSE(sent.empty()) << m.source;
        EXPECT_NE(std::find(published.begin(), published.end(), sent[0]), published.end())
            << m.source << ": sent " << ProtocolName(sent[0].first) << " 0x" << std::hex << sent[0].second;
        ++checked[m.protocol];
    }
    std::ostringstream counts;
    for (const auto& [protocol, count] : checked) counts << " " << protocol << " " << count;
    std::cout << "checked:" << counts.str() << "\n";
    EXPECT_EQ(checked.size(), 13u) << counts.str();
}

// Every remote of Debian's lirc-compat-remotes imports, and every key of it, sent through the
// dry-run file, is decoded by irsimreceive with the original file as that key.
TEST(CCodesetImporter, LircCompatRemotesDecodeWithTheirOwnFiles) {
    const auto files = irtest::FilesUnder(kLircRemotes, "");
    if (files.empty()) GTEST_SKIP() << "lirc-compat-remotes is not installed at " << kLircRemotes;
    std::size_t remotes = 0, keys = 0, refusedFiles = 0, lircOwn = 0;
    const std::string mode2 = irtest::TempDir() + "/remote.txt";
    for (const auto& file : files) {
        const std::string text = irtest::ReadText(file);
        if (text.find("begin remote") == std::string::npos) continue;  // lircmd.conf, READMEs
        const ImportedFile report = Import(text, file);
        if (!report.error.empty()) {
            // Only what lircd cannot send either may be refused, and it is named: other
            // encodings, receivers' key maps without timings, templates without buttons.
            const bool known = report.error.find("is not supported") != std::string::npos ||
                               report.error.find("cannot be sent") != std::string::npos ||
                               report.error.find("has no buttons") != std::string::npos;
            EXPECT_TRUE(known) << report.error;
            ++refusedFiles;
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
        keys += sent.size();
        if (irtest::Presses(decoded) != irtest::Presses(sent) && irtest::LircRoundTrip(text) != irtest::Presses(sent)) {
            // lirc's own receiver does not decode what lircd sends for this file (irsimsend
            // shows it): nothing to hold the import to.
            ++lircOwn;
            continue;
        }
        EXPECT_EQ(irtest::Presses(decoded), irtest::Presses(sent)) << file;
    }
    std::cout << remotes << " remotes, " << keys << " keys sent; " << refusedFiles << " files refused; " << lircOwn
              << " files lirc itself does not decode\n";
    EXPECT_GT(remotes, 0u);
}

}  // namespace
}  // namespace infrared

// The IR library's path with a transmitter attached: the shipped codesets' keys and
// air-conditioner states go through the dry-run file and decode (keys by irsimreceive, frames by
// reading them back), and a transmission that cannot be made fails with a reason, writing nothing.
#include "infrared/CIrBackend.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "IrsimReceive.h"
#include "Mode2File.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/transmit/CMode2Sink.h"

namespace infrared {
namespace {

const char kPairing[] =
    R"({"dev_info":[{"codeset":"HFAN0001","device_index":1},{"codeset":"HPUR0002","device_index":2},)"
    R"({"codeset":"HHUM0003","device_index":3},{"codeset":"HRBC0004","device_index":4},)"
    R"({"codeset":"ZAC00005","device_index":5},{"codeset":"NOSUCH","device_index":6}]})";

struct Fixture {
    std::string file = irtest::TempDir() + "/sent.txt";
    std::shared_ptr<const CCodesetLibrary> codesets = CCodesetLibrary::Parse(DefaultCodesetsText());
    CIrBackend backend{codesets, CIrBackend::OpenTransmitter("mode2:" + file, *codesets)};
};

// lircd.conf remotes for the shipped key codesets, from the protocols' published timings; the
// codes are worked out here from each codeset's address and commands.
std::string Remote(const std::string& name, const std::string& body, const std::vector<std::pair<std::string, std::uint64_t>>& codes) {
    std::ostringstream out;
    out << "begin remote\n  name " << name << "\n" << body << "  begin codes\n";
    for (const auto& [key, code] : codes) out << "    " << key << " 0x" << std::hex << code << std::dec << "\n";
    out << "  end codes\nend remote\n";
    return out.str();
}

std::uint64_t Nec(std::uint32_t address, std::uint32_t command) {
    return address | (address ^ 0xff) << 8 | command << 16 | static_cast<std::uint64_t>(command ^ 0xff) << 24;
}

const char kNec[] = "  bits 32\n  flags SPACE_ENC|CONST_LENGTH|REVERSE\n  eps 30\n  aeps 100\n"
                    "  header 9000 4500\n  one 563 1688\n  zero 563 563\n  ptrail 563\n  gap 108000\n";

struct ShippedCase {
    const char* codeset;
    int deviceIndex;
    std::string remote;
    std::vector<std::pair<int, std::string>> keys;  // key code, decoded name
    unsigned framesPerKey;
};

std::vector<ShippedCase> ShippedKeyCodesets() {
    return {
        {"HFAN0001", 1,
         Remote("fan", kNec, {{"power", Nec(4, 8)}, {"speed_up", Nec(4, 9)}, {"speed_down", Nec(4, 10)},
                              {"swing", Nec(4, 11)}, {"timer", Nec(4, 12)}, {"mode", Nec(4, 13)}}),
         {{10, "power"}, {11, "speed_up"}, {12, "speed_down"}, {13, "swing"}, {14, "timer"}, {76, "mode"}}, 1},
        {"HPUR0002", 2,
         Remote("purifier",
                "  bits 13\n  flags RC5|CONST_LENGTH\n  eps 30\n  aeps 100\n  one 889 889\n  zero 889 889\n"
                "  plead 889\n  gap 113778\n  toggle_bit_mask 0x800\n",
                // S2 (1 for commands below 64), toggle, address 12, six command bits
                {{"power", 1 << 12 | 12 << 6 | 0x0c}, {"fan_up", 1 << 12 | 12 << 6 | 0x10},
                 {"fan_down", 1 << 12 | 12 << 6 | 0x11}, {"sleep", 1 << 12 | 12 << 6 | 0x26},
                 {"timer", 1 << 12 | 12 << 6 | 0x2a}, {"mode", 0 << 12 | 12 << 6 | 0x0c}}),
         {{10, "power"}, {11, "fan_up"}, {12, "fan_down"}, {13, "sleep"}, {14, "timer"}, {76, "mode"}}, 1},
        {"HHUM0003", 3,
         Remote("humidifier",
                "  bits 12\n  flags SPACE_ENC|CONST_LENGTH|REVERSE\n  eps 30\n  aeps 100\n  header 2400 600\n"
                "  one 1200 600\n  zero 600 600\n  gap 45000\n",
                {{"power", 0x15 | 1 << 7}, {"mist_up", 0x12 | 1 << 7}, {"mist_down", 0x13 | 1 << 7},
                 {"auto", 0x25 | 1 << 7}, {"timer", 0x36 | 1 << 7}, {"mode", 0x3a | 1 << 7}}),
         {{10, "power"}, {11, "mist_up"}, {12, "mist_down"}, {13, "auto"}, {14, "timer"}, {76, "mode"}}, 3},
        {"HRBC0004", 4, Remote("cleaner", kNec, {{"power", Nec(0x10, 1)}, {"home", Nec(0x10, 2)}, {"start", Nec(0x10, 3)}}),
         {{10, "power"}, {28, "home"}, {39, "start"}}, 1},
    };
}

TEST(CIrBackendTest, EveryShippedKeyDecodesFromTheDryRunFile) {
    for (const auto& c : ShippedKeyCodesets()) {
        SCOPED_TRACE(c.codeset);
        Fixture f;
        std::vector<std::string> expected;
        for (const auto& [code, name] : c.keys) {
            const auto result = f.backend.SendKey(kPairing, code, c.deviceIndex);
            ASSERT_TRUE(result.ok) << result.error;
            EXPECT_EQ(result.transmission.codeset, c.codeset);
            EXPECT_EQ(static_cast<std::uint64_t>(result.onAir.count()), result.transmission.train.OnAirMicroseconds());
            for (unsigned i = 0; i < c.framesPerKey; ++i) expected.push_back(name);
        }
        const irtest::Decoded decoded = irtest::IrsimReceive(c.remote, f.file);
        ASSERT_TRUE(decoded.ran) << decoded.error;
        EXPECT_EQ(decoded.keys, expected) << decoded.output;
        const auto blocks = irtest::ReadMode2(f.file);
        ASSERT_EQ(blocks.size(), c.keys.size());
        EXPECT_NE(blocks[0].header.find(std::string("codeset ") + c.codeset), std::string::npos) << blocks[0].header;
        EXPECT_NE(blocks[0].header.find("emitter " + std::to_string(c.deviceIndex)), std::string::npos);
    }
}

TEST(CIrBackendTest, EveryShippedAirConditionerStateReadsBackFromTheDryRunFile) {
    Fixture f;
    const Codeset& ac = *f.codesets->Find("ZAC00005");
    std::vector<AcState> states;
    for (const auto& power : ac.frame.power.values) {
        for (const auto& mode : ac.frame.mode.values) {
            for (const auto& fan : ac.frame.fan.values) {
                for (int t = static_cast<int>(ac.frame.setpoint.min); t <= static_cast<int>(ac.frame.setpoint.max); t += 5) {
                    states.push_back({power.first, mode.first, std::to_string(t), fan.first});
                }
            }
        }
    }
    for (const auto& state : states) ASSERT_TRUE(f.backend.SendAircon(kPairing, 5, state).ok);
    const auto blocks = irtest::ReadMode2(f.file);
    ASSERT_EQ(blocks.size(), states.size());
    for (std::size_t i = 0; i < states.size(); ++i) {
        const auto frames = irtest::ReadFrames(blocks[i].durations, ac.frame.timing);
        ASSERT_EQ(frames.size(), 2u);
        EXPECT_EQ(frames[0], frames[1]);
        EXPECT_EQ(frames[0], CAcFrameEncoder::BuildFrame(ac.frame, states[i]));
        // The state is where the layout puts it, and the checksum holds.
        const auto& bytes = frames[0];
        EXPECT_EQ(bytes[5], states[i].power == "on" ? 0x20 : 0x00);
        EXPECT_EQ(bytes[7] + 16, std::stoi(states[i].setpoint));
        std::uint32_t sum = 0;
        for (int b = 0; b < 17; ++b) sum += bytes[b];
        EXPECT_EQ(bytes[17], sum & 0xff);
        EXPECT_EQ(blocks[i].gap, ac.frame.timing.gap);
    }
}

TEST(CIrBackendTest, FailsWithAReasonAndWritesNothing) {
    struct Case {
        const char* name;
        std::function<CIrBackend::Result(CIrBackend&)> send;
        const char* says;
    } cases[] = {
        {"nothing paired there", [](auto& b) { return b.SendKey(kPairing, 10, 9); }, "no codeset is paired at device index 9"},
        {"codeset not in the file", [](auto& b) { return b.SendKey(kPairing, 10, 6); }, "NOSUCH is not in the codesets file"},
        {"key not in the codeset", [](auto& b) { return b.SendKey(kPairing, 39, 1); }, "has no key 39"},
        {"key to an air conditioner", [](auto& b) { return b.SendKey(kPairing, 10, 5); }, "has no key 10"},
        {"state to a fan", [](auto& b) { return b.SendAircon(kPairing, 1, {"on", "cool", "24", "auto"}); }, "not an air conditioner"},
        {"state out of range", [](auto& b) { return b.SendAircon(kPairing, 5, {"on", "cool", "40", "auto"}); }, "outside"},
        {"no pairing list", [](auto& b) { return b.SendKey("", 10, 1); }, "paired-device list"},
        {"pairing list not JSON", [](auto& b) { return b.SendKey("{", 10, 1); }, "paired-device list"},
        {"emitter the sink lacks", [](auto& b) { return b.SendKey(R"({"dev_info":[{"codeset":"HFAN0001","device_index":0}]})", 10, 0); }, "no emitter 0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Fixture f;
        const auto result = c.send(f.backend);
        EXPECT_FALSE(result.ok);
        EXPECT_NE(result.error.find(c.says), std::string::npos) << result.error;
        EXPECT_TRUE(irtest::ReadMode2(f.file).empty());
    }
}

TEST(CIrBackendTest, RefusesAnUnusableTransmitterSpec) {
    const auto codesets = CCodesetLibrary::Parse(DefaultCodesetsText());
    for (const std::string device : {"mode2:", "mode2:/nonexistent-dir/x.txt", "/nonexistent/lirc9"}) {
        SCOPED_TRACE(device);
        EXPECT_THROW(CIrBackend::OpenTransmitter(device, *codesets), CTransmitError);
    }
}

}  // namespace
}  // namespace infrared

namespace infrared {
namespace {

TEST(CIrBackendTest, RawCodesetsSendTheirDurationsAndRepeatWithTheGap) {
    // One NEC frame (address 0x20, command 0x05) written out as durations.
    std::string raw = "9000,4500";
    const std::uint64_t bits = Nec(0x20, 0x05);
    for (int i = 0; i < 32; ++i) raw += ((bits >> i) & 1u) != 0 ? ",563,1688" : ",563,563";
    raw += ",563";
    const auto codesets = CCodesetLibrary::Parse(R"({"codesets":[{"name":"R","protocol":"raw","repeats":1,"keys":{"power":{"code":10,"raw":[)" +
                                                 raw + "]}}}]}");
    const std::string file = irtest::TempDir() + "/sent.txt";
    CIrBackend backend(codesets, CIrBackend::OpenTransmitter("mode2:" + file, *codesets));
    const auto result = backend.SendKey(R"({"dev_info":[{"codeset":"R","device_index":2}]})", 10, 2);
    ASSERT_TRUE(result.ok) << result.error;
    EXPECT_EQ(result.transmission.train.durations.size(), 2 * 67u + 1);
    const irtest::Decoded decoded = irtest::IrsimReceive(Remote("raw", kNec, {{"power", bits}}), file);
    ASSERT_TRUE(decoded.ran) << decoded.error;
    EXPECT_EQ(decoded.keys, (std::vector<std::string>{"power", "power"})) << decoded.output;
}

}  // namespace
}  // namespace infrared

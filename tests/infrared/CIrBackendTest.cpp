// The IR library's path with a transmitter attached: keys, raw keys and air-conditioner states
// go through the dry-run file and read back as mode2 text, and a transmission that cannot be
// made fails with a reason, writing nothing. (Every shipped key through irsimreceive: the
// exporter's tests.)
#include "infrared/CIrBackend.h"

#include <gtest/gtest.h>

#include "FileTree.h"
#include "IrsimReceive.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/decode/CAcFrameDecoder.h"
#include "infrared/decode/CFrameDecoder.h"
#include "infrared/receive/CMode2Text.h"

namespace infrared {
namespace {

using Durations = std::vector<std::uint32_t>;

// The dry-run file's transmissions, one capture each.
std::vector<Capture> Sent(const std::string& path) { return CMode2Text::Parse(irtest::ReadText(path), path); }

const char kPairing[] =
    R"({"dev_info":[{"codeset":"HHUM0003","device_index":3},{"codeset":"ZAC00005","device_index":5},)"
    R"({"codeset":"NOSUCH","device_index":6},{"codeset":"HFAN0001","device_index":0},)"
    R"({"codeset":"HPUR0002","device_index":2}]})";

struct Fixture {
    explicit Fixture(const std::string& text = DefaultCodesetsText()) : codesets(CCodesetLibrary::Parse(text)) {}
    std::string file = irtest::TempDir() + "/sent.txt";
    std::shared_ptr<const CCodesetLibrary> codesets;
    CIrBackend backend{codesets, CIrBackend::OpenTransmitter("mode2:" + file, *codesets)};
};

// A key goes out from the codeset paired at the device index, on the emitter of that index; an
// air-conditioner state is built from the codeset's frame description; an RC-5 key flips its
// toggle bit on each press, so a receiver sees a new press.
TEST(CIrBackendTest, KeysAndStatesAreSentFromThePairedCodesetOnItsEmitterWithTheToggleFlipped) {
    Fixture f;
    const auto result = f.backend.SendKey(kPairing, 11, 3);
    ASSERT_TRUE(result.ok) << result.error;
    EXPECT_EQ(std::tie(result.transmission.codeset, result.transmission.emitter), std::make_tuple("HHUM0003", 3));
    EXPECT_EQ(static_cast<std::uint64_t>(result.onAir.count()), result.transmission.train.OnAirMicroseconds());
    const AcState state{"on", "dry", "31", "high"};
    ASSERT_TRUE(f.backend.SendAircon(kPairing, 5, state).ok);
    const auto sent = Sent(f.file);
    ASSERT_EQ(sent.size(), 2u);
    const auto frames = CFrameDecoder(f.codesets).Decode(sent[0]);
    ASSERT_FALSE(frames.empty());
    EXPECT_EQ(std::make_tuple(frames[0].codeset, frames[0].key), std::make_tuple("HHUM0003", "mist_up"));
    const Codeset& ac = *f.codesets->Find("ZAC00005");
    const auto decoded = CAcFrameDecoder::Decode(ac, sent[1].durations);
    EXPECT_EQ(decoded ? decoded->bytes : std::vector<std::uint8_t>(), CAcFrameEncoder::BuildFrame(ac.frame, state));
    const auto first = f.backend.SendKey(kPairing, 10, 2).transmission.train.durations;
    EXPECT_NE(f.backend.SendKey(kPairing, 10, 2).transmission.train.durations, first);
}

TEST(CIrBackendTest, RawKeysSendTheirDurationsAndRepeatAfterTheirGap) {
    Fixture f(R"({"codesets":[{"name":"R","protocol":"raw","repeats":1,)"
              R"("keys":{"power":{"code":10,"raw":[3000,1500,500],"gap":30000}}}]})");
    const auto result = f.backend.SendKey(R"({"dev_info":[{"codeset":"R","device_index":2}]})", 10, 2);
    ASSERT_TRUE(result.ok) << result.error;
    EXPECT_EQ(Sent(f.file).at(0).durations, (Durations{3000, 1500, 500, 30000, 3000, 1500, 500}));
}

TEST(CIrBackendTest, FailsWithAReasonWritingNothingAndRefusesUnusableTransmitters) {
    const std::pair<std::function<CIrBackend::Result(CIrBackend&)>, const char*> cases[] = {
        {[](auto& b) { return b.SendKey(kPairing, 10, 9); }, "no codeset is paired at device index 9"},
        {[](auto& b) { return b.SendKey(kPairing, 10, 6); }, "NOSUCH is not in the codesets file"},
        {[](auto& b) { return b.SendKey(kPairing, 39, 3); }, "HHUM0003 has no key 39"},
        {[](auto& b) { return b.SendKey(kPairing, 10, 5); }, "ZAC00005 has no key 10"},
        {[](auto& b) { return b.SendAircon(kPairing, 3, {"on", "cool", "24", "auto"}); }, "not an air conditioner"},
        {[](auto& b) { return b.SendAircon(kPairing, 5, {"on", "cool", "40", "auto"}); }, "outside"},
        {[](auto& b) { return b.SendKey("", 10, 1); }, "paired-device list"},
        {[](auto& b) { return b.SendKey(kPairing, 10, 0); }, "no emitter 0"},
    };
    for (const auto& [send, says] : cases) {
        Fixture f;
        const auto result = send(f.backend);
        EXPECT_FALSE(result.ok);
        EXPECT_NE(result.error.find(says), std::string::npos) << result.error;
        EXPECT_EQ(irtest::ReadText(f.file), "") << says;
    }
    const auto codesets = CCodesetLibrary::Parse(DefaultCodesetsText());
    for (const std::string device : {"mode2:", "mode2:/nonexistent-dir/x.txt", "/nonexistent/lirc9"}) {
        EXPECT_THROW(CIrBackend::OpenTransmitter(device, *codesets), CTransmitError) << device;
    }
}

}  // namespace
}  // namespace infrared

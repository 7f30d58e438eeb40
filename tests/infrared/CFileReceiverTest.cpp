// A file of captures as a receiver: told apart by content, read whole, refused when it is not
// a recording; and OpenReceiver's choice between a device and a file.
#include "infrared/receive/CFileReceiver.h"

#include <gtest/gtest.h>

#include <fstream>

#include "ErrorOf.h"
#include "IrsimReceive.h"
#include "infrared/receive/OpenReceiver.h"

namespace infrared {
namespace {

using Durations = std::vector<std::uint32_t>;

std::string Write(const std::string& name, const std::string& text) {
    const std::string path = irtest::TempDir() + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

const std::string kFlipper = "Filetype: IR signals file\nVersion: 1\n#\nname: Power\n";

// Each file kind, told apart by content, hands out its captures once, then nothing (mode2 files
// through the host tool's decode tests); a Flipper file's raw signals keep their carriers, the
// closing space dropped, one after the other.
TEST(CFileReceiverTest, HandsOutEachCaptureOnceThenNothing) {
    const std::string raw = kFlipper + "type: raw\nfrequency: 38000\nduty_cycle: 0.33\ndata: 9000 4500 560 1690 560\n" +
                            "#\nname: Mode\ntype: raw\nfrequency: 36000\nduty_cycle: 0.33\ndata: 900 900 900 900\n";
    const std::pair<std::string, std::size_t> cases[] = {
        {"0000 006D 0001 0000 0010 0010\n0000 006D 0001 0000 0010 0010\n0000 006D 0001 0000 0010 0010\n", 3},
        {raw, 2},
    };
    for (const auto& [text, count] : cases) {
        CFileReceiver receiver(text, "a.txt");
        EXPECT_FALSE(receiver.Live());
        std::vector<Capture> captures;
        while (auto capture = receiver.Next(std::chrono::milliseconds(0))) captures.push_back(*capture);
        ASSERT_EQ(captures.size(), count) << text;
        if (text != raw) continue;
        EXPECT_EQ(std::tie(captures[0].durations, captures[0].carrier),
                  std::make_tuple(Durations{9000, 4500, 560, 1690, 560}, 38000u));
        EXPECT_EQ(std::tie(captures[1].durations, captures[1].carrier, captures[1].startUs),
                  std::make_tuple(Durations{900, 900, 900}, 36000u, std::uint64_t{9000 + 4500 + 560 + 1690 + 560}));
    }
}

// A missing file, bad mode2 text, a text of no known kind and /dev/null taken for a lirc device
// are refused through the host tool's decode tests.
TEST(CFileReceiverTest, RefusesWhatIsNotARecording) {
    const std::string parsed = kFlipper + "type: parsed\nprotocol: NEC\naddress: 04 00 00 00\ncommand: 08 00 00 00\n";
    const std::pair<std::string, std::string> cases[] = {
        {Write("bin", std::string("pulse 1\0\1\2", 11)), "a binary file"},
        {Write("parsed.ir", parsed), "no raw signals"},
    };
    for (const auto& [path, words] : cases) {
        const std::string error = irtest::ErrorOf<CReceiveError>([&] { CFileReceiver receiver(path); });
        EXPECT_NE(error.find(words), std::string::npos) << error;
    }
}

// A file is a file receiver; a /dev path that is missing is a lirc device not there.
TEST(CFileReceiverTest, OpenReceiverTakesDevicesForLircAndTheRestForFiles) {
    EXPECT_FALSE(OpenReceiver(Write("f.txt", "pulse 100\n"))->Live());
    const std::string error = irtest::ErrorOf<CReceiveError>([] { OpenReceiver("/dev/lirc-not-there"); });
    EXPECT_NE(error.find("cannot open /dev/lirc-not-there: no such device"), std::string::npos) << error;
}

}  // namespace
}  // namespace infrared

// A file of captures as a receiver: told apart by content, read whole, refused when it is not
// a recording; and OpenReceiver's choice between a device and a file. Mode2 files, a missing
// file, bad mode2 text, a text of no known kind and /dev/null taken for a lirc device go through
// the host tool's decode tests.
#include "infrared/receive/CFileReceiver.h"

#include <gtest/gtest.h>

#include <fstream>

#include "ErrorOf.h"
#include "IrsimReceive.h"
#include "infrared/receive/OpenReceiver.h"

namespace infrared {
namespace {

using Durations = std::vector<std::uint32_t>;
using std::chrono::milliseconds;

const std::string kFlipper = "Filetype: IR signals file\nVersion: 1\n#\nname: Power\n";

// A Flipper file's raw signals keep their carriers, the closing space dropped, one after the
// other; a file hands out its captures once, then nothing.
TEST(CFileReceiverTest, HandsOutEachCaptureOnceThenNothing) {
    const std::string path = irtest::TempDir() + "/raw.ir";
    std::ofstream(path) << kFlipper + "type: raw\nfrequency: 38000\nduty_cycle: 0.33\ndata: 9000 4500 560 1690 560\n" +
                               "#\nname: Mode\ntype: raw\nfrequency: 36000\nduty_cycle: 0.33\ndata: 900 900 900 900\n";
    const auto receiver = OpenReceiver(path);
    const auto first = receiver->Next(milliseconds(0));
    const auto second = receiver->Next(milliseconds(0));
    ASSERT_TRUE(first && second);
    EXPECT_EQ(std::tie(first->durations, first->carrier),
              std::make_tuple(Durations{9000, 4500, 560, 1690, 560}, 38000u));
    EXPECT_EQ(std::tie(second->durations, second->carrier, second->startUs),
              std::make_tuple(Durations{900, 900, 900}, 36000u, std::uint64_t{9000 + 4500 + 560 + 1690 + 560}));
    EXPECT_FALSE(receiver->Next(milliseconds(0)));
    EXPECT_TRUE(CFileReceiver("0000 006D 0001 0000 0010 0010\n", "codes.txt").Next(milliseconds(0))) << "Pronto";
}

TEST(CFileReceiverTest, RefusesWhatIsNotARecording) {
    const std::pair<std::string, std::string> cases[] = {
        {std::string("pulse 1\0\1\2", 11), "f: a binary file"},
        {kFlipper + "type: parsed\nprotocol: NEC\naddress: 04 00 00 00\ncommand: 08 00 00 00\n", "f: no raw signals"},
    };
    for (const auto& c : cases) {
        const std::string error = irtest::ErrorOf<CReceiveError>([&] { CFileReceiver receiver(c.first, "f"); });
        EXPECT_NE(error.find(c.second), std::string::npos) << error;
    }
}

// A /dev path that is missing is a lirc device not there, not a file.
TEST(CFileReceiverTest, OpenReceiverTakesAMissingDevicePathForLirc) {
    const std::string error = irtest::ErrorOf<CReceiveError>([] { OpenReceiver("/dev/lirc-not-there"); });
    EXPECT_NE(error.find("cannot open /dev/lirc-not-there: no such device"), std::string::npos) << error;
}

}  // namespace
}  // namespace infrared

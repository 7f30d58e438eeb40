// A file of captures as a receiver: told apart by content, read whole, refused when it is not
// a recording; and OpenReceiver's choice between a device and a file.
#include "infrared/receive/CFileReceiver.h"

#include <gtest/gtest.h>

#include <fstream>

#include "IrsimReceive.h"
#include "infrared/receive/OpenReceiver.h"

namespace infrared {
namespace {

std::string Write(const std::string& name, const std::string& text) {
    const std::string path = irtest::TempDir() + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

const char* const kFlipperParsed =
    "Filetype: IR signals file\nVersion: 1\n#\nname: Power\ntype: parsed\nprotocol: NEC\naddress: 04 00 00 00\n"
    "command: 08 00 00 00\n";
const char* const kFlipperRaw =
    "Filetype: IR signals file\nVersion: 1\n#\nname: Power\ntype: raw\nfrequency: 38000\nduty_cycle: 0.330000\n"
    "data: 9000 4500 560 1690 560\n#\nname: Mode\ntype: raw\nfrequency: 36000\nduty_cycle: 0.330000\n"
    "data: 900 900 900 900\n";

// Each file kind, told apart by content, hands out its captures once, then nothing; a Flipper
// file's raw signals keep their carriers, the closing space dropped, one after the other.
TEST(CFileReceiverTest, HandsOutEachCaptureOnceThenNothing) {
    struct Case {
        const char* kind;
        std::string text;
        std::size_t captures;
    };
    const std::vector<Case> cases = {
        {"mode2", "pulse 500\nspace 500\npulse 500\ntimeout 100000\npulse 700\n", 2},
        {"flipper raw", kFlipperRaw, 2},
        {"pronto", "0000 006D 0001 0000 0010 0010\n0000 006D 0001 0000 0010 0010\n0000 006D 0001 0000 0010 0010\n", 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.kind);
        CFileReceiver receiver(c.text, "a.txt");
        EXPECT_FALSE(receiver.Live());
        std::vector<Capture> captures;
        while (auto capture = receiver.Next(std::chrono::milliseconds(0))) captures.push_back(*capture);
        EXPECT_EQ(captures.size(), c.captures);
        EXPECT_FALSE(receiver.Next(std::chrono::milliseconds(0)));
        if (c.text != kFlipperRaw) continue;
        EXPECT_EQ(std::tie(captures[0].durations, captures[0].carrier),
                  std::make_tuple(std::vector<std::uint32_t>{9000, 4500, 560, 1690, 560}, 38000u));
        EXPECT_EQ(std::tie(captures[1].durations, captures[1].carrier, captures[1].startUs),
                  std::make_tuple(std::vector<std::uint32_t>{900, 900, 900}, 36000u,
                                  std::uint64_t{9000 + 4500 + 560 + 1690 + 560}));
    }
}

TEST(CFileReceiverTest, RefusesWhatIsNotARecording) {
    const std::string dir = irtest::TempDir();
    struct Case {
        std::string path;
        std::string words;
    };
    const std::vector<Case> cases = {
        {dir + "/missing.txt", "cannot be read"},
        {dir, "not a regular file"},
        {Write("bin", std::string("pulse 1\0\1\2", 11)), "binary"},
        {Write("words.txt", "hello world\n"), "neither mode2 text"},
        {Write("parsed.ir", kFlipperParsed), "no raw signals"},
        {Write("broken.ir", "Filetype: IR signals file\nVersion: 1\n#\nname: a\ntype: raw\n"), "broken.ir:"},
        {Write("bad.txt", "pulse 100\nspace x\n"), "bad.txt:2:"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        try {
            CFileReceiver receiver(c.path);
            ADD_FAILURE() << "accepted";
        } catch (const CReceiveError& error) {
            EXPECT_NE(std::string(error.what()).find(c.words), std::string::npos) << error.what();
        }
    }
}

TEST(CFileReceiverTest, OpenReceiverTakesDevicesForLircAndTheRestForFiles) {
    const std::string file = Write("f.txt", "pulse 100\n");
    EXPECT_FALSE(OpenReceiver(file)->Live());
    // /dev/null is a character device but not lirc; a missing /dev path is a device not there.
    for (const std::string device : {"/dev/null", "/dev/lirc-not-there"}) {
        SCOPED_TRACE(device);
        try {
            OpenReceiver(device);
            ADD_FAILURE() << "opened";
        } catch (const CReceiveError& error) {
            EXPECT_NE(std::string(error.what()).find(device), std::string::npos) << error.what();
        }
    }
}

}  // namespace
}  // namespace infrared

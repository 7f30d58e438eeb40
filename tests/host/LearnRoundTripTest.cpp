// The lirc round trip: lirc's irsimsend plays keys of Debian's lirc-compat-remotes into pulse
// files, the host tool learns each from two presses, the learned keys go out through the
// dry-run sink, and lirc's irsimreceive with the original lircd.conf names each as the key it was.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <sstream>

#include "CApp.h"
#include "IrsimReceive.h"
#include "infrared/CIrBackend.h"
#include "infrared/transmit/CMode2Sink.h"

namespace ircontrol::host {
namespace {

const std::string kRemotes = "/usr/share/lirc/remotes/";

std::string Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

bool Exists(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0;
}

// One press of `key` as irsimsend writes it (into simsend.out in its working directory).
std::string IrsimSend(const std::string& conf, const std::string& key, const std::string& dir) {
    const std::string command =
        "cd '" + dir + "' && rm -f simsend.out && '" IRC_IRSIMSEND "' -k " + key + " -c 1 '" + conf + "' >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0) return std::string();
    return Read(dir + "/simsend.out");
}

struct Remote {
    const char* conf;                // under /usr/share/lirc/remotes
    std::vector<std::string> keys;
    const char* learnedAs;           // what the decoder makes of it
};

TEST(LearnRoundTripTest, IrsimreceiveNamesEachLearnedKeyAsTheOriginal) {
    if (std::string(IRC_IRSIMSEND).empty() || !Exists(kRemotes)) {
        GTEST_SKIP() << "needs lirc's irsimsend and " << kRemotes << " (packages lirc, lirc-compat-remotes)";
    }
    const std::vector<Remote> remotes = {
        {"leadtek/lircd.conf.RM-0010", {"KEY_POWER", "KEY_1", "KEY_2", "KEY_MUTE"}, "nec"},
        {"hauppauge/lircd.conf.hauppauge", {"KEY_TV", "KEY_RADIO", "KEY_CHANNELUP"}, "rc5"},
        {"mceusb/lircd.conf.mceusb", {"KEY_BLUE", "KEY_YELLOW", "KEY_GREEN"}, "raw"},  // RC-6 mode 6A
    };
    for (const Remote& remote : remotes) {
        SCOPED_TRACE(remote.conf);
        const std::string conf = kRemotes + remote.conf;
        if (!Exists(conf)) {
            ADD_FAILURE() << conf << " is missing from lirc-compat-remotes";
            continue;
        }
        const std::string dir = irtest::TempDir();
        const std::string codesets = dir + "/learned.json";
        for (std::size_t i = 0; i < remote.keys.size(); ++i) {
            const std::string press = IrsimSend(conf, remote.keys[i], dir);
            ASSERT_FALSE(press.empty()) << "irsimsend wrote nothing for " << remote.keys[i];
            // Two presses with a pause between them, as a person presses twice.
            std::ofstream(dir + "/presses.txt") << press << "space 1000000\n" << press;
            std::vector<std::string> args = {"--json", "--codesets", codesets, "--ir-receiver", dir + "/presses.txt",
                                             "learn", "--codeset", "REMOTE", "--key", remote.keys[i],
                                             "--code", std::to_string(10 + i)};
            const Options options = CCommandLine::Parse(args);
            std::istringstream in;
            std::ostringstream out, err;
            ASSERT_EQ(CApp(options, in, out, err).Run(), 0) << remote.keys[i] << ": " << err.str();
            EXPECT_NE(out.str().find(std::string("\"protocol\":\"") + remote.learnedAs + "\""), std::string::npos)
                << out.str();
        }
        // Send every learned key once through the dry-run sink, by its code, as the plugin would.
        const std::string sent = dir + "/sent.txt";
        {
            infrared::CIrBackend backend(infrared::CCodesetLibrary::Parse(Read(codesets)),
                                         std::make_unique<infrared::CMode2Sink>(sent));
            const std::string pairing = R"({"dev_info":[{"codeset":"REMOTE","device_index":1,"type":"x"}]})";
            for (std::size_t i = 0; i < remote.keys.size(); ++i) {
                const auto result = backend.SendKey(pairing, static_cast<int>(10 + i), 1);
                ASSERT_TRUE(result.ok) << result.error;
            }
        }
        const irtest::Decoded decoded = irtest::IrsimReceive(Read(conf), sent);
        ASSERT_TRUE(decoded.ran) << decoded.error;
        EXPECT_EQ(decoded.keys, remote.keys) << decoded.output;
    }
}

}  // namespace
}  // namespace ircontrol::host

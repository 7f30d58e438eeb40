// decode and learn through the host tool's own entry point: what they print, what they write,
// how they refuse; and the lirc round trip (irsimsend -> learn -> dry-run sink -> irsimreceive).
#include "CReceiveCommands.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "CApp.h"
#include "IrsimReceive.h"
#include "JsonValue.h"
#include "infrared/CIrBackend.h"
#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/decode/CFrameDecoder.h"
#include "infrared/encode/CAcFrameEncoder.h"
#include "infrared/encode/CKeyEncoder.h"
#include "infrared/transmit/CMode2Sink.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;
using infrared::Protocol;

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

Outcome Tool(const std::vector<std::string>& args) {
    const Options options = CCommandLine::Parse(args);
    EXPECT_EQ(options.error, "");
    std::istringstream in;
    std::ostringstream out, err;
    const int status = CApp(options, in, out, err).Run();
    return {status, out.str(), err.str()};
}

std::string Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<JsonValue> Lines(const std::string& out) {
    std::vector<JsonValue> lines;
    std::istringstream in(out);
    std::string line;
    while (std::getline(in, line)) lines.push_back(JsonValue::Create(line));
    return lines;
}

struct Press {
    Protocol protocol;
    std::uint64_t scancode;
};

// A dry-run file of one transmission per press, as a receiver would have recorded them.
std::string Presses(const std::vector<Press>& presses) {
    const std::string path = irtest::TempDir() + "/presses.txt";
    infrared::CMode2Sink sink(path);
    for (const Press& p : presses) {
        infrared::Transmission t;
        t.codeset = "T";
        t.what = "press";
        t.emitter = 1;
        t.train = infrared::CKeyEncoder::Encode(p.protocol, p.scancode, false, 0, 38000, 33);
        sink.Transmit(t);
    }
    return path;
}

TEST(CReceiveCommandsTest, DecodePrintsEachFrameNamedByTheCodesets) {
    // HFAN0001 power and HPUR0002 fan_up of the embedded codesets, then a key no codeset has.
    const std::string file = Presses({{Protocol::Nec, 0x0408}, {Protocol::Rc5, 0x0c10}, {Protocol::Nec, 0x7733}});
    const Outcome json = Tool({"--json", "decode", file});
    ASSERT_EQ(json.status, 0) << json.err;
    const auto frames = Lines(json.out);
    ASSERT_EQ(frames.size(), 3u) << json.out;
    const std::vector<std::tuple<const char*, const char*, const char*, int>> expected = {
        {"nec", "0x0408", "power", 10}, {"rc5", "0x0c10", "fan_up", 11}, {"nec", "0x7733", nullptr, -1}};
    for (std::size_t i = 0; i < frames.size(); ++i) {
        SCOPED_TRACE(i);
        const auto& [protocol, scancode, key, code] = expected[i];
        EXPECT_EQ(frames[i]["frame"].asInt(), static_cast<int>(i));
        EXPECT_EQ(frames[i]["protocol"].asString(), protocol);
        EXPECT_EQ(frames[i]["scancode"].asString(), scancode);
        EXPECT_FALSE(frames[i]["repeat"].asBool());
        EXPECT_EQ(frames[i].isMember("key"), key != nullptr);
        if (key != nullptr) {
            EXPECT_EQ(frames[i]["key"].asString(), key);
            EXPECT_EQ(frames[i]["code"].asInt(), code);
        }
        EXPECT_GT(frames[i]["durationUs"].asInt64(), 0);
        if (i > 0) {
            EXPECT_GT(frames[i]["startUs"].asInt64(), frames[i - 1]["startUs"].asInt64());
        }
    }
    EXPECT_TRUE(frames[0]["toggle"].isNull());
    EXPECT_TRUE(frames[1]["toggle"].isBool());

    const Outcome text = Tool({"decode", file});
    EXPECT_NE(text.out.find("nec 0x0408 (HFAN0001 power, code 10)"), std::string::npos) << text.out;
    // The same source given as --ir-receiver.
    EXPECT_EQ(Tool({"--json", "--ir-receiver", file, "decode"}).out, json.out);
}

TEST(CReceiveCommandsTest, DecodeRefusesWithAReasonAndStatus) {
    const std::string dir = irtest::TempDir();
    std::ofstream(dir + "/bad.txt") << "pulse 900\nspace nine\n";
    std::ofstream(dir + "/quiet.txt") << "space 100000\n";
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string words;
    };
    const std::vector<Case> cases = {
        {{"decode"}, 2, "needs a SOURCE"},
        {{"decode", dir + "/missing.txt"}, 1, "cannot be read"},
        {{"decode", dir + "/bad.txt"}, 1, dir + "/bad.txt:2:"},
        {{"decode", dir + "/quiet.txt"}, 1, "no frames"},
        {{"decode", "/dev/null"}, 1, "not a lirc device"},
        {{"--codesets", dir + "/bad.txt", "decode", Presses({{Protocol::Nec, 1}})}, 1, dir + "/bad.txt"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args.back());
        const Outcome run = Tool(c.args);
        EXPECT_EQ(run.status, c.status);
        EXPECT_NE(run.err.find(c.words), std::string::npos) << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << "one line: " << run.err;
    }
}

std::vector<std::string> LearnArgs(const std::string& codesets, const std::string& presses, const std::string& codeset,
                                   const std::string& key, const std::string& code) {
    return {"--codesets", codesets, "--ir-receiver", presses, "learn", "--codeset", codeset, "--key", key,
            "--code", code};
}

TEST(CReceiveCommandsTest, LearnKeepsAKeyOnlyWhenTwoPressesAgree) {
    struct Case {
        const char* name;
        std::vector<Press> presses;
        int status;
        std::string words;
        std::uint64_t scancode;  // what is written, when it is
    };
    const std::vector<Case> cases = {
        {"two agree", {{Protocol::Nec, 0x0420}, {Protocol::Nec, 0x0420}}, 0, "Learned 'light'", 0x0420},
        {"the second differs, then two agree",
         {{Protocol::Nec, 0x0420}, {Protocol::Nec, 0x0421}, {Protocol::Nec, 0x0421}, {Protocol::Nec, 0x0421}},
         0, "differ", 0x0421},
        {"another protocol the second time", {{Protocol::Nec, 0x0420}, {Protocol::Rc5, 0x0420}}, 1, "no more presses", 0},
        {"one press only", {{Protocol::Nec, 0x0420}}, 1, "no more presses", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string codesets = irtest::TempDir() + "/mine.json";
        const Outcome run = Tool(LearnArgs(codesets, Presses(c.presses), "MYLAMP", "light", "77"));
        EXPECT_EQ(run.status, c.status) << run.err;
        EXPECT_NE((run.out + run.err).find(c.words), std::string::npos) << run.out << run.err;
        if (c.status != 0) {
            EXPECT_NE(access(codesets.c_str(), F_OK), 0) << "nothing written";
            continue;
        }
        const auto library = infrared::CCodesetLibrary::Parse(Read(codesets));
        const infrared::Codeset* lamp = library->Find("MYLAMP");
        ASSERT_NE(lamp, nullptr);
        EXPECT_EQ(lamp->protocol, Protocol::Nec);
        ASSERT_NE(lamp->FindKey(77), nullptr);
        EXPECT_EQ(lamp->FindKey(77)->name, "light");
        EXPECT_EQ(lamp->FindKey(77)->scancode, c.scancode);
    }
}

// A remote one leading bit longer than RC-5 (as the Streamzap's) may read as an RC-5 key, which
// would send a different frame: whatever the decoder makes of it, the timings that came are kept.
TEST(CReceiveCommandsTest, LearnKeepsRawTimingsWhenTheRecognisedKeyWouldSendSomethingElse) {
    std::vector<std::uint32_t> frame = {889, 889};
    const auto rc5 = infrared::CKeyEncoder::Encode(Protocol::Rc5, 0x0300, true, 0, 36000, 33).durations;
    frame.insert(frame.end(), rc5.begin(), rc5.end());
    const std::string dir = irtest::TempDir();
    std::ofstream presses(dir + "/presses.txt");
    for (int press = 0; press < 2; ++press) {
        presses << "space 1000000\n";
        for (std::size_t i = 0; i < frame.size(); ++i) presses << (i % 2 == 0 ? "pulse " : "space ") << frame[i] << "\n";
    }
    presses.close();
    const Outcome run = Tool(LearnArgs(dir + "/mine.json", dir + "/presses.txt", "SZ", "zero", "10"));
    ASSERT_EQ(run.status, 0) << run.err;
    const auto library = infrared::CCodesetLibrary::Parse(Read(dir + "/mine.json"));
    ASSERT_NE(library->Find("SZ"), nullptr);
    EXPECT_EQ(library->Find("SZ")->protocol, Protocol::Raw);
    EXPECT_EQ(library->Find("SZ")->FindKey(10)->raw, frame);
}

// Whatever the decoder says, a key is kept as its scancode only when encoding it gives back what
// came: checked here with the reading a decoder might make of frames that are not quite that key.
TEST(CReceiveCommandsTest, AKeyReproducesOnlyTheFrameThatCame) {
    const auto rc5 = infrared::CKeyEncoder::Encode(Protocol::Rc5, 0x0300, true, 0, 36000, 33).durations;
    std::uint64_t rc5Length = 0;
    for (const std::uint32_t d : rc5) rc5Length += d;
    struct Case {
        const char* name;
        std::vector<std::uint32_t> before, after;  // around the RC-5 frame
        bool reproduces;
    };
    const std::vector<Case> cases = {
        {"the frame alone", {}, {}, true},
        {"noise well before it", {300, 30000}, {}, true},
        {"its copies after a gap", {}, {90000}, true},
        {"a leading bit it does not have", {889, 889}, {}, false},
        {"a trailing bit it does not have", {}, {889, 889}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        infrared::Capture capture;
        capture.startUs = 5000;
        capture.durations = c.before;
        capture.durations.insert(capture.durations.end(), rc5.begin(), rc5.end());
        if (!c.after.empty()) {
            capture.durations.insert(capture.durations.end(), c.after.begin(), c.after.end());
            if (c.after.size() % 2 == 1) capture.durations.insert(capture.durations.end(), rc5.begin(), rc5.end());
        }
        infrared::DecodedFrame frame;
        frame.kind = infrared::DecodedFrame::Kind::Key;
        frame.protocol = Protocol::Rc5;
        frame.scancode = 0x0300;
        frame.toggle = true;
        frame.startUs = capture.startUs;
        for (const std::uint32_t d : c.before) frame.startUs += d;
        frame.durationUs = rc5Length;
        EXPECT_EQ(CKeyLearner::Reproduces(capture, frame), c.reproduces);
        frame.scancode = 0x0301;
        EXPECT_FALSE(CKeyLearner::Reproduces(capture, frame)) << "another scancode";
    }
}

TEST(CReceiveCommandsTest, LearnRefusesWhatCannotBeKept) {
    const std::string dir = irtest::TempDir();
    const std::string shipped = dir + "/codesets.json";
    std::ofstream(shipped) << infrared::DefaultCodesetsText();
    const std::string rc5 = Presses({{Protocol::Rc5, 0x0c33}, {Protocol::Rc5, 0x0c33}});
    struct Case {
        const char* name;
        std::vector<std::string> args;
        int status;
        std::string words;
    };
    const std::vector<Case> cases = {
        {"a codeset of another protocol", LearnArgs(shipped, rc5, "HFAN0001", "extra", "90"), 1, "--codeset HFAN0001_rc5"},
        {"no codesets file", {"--ir-receiver", rc5, "learn", "--codeset", "A", "--key", "k", "--code", "1"}, 2, "--codesets"},
        {"no receiver", {"--codesets", shipped, "learn", "--codeset", "A", "--key", "k", "--code", "1"}, 2, "--ir-receiver"},
        {"no key", {"--codesets", shipped, "--ir-receiver", rc5, "learn", "--codeset", "A"}, 2, "--key NAME"},
        {"a code that is no number", LearnArgs(shipped, rc5, "A", "k", "ten"), 2, "'ten'"},
        {"a receiver that is no recording", LearnArgs(shipped, shipped, "A", "k", "1"), 1, "neither mode2"},
    };
    const std::string before = Read(shipped);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Outcome run = Tool(c.args);
        EXPECT_EQ(run.status, c.status);
        EXPECT_NE(run.err.find(c.words), std::string::npos) << run.err;
        EXPECT_EQ(Read(shipped), before);
    }
}

TEST(CReceiveCommandsTest, LearnAcWritesTheRecognisedAirConditionersCodeset) {
    const auto library = infrared::CCodesetLibrary::Parse(infrared::DefaultCodesetsText());
    const infrared::Codeset* aircon = nullptr;
    for (const auto& c : library->Codesets()) {
        if (c.protocol == Protocol::Aircon) aircon = &c;
    }
    ASSERT_NE(aircon, nullptr);
    const infrared::AcState state{"on", "heat", "22", "low"};
    infrared::Capture capture;
    capture.durations = infrared::CAcFrameEncoder::Encode(aircon->frame, infrared::CAcFrameEncoder::BuildFrame(aircon->frame, state), aircon->carrier, aircon->dutyCycle).durations;
    const auto frames = infrared::CFrameDecoder(library).Decode(capture);
    if (frames.empty() || frames[0].kind != infrared::DecodedFrame::Kind::Aircon) {
        GTEST_SKIP() << "the frame decoder does not recognise the shipped air conditioner yet";
    }
    const std::string dir = irtest::TempDir();
    const std::string presses = dir + "/ac.txt";
    {
        infrared::CMode2Sink sink(presses);
        infrared::Transmission t;
        t.codeset = aircon->name;
        t.what = "ac";
        t.emitter = 1;
        t.train.durations = capture.durations;
        sink.Transmit(t);
    }
    const Outcome run = Tool({"--codesets", dir + "/mine.json", "--ir-receiver", presses, "learn", "--ac", "--codeset", "BEDROOM"});
    ASSERT_EQ(run.status, 0) << run.err;
    const auto written = infrared::CCodesetLibrary::Parse(Read(dir + "/mine.json"));
    const infrared::Codeset* bedroom = written->Find("BEDROOM");
    ASSERT_NE(bedroom, nullptr);
    EXPECT_EQ(bedroom->protocol, Protocol::Aircon);
    EXPECT_EQ(bedroom->frame.bytes, aircon->frame.bytes);
}

}  // namespace
}  // namespace ircontrol::host

#include "infrared/formats/CLircdConf.h"

#include <gtest/gtest.h>

#include "infrared/formats/CFormatError.h"

namespace infrared {
namespace {

const std::string kRemote =
    "# a comment\nbegin remote\n  name  Fan\n  bits 16\n  flags SPACE_ENC|CONST_LENGTH | REVERSE\n  eps 30\n"
    "  aeps 100\n"
    "  header 9000 4500\n  one 560 1690\n  zero 560 560\n  ptrail 560\n  repeat 9000 2250\n"
    "  pre_data_bits 16\n  pre_data 0x10EF\n  gap 108000\n  min_repeat 1\n  toggle_bit_mask 0x0\n"
    "  frequency 38000\n  duty_cycle 33\n"
    "  begin codes\n    KEY_POWER 0x00FF   # power\n    SPEED+ 0x807F 0x40BF\n  end codes\nend remote\n"
    "begin remote\n  name Learned\n  flags RAW_CODES\n  gap 40000\n"
    "  begin raw_codes\n    name one\n      900 450 560\n      560 560\n    name two\n      100 200 300\n"
    "  end raw_codes\n"
    "end remote\n";

// Both kinds of remote are read. (Write: the exporter's tests decode what it writes.)
TEST(CLircdConf, ReadsCodedAndRawRemotes) {
    const auto remotes = CLircdConf::Parse(kRemote, "f.conf");
    ASSERT_EQ(remotes.size(), 2u);
    const LircRemote& r = remotes[0];
    EXPECT_EQ(std::make_tuple(r.name, r.line, r.encoding, r.constLength, r.reverse, r.AllBits(), r.preData),
              std::make_tuple("Fan", 2u, LircRemote::Encoding::Space, true, true, 32u, 0x10EFu));
    EXPECT_EQ(std::make_tuple(r.header.pulse, r.repeat.space, r.minRepeat, r.dutyCycle),
              std::make_tuple(9000u, 2250u, 1u, 33u));
    ASSERT_EQ(r.buttons.size(), 2u);
    EXPECT_EQ(std::tie(r.buttons[1].name, r.buttons[1].line, r.buttons[1].codes),
              std::make_tuple("SPEED+", 22u, std::vector<std::uint64_t>{0x807F, 0x40BF}));
    EXPECT_EQ(remotes[1].encoding, LircRemote::Encoding::Raw);
    EXPECT_EQ(remotes[1].buttons.at(0).durations, (std::vector<std::uint32_t>{900, 450, 560, 560, 560}));
}

TEST(CLircdConf, RefusesBadFilesNamingFileAndLine) {
    const std::string head = "begin remote\n  name r\n  bits 8\n  one 500 1500\n  zero 500 500\n";  // lines 1-5
    const std::string codes = "  begin codes\n    A 1\n  end codes\nend remote\n";
    std::string manyRemotes;
    for (std::size_t i = 0; i <= CLircdConf::kMaxRemotes; ++i) manyRemotes += head + codes;
    const std::tuple<std::string, std::size_t, const char*> cases[] = {
        {"", 0, "no remote"},
        {head, 5, "ends inside a remote"},
        {head + "  flags XMP\n", 6, "XMP is not supported"},
        {head + "  pre_data_bits 60\n" + codes, 10, "exceed 64"},
        {head + "  begin codes\n    A 0x100\n  end codes\nend remote\n", 7, "does not fit 8 bits"},
        {"begin remote\n  name r\n  bits 8\n" + codes, 7, "cannot be sent"},
        {"begin remote\n  name r\n  flags RAW_CODES\n  begin raw_codes\n    name a\n    100 0 1\n", 6, "duration of 0"},
        {head + std::string("  na\0me x\n", 10), 6, "binary"},
        {manyRemotes, 1 + 9 * CLircdConf::kMaxRemotes, "more than 256 remotes"},
    };
    for (const auto& [text, line, reason] : cases) {
        try {
            CLircdConf::Parse(text, "bad.conf");
            ADD_FAILURE() << "accepted: " << reason;
        } catch (const CFormatError& e) {
            EXPECT_EQ(std::string(e.what()).rfind("bad.conf:" + std::to_string(line) + ": ", 0), 0u) << e.what();
            EXPECT_NE(e.Reason().find(reason), std::string::npos) << e.what();
        }
    }
}

}  // namespace
}  // namespace infrared

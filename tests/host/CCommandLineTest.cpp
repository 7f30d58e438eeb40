#include "CCommandLine.h"

#include <gtest/gtest.h>

namespace ircontrol::host {
namespace {

TEST(CCommandLineTest, ParsesGlobalAndCommandOptions) {
    const Options o = CCommandLine::Parse({"--json", "--year", "24", "key", "--type", "fan", "--key", "12",
                             "--ir-delay", "68", "--plugin", "/p.so", "--verbose"});
    EXPECT_EQ(o.error, "");
    EXPECT_EQ(o.command, "key");
    EXPECT_TRUE(o.json);
    EXPECT_TRUE(o.verbose);
    EXPECT_EQ(o.year, 24);
    EXPECT_EQ(o.irDelayMs, 68);
    EXPECT_EQ(o.plugin, "/p.so");
    EXPECT_EQ(o.values.at("type"), "fan");
    EXPECT_EQ(o.values.at("key"), "12");
}

TEST(CCommandLineTest, MistakesGiveOneLineReasons) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{}, "no command given (try --help)"},
        {{"blast"}, "unknown command 'blast' (try --help)"},
        {{"key", "--type"}, "option --type needs a value"},
        {{"key", "--colour", "red"}, "'key' has no option --colour"},
        {{"demo", "--year", "soon"}, "--year needs a whole number, not 'soon'"},
        {{"demo", "--ir-delay", "-1"}, "--ir-delay needs milliseconds, not '-1'"},
        {{"demo", "--timeout", "0"}, "--timeout needs milliseconds, not '0'"},
        {{"demo", "extra"}, "unexpected argument 'extra'"},
    };
    for (const auto& [args, reason] : cases) EXPECT_EQ(CCommandLine::Parse(args).error, reason);
}

TEST(CCommandLineTest, HelpNeedsNoCommandAndEveryCommandDescribesItself) {
    EXPECT_TRUE(CCommandLine::Parse({"--help"}).help);
    EXPECT_EQ(CCommandLine::Parse({"--help"}).error, "");
    for (const auto& info : CCommandLine::Commands()) {
        const std::string usage = CCommandLine::CommandUsage(info);
        EXPECT_NE(usage.find("ircontrol-host [options] " + info.name), std::string::npos);
        for (const auto& option : info.options) EXPECT_NE(usage.find("--" + option.first), std::string::npos);
    }
    EXPECT_NE(CCommandLine::Usage().find("serve"), std::string::npos);
}

}  // namespace
}  // namespace ircontrol::host

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
    EXPECT_EQ(o.platform.year, 24);
    EXPECT_EQ(o.irDelayMs, 68);
    EXPECT_EQ(o.plugin, "/p.so");
    EXPECT_EQ(o.values.at("type"), "fan");
    EXPECT_EQ(o.values.at("key"), "12");
}

TEST(CCommandLineTest, TakesOptionsWithAnEqualsSign) {
    const Options o = CCommandLine::Parse({"--type=fan", "key", "--key=power", "--timeout=50", "--log-level=info"});
    EXPECT_EQ(o.error, "");
    EXPECT_EQ(o.values.at("type"), "fan");
    EXPECT_EQ(o.values.at("key"), "power");
    EXPECT_EQ(o.timeoutMs, 50);
    EXPECT_EQ(o.logLevel, 4);
    EXPECT_EQ(CCommandLine::Parse({"set", "--value={\"a\":\"b=c\"}"}).values.at("value"), "{\"a\":\"b=c\"}");
}

TEST(CCommandLineTest, VersionIsAFlagThatNeedsNoCommand) {
    const Options o = CCommandLine::Parse({"--version"});
    EXPECT_EQ(o.error, "");
    EXPECT_TRUE(o.version);
    EXPECT_EQ(CCommandLine::Version().rfind("ircontrol-host ", 0), 0u);
    EXPECT_NE(CCommandLine::Version(), "ircontrol-host unknown");
}

TEST(CCommandLineTest, MistakesGiveOneLineReasons) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{}, "no command given (try --help)"},
        {{"blast"}, "unknown command 'blast' (try --help)"},
        {{"devises"}, "unknown command 'devises' (did you mean devices?) (try --help)"},
        {{"key", "--type"}, "option --type needs a value"},
        {{"key", "--colour", "red"}, "unknown option --colour"},
        {{"key", "--power", "ON"}, "'key' has no option --power"},
        {{"--verbos", "demo"}, "unknown option --verbos (did you mean --verbose?)"},
        {{"demo", "--bogus"}, "unknown option --bogus"},
        {{"key", "--tpye", "fan"}, "unknown option --tpye (did you mean --type?)"},
        {{"--jsn", "demo"}, "unknown option --jsn (did you mean --json?)"},
        {{"--json=yes", "demo"}, "option --json takes no value"},
        {{"--plugin", "", "demo"}, "--plugin needs a path, not an empty text"},
        {{"--devices=", "demo"}, "--devices needs a file name, not an empty text"},
        {{"--log-level", "warn", "demo"}, "--log-level needs debug, info or error, not 'warn'"},
        {{"--mbr-support", "yes", "demo"}, "--mbr-support needs on or off, not 'yes'"},
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

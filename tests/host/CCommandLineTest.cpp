#include "CCommandLine.h"

#include <tuple>

#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

using Values = std::map<std::string, std::string>;

TEST(CCommandLineTest, TakesGlobalAndCommandOptionsAnywhereWithOrWithoutAnEqualsSign) {
    const Options o = CCommandLine::Parse({"--json", "--year", "24", "key", "--type", "fan", "--key", "12",
                                           "--ir-delay", "68", "--plugin", "/p.so", "--verbose"});
    EXPECT_EQ(std::tie(o.error, o.command, o.json, o.verbose, o.platform.year, o.irDelayMs, o.plugin),
              std::make_tuple("", "key", true, true, 24, 68, "/p.so"));
    EXPECT_EQ(o.values, (Values{{"type", "fan"}, {"key", "12"}}));
    const Options e = CCommandLine::Parse({"--type=fan", "key", "--key=power", "--timeout=50", "--log-level=info"});
    EXPECT_EQ(std::tie(e.error, e.timeoutMs, e.logLevel), std::make_tuple("", 50, 4));
    EXPECT_EQ(e.values, (Values{{"type", "fan"}, {"key", "power"}}));
    EXPECT_EQ(CCommandLine::Parse({"set", "--value={\"a\":\"b=c\"}"}).values.at("value"), "{\"a\":\"b=c\"}");
}

TEST(CCommandLineTest, HelpAndVersionNeedNoCommandAndEveryCommandDescribesItself) {
    EXPECT_EQ(std::make_tuple(CCommandLine::Parse({"--help"}).help, CCommandLine::Parse({"--help"}).error),
              std::make_tuple(true, ""));
    EXPECT_EQ(std::make_tuple(CCommandLine::Parse({"--version"}).version, CCommandLine::Parse({"--version"}).error),
              std::make_tuple(true, ""));
    EXPECT_EQ(CCommandLine::Version().rfind("ircontrol-host ", 0), 0u);
    EXPECT_NE(CCommandLine::Version(), "ircontrol-host unknown") << "the build gives the version";
    for (const auto& info : CCommandLine::Commands()) {
        const std::string usage = CCommandLine::CommandUsage(info);
        EXPECT_NE(usage.find("ircontrol-host [options] " + info.name), std::string::npos);
        for (const auto& option : info.options) EXPECT_NE(usage.find("--" + option.first), std::string::npos);
        EXPECT_NE(CCommandLine::Usage().find(info.name), std::string::npos);
    }
}

TEST(CCommandLineTest, MistakesGiveOneLineReasons) {
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, "no command given (try --help)"},
        {{"blast"}, "unknown command 'blast' (try --help)"},
        {{"devises"}, "unknown command 'devises' (did you mean devices?) (try --help)"},
        {{"key", "--type"}, "option --type needs a value"},
        {{"key", "--colour", "red"}, "unknown option --colour"},
        {{"key", "--power", "ON"}, "'key' has no option --power"},
        {{"--verbos", "demo"}, "unknown option --verbos (did you mean --verbose?)"},
        {{"key", "--tpye", "fan"}, "unknown option --tpye (did you mean --type?)"},
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

}  // namespace
}  // namespace ircontrol::host

#include "CRequestParser.h"

#include <climits>
#include <tuple>

#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

// The embedded defaults: one paired appliance of each kind with its key map.
const CPlatformSetup& Defaults() {
    static const CPlatformSetup setup;
    return setup;
}

bool ParseLine(const std::string& text, Request& out, std::string& error) {
    return CRequestParser(Defaults(), CRequestParser::Style::Json).ParseLine(text, 7, out, error);
}

// A JSON line names a value "key" where the command line says --key.
std::string JsonStyle(std::string text) {
    for (std::size_t at = text.find("--"); at != std::string::npos; at = text.find("--", at)) {
        const std::size_t end = std::min(text.find_first_not_of("abcdefghijklmnopqrstuvwxyz", at + 2), text.size());
        text = text.substr(0, at) + "\"" + text.substr(at + 2, end - at - 2) + "\"" + text.substr(end);
    }
    return text;
}

TEST(CRequestParserTest, ResolvesKeyRequestsFromNamesAndCodes) {
    struct Case {
        NamedValues values;
        std::string type, codeset;
        int key;
        std::string keyName;
    };
    const Case cases[] = {
        {{{"type", "fan"}, {"key", "12"}}, "oic.d.fan", "HFAN0001", 12, ""},
        {{{"type", "fan"}, {"key", "power"}}, "oic.d.fan", "HFAN0001", 10, "power"},
        {{{"type", "cleaner"}, {"key", "start"}}, "oic.d.robotcleaner", "HRBC0004", 39, "start"},
        {{{"type", "fan"}, {"codeset", "HRBC0004"}, {"key", "home"}}, "oic.d.fan", "HRBC0004", 28, "home"},
        {{{"type", "oic.d.television"}, {"codeset", "X"}, {"key", "-2147483648"}}, "oic.d.television", "X", INT_MIN,
         ""},
    };
    const CRequestParser parser(Defaults(), CRequestParser::Style::CommandLine);
    for (const auto& c : cases) {
        Request request;
        std::string error;
        ASSERT_TRUE(parser.Parse("key", c.values, request, error)) << error;
        EXPECT_EQ(std::tie(request.kind, request.type, request.codeset, request.key, request.keyName, request.values),
                  std::make_tuple(RequestKind::Key, c.type, c.codeset, c.key, c.keyName, c.values));
    }
}

TEST(CRequestParserTest, MistakesNameTheValueTheWayTheFrontEndSpellsIt) {
    struct Case {
        std::string command;
        NamedValues values;
        std::string commandLine;  // the reason on the command line
    };
    const Case cases[] = {
        {"key", {{"type", "fan"}, {"key", "99999999999999999999"}},
         "key: --key 99999999999999999999 is out of range (a key code is at most 2147483647)"},
        {"key", {{"type", "fan"}, {"key", "2147483648"}},
         "key: --key 2147483648 is out of range (a key code is at most 2147483647)"},
        {"key", {{"type", "fan"}, {"key", "turbo"}},
         "key: 'turbo' is neither a key code nor a key name in HFAN0001's key map "
         "(power, speed_up, speed_down, swing, timer, mode)"},
        {"key", {{"type", "fan"}, {"codeset", "NOPE"}, {"key", "power"}},
         "key: no key map for codeset NOPE to look up the key name 'power'"},
        {"key", {{"type", "ac"}, {"key", "power"}},
         "key: 'power' is neither a key code nor a key name in ZAC00005's key map (it names no keys)"},
        {"key", {{"type", "fan"}}, "key: --key is required (a key code, or a key name from the codeset's key map)"},
        {"key", {{"key", "1"}}, "key: --type is required (fan, purifier, humidifier, cleaner, ac)"},
        {"key", {{"type", "toaster"}, {"key", "1"}},
         "key: unknown --type 'toaster' (fan, purifier, humidifier, cleaner, ac, or a full OCF device type)"},
        {"key", {{"type", "oic.d.lamp"}, {"key", "1"}}, "key: no paired oic.d.lamp; give --codeset"},
        {"ac", {{"setpoint", "22.5"}}, "ac: --setpoint needs a whole number, not '22.5'"},
        {"set", {{"kind", "bool"}, {"value", "maybe"}}, "set: --value must be true or false for --kind bool"},
        {"set", {{"kind", "JSON"}, {"value", "1"}}, "set: --kind must be json, string, int or bool, not 'JSON'"},
        // A tool command is not a request.
        {"demo", {}, "--command must be key, ac, set or devices, not 'demo'"},
    };
    for (const auto& c : cases) {
        for (const auto style : {CRequestParser::Style::CommandLine, CRequestParser::Style::Json}) {
            Request request;
            std::string error;
            EXPECT_FALSE(CRequestParser(Defaults(), style).Parse(c.command, c.values, request, error));
            EXPECT_EQ(error, style == CRequestParser::Style::Json ? JsonStyle(c.commandLine) : c.commandLine);
        }
    }
}

TEST(CRequestParserTest, JsonLinesTakeWholeValuedNumbersAndKeepLineAndId) {
    Request request;
    std::string error;
    ASSERT_TRUE(ParseLine(R"({"command":"ac","setpoint":22.0,"mode":"HEAT","id":"r-1"})", request, error)) << error;
    EXPECT_EQ(std::tie(request.kind, request.ac.setpoint, request.ac.mode, request.codeset, request.line),
              std::make_tuple(RequestKind::Ac, 22, "HEAT", "ZAC00005", 7L));
    EXPECT_EQ(request.id, std::optional<std::string>("r-1"));
    ASSERT_TRUE(ParseLine(R"({"command":"key","type":"fan","key":1.2e1,"id":42})", request, error)) << error;
    EXPECT_EQ(request.key, 12);
    EXPECT_EQ(request.id, std::optional<std::string>("42"));
    ASSERT_TRUE(ParseLine(R"({"command":"devices"})", request, error)) << error;
    EXPECT_EQ(request.kind, RequestKind::Devices);
    EXPECT_FALSE(request.id.has_value());
}

TEST(CRequestParserTest, UnusableJsonLinesKeepTheirIdForTheReply) {
    const std::pair<std::string, std::string> cases[] = {
        {"not json", "not valid JSON"},
        {"[1,2]", "not a JSON object"},
        {R"({"id":"a"})", "\"command\" is required (key, ac, set or devices)"},
        {R"({"id":"a","command":"key","type":"fan","kye":10})", "key: unknown field \"kye\" (did you mean \"key\"?)"},
        {R"({"id":"a","command":"ac","colour":"red"})", "ac: unknown field \"colour\""},
    };
    for (const auto& [text, reason] : cases) {
        Request request;
        std::string error;
        EXPECT_FALSE(ParseLine(text, request, error)) << text;
        EXPECT_EQ(error, reason) << text;
        EXPECT_EQ(request.line, 7);
        const bool hasId = text.find("\"id\"") != std::string::npos;
        EXPECT_EQ(request.id, hasId ? std::optional<std::string>("a") : std::nullopt) << text;
    }
}

TEST(CRequestParserTest, IntegerTextIsCheckedForSyntaxAndRange) {
    using Number = CRequestParser::Number;
    const std::tuple<std::string, Number, long long> cases[] = {
        {"0", Number::Ok, 0},
        {"-5", Number::Ok, -5},
        {"+7", Number::Ok, 7},
        {"100", Number::OutOfRange, 0},
        {"-101", Number::OutOfRange, 0},
        {"184467440737095516160", Number::OutOfRange, 0},
        {"", Number::NotANumber, 0},
        {"-", Number::NotANumber, 0},
        {"1e2", Number::NotANumber, 0},
        {" 1", Number::NotANumber, 0},
        {"0x10", Number::NotANumber, 0},
    };
    for (const auto& [text, expected, value] : cases) {
        long long out = 0;
        EXPECT_EQ(CRequestParser::ParseInteger(text, -100, 99, out), expected) << text;
        EXPECT_EQ(out, value) << text;
    }
}

}  // namespace
}  // namespace ircontrol::host

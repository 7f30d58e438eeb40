// The guard's rules, case by case. test_api.py sends the everyday ones over HTTP (another host,
// port or origin, a body too large, of another type, not UTF-8 or nested too deep) and sees
// the status; here are the edges it does not reach.
#include "CRequestGuard.h"

#include <gtest/gtest.h>

#include <string>

namespace ircontrol::host {
namespace {

TEST(CRequestGuardTest, AcceptsOnlyTheServedAddressAsHostAndOrigin) {
    const CRequestGuard loopback("127.0.0.1", 8088);
    const CRequestGuard v6("::1", 9000);
    const CRequestGuard any("0.0.0.0", 8088);
    const CRequestGuard lan("192.168.1.20", 80);
    struct Case {
        const CRequestGuard& guard;
        const char* host;
        bool allowed;
    };
    const Case cases[] = {
        {loopback, "LOCALHOST:8088", true},
        {loopback, "127.0.0.1", false},  // the port is part of the served address
        {loopback, "127.0.0.1:8088.evil.example", false},
        {loopback, "", false},
        {loopback, nullptr, false},
        {v6, "[::1]:9000", true},
        {v6, "localhost:9000", true},
        {v6, "::1:9000", false},
        {any, "10.0.0.7:8088", true},  // an address literal cannot be rebound by DNS
        {any, "[fe80::1]:8088", true},
        {any, "tv.home:8088", false},
        {any, "10.0.0.7:8089", false},
        {lan, "192.168.1.20:80", true},
        {lan, "localhost:80", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.guard.HostAllowed(c.host), c.allowed) << (c.host ? c.host : "(none)");
        if (c.host != nullptr) {
            EXPECT_EQ(c.guard.OriginAllowed(("http://" + std::string(c.host)).c_str()), c.allowed) << c.host;
        }
    }
    EXPECT_FALSE(loopback.OriginAllowed("null"));
    EXPECT_FALSE(loopback.OriginAllowed("http://127.0.0.1:8088/path"));
}

TEST(CRequestGuardTest, RecognisesJsonContentTypes) {
    const std::pair<const char*, bool> cases[] = {
        {"application/json; charset=utf-8", true},
        {"Application/JSON", true},
        {" application/json ;charset=UTF-8", true},
        {"application/json-patch+json", false},
        {"application/x-www-form-urlencoded", false},
        {"", false},
    };
    for (const auto& [type, json] : cases) EXPECT_EQ(CRequestGuard::IsJsonType(type), json) << type;
}

TEST(CRequestGuardTest, MeasuresNestingOutsideStrings) {
    const std::pair<std::string, int> cases[] = {
        {"", 0},
        {"1", 0},
        {"[]", 1},
        {R"({"a":[{"b":[]}]})", 4},
        {R"(["[[[[", "{{{"])", 1},      // brackets inside strings do not count
        {R"(["\"[[[", "\\", [[]]])", 3},  // nor do escaped quotes end a string early
        {"]]]][[", 2},                     // stray closers do not go below zero
        {std::string(100, '[') + std::string(100, ']'), 100},
    };
    for (const auto& [text, depth] : cases) EXPECT_EQ(CRequestGuard::NestingDepth(text, 1000), depth) << text;
    // It stops counting past the limit, so a huge body costs no more than the limit needs.
    EXPECT_EQ(CRequestGuard::NestingDepth(std::string(1000000, '['), 64), 65);
}

TEST(CRequestGuardTest, ParsesListenAddresses) {
    struct Case {
        const char* text;
        bool ok;
        const char* address;
        unsigned port;
    };
    const Case cases[] = {
        {"127.0.0.1:8088", true, "127.0.0.1", 8088},
        {"[::1]:0", true, "::1", 0},
        {"0.0.0.0:65535", true, "0.0.0.0", 65535},
        {"127.0.0.1:65536", false, "", 12345},
        {"127.0.0.1", false, "", 12345},
        {"localhost:8088", false, "", 12345},  // a name could mean several addresses
        {"127.0.0.1:80a", false, "", 12345},
        {":8088", false, "", 12345},
    };
    for (const auto& c : cases) {
        std::string address;
        unsigned port = 12345;
        EXPECT_EQ(CRequestGuard::ParseListen(c.text, address, port), c.ok) << c.text;
        EXPECT_EQ(std::make_pair(address, port), std::make_pair(std::string(c.address), c.port)) << c.text;
    }
    EXPECT_TRUE(CRequestGuard::IsLoopback("127.0.0.2"));
    EXPECT_TRUE(CRequestGuard::IsLoopback("::1"));
    EXPECT_FALSE(CRequestGuard::IsLoopback("0.0.0.0"));
}

TEST(CRequestGuardTest, BodyChecksRefuseWithTheFirstProblemInOrder) {
    const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    const std::string deep = nested(CRequestGuard::kMaxNesting + 1);
    const std::string limit = nested(CRequestGuard::kMaxNesting);
    struct Case {
        const char* contentType;
        std::string body;
        bool truncated;
        unsigned status;  // 0: taken
        std::string says;
    };
    const Case cases[] = {
        {"application/json; charset=utf-8", "", false, 0, ""},  // an empty body is the API's to judge
        {"application/json", limit, false, 0, ""},
        {"application/json", "{}", true, 413, "the body is larger than 1 MiB"},
        // Size first: an oversize body of the wrong type is too large, not of the wrong type.
        {"text/plain", "{}", true, 413, "larger than 1 MiB"},
        {"text/plain", "{}", false, 415, "the body must be application/json"},
        {"application/json", "{\"a\":\"\xff\"}", false, 400, "the body is not valid UTF-8"},
        {"application/json", deep, false, 400, "the body nests deeper than 64 levels"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.body.substr(0, 20));
        const auto refusal = CRequestGuard::CheckBody(c.contentType, c.body, c.truncated);
        ASSERT_EQ(refusal.has_value(), c.status != 0);
        if (!refusal) continue;
        EXPECT_EQ(refusal->status, c.status);
        EXPECT_NE(refusal->message.find(c.says), std::string::npos) << refusal->message;
    }
}

}  // namespace
}  // namespace ircontrol::host

#include "SharedJson.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <string>
#include <utility>

#include "sim/Simulator.h"

namespace common::json {
namespace {

class SharedJsonTest : public ::testing::Test {
protected:
    void SetUp() override { sim::ResetAll(); }
};

// No text is a null value and no line; a bad text one error line, with the text's start only.
TEST_F(SharedJsonTest, UnparsableTextGivesNullAndOneBoundedErrorLine) {
    EXPECT_EQ(SharedJson::Create("").type(), kNull);
    EXPECT_EQ(SharedJson::Create(static_cast<const char*>(nullptr)).type(), kNull);
    EXPECT_TRUE(sim::Log::Lines().empty());
    for (const std::string& text : {std::string("{\"a\":1"), std::string(1 << 20, 'x')}) {
        sim::Log::Clear();
        EXPECT_EQ(SharedJson::Create(text).type(), kNull);
        auto lines = sim::Log::Lines();
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0].tag + std::to_string(lines[0].priority), "VYRF_COMMON6");
        EXPECT_EQ(lines[0].text.rfind("SharedJson.cpp : ", 0), 0u);
        EXPECT_NE(lines[0].text.find("  failed to parse: " + text.substr(0, 6)), std::string::npos);
        EXPECT_LT(lines[0].text.size(), 1024u);
    }
}

// Handles share their node (a child handle keeps the whole tree), clones do not; a set moves the
// source's node in (a value set from its own descendant is the value test's).
TEST_F(SharedJsonTest, HandlesShareNodesAndClonesDoNot) {
    SharedJson first = SharedJson::Create(R"({"a":1})");
    SharedJson copy = first;
    SharedJson clone = first.clone();
    copy[std::string("a")].set(SharedJson(5LL));
    EXPECT_EQ(first[std::string("a")].get_int() * 10 + clone[std::string("a")].get_int(), 51);
    SharedJson child;
    {
        SharedJson root = SharedJson::Create(R"({"a":{"b":"deep"}})");
        child = root[std::string("a")][std::string("b")];
    }
    EXPECT_EQ(child.get_string(), "deep");
    SharedJson target(1LL);
    SharedJson source = SharedJson::Create(R"({"k":"v"})");
    SharedJson alias = source;  // still designates the object's old node
    target.set(std::move(source));
    EXPECT_EQ(source.type(), kNull);
    target[std::string("k")].set(SharedJson("changed"));
    EXPECT_EQ(alias[std::string("k")].get_string(), "changed");
}

void* ParseDeep(void* arg) {
    auto* text = static_cast<std::string*>(arg);
    return reinterpret_cast<void*>(static_cast<intptr_t>(SharedJson::Create(*text).type()));
}

// Runs one parse on a thread with a 1 MiB stack, as small as a platform thread may get.
JsonType ParseOnSmallStack(std::string text) {
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setstacksize(&attr, 1 << 20);
    pthread_t thread;
    void* result = nullptr;
    EXPECT_EQ(pthread_create(&thread, &attr, &ParseDeep, &text), 0);
    pthread_join(thread, &result);
    pthread_attr_destroy(&attr);
    return static_cast<JsonType>(reinterpret_cast<intptr_t>(result));
}

TEST_F(SharedJsonTest, DeeplyNestedDocumentIsRejectedOnASmallStack) {
    EXPECT_EQ(ParseOnSmallStack(std::string(200000, '[') + std::string(200000, ']')), kNull);
    EXPECT_TRUE(sim::Log::Contains("failed to parse: [[[["));
    // Brackets inside strings do not count; nesting at the limit still parses.
    EXPECT_EQ(ParseOnSmallStack("[\"" + std::string(5000, '[') + "\"]"), kArray);
    EXPECT_EQ(ParseOnSmallStack(std::string(512, '[') + std::string(512, ']')), kArray);
    EXPECT_EQ(ParseOnSmallStack(std::string(513, '[') + std::string(513, ']')), kNull);
}

}  // namespace
}  // namespace common::json

#include "SharedJson.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <string>
#include <utility>
#include <vector>

#include "sim/Simulator.h"

namespace common::json {
namespace {

class SharedJsonTest : public ::testing::Test {
protected:
    void SetUp() override { sim::ResetAll(); }
};

TEST_F(SharedJsonTest, EmptyTextGivesNullWithoutLogLine) {
    EXPECT_EQ(SharedJson::Create("").type(), kNull);
    EXPECT_EQ(SharedJson::Create(static_cast<const char*>(nullptr)).type(), kNull);
    EXPECT_FALSE(sim::Log::Contains("failed to parse"));
}

// One error line, whatever the text's size: the text's start, never all of it.
TEST_F(SharedJsonTest, MalformedTextLogsABoundedLineAndGivesNull) {
    for (const std::string& text : {std::string("{\"a\":1"), std::string(1 << 20, 'x')}) {
        sim::Log::Clear();
        EXPECT_EQ(SharedJson::Create(text).type(), kNull);
        auto lines = sim::Log::Lines();
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0].priority, 6);
        EXPECT_EQ(lines[0].tag, "VYRF_COMMON");
        EXPECT_EQ(lines[0].text.rfind("SharedJson.cpp : ", 0), 0u);
        EXPECT_NE(lines[0].text.find("  failed to parse: " + text.substr(0, 6)), std::string::npos);
        EXPECT_LT(lines[0].text.size(), 1024u);
    }
}

TEST_F(SharedJsonTest, ElementTypesFollowJsonKinds) {
    SharedJson root = SharedJson::Create(R"([1, 2.5, true, "s", null, {}])");
    ASSERT_EQ(root.type(), kArray);
    const JsonType expected[] = {kInt, kDouble, kBool, kString, kNull, kObject};
    ASSERT_EQ(root.array_size(), 6u);
    for (unsigned i = 0; i < 6; ++i) EXPECT_EQ(root[i].type(), expected[i]) << i;
    EXPECT_EQ(root[6].node(), nullptr);  // past the end designates nothing
}

TEST_F(SharedJsonTest, CopiesShareTheNodeButClonesDoNot) {
    SharedJson first = SharedJson::Create(R"({"a":1})");
    SharedJson copy = first;
    SharedJson clone = first.clone();
    copy[std::string("a")].set(SharedJson(5LL));
    EXPECT_EQ(first[std::string("a")].get_int(), 5);
    EXPECT_EQ(clone[std::string("a")].get_int(), 1);
    EXPECT_FALSE(clone.equal(first));
}

TEST_F(SharedJsonTest, ChildHandleKeepsTheTreeAlive) {
    SharedJson child;
    {
        SharedJson root = SharedJson::Create(R"({"a":{"b":"deep"}})");
        child = root[std::string("a")][std::string("b")];
    }
    EXPECT_EQ(child.get_string(), "deep");
}

TEST_F(SharedJsonTest, ResizeTruncatesAndPadsWithNulls) {
    SharedJson arr = SharedJson::Create("[1]");
    arr.resize(3);
    EXPECT_EQ(arr.to_string(false), "[1,null,null]");
    arr.resize(0);
    EXPECT_EQ(arr.to_string(false), "[]");
}

TEST_F(SharedJsonTest, MoveSetSharesTheObjectAndResetsTheSource) {
    SharedJson target(1LL);
    SharedJson source = SharedJson::Create(R"({"k":"v"})");
    SharedJson alias = source;  // still designates the object's old node
    target.set(std::move(source));
    EXPECT_EQ(source.type(), kNull);
    target[std::string("k")].set(SharedJson("changed"));
    EXPECT_EQ(alias[std::string("k")].get_string(), "changed");
}

TEST_F(SharedJsonTest, InitGivesEmptyValuesAndNullBeyondTheKinds) {
    SharedJson value(true);
    value.init(kString);
    EXPECT_EQ(value.type(), kString);
    EXPECT_EQ(value.get_string(), "");
    value.init(static_cast<JsonType>(9));
    EXPECT_EQ(value.type(), kNull);
    value.init(kObject);
    EXPECT_EQ(value.object_size(), 0u);
}

// Rewriting a node from one of its own descendants must not read freed memory (ASan checks).
TEST_F(SharedJsonTest, SetFromOwnDescendantIsSafe) {
    SharedJson root = SharedJson::Create(R"({"a":{"b":[1,2]}})");
    root.set(root[std::string("a")]);
    EXPECT_EQ(root.to_string(false), R"({"b":[1,2]})");
    root.set(root[std::string("b")][0u]);
    EXPECT_EQ(root.get_int(), 1);
}

// Every kind rewritten into every other, in place, seen through a second handle; under
// valgrind or ASan this also shows that no payload is released twice.
TEST_F(SharedJsonTest, NodesAreRewrittenInPlaceAcrossEveryKind) {
    ASSERT_TRUE(bugfix::Supported());
    SharedJson value(1LL);
    SharedJson alias = value;
    const std::vector<std::pair<SharedJson, std::string>> steps = {
        {SharedJson("text"), "\"text\""},   {SharedJson::Create(R"({"a":[1]})"), R"({"a":[1]})"},
        {SharedJson(2.5), "2.5"},           {SharedJson::Create("[true]"), "[true]"},
        {SharedJson(false), "false"},       {SharedJson(), "null"},
        {SharedJson(7LL), "7"},             {SharedJson::Create("{}"), "{}"},
        {SharedJson("again"), "\"again\""},
    };
    for (const auto& [next, text] : steps) {
        value.set(next);
        EXPECT_EQ(alias.to_string(false), text);
    }
    for (int kind = kNull; kind <= kArray; ++kind) {
        value.init(static_cast<JsonType>(kind));
        EXPECT_EQ(alias.type(), static_cast<JsonType>(kind));
    }
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
    const int depth = 200000;
    EXPECT_EQ(ParseOnSmallStack(std::string(depth, '[') + std::string(depth, ']')), kNull);
    EXPECT_TRUE(sim::Log::Contains("failed to parse: [[[["));
    // Brackets inside strings do not count; nesting at the limit still parses.
    EXPECT_EQ(ParseOnSmallStack("[\"" + std::string(5000, '[') + "\"]"), kArray);
    EXPECT_EQ(ParseOnSmallStack(std::string(512, '[') + std::string(512, ']')), kArray);
    EXPECT_EQ(ParseOnSmallStack(std::string(513, '[') + std::string(513, ']')), kNull);
}

}  // namespace
}  // namespace common::json

#include <gtest/gtest.h>
#include <json-glib/json-glib.h>

#include <memory>
#include <string>

#include "JsonException.h"
#include "SharedJson.h"

namespace common::json {
namespace {

using Node = std::unique_ptr<JsonNode, void (*)(JsonNode*)>;
Node Hold(JsonNode* node) { return Node(node, json_node_unref); }

std::string Text(JsonNode* node) {
    std::unique_ptr<char, void (*)(gpointer)> text(json_to_string(node, FALSE), g_free);
    return text ? text.get() : "";
}

// One node of each kind the rewrite treats apart (every value kind shares one payload path),
// built the way the JSON handle builds them.
struct Kind {
    const char* text;
    void (*build)(JsonNode*);
};
const Kind kKinds[] = {
    {"null", [](JsonNode* n) { json_node_init_null(n); }},
    {"\"text\"", [](JsonNode* n) { json_node_init_string(n, "text"); }},
    {"{\"a\":1}", [](JsonNode* n) {
         JsonObject* object = json_object_new();
         json_object_set_int_member(object, "a", 1);
         json_node_take_object(json_node_init(n, JSON_NODE_OBJECT), object);
     }},
    {"[7]", [](JsonNode* n) {
         JsonArray* array = json_array_new();
         json_array_add_int_element(array, 7);
         json_node_take_array(json_node_init(n, JSON_NODE_ARRAY), array);
     }},
};

// Each kind cleared and rebuilt as each other while a copy still holds the former payload
// (json_node_copy shares it). Were the old pointer left in the node, the rebuild would reuse or
// release that shared payload and the copy would change or dangle. Fails, rather than skips, on
// any ABI whose json-glib nodes the rewrite does not recognise: there the plugin refuses to start.
// Each node is cleared twice before its rebuild.
TEST(SharedJsonBugfixTest, ClearedNodesNeverTouchTheFormerPayloadAgain) {
    ASSERT_TRUE(bugfix::Supported()) << "json-glib node layout not recognised, pointer size " << sizeof(void*);
    for (const Kind& from : kKinds) {
        for (const Kind& to : kKinds) {
            SCOPED_TRACE(std::string(from.text) + " -> " + to.text);
            Node node = Hold(json_node_alloc());
            from.build(node.get());
            Node former = Hold(json_node_copy(node.get()));
            ASSERT_EQ(Text(former.get()), from.text);

            bugfix::clear_node(node.get());
            EXPECT_EQ(json_node_get_node_type(node.get()), JSON_NODE_NULL);
            bugfix::clear_node(node.get());  // a second clear must not release the payload again
            to.build(node.get());

            EXPECT_EQ(Text(node.get()), to.text);
            EXPECT_EQ(Text(former.get()), from.text);
        }
    }
}

}  // namespace
}  // namespace common::json

// The re-initialisation fix for json-glib 1.6 nodes, apart from the handle that uses it because
// it is the one place that depends on json-glib's private node layout.
#include <json-glib/json-glib.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "JsonException.h"
#include "Log.h"
#include "SharedJson.h"

namespace common::json {

namespace bugfix {
namespace {
// json-glib 1.6's private JsonNode, mirrored only so that the compiler places the payload union
// by this ABI's rules: after the type, the reference count and a word of bit fields, aligned for
// a pointer (offset 12 on 32-bit ARM and i386, 16 on x86-64 and arm64).
struct NodeLayout {
    int type;
    volatile int ref_count;
    unsigned immutable : 1;
    unsigned allocated : 1;
    void* payload;
    void* parent;
};
constexpr size_t kPayloadOffset = offsetof(NodeLayout, payload);

uintptr_t PayloadWord(const JsonNode* node) {
    uintptr_t word = 0;
    std::memcpy(&word, reinterpret_cast<const char*>(node) + kPayloadOffset, sizeof(word));
    return word;
}

void ClearPayloadWord(JsonNode* node) {
    void* const null = nullptr;
    std::memcpy(reinterpret_cast<char*>(node) + kPayloadOffset, &null, sizeof(null));
}

struct NodeRef {
    explicit NodeRef(JsonNode* n) : node(n) {}
    ~NodeRef() { json_node_unref(node); }
    NodeRef(const NodeRef&) = delete;
    NodeRef& operator=(const NodeRef&) = delete;
    JsonNode* node;
};

// Asks json-glib itself whether its nodes look like the mirror: the word holds the container of
// object and array nodes, is null in a new null node, and after a value node is made null holds
// either the released payload (the fault cleared here) or null (a json-glib that clears it).
bool LayoutMatches() {
    NodeRef object(json_node_alloc());
    json_node_take_object(json_node_init(object.node, JSON_NODE_OBJECT), json_object_new());
    NodeRef array(json_node_alloc());
    json_node_take_array(json_node_init(array.node, JSON_NODE_ARRAY), json_array_new());
    NodeRef null(json_node_new(JSON_NODE_NULL));
    const auto address = [](const void* p) { return reinterpret_cast<uintptr_t>(p); };
    if (PayloadWord(object.node) != address(json_node_get_object(object.node)) ||
        PayloadWord(array.node) != address(json_node_get_array(array.node)) ||
        PayloadWord(null.node) != 0) {
        return false;
    }
    NodeRef value(json_node_init_int(json_node_alloc(), 1));
    const uintptr_t before = PayloadWord(value.node);
    json_node_init_null(value.node);
    const uintptr_t after = PayloadWord(value.node);
    ClearPayloadWord(value.node);
    return before != 0 && (after == before || after == 0);
}
}  // namespace

// json-glib 1.6 releases a node's payload on re-initialisation but leaves the pointer behind,
// and the next initialisation of a value or container node reuses or releases it again. The
// containers are dropped through json-glib's own setters, which do clear the pointer; for a
// value payload json-glib offers no such call, so its pointer is cleared in place.
void clear_node(JsonNode* node) {
    // Thrown rather than risked: rewriting an unknown layout would corrupt memory, and the
    // plugin refuses to start on such a platform anyway.
    if (!Supported()) throw JsonException("unsupported json-glib node layout");
    switch (json_node_get_node_type(node)) {
        case JSON_NODE_OBJECT: json_node_set_object(node, nullptr); break;
        case JSON_NODE_ARRAY: json_node_set_array(node, nullptr); break;
        default: break;
    }
    json_node_init_null(node);
    ClearPayloadWord(node);
}

bool Supported() {
    static const bool supported = [] {
        const bool matches = LayoutMatches();
        if (!matches) {
            COMMON_LOGE("unsupported json-glib node layout: values cannot be rewritten in place");
        }
        return matches;
    }();
    return supported;
}
}  // namespace bugfix

}  // namespace common::json

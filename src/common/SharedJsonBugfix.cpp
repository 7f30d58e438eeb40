// The re-initialisation fix for json-glib 1.6 nodes, apart from the handle that uses it because
// it is the one place that depends on json-glib's private node layout.
#include <json-glib/json-glib.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "Log.h"
#include "SharedJson.h"

namespace common::json {

namespace bugfix {
namespace {
// Where json-glib keeps a node's payload pointer, found once by asking json-glib itself: an
// object node is made and the word that equals json_node_get_object() is located.
size_t PayloadOffset() {
    static const size_t offset = [] {
        JsonNode* probe = json_node_new(JSON_NODE_OBJECT);
        JsonObject* object = json_object_new();
        json_node_take_object(probe, object);
        size_t found = SIZE_MAX;
        // JsonNode starts with its type and reference count; the payload follows within the
        // first three words.
        for (size_t at = sizeof(void*); at <= 2 * sizeof(void*); at += sizeof(void*)) {
            void* word = nullptr;
            std::memcpy(&word, reinterpret_cast<const char*>(probe) + at, sizeof(word));
            if (word == object) found = at;
        }
        json_node_unref(probe);
        return found;
    }();
    return offset;
}
}  // namespace

// json-glib 1.6 releases a node's payload on re-initialisation but leaves the pointer behind,
// and the next initialisation of a value or container node reuses or releases it again. The
// containers are dropped through json-glib's own setters, which do clear the pointer; for a
// value payload json-glib offers no such call, so its pointer is cleared at the offset probed
// above (JsonNode's layout is private).
void clear_node(JsonNode* node) {
    switch (json_node_get_node_type(node)) {
        case JSON_NODE_OBJECT: json_node_set_object(node, nullptr); break;
        case JSON_NODE_ARRAY: json_node_set_array(node, nullptr); break;
        default: break;
    }
    const bool wasValue = json_node_get_node_type(node) == JSON_NODE_VALUE;
    json_node_init_null(node);
    if (wasValue) {
        const size_t at = PayloadOffset();
        if (at == SIZE_MAX) {
            // A json-glib whose nodes do not look like 1.6's: rewriting would corrupt memory.
            COMMON_LOGE("unsupported json-glib node layout");
            std::abort();
        }
        void* const null = nullptr;
        std::memcpy(reinterpret_cast<char*>(node) + at, &null, sizeof(null));
    }
}

bool Supported() { return PayloadOffset() != SIZE_MAX; }
}  // namespace bugfix

}  // namespace common::json

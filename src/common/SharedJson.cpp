#include "SharedJson.h"

#include <dlfcn.h>
#include <json-glib/json-glib.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "Log.h"

namespace common::json {
namespace {

// json-glib's parser and generator recurse once per nesting level, so a hostile document can
// exhaust the stack of whichever thread parses it. Device-info and pairing documents nest
// three levels at most; 512 leaves a wide margin and stays far inside a 1 MiB thread stack.
constexpr int kMaxNestingDepth = 512;

// A failed parse logs the text; longer inputs are cut so one bad request cannot flood the log.
constexpr size_t kMaxLoggedText = 256;

bool NestsTooDeep(const char* text, size_t length) {
    int depth = 0;
    bool inString = false;
    bool escaped = false;
    for (size_t i = 0; i < length; ++i) {
        const char c = text[i];
        if (inString) {
            if (escaped) {
                escaped = false;
            } else if (c == '\\') {
                escaped = true;
            } else if (c == '"') {
                inString = false;
            }
            continue;
        }
        if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth > kMaxNestingDepth) return true;
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return false;
}

void LogParseFailure(const char* text, size_t length) {
    if (length <= kMaxLoggedText) {
        COMMON_LOGE("failed to parse: %s", text);
    } else {
        COMMON_LOGE("failed to parse: %.*s... (%zu bytes)", static_cast<int>(kMaxLoggedText), text,
                    length);
    }
}

struct ParserDeleter {
    void operator()(JsonParser* parser) const { g_object_unref(parser); }
};
struct GFreeDeleter {
    void operator()(gchar* text) const { g_free(text); }
};

NodeOwner Own(JsonNode* node) { return NodeOwner(node, &UnrefNode); }

// json-glib 1.6 re-initialises a node in place only while exactly one reference is held on it.
// Handles therefore never reference the value's own root node: every tree hangs below a hidden
// one-element array node, which the handles share, so the root keeps its single reference and
// stays rewritable however many handles point into the tree. Takes over the caller's reference.
NodeOwner Hold(JsonNode* root) {
    JsonArray* holder = json_array_sized_new(1);
    json_array_add_element(holder, root);
    JsonNode* node = json_node_alloc();
    json_node_init_array(node, holder);
    json_array_unref(holder);
    return Own(node);
}

// json-glib registers GObject types, which GObject keeps for the life of the process; if
// json-glib were unmapped together with a plugin that brought it in, a later load would find
// types pointing into freed code. So the first parse pins json-glib in memory for good.
void PinJsonGlib() {
    static const bool pinned = [] {
        Dl_info info{};
        if (dladdr(reinterpret_cast<void*>(&json_parser_new), &info) == 0 || info.dli_fname == nullptr) {
            return false;
        }
        return dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE) != nullptr;
    }();
    (void)pinned;
}

SharedJson Parse(const char* text, gssize length) {
    PinJsonGlib();
    if (text == nullptr) return SharedJson();
    const size_t size = length < 0 ? std::strlen(text) : static_cast<size_t>(length);
    if (NestsTooDeep(text, size)) {
        LogParseFailure(text, size);
        return SharedJson();
    }
    std::unique_ptr<JsonParser, ParserDeleter> parser(json_parser_new());
    if (!json_parser_load_from_data(parser.get(), text, length, nullptr)) {
        LogParseFailure(text, size);
        return SharedJson();
    }
    JsonNode* root = json_parser_get_root(parser.get());
    if (root == nullptr) return SharedJson();
    return SharedJson(Own(json_node_copy(root)));  // held by the constructor
}

void AppendMemberName(JsonObject*, const gchar* name, JsonNode*, gpointer names) {
    static_cast<std::vector<std::string>*>(names)->emplace_back(name);
}

void DeepCopy(JsonNode* src, JsonNode* dst);

void CopyMember(JsonObject*, const gchar* name, JsonNode* member, gpointer dstObject) {
    JsonNode* copy = json_node_new(JSON_NODE_NULL);
    json_object_set_member(static_cast<JsonObject*>(dstObject), name, copy);
    DeepCopy(member, copy);
}

void CopyElement(JsonArray*, guint index, JsonNode* element, gpointer dstArray) {
    DeepCopy(element, json_array_get_element(static_cast<JsonArray*>(dstArray), index));
}

// json_node_copy shares containers; this copies them, so a clone shares nothing.
void DeepCopy(JsonNode* src, JsonNode* dst) {
    switch (json_node_get_node_type(src)) {
        case JSON_NODE_OBJECT: {
            JsonObject* obj = json_object_new();
            json_node_init_object(dst, obj);
            json_object_foreach_member(json_node_get_object(src), &CopyMember, obj);
            json_object_unref(obj);
            break;
        }
        case JSON_NODE_ARRAY: {
            JsonArray* source = json_node_get_array(src);
            const guint n = json_array_get_length(source);
            JsonArray* arr = json_array_sized_new(n);
            for (guint i = 0; i < n; ++i) json_array_add_element(arr, json_node_new(JSON_NODE_NULL));
            json_node_init_array(dst, arr);
            json_array_foreach_element(source, &CopyElement, arr);
            json_array_unref(arr);
            break;
        }
        case JSON_NODE_VALUE: {
            GValue value = G_VALUE_INIT;
            json_node_get_value(src, &value);
            json_node_init(dst, JSON_NODE_VALUE);
            json_node_set_value(dst, &value);
            g_value_unset(&value);
            break;
        }
        case JSON_NODE_NULL:
            json_node_init_null(dst);
            break;
    }
}

}  // namespace

void UnrefNode(JsonNode* node) {
    if (node != nullptr) json_node_unref(node);
}

SharedJson::SharedJson() : SharedJson(Own(json_node_new(JSON_NODE_NULL))) {}

SharedJson::SharedJson(const std::string& value)
    : SharedJson(Own(json_node_init_string(json_node_alloc(), value.c_str()))) {}

SharedJson::SharedJson(const char* value)
    : SharedJson(Own(json_node_init_string(json_node_alloc(), value))) {}

SharedJson::SharedJson(double value) : SharedJson(Own(json_node_init_double(json_node_alloc(), value))) {}

SharedJson::SharedJson(long long value) : SharedJson(Own(json_node_init_int(json_node_alloc(), value))) {}

SharedJson::SharedJson(bool value) : SharedJson(Own(json_node_init_boolean(json_node_alloc(), value))) {}

SharedJson::SharedJson(NodeOwner owner) : owner_(Own(nullptr)), node_(owner.get()) {
    owner_ = owner ? Hold(owner.release()) : Hold(json_node_new(JSON_NODE_NULL));
    if (node_ == nullptr) node_ = json_array_get_element(json_node_get_array(owner_.get()), 0);
}

SharedJson::SharedJson(NodeOwner owner, JsonNode* node) : owner_(std::move(owner)), node_(node) {}

SharedJson::SharedJson(const SharedJson& other)
    : owner_(Own(other.owner_ ? json_node_ref(other.owner_.get()) : nullptr)), node_(other.node_) {}

SharedJson& SharedJson::operator=(const SharedJson& other) {
    // The new reference is taken before the old one is released, so self-assignment is safe.
    NodeOwner incoming = Own(other.owner_ ? json_node_ref(other.owner_.get()) : nullptr);
    owner_ = std::move(incoming);
    node_ = other.node_;
    return *this;
}

SharedJson::~SharedJson() = default;

SharedJson SharedJson::Create(const std::string& text) {
    return Parse(text.data(), static_cast<gssize>(text.size()));
}

SharedJson SharedJson::Create(const char* text) { return Parse(text, -1); }

const char* SharedJson::GlibcVersion() { return "1.6.6"; }

JsonType SharedJson::type() const {
    if (node_ == nullptr) return kNull;
    switch (json_node_get_node_type(node_)) {
        case JSON_NODE_OBJECT: return kObject;
        case JSON_NODE_ARRAY: return kArray;
        case JSON_NODE_NULL: return kNull;
        case JSON_NODE_VALUE: break;
    }
    const GType valueType = json_node_get_value_type(node_);
    if (valueType == G_TYPE_BOOLEAN) return kBool;
    if (valueType == G_TYPE_INT64) return kInt;
    if (valueType == G_TYPE_DOUBLE) return kDouble;
    if (valueType == G_TYPE_STRING) return kString;
    return kNull;
}

std::string SharedJson::get_string() const {
    const gchar* text = json_node_get_string(node_);
    return text != nullptr ? std::string(text) : std::string();
}

double SharedJson::get_double() const { return json_node_get_double(node_); }

long long SharedJson::get_int() const { return json_node_get_int(node_); }

bool SharedJson::get_bool() const { return json_node_get_boolean(node_) != FALSE; }

bool SharedJson::has(const char* name) const {
    return json_object_has_member(json_node_get_object(node_), name) != FALSE;
}

unsigned SharedJson::object_size() const { return json_object_get_size(json_node_get_object(node_)); }

unsigned SharedJson::array_size() const { return json_array_get_length(json_node_get_array(node_)); }

bool SharedJson::equal(const SharedJson& other) const {
    if (node_ == nullptr || other.node_ == nullptr) return node_ == other.node_;
    return json_node_equal(node_, other.node_) != FALSE;
}

std::string SharedJson::to_string(bool pretty) const {
    if (node_ == nullptr) return "null";
    std::unique_ptr<gchar, GFreeDeleter> text(json_to_string(node_, pretty));
    return text ? std::string(text.get()) : std::string();
}

std::vector<std::string> SharedJson::get_member_names() const {
    std::vector<std::string> names;
    json_object_foreach_member(json_node_get_object(node_), &AppendMemberName, &names);
    return names;
}

SharedJson SharedJson::operator[](const std::string& name) const {
    JsonNode* member = json_object_get_member(json_node_get_object(node_), name.c_str());
    return SharedJson(Own(json_node_ref(owner_.get())), member);
}

SharedJson SharedJson::operator[](unsigned index) const {
    JsonArray* array = json_node_get_array(node_);
    JsonNode* element = index < json_array_get_length(array) ? json_array_get_element(array, index)
                                                             : nullptr;
    return SharedJson(Own(json_node_ref(owner_.get())), element);
}

SharedJson SharedJson::clone() const {
    JsonNode* copy = json_node_alloc();
    if (node_ == nullptr) {
        json_node_init_null(copy);
    } else {
        DeepCopy(node_, copy);
    }
    return SharedJson(Own(copy));  // held by the constructor
}

void SharedJson::init(JsonType type) {
    bugfix::clear_node(node_);
    switch (type) {
        case kNull: json_node_init(node_, JSON_NODE_NULL); break;
        case kBool: json_node_init_boolean(node_, FALSE); break;
        case kInt: json_node_init_int(node_, 0); break;
        case kDouble: json_node_init_double(node_, 0.0); break;
        case kString: json_node_init_string(node_, ""); break;
        case kObject: {
            JsonObject* obj = json_object_new();
            json_node_init_object(node_, obj);
            json_object_unref(obj);
            break;
        }
        case kArray: {
            JsonArray* arr = json_array_new();
            json_node_init_array(node_, arr);
            json_array_unref(arr);
            break;
        }
        default: json_node_init(node_, JSON_NODE_NULL); break;
    }
}

void SharedJson::set(SharedJson&& other) {
    if (&other == this) return;
    if (other.node_ == node_) {
        other = SharedJson();
        return;
    }
    // What is taken from `other` is read (and its container referenced) before this node is
    // cleared: `other` may designate a node inside the payload that the clearing releases.
    const JsonType kind = other.type();
    switch (kind) {
        case kBool: {
            const bool v = other.get_bool();
            bugfix::clear_node(node_);
            json_node_init_boolean(node_, v);
            break;
        }
        case kInt: {
            const long long v = other.get_int();
            bugfix::clear_node(node_);
            json_node_init_int(node_, v);
            break;
        }
        case kDouble: {
            const double v = other.get_double();
            bugfix::clear_node(node_);
            json_node_init_double(node_, v);
            break;
        }
        case kString: {
            const std::string v = other.get_string();
            bugfix::clear_node(node_);
            json_node_init_string(node_, v.c_str());
            break;
        }
        case kObject: {
            JsonObject* obj = json_node_dup_object(other.node_);
            bugfix::clear_node(node_);
            json_node_init(node_, JSON_NODE_OBJECT);
            json_node_set_object(node_, obj);
            json_object_unref(obj);
            break;
        }
        case kArray: {
            JsonArray* arr = json_node_dup_array(other.node_);
            bugfix::clear_node(node_);
            json_node_init(node_, JSON_NODE_ARRAY);
            json_node_set_array(node_, arr);
            json_array_unref(arr);
            break;
        }
        default:
            bugfix::clear_node(node_);
            json_node_init(node_, JSON_NODE_NULL);
            break;
    }
    other = SharedJson();
}

void SharedJson::set(const SharedJson& other) { set(other.clone()); }

void SharedJson::append(SharedJson&& value) {
    json_array_add_element(json_node_get_array(node_), json_node_ref(value.node_));
    value = SharedJson();
}

void SharedJson::alloc_member(const std::string& name) {
    json_object_set_member(json_node_get_object(node_), name.c_str(), json_node_new(JSON_NODE_NULL));
}

void SharedJson::remove_member(const std::string& name) {
    json_object_remove_member(json_node_get_object(node_), name.c_str());
}

void SharedJson::resize(unsigned size) {
    JsonArray* array = json_node_get_array(node_);
    unsigned length = json_array_get_length(array);
    while (length > size) json_array_remove_element(array, --length);
    while (length < size) {
        json_array_add_null_element(array);
        ++length;
    }
}

}  // namespace common::json

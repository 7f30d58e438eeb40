// A handle over a json-glib JsonNode: one reference on the root of a tree plus a borrowed pointer
// to the node it designates. Copies designate the same node; clone() is a true deep copy.
// Not thread-safe: handles sharing a root belong to one thread at a time. Throws nothing itself.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "JsonType.h"

typedef struct _JsonNode JsonNode;

namespace common::json {

// Releases one json-glib reference; does nothing on null.
void UnrefNode(JsonNode* node);

using NodeOwner = std::unique_ptr<JsonNode, void (*)(JsonNode*)>;

namespace bugfix {
// Leaves `node` null so that the next re-initialisation cannot release the old payload twice.
// Throws JsonException, touching nothing, where Supported() is false.
void clear_node(JsonNode* node);
// Whether this json-glib's nodes can be cleared in place; probed once, logged when not.
bool Supported();
}  // namespace bugfix

class SharedJson {
public:
    SharedJson();                              // a new null node
    explicit SharedJson(const std::string& value);
    explicit SharedJson(const char* value);
    explicit SharedJson(double value);
    explicit SharedJson(long long value);
    explicit SharedJson(bool value);
    explicit SharedJson(NodeOwner owner);      // takes over the reference; designates the node
    SharedJson(NodeOwner owner, JsonNode* node);  // child handle: owner keeps `node` alive
    SharedJson(const SharedJson& other);       // one more reference, same node
    SharedJson& operator=(const SharedJson& other);
    ~SharedJson();

    // Parses text; on failure logs "failed to parse: %s" and returns a null handle.
    static SharedJson Create(const std::string& text);
    static SharedJson Create(const char* text);
    static const char* GlibcVersion();

    JsonType type() const;
    std::string get_string() const;
    double get_double() const;
    long long get_int() const;
    bool get_bool() const;
    bool has(const char* name) const;          // object nodes only
    unsigned object_size() const;              // object nodes only
    unsigned array_size() const;               // array nodes only
    bool equal(const SharedJson& other) const;
    std::string to_string(bool pretty) const;
    std::vector<std::string> get_member_names() const;
    SharedJson operator[](const std::string& name) const;  // designates null if absent
    SharedJson operator[](unsigned index) const;
    SharedJson clone() const;

    // Mutators edit the designated node in place, so every handle into the tree sees them.
    void init(JsonType type);
    void set(SharedJson&& other);              // other ends as a fresh null handle
    void set(const SharedJson& other);         // takes a deep copy
    void append(SharedJson&& value);           // value's node becomes the last element
    void alloc_member(const std::string& name);
    void remove_member(const std::string& name);
    void resize(unsigned size);

    JsonNode* node() const { return node_; }

private:
    NodeOwner owner_;
    JsonNode* node_;
};

}  // namespace common::json

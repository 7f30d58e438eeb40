// The JSON value type of all service code: typed conversions that throw JsonException,
// auto-vivifying indexing, and a cache of child values whose references stay valid and write
// through into the parent's tree. One thread at a time per value (and the values cached in it).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "JsonException.h"
#include "JsonType.h"
#include "SharedJson.h"

namespace common::json {

class JsonValue : public SharedJson {
public:
    class ChildManager;

    JsonValue();
    explicit JsonValue(JsonType type);         // an empty value of that kind
    JsonValue(const std::string& value);
    JsonValue(const char* value);
    JsonValue(double value);
    JsonValue(long long value);
    JsonValue(unsigned int value);
    JsonValue(int value);
    JsonValue(bool value);
    explicit JsonValue(SharedJson handle);     // shares the handle's node
    JsonValue(const JsonValue& other);         // deep copy
    JsonValue(JsonValue&& other) noexcept;     // other ends null, without a cache
    ~JsonValue();

    JsonValue& operator=(const JsonValue& other);  // deep copy into this node, in place
    JsonValue& operator=(JsonValue&& other);       // containers are shared, not copied

    // A parse failure gives a null value (and the "failed to parse: %s" log line).
    static JsonValue Create(const std::string& text);
    // The one process-wide null value.
    static const JsonValue& Null();

    JsonType type() const;
    bool isNull() const;
    bool isBool() const;
    bool isInt() const;
    bool isDouble() const;
    bool isString() const;
    unsigned size() const;
    bool empty() const;
    bool isMember(const char* name) const;           // throws "invalid type" on non-objects
    bool isMember(const std::string& name) const;
    std::vector<std::string> getMemberNames() const;
    bool operator==(const JsonValue& other) const;
    std::string toString(bool pretty = false) const;

    bool isConvertibleTo(JsonType type) const;
    std::string asString() const;
    double asDouble() const;
    int64_t asInt64() const;
    uint32_t asUInt() const;
    int32_t asInt() const;
    bool asBool() const;

    // Non-const indexing creates what is missing; const indexing returns Null() instead.
    JsonValue& operator[](const std::string& name);
    JsonValue& operator[](unsigned index);
    const JsonValue& operator[](const std::string& name) const;
    const JsonValue& operator[](unsigned index) const;
    JsonValue get(const std::string& name, const JsonValue& def) const;
    JsonValue get(unsigned index, const JsonValue& def) const;

    void append(JsonValue&& value);
    void append(const JsonValue& value);
    void resize(unsigned size);
    void removeMember(const std::string& name);

private:
    ChildManager& cache() const;  // a moved-from value gets a fresh cache when reused
    // A null value becomes an empty `container` (object or array); any other type but that one
    // throws "invalid type".
    void vivify(JsonType container);

    mutable std::unique_ptr<ChildManager> children_;
};

}  // namespace common::json

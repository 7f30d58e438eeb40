#include "JsonValue.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <unordered_map>

namespace common::json {
namespace {

constexpr double kInt64Low = -9223372036854775808.0;
constexpr double kInt64High = 9223372036854775808.0;  // accepted on purpose: one past INT64_MAX

[[noreturn]] void Throw(const char* message) { throw JsonException(message); }

bool InInt64Range(double v) { return v >= kInt64Low && v <= kInt64High; }

}  // namespace

// Cached child values. Node-based maps keep references to cached children valid until they are
// erased or the cache is cleared, however many other children are added meanwhile.
class JsonValue::ChildManager {
public:
    explicit ChildManager(JsonType type) : type_(type) {}

    JsonValue& get(const SharedJson& parent, const std::string& name) const {
        auto it = objectChildren_.find(name);
        if (it == objectChildren_.end()) it = objectChildren_.emplace(name, JsonValue(parent[name])).first;
        return it->second;
    }

    JsonValue& get(const SharedJson& parent, unsigned index) const {
        auto it = arrayChildren_.find(index);
        if (it == arrayChildren_.end()) it = arrayChildren_.emplace(index, JsonValue(parent[index])).first;
        return it->second;
    }

    void erase(const std::string& name) { objectChildren_.erase(name); }

    void resize(unsigned size) {
        for (auto it = arrayChildren_.begin(); it != arrayChildren_.end();) {
            it = it->first >= size ? arrayChildren_.erase(it) : std::next(it);
        }
    }

    void clear() {
        arrayChildren_.clear();
        objectChildren_.clear();
    }

    void set_type(JsonType type) {
        if (type != type_) clear();
        type_ = type;
    }

private:
    JsonType type_;
    mutable std::unordered_map<unsigned, JsonValue> arrayChildren_;
    mutable std::unordered_map<std::string, JsonValue> objectChildren_;
};

JsonValue::JsonValue() : children_(std::make_unique<ChildManager>(kNull)) {}

JsonValue::JsonValue(JsonType type) : children_(std::make_unique<ChildManager>(type)) {
    SharedJson::init(type);
}

JsonValue::JsonValue(const std::string& value)
    : SharedJson(value), children_(std::make_unique<ChildManager>(kString)) {}

JsonValue::JsonValue(const char* value)
    : SharedJson(value), children_(std::make_unique<ChildManager>(kString)) {}

JsonValue::JsonValue(double value)
    : SharedJson(value), children_(std::make_unique<ChildManager>(kDouble)) {}

JsonValue::JsonValue(long long value)
    : SharedJson(value), children_(std::make_unique<ChildManager>(kInt)) {}

JsonValue::JsonValue(unsigned int value)
    : SharedJson(static_cast<long long>(value)), children_(std::make_unique<ChildManager>(kInt)) {}

JsonValue::JsonValue(int value)
    : SharedJson(static_cast<long long>(value)), children_(std::make_unique<ChildManager>(kInt)) {}

JsonValue::JsonValue(bool value)
    : SharedJson(value), children_(std::make_unique<ChildManager>(kBool)) {}

JsonValue::JsonValue(SharedJson handle)
    : SharedJson(std::move(handle)), children_(std::make_unique<ChildManager>(SharedJson::type())) {}

JsonValue::JsonValue(const JsonValue& other)
    : SharedJson(other.clone()), children_(std::make_unique<ChildManager>(other.type())) {}

JsonValue::JsonValue(JsonValue&& other) noexcept
    : SharedJson(static_cast<const SharedJson&>(other)), children_(std::move(other.children_)) {
    static_cast<SharedJson&>(other) = SharedJson();
}

JsonValue::~JsonValue() = default;

JsonValue::ChildManager& JsonValue::cache() const {
    if (!children_) children_ = std::make_unique<ChildManager>(type());
    return *children_;
}

JsonValue& JsonValue::operator=(const JsonValue& other) {
    // Copied first: `other` may be one of this value's cached children, which clearing destroys.
    SharedJson copy = other.clone();
    cache().clear();
    SharedJson::set(std::move(copy));
    cache().set_type(type());
    return *this;
}

JsonValue& JsonValue::operator=(JsonValue&& other) {
    if (&other == this) return *this;
    // Taken out first: `other` may live in this value's cache, which the next step replaces.
    JsonValue incoming(std::move(other));
    children_ = std::move(incoming.children_);
    SharedJson::set(std::move(static_cast<SharedJson&>(incoming)));
    cache().set_type(type());
    return *this;
}

JsonValue JsonValue::Create(const std::string& text) { return JsonValue(SharedJson::Create(text)); }

const JsonValue& JsonValue::Null() {
    static const JsonValue null;
    return null;
}

namespace {
// Built while the library loads, so it outlives every singleton made later: statics die in the
// reverse order of their making, and a worker thread joined by such a singleton at unload may
// still be in a job that reads this value.
[[maybe_unused]] const JsonValue& gNullBuiltAtLoad = JsonValue::Null();
}  // namespace

JsonType JsonValue::type() const { return SharedJson::type(); }
bool JsonValue::isNull() const { return type() == kNull; }
bool JsonValue::isBool() const { return type() == kBool; }
bool JsonValue::isString() const { return type() == kString; }

bool JsonValue::isDouble() const {
    const JsonType t = type();
    return t == kInt || t == kDouble;
}

bool JsonValue::isInt() const {
    const JsonType t = type();
    return t == kInt || (t == kDouble && InInt64Range(get_double()));
}

unsigned JsonValue::size() const {
    switch (type()) {
        case kObject: return object_size();
        case kArray: return array_size();
        default: return 0;
    }
}

bool JsonValue::empty() const {
    const JsonType t = type();
    return (t == kNull || t == kObject || t == kArray) && size() == 0;
}

bool JsonValue::isMember(const char* name) const {
    const JsonType t = type();
    if (t == kNull) return false;
    if (t != kObject) Throw("invalid type");
    return has(name);
}

bool JsonValue::isMember(const std::string& name) const { return isMember(name.c_str()); }

std::vector<std::string> JsonValue::getMemberNames() const {
    const JsonType t = type();
    if (t == kNull) return {};
    if (t != kObject) Throw("invalid type");
    return get_member_names();
}

bool JsonValue::operator==(const JsonValue& other) const { return equal(other); }

std::string JsonValue::toString(bool pretty) const { return to_string(pretty); }

bool JsonValue::isConvertibleTo(JsonType target) const {
    const JsonType s = type();
    switch (target) {
        case kNull:
            switch (s) {
                case kNull: return true;
                case kBool: return !get_bool();
                case kInt: return asInt() == 0;  // out of the int32 range this throws, as asInt does
                case kDouble: return get_double() == 0.0;
                case kArray:
                case kObject: return size() == 0;
                default: return false;
            }
        case kBool:
        case kDouble: return s == kNull || s == kBool || s == kInt || s == kDouble;
        case kInt:
            return s == kNull || s == kBool || s == kInt || (s == kDouble && InInt64Range(get_double()));
        case kString: return s != kObject && s != kArray;
        case kObject: return s == kNull || s == kObject;
        case kArray: return s == kNull || s == kArray;
        default: return false;
    }
}

std::string JsonValue::asString() const {
    switch (type()) {
        case kNull: return std::string();
        case kBool: return get_bool() ? "true" : "false";
        case kInt: {
            char text[32];
            std::snprintf(text, sizeof(text), "%lld", get_int());
            return text;
        }
        case kDouble: return std::to_string(get_double());
        case kString: return get_string();
        default: Throw("cannot convert to string type");
    }
}

double JsonValue::asDouble() const {
    switch (type()) {
        case kNull: return 0.0;
        case kBool: return get_bool() ? 1.0 : 0.0;
        case kInt: return static_cast<double>(get_int());
        case kDouble: return get_double();
        default: Throw("cannot convert to double type");
    }
}

int64_t JsonValue::asInt64() const {
    switch (type()) {
        case kNull: return 0;
        case kBool: return get_bool() ? 1 : 0;
        case kInt: return get_int();
        case kDouble: {
            const double v = get_double();
            if (!InInt64Range(v)) Throw("double value exceed int64_t range");
            // 2^63 itself is accepted but has no int64 value: it clamps to the largest one.
            if (v >= kInt64High) return std::numeric_limits<int64_t>::max();
            return static_cast<int64_t>(v);
        }
        default: Throw("cannot convert to int64_t type");
    }
}

uint32_t JsonValue::asUInt() const {
    switch (type()) {
        case kNull: return 0;
        case kBool: return get_bool() ? 1 : 0;
        case kInt: {
            const long long v = get_int();
            if (static_cast<unsigned long long>(v) > 4294967295ULL) {
                Throw("int64_t value exceed uint32_t range");
            }
            return static_cast<uint32_t>(v);
        }
        case kDouble: {
            // Truncated toward zero, then checked; doubles have no uint32 wording of their own.
            const double v = std::trunc(get_double());
            if (!(v >= 0.0 && v <= 4294967295.0)) Throw("double value exceed int32_t range");
            return static_cast<uint32_t>(v);
        }
        default: Throw("cannot convert to uint32_t type");
    }
}

int32_t JsonValue::asInt() const {
    switch (type()) {
        case kNull: return 0;
        case kBool: return get_bool() ? 1 : 0;
        case kInt: {
            const long long v = get_int();
            if (v < -2147483648LL || v > 2147483647LL) Throw("int64_t value exceed int32_t range");
            return static_cast<int32_t>(v);
        }
        case kDouble: {
            // Truncated toward zero, then checked, so 2147483647.9 still reads 2147483647.
            const double v = std::trunc(get_double());
            if (!(v >= -2147483648.0 && v <= 2147483647.0)) Throw("double value exceed int32_t range");
            return static_cast<int32_t>(v);
        }
        default: Throw("cannot convert to int32_t type");
    }
}

bool JsonValue::asBool() const {
    switch (type()) {
        case kNull: return false;
        case kBool: return get_bool();
        case kInt: return get_int() != 0;
        case kDouble: {
            const double v = get_double();
            return !(v == 0.0 || std::isnan(v));
        }
        default: Throw("cannot convert to bool type");
    }
}

void JsonValue::vivify(JsonType container) {
    const JsonType t = type();
    if (t == kNull) {
        SharedJson::init(container);
        cache().set_type(container);
    } else if (t != container) {
        Throw("invalid type");
    }
}

JsonValue& JsonValue::operator[](const std::string& name) {
    vivify(kObject);
    if (!has(name.c_str())) alloc_member(name);
    return cache().get(*this, name);
}

JsonValue& JsonValue::operator[](unsigned index) {
    vivify(kArray);
    if (array_size() <= index) SharedJson::resize(index + 1);
    return cache().get(*this, index);
}

const JsonValue& JsonValue::operator[](const std::string& name) const {
    const JsonType t = type();
    if (t == kNull) return Null();
    if (t != kObject) Throw("invalid type");
    if (!has(name.c_str())) return Null();
    return cache().get(*this, name);
}

const JsonValue& JsonValue::operator[](unsigned index) const {
    const JsonType t = type();
    if (t == kNull) return Null();
    if (t != kArray) Throw("invalid type");
    if (index >= array_size()) return Null();
    return cache().get(*this, index);
}

JsonValue JsonValue::get(const std::string& name, const JsonValue& def) const {
    const JsonType t = type();
    if (t == kNull) return JsonValue(def);
    if (t != kObject) Throw("invalid type");
    if (!has(name.c_str())) return JsonValue(def);
    return JsonValue(cache().get(*this, name));
}

JsonValue JsonValue::get(unsigned index, const JsonValue& def) const {
    const JsonType t = type();
    if (t == kNull) return JsonValue(def);
    if (t != kArray) Throw("invalid type");
    if (index >= array_size()) return JsonValue(def);
    return JsonValue(cache().get(*this, index));
}

void JsonValue::append(JsonValue&& value) {
    vivify(kArray);
    SharedJson::append(std::move(static_cast<SharedJson&>(value)));
    value.cache().clear();
    value.cache().set_type(kNull);
}

void JsonValue::append(const JsonValue& value) { append(JsonValue(value)); }

void JsonValue::resize(unsigned size) {
    vivify(kArray);
    cache().resize(size);
    SharedJson::resize(size);
}

void JsonValue::removeMember(const std::string& name) {
    const JsonType t = type();
    if (t == kNull) return;
    if (t != kObject) Throw("invalid type");
    SharedJson::remove_member(name);
    cache().erase(name);
}

}  // namespace common::json

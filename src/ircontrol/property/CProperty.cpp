#include "property/CProperty.h"

#include <exception>

#include "common/ServiceLog.h"

namespace ircontrol {

using common::json::JsonException;
using common::json::JsonType;
using common::json::JsonValue;

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

JsonType ToJsonType(CProperty::_Type type) {
    switch (type) {
        case CProperty::kBoolType: return common::json::kBool;
        case CProperty::kIntType:
        case CProperty::kUIntType: return common::json::kInt;
        case CProperty::kDoubleType: return common::json::kDouble;
        case CProperty::kStringType: return common::json::kString;
        case CProperty::kObjectType: return common::json::kObject;
        case CProperty::kArrayType: return common::json::kArray;
        default: return common::json::kNull;
    }
}

// Runs `body`; any exception is logged with the operation's name and `fallback` is returned.
template <typename Body, typename Fallback>
auto Guarded(const char* operation, Body body, Fallback fallback) -> decltype(body()) {
    try {
        return body();
    } catch (const JsonException& e) {
        IRC_LOGE("[%s] json exception: %s", operation, e.what());
    } catch (const std::exception& e) {
        IRC_LOGE("[%s] exception: %s", operation, e.what());
    } catch (...) {
        IRC_LOGE("[%s] unknown exception", operation);
    }
    return fallback();
}

void Convert(const JsonValue& v, bool& out) { out = v.asBool(); }
void Convert(const JsonValue& v, int& out) { out = v.asInt(); }
void Convert(const JsonValue& v, unsigned int& out) { out = v.asUInt(); }
void Convert(const JsonValue& v, double& out) { out = v.asDouble(); }
void Convert(const JsonValue& v, std::string& out) { out = v.asString(); }

}  // namespace

CProperty::CProperty(_Type type) : value(ToJsonType(type)) {}

CProperty::CProperty(const CProperty& other) : value() {
    Lock lock(other.mutex_);
    value = other.value;
}

CProperty CProperty::Create(const std::string& text) {
    CProperty property(kNullType);
    property.value = JsonValue::Create(text);
    return property;
}

CProperty& CProperty::operator=(const CProperty& other) {
    CProperty copy(kNullType);
    copy.value = other.value;
    Swap(copy);
    return *this;
}

void CProperty::Swap(CProperty& other) {
    Lock lock(mutex_);
    JsonValue temporary(std::move(value));
    value = std::move(other.value);
    other.value = std::move(temporary);
}

void CProperty::Clear() {
    Lock lock(mutex_);
    value = JsonValue();
}

std::string CProperty::ToJsonString(bool pretty) const {
    Lock lock(mutex_);
    return value.toString(pretty);
}

CProperty::_Type CProperty::type() const {
    switch (value.type()) {
        case common::json::kBool: return kBoolType;
        case common::json::kDouble: return kDoubleType;
        case common::json::kString: return kStringType;
        case common::json::kObject: return kObjectType;
        case common::json::kArray: return kArrayType;
        case common::json::kInt: {
            // A large integer is reported as a double on purpose; a non-negative int32 value is
            // always kIntType, never kUIntType.
            const long long v = value.get_int();
            if (v < -2147483648LL) return kDoubleType;
            if (v <= 2147483647LL) return kIntType;
            if (v <= 4294967295LL) return kUIntType;
            return kDoubleType;
        }
        default: return kNullType;
    }
}

CProperty::_Type CProperty::Type() const {
    Lock lock(mutex_);
    return type();
}

bool CProperty::IsConvertible(_Type type) const {
    Lock lock(mutex_);
    return value.isConvertibleTo(ToJsonType(type));
}

bool CProperty::IsNullType() const { return Type() == kNullType; }
bool CProperty::IsBoolType() const { return Type() == kBoolType; }
bool CProperty::IsIntType() const { return Type() == kIntType; }
bool CProperty::IsUIntType() const { return Type() == kUIntType; }
bool CProperty::IsDoubleType() const { return Type() == kDoubleType; }
bool CProperty::IsStringType() const { return Type() == kStringType; }
bool CProperty::IsObjectType() const { return Type() == kObjectType; }
bool CProperty::IsArrayType() const { return Type() == kArrayType; }

bool CProperty::AsBool(bool def) const {
    Lock lock(mutex_);
    return Guarded("AsBool", [&] { return value.asBool(); }, [&] { return def; });
}

int CProperty::AsInt(int def) const {
    Lock lock(mutex_);
    return Guarded("AsInt", [&] { return static_cast<int>(value.asInt()); }, [&] { return def; });
}

unsigned CProperty::AsUInt(unsigned def) const {
    Lock lock(mutex_);
    return Guarded("AsUInt", [&] { return static_cast<unsigned>(value.asUInt()); }, [&] { return def; });
}

double CProperty::AsDouble(double def) const {
    Lock lock(mutex_);
    return Guarded("AsDouble", [&] { return value.asDouble(); }, [&] { return def; });
}

std::string CProperty::AsString(const std::string& def) const {
    Lock lock(mutex_);
    return Guarded("AsString", [&] { return value.asString(); }, [&] { return def; });
}

template <typename Key, typename T>
bool CProperty::getValue(const char* operation, const Key& key, T& out) const {
    Lock lock(mutex_);
    return Guarded(operation,
                   [&] {
                       const JsonValue& constant = value;
                       T converted{};
                       Convert(constant[key], converted);
                       out = std::move(converted);
                       return true;
                   },
                   [] { return false; });
}

bool CProperty::GetValue(const std::string& n, bool& o) const { return getValue("GetValue", n, o); }
bool CProperty::GetValue(const std::string& n, int& o) const { return getValue("GetValue", n, o); }
bool CProperty::GetValue(const std::string& n, unsigned int& o) const { return getValue("GetValue", n, o); }
bool CProperty::GetValue(const std::string& n, double& o) const { return getValue("GetValue", n, o); }
bool CProperty::GetValue(const std::string& n, std::string& o) const { return getValue("GetValue", n, o); }
bool CProperty::GetValue(unsigned i, bool& o) const { return getValue("GetValue", i, o); }
bool CProperty::GetValue(unsigned i, int& o) const { return getValue("GetValue", i, o); }
bool CProperty::GetValue(unsigned i, unsigned int& o) const { return getValue("GetValue", i, o); }
bool CProperty::GetValue(unsigned i, double& o) const { return getValue("GetValue", i, o); }
bool CProperty::GetValue(unsigned i, std::string& o) const { return getValue("GetValue", i, o); }

bool CProperty::GetValue(const std::string& name, CProperty& out) const {
    Lock lock(mutex_);
    return Guarded("GetValue", [&] { const JsonValue& c = value; out.value = c[name]; return true; },
                   [] { return false; });
}

bool CProperty::GetValue(unsigned index, CProperty& out) const {
    Lock lock(mutex_);
    return Guarded("GetValue", [&] { const JsonValue& c = value; out.value = c[index]; return true; },
                   [] { return false; });
}

CProperty CProperty::Get(const std::string& name, const CProperty& def) const {
    Lock lock(mutex_);
    return Guarded("Get",
                   [&] { CProperty p(kNullType); const JsonValue& c = value; p.value = c[name]; return p; },
                   [&] { CProperty p(kNullType); p.value = def.value; return p; });
}

CProperty CProperty::Get(unsigned index, const CProperty& def) const {
    Lock lock(mutex_);
    return Guarded("Get",
                   [&] { CProperty p(kNullType); const JsonValue& c = value; p.value = c[index]; return p; },
                   [&] { CProperty p(kNullType); p.value = def.value; return p; });
}

void CProperty::Set(const std::string& name, const CProperty& property) {
    Lock lock(mutex_);
    Guarded("Set", [&] { value[name] = property.value; }, [] {});
}

void CProperty::Set(unsigned index, const CProperty& property) {
    Lock lock(mutex_);
    Guarded("Set", [&] { value[index] = property.value; }, [] {});
}

void CProperty::AppendToArray(const CProperty& property) {
    Lock lock(mutex_);
    Guarded("AppendToArray", [&] { value.append(property.value); }, [] {});
}

void CProperty::ResizeArray(unsigned size) {
    Lock lock(mutex_);
    Guarded("ResizeArray", [&] { value.resize(size); }, [] {});
}

void CProperty::Remove(const std::string& name) {
    Lock lock(mutex_);
    Guarded("Remove", [&] { value.removeMember(name); }, [] {});
}

bool CProperty::IsValidName(const std::string& name) const {
    Lock lock(mutex_);
    return Guarded("IsValidName", [&] { return value.isMember(name); }, [] { return false; });
}

std::vector<std::string> CProperty::GetNameList() const {
    Lock lock(mutex_);
    return Guarded("GetNameList", [&] { return value.getMemberNames(); },
                   [] { return std::vector<std::string>(); });
}

std::string CProperty::GetFirstName() const {
    Lock lock(mutex_);
    return Guarded("GetFirstName",
                   [&] {
                       const auto names = GetNameList();
                       return names.empty() ? std::string() : names.front();
                   },
                   [] { return std::string(); });
}

unsigned CProperty::ArraySize() const {
    Lock lock(mutex_);
    return Guarded("ArraySize", [&] { return type() == kArrayType ? value.size() : 0u; },
                   [] { return 0u; });
}

unsigned CProperty::ObjectSize() const {
    Lock lock(mutex_);
    return Guarded("ObjectSize", [&] { return type() == kObjectType ? value.size() : 0u; },
                   [] { return 0u; });
}

bool CProperty::IsEmptyArray() const {
    Lock lock(mutex_);
    return Guarded("IsEmptyArray", [&] { return type() == kArrayType && value.empty(); },
                   [] { return false; });
}

bool CProperty::IsEmptyObject() const {
    Lock lock(mutex_);
    return Guarded("IsEmptyObject", [&] { return type() == kObjectType && value.empty(); },
                   [] { return false; });
}

bool CProperty::IsValidArrayIndex(unsigned index) const {
    Lock lock(mutex_);
    return Guarded("IsValidArrayIndex",
                   [&] { return type() == kArrayType && index < value.size(); },
                   [] { return false; });
}

bool CProperty::Equal(const CProperty& other) const {
    Lock lock(mutex_);
    return Guarded("Equal", [&] { return value == other.value; }, [] { return false; });
}

bool CProperty::EqualValue(const std::string& name, const CProperty& property) const {
    Lock lock(mutex_);
    return Guarded("EqualValue",
                   [&] {
                       if (!value.isMember(name)) return true;
                       const JsonValue& c = value;
                       return c[name] == property.value;
                   },
                   [] { return true; });
}

bool CProperty::EqualValue(unsigned index, const CProperty& property) const {
    Lock lock(mutex_);
    return Guarded("EqualValue",
                   [&] {
                       if (index >= value.size()) return true;
                       const JsonValue& c = value;
                       return c[index] == property.value;
                   },
                   [] { return true; });
}

}  // namespace ircontrol

// A JSON value behind a recursive mutex whose operations never throw: each one locks, calls the
// JSON layer and, on any exception, logs "[<operation>] ..." and returns its fallback. Only this
// property's mutex is taken; a second property passed in is read without its lock.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "JsonValue.h"

namespace ircontrol {

class CProperty {
public:
    enum _Type : int {
        kNullType = 0,
        kBoolType = 1,
        kIntType = 2,     // integers within the int32 range
        kUIntType = 3,    // integers within 2147483648..4294967295
        kDoubleType = 4,  // floating point, and integers outside both 32-bit ranges
        kStringType = 5,
        kObjectType = 6,
        kArrayType = 7,
    };

    explicit CProperty(_Type type);
    CProperty(const CProperty& other);  // deep copy, taken under other's lock
    static CProperty Create(const std::string& text);  // unparsable text gives a null property

    CProperty& operator=(const CProperty& other);
    void Swap(CProperty& other);
    void Clear();
    std::string ToJsonString(bool pretty = false) const;
    _Type type() const;  // unlocked; for use inside locked operations
    _Type Type() const;
    bool IsConvertible(_Type type) const;

    bool IsNullType() const;
    bool IsBoolType() const;
    bool IsIntType() const;
    bool IsUIntType() const;
    bool IsDoubleType() const;
    bool IsStringType() const;
    bool IsObjectType() const;
    bool IsArrayType() const;

    bool AsBool(bool def) const;
    int AsInt(int def) const;
    unsigned AsUInt(unsigned def) const;
    double AsDouble(double def) const;
    std::string AsString(const std::string& def) const;

    // true and `out` written on success; false and `out` untouched on failure.
    bool GetValue(const std::string& name, bool& out) const;
    bool GetValue(const std::string& name, int& out) const;
    bool GetValue(const std::string& name, unsigned int& out) const;
    bool GetValue(const std::string& name, double& out) const;
    bool GetValue(const std::string& name, std::string& out) const;
    bool GetValue(const std::string& name, CProperty& out) const;
    bool GetValue(unsigned index, bool& out) const;
    bool GetValue(unsigned index, int& out) const;
    bool GetValue(unsigned index, unsigned int& out) const;
    bool GetValue(unsigned index, double& out) const;
    bool GetValue(unsigned index, std::string& out) const;
    bool GetValue(unsigned index, CProperty& out) const;

    CProperty Get(const std::string& name, const CProperty& def) const;
    CProperty Get(unsigned index, const CProperty& def) const;
    void Set(const std::string& name, const CProperty& property);
    void Set(unsigned index, const CProperty& property);
    void AppendToArray(const CProperty& property);
    void ResizeArray(unsigned size);
    void Remove(const std::string& name);

    bool IsValidName(const std::string& name) const;
    std::vector<std::string> GetNameList() const;
    std::string GetFirstName() const;
    unsigned ArraySize() const;
    unsigned ObjectSize() const;
    bool IsEmptyArray() const;
    bool IsEmptyObject() const;
    bool IsValidArrayIndex(unsigned index) const;
    bool Equal(const CProperty& other) const;
    // true also when there is nothing to compare (missing member, index out of range).
    bool EqualValue(const std::string& name, const CProperty& property) const;
    bool EqualValue(unsigned index, const CProperty& property) const;

private:
    template <typename Key, typename T>
    bool getValue(const char* operation, const Key& key, T& out) const;

    mutable std::recursive_mutex mutex_;
    common::json::JsonValue value;
};

}  // namespace ircontrol

#include "infrared/codeset/CCodesetsFile.h"

#include <sys/stat.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>

#include "JsonValue.h"
#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/formats/CAtomicFile.h"
#include "infrared/formats/CFormatError.h"

namespace infrared {
namespace {

using common::json::JsonType;
using common::json::JsonValue;

// The file's codesets as JSON; an empty document when the file does not exist yet. A file that
// is there but not a usable codesets file is never overwritten.
JsonValue Load(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0 && errno == ENOENT) {
        JsonValue document(JsonType::kObject);
        document["codesets"] = JsonValue(JsonType::kArray);
        return document;
    }
    std::string text;
    try {
        text = ReadFormatFile(path, CCodesetsFile::kMaxBytes);
        CCodesetLibrary::Parse(text);
    } catch (const std::exception& error) {
        throw CCodesetsFileError(path + " is not a usable codesets file, so it is left alone: " + error.what());
    }
    return JsonValue::Create(text);
}

// The index of codeset `name` in the document, or its size when absent.
unsigned Find(const JsonValue& codesets, const std::string& name) {
    unsigned i = 0;
    for (; i < codesets.size(); ++i) {
        if (codesets[i]["name"].asString() == name) break;
    }
    return i;
}

void Store(const std::string& path, const JsonValue& document, const CAtomicFile::Hook& hook = CAtomicFile::Hook()) {
    const std::string text = document.toString(true) + "\n";
    try {
        CCodesetLibrary::Parse(text);
    } catch (const std::exception& error) {
        throw CCodesetsFileError("not written, " + path + " would not be a valid codesets file: " + error.what());
    }
    std::string error;
    if (!CAtomicFile::Write(path, text, error, hook)) throw CCodesetsFileError("not written: " + error);
}

// A codeset given as JSON text; its members are checked with the whole file before it is written.
JsonValue Entry(const std::string& codesetJson) {
    JsonValue codeset = JsonValue::Create(codesetJson);
    if (codeset.type() != JsonType::kObject) throw CCodesetsFileError("not a codeset: " + codesetJson.substr(0, 80));
    return codeset;
}

// Puts `codeset` under `name`, in the place of a codeset of that name or at the end.
void Put(JsonValue& codesets, JsonValue codeset, const std::string& name) {
    codeset["name"] = JsonValue(name);
    const unsigned at = Find(codesets, name);
    if (at == codesets.size()) {
        codesets.append(codeset);
    } else {
        codesets[at] = codeset;
    }
}

JsonValue KeyJson(const LearnedKey& key) {
    JsonValue entry(JsonType::kObject);
    entry["code"] = JsonValue(key.code);
    if (key.protocol == Protocol::Raw) {
        JsonValue raw(JsonType::kArray);
        for (const std::uint32_t d : key.raw) raw.append(JsonValue(static_cast<long long>(d)));
        entry["raw"] = raw;
    } else {
        char hex[24];
        std::snprintf(hex, sizeof hex, "0x%04" PRIx64, key.scancode);
        entry["scancode"] = JsonValue(hex);
    }
    return entry;
}

}  // namespace

void CCodesetsFile::PutKey(const std::string& path, const std::string& codeset, const LearnedKey& key,
                           const CAtomicFile::Hook& hook) {
    JsonValue document = Load(path);
    JsonValue& codesets = document["codesets"];
    const unsigned at = Find(codesets, codeset);
    const std::string protocol = ProtocolName(key.protocol);
    if (at == codesets.size()) {
        JsonValue entry(JsonType::kObject);
        entry["name"] = JsonValue(codeset);
        entry["source"] = JsonValue("learned from a remote");
        entry["protocol"] = JsonValue(protocol);
        if (key.carrier != 0) entry["carrier"] = JsonValue(static_cast<long long>(key.carrier));
        entry["keys"] = JsonValue(JsonType::kObject);
        codesets.append(entry);
    }
    JsonValue& entry = codesets[at];
    const std::string has = entry["protocol"].asString();
    if (has != protocol) {
        throw CCodesetsFileError("codeset " + codeset + " in " + path + " is " + has + ", but this remote sends " +
                                protocol + ": learn this key into another codeset (--codeset " + codeset +
                                "_" + protocol + "), or learn all of them again into a new one");
    }
    entry["keys"][key.name] = KeyJson(key);
    Store(path, document, hook);
}

void CCodesetsFile::PutCodeset(const std::string& path, const std::string& codesetJson, const std::string& name) {
    JsonValue document = Load(path);
    Put(document["codesets"], Entry(codesetJson), name);
    Store(path, document);
}

std::vector<std::string> CCodesetsFile::PutCodesets(const std::string& path, const std::vector<std::string>& codesets) {
    JsonValue document = Load(path);
    std::vector<std::string> names;
    for (const std::string& text : codesets) {
        JsonValue entry = Entry(text);
        names.push_back(entry["name"].asString());
        Put(document["codesets"], std::move(entry), names.back());
    }
    Store(path, document);
    return names;
}

std::string CCodesetsFile::CodesetJson(const std::string& fileText, const std::string& name) {
    const JsonValue document = JsonValue::Create(fileText);
    if (document.type() != JsonType::kObject) return std::string();
    const JsonValue& codesets = document["codesets"];
    if (codesets.type() != JsonType::kArray) return std::string();
    const unsigned at = Find(codesets, name);
    return at == codesets.size() ? std::string() : codesets[at].toString(true);
}


}  // namespace infrared

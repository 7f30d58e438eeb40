// Writes what was learned into a codesets file (docs/codesets.md): a key into a key codeset, or
// a whole codeset. The file is created when missing; every other codeset and key in it keeps
// its values and order; the result is checked as a codesets file before it replaces the old one
// atomically (temporary file, fsync, rename), so a failure leaves the file as it was.
// Throws CCodesetFileError with a message for people. Stateless.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "infrared/codeset/Codeset.h"

namespace infrared {

class CCodesetFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A key as learned: a scancode of a key protocol, or raw timings.
struct LearnedKey {
    std::string name;
    int code = 0;
    Protocol protocol = Protocol::Raw;      // a scancode protocol or Raw
    std::uint64_t scancode = 0;
    std::vector<std::uint32_t> raw;         // Raw: pulse, space, ..., pulse (us)
    std::uint32_t carrier = 0;              // Hz as measured; 0: unknown
};

class CCodesetFile {
public:
    static constexpr std::size_t kMaxBytes = 4u << 20;

    // Adds `key` to codeset `codeset` (replacing a key of that name), creating the codeset when
    // missing. A codeset of another protocol is refused with a hint.
    static void PutKey(const std::string& path, const std::string& codeset, const LearnedKey& key);
    // Adds the codeset given as a JSON object text under `name` (replacing one of that name).
    static void PutCodeset(const std::string& path, const std::string& codesetJson, const std::string& name);
    // The codeset `name` of a codesets file's text as a JSON object text ("" if absent).
    static std::string CodesetJson(const std::string& fileText, const std::string& name);
    // Replaces `path` by `text` atomically, keeping the old file's permissions.
    static void WriteAtomically(const std::string& path, const std::string& text);
};

}  // namespace infrared

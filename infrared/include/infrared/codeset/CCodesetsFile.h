// Changes a codesets file on disk (docs/codesets.md) as one step: a learned key into a key
// codeset, or whole codesets (learned or imported). The file is created when missing; every other
// codeset and key in it keeps its values and order; the result is checked as a codesets file
// before it replaces the old one atomically, so a refusal leaves the file as it was. Throws
// CCodesetsFileError with a message for people. Stateless.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "infrared/codeset/Codeset.h"
#include "infrared/formats/CAtomicFile.h"

namespace infrared {

class CCodesetsFileError : public std::runtime_error {
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

class CCodesetsFile {
public:
    static constexpr std::size_t kMaxBytes = 64u << 20;  // an import of a whole database fits

    // Adds `key` to codeset `codeset` (replacing a key of that name), creating the codeset when
    // missing. A codeset of another protocol is refused with a hint. `hook` sees the write's steps.
    static void PutKey(const std::string& path, const std::string& codeset, const LearnedKey& key,
                       const CAtomicFile::Hook& hook = CAtomicFile::Hook());
    // Adds the codeset given as a JSON object text under `name` (replacing one of that name).
    static void PutCodeset(const std::string& path, const std::string& codesetJson, const std::string& name);
    // Adds codesets given as JSON object texts under their own names, replacing codesets of the
    // same name, in one write. Returns the names written.
    static std::vector<std::string> PutCodesets(const std::string& path, const std::vector<std::string>& codesets);
    // The codeset `name` of a codesets file's text as a JSON object text ("" if absent).
    static std::string CodesetJson(const std::string& fileText, const std::string& name);
};

}  // namespace infrared

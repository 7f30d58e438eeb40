// Adds codesets to a codesets file on disk as one step: the file (if any) and the additions are
// checked together by CCodesetLibrary, and only then the file is replaced atomically (temporary
// file, fsync, rename), so a refusal leaves it as it was. Throws std::runtime_error /
// std::invalid_argument with the reason.
#pragma once

#include <string>
#include <vector>

namespace infrared {

class CCodesetsFile {
public:
    // `codesets`: codesets-file entries as JSON text; one with the name of an existing codeset
    // replaces it. Returns the names written.
    static std::vector<std::string> Merge(const std::string& path, const std::vector<std::string>& codesets);
    // Writes `text` to `path` atomically.
    static void WriteAtomically(const std::string& path, const std::string& text);
};

}  // namespace infrared

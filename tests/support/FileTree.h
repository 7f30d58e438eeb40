// Test and benchmark helpers for files: the regular files under a folder, read and write whole
// texts. Failures give empty results (the callers check what they got).
#pragma once

#include <string>
#include <vector>

namespace irtest {

// Regular files under `dir` (recursively) whose name contains `part`, sorted.
std::vector<std::string> FilesUnder(const std::string& dir, const std::string& part);

std::string ReadText(const std::string& path);
void WriteText(const std::string& path, const std::string& text);

}  // namespace irtest

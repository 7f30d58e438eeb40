// readdir of a 32-bit build under qemu-user fails on a 64-bit host's directory cookies unless
// it is the large-file readdir.
#ifndef _FILE_OFFSET_BITS
#define _FILE_OFFSET_BITS 64
#endif
#include "FileTree.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace irtest {

std::vector<std::string> FilesUnder(const std::string& dir, const std::string& part) {
    std::vector<std::string> out;
    DIR* handle = opendir(dir.c_str());
    if (handle == nullptr) return out;
    std::vector<std::string> names;
    while (const dirent* entry = readdir(handle)) names.emplace_back(entry->d_name);
    closedir(handle);
    for (const auto& name : names) {
        if (name == "." || name == "..") continue;
        const std::string path = dir + "/" + name;
        struct stat info {};
        if (stat(path.c_str(), &info) != 0) continue;
        if (S_ISDIR(info.st_mode)) {
            const auto inner = FilesUnder(path, part);
            out.insert(out.end(), inner.begin(), inner.end());
        } else if (S_ISREG(info.st_mode) && name.find(part) != std::string::npos) {
            out.push_back(path);
        }
    }
    std::sort(out.begin(), out.end());
    return out;
}

std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void WriteText(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
}

}  // namespace irtest

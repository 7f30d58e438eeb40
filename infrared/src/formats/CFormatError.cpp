#include "infrared/formats/CFormatError.h"

#include <sys/stat.h>

#include <fstream>
#include <sstream>

namespace infrared {

std::string ReadFormatFile(const std::string& path, std::size_t maxBytes) {
    // The size is checked first so that a huge file (or a device that never ends) is refused
    // without being read.
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) throw CFormatError(path, 0, "cannot be read");
    if (!S_ISREG(info.st_mode)) throw CFormatError(path, 0, "is not a regular file");
    if (static_cast<std::size_t>(info.st_size) > maxBytes) {
        throw CFormatError(path, 0, "is larger than " + std::to_string(maxBytes / 1024) + " KiB");
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) throw CFormatError(path, 0, "cannot be read");
    std::ostringstream text;
    text << in.rdbuf();
    if (in.bad()) throw CFormatError(path, 0, "cannot be read");
    std::string out = text.str();
    if (out.size() > maxBytes) throw CFormatError(path, 0, "is larger than " + std::to_string(maxBytes / 1024) + " KiB");
    return out;
}

}  // namespace infrared

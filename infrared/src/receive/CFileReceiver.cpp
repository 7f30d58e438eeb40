#include "infrared/receive/CFileReceiver.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "infrared/receive/CMode2Text.h"
#include "infrared/receive/CProntoText.h"

namespace infrared {

CFileReceiver::CFileReceiver(const std::string& path) : name_(path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        throw CReceiveError("cannot read " + path + ": " + std::strerror(errno));
    }
    // A FIFO or a device would be read forever; only files have an end.
    if (!S_ISREG(info.st_mode)) throw CReceiveError("cannot read " + path + ": not a regular file");
    if (static_cast<std::size_t>(info.st_size) > kMaxBytes) {
        throw CReceiveError("cannot read " + path + ": larger than " + std::to_string(kMaxBytes >> 20) + " MiB");
    }
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    if (!in || !(text << in.rdbuf())) throw CReceiveError("cannot read " + path + ": " + std::strerror(errno));
    parse(text.str());
}

CFileReceiver::CFileReceiver(const std::string& text, const std::string& name) : name_(name) { parse(text); }

void CFileReceiver::parse(const std::string& text) {
    if (text.find('\0') != std::string::npos) throw CReceiveError(name_ + ": a binary file, not recorded IR");
    if (CMode2Text::Looks(text)) {
        captures_ = CMode2Text::Parse(text, name_);
    } else if (CProntoText::Looks(text)) {
        captures_ = CProntoText::Parse(text, name_);
    } else if (text.compare(0, 9, "Filetype:") == 0) {
        throw CReceiveError(name_ + ": Flipper .ir files cannot be read yet; record with mode2 or give Pronto hex");
    } else {
        throw CReceiveError(name_ + ": neither mode2 text (pulse/space lines) nor Pronto hex codes");
    }
}

std::optional<Capture> CFileReceiver::Next(std::chrono::milliseconds) {
    if (next_ >= captures_.size()) return std::nullopt;
    return captures_[next_++];
}

}  // namespace infrared

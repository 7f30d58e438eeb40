#include "infrared/codeset/CCodesetsFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "JsonValue.h"
#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/formats/CFormatError.h"

namespace infrared {
namespace {

constexpr std::size_t kMaxCodesetsFile = 64 * 1024 * 1024;

// Closes the descriptor it owns.
class Fd {
public:
    explicit Fd(int fd) : fd_(fd) {}
    ~Fd() {
        if (fd_ >= 0) ::close(fd_);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int Get() const { return fd_; }
    int Release() { const int fd = fd_; fd_ = -1; return fd; }

private:
    int fd_;
};

[[noreturn]] void Fail(const std::string& what) { throw std::runtime_error(what + ": " + std::strerror(errno)); }

}  // namespace

void CCodesetsFile::WriteAtomically(const std::string& path, const std::string& text) {
    const std::string temporary = path + ".tmp." + std::to_string(::getpid());
    Fd fd(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (fd.Get() < 0) Fail("cannot write " + temporary);
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = ::write(fd.Get(), text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            const int saved = errno;
            ::unlink(temporary.c_str());
            errno = saved;
            Fail("cannot write " + temporary);
        }
        done += static_cast<std::size_t>(n);
    }
    if (::fsync(fd.Get()) != 0 || ::close(fd.Release()) != 0 || ::rename(temporary.c_str(), path.c_str()) != 0) {
        const int saved = errno;
        ::unlink(temporary.c_str());
        errno = saved;
        Fail("cannot replace " + path);
    }
}

std::vector<std::string> CCodesetsFile::Merge(const std::string& path, const std::vector<std::string>& codesets) {
    using common::json::JsonValue;
    JsonValue root(common::json::kObject);
    root["codesets"] = JsonValue(common::json::kArray);
    struct stat info {};
    if (::stat(path.c_str(), &info) == 0) {
        root = JsonValue::Create(ReadFormatFile(path, kMaxCodesetsFile));
        CCodesetLibrary::Parse(root.isNull() ? std::string("-") : root.toString());  // refuses a bad file as it is
    }
    JsonValue& list = root["codesets"];
    std::vector<std::string> names;
    for (const auto& text : codesets) {
        JsonValue entry = JsonValue::Create(text);
        const std::string name = entry["name"].asString();
        JsonValue kept(common::json::kArray);
        for (unsigned i = 0; i < list.size(); ++i) {
            if (!(list[i]["name"].isString() && list[i]["name"].asString() == name)) kept.append(list[i]);
        }
        kept.append(std::move(entry));
        list = std::move(kept);
        names.push_back(name);
    }
    const std::string text = root.toString(true) + "\n";
    CCodesetLibrary::Parse(text);
    WriteAtomically(path, text);
    return names;
}

}  // namespace infrared

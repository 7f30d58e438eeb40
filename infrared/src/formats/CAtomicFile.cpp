#include "infrared/formats/CAtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

namespace infrared {
namespace {

// Owns one file descriptor from open() to close().
class CFd {
public:
    explicit CFd(int fd) : fd_(fd) {}
    ~CFd() {
        if (fd_ >= 0) ::close(fd_);
    }
    CFd(const CFd&) = delete;
    CFd& operator=(const CFd&) = delete;
    int Get() const { return fd_; }
    // close() reports a late write error (NFS, full disk) that write() did not.
    bool Close() {
        const int fd = fd_;
        fd_ = -1;
        return ::close(fd) == 0;
    }

private:
    int fd_;
};

std::string Reason(const std::string& path, const char* what) {
    return path + ": cannot " + what + ": " + std::strerror(errno);
}

std::string Directory(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool WriteAll(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(fd, data, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

}  // namespace

bool CAtomicFile::Write(const std::string& path, const std::string& content, std::string& error, const Hook& hook) {
    const auto step = [&hook](Step done) {
        if (hook) hook(done);
    };
    std::vector<char> temp(path.begin(), path.end());
    const std::string suffix = ".tmp-XXXXXX";
    temp.insert(temp.end(), suffix.begin(), suffix.end());
    temp.push_back('\0');
    CFd fd(::mkostemp(temp.data(), O_CLOEXEC));
    if (fd.Get() < 0) {
        error = Reason(path, "create a temporary file beside it");
        return false;
    }
    const std::string tempPath(temp.data());
    // mkostemp makes the file 0600: a file people edit keeps its mode, a new one is readable.
    struct stat old {};
    ::fchmod(fd.Get(), ::stat(path.c_str(), &old) == 0 ? (old.st_mode & 07777) : 0644);
    step(Step::Created);
    const auto failed = [&](const char* what) {
        error = Reason(path, what);
        ::unlink(tempPath.c_str());
        return false;
    };
    const std::size_t half = content.size() / 2;
    if (!WriteAll(fd.Get(), content.data(), half)) return failed("write");
    step(Step::HalfWritten);
    if (!WriteAll(fd.Get(), content.data() + half, content.size() - half)) return failed("write");
    step(Step::Written);
    if (::fsync(fd.Get()) != 0) return failed("sync");
    if (!fd.Close()) return failed("close");
    step(Step::Synced);
    if (::rename(tempPath.c_str(), path.c_str()) != 0) return failed("rename the temporary file over it");
    step(Step::Renamed);
    CFd directory(::open(Directory(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.Get() < 0 || ::fsync(directory.Get()) != 0) {
        error = Reason(path, "sync its directory");
        return false;
    }
    step(Step::DirectorySynced);
    return true;
}

bool CAtomicFile::Read(const std::string& path, std::string& content, bool* missing) {
    CFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (missing != nullptr) *missing = fd.Get() < 0 && errno == ENOENT;
    if (fd.Get() < 0) return false;
    std::string text;
    char buffer[65536];
    for (;;) {
        const ssize_t got = ::read(fd.Get(), buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return false;  // a directory gives EISDIR here
        if (got == 0) break;
        text.append(buffer, static_cast<std::size_t>(got));
    }
    content = std::move(text);
    return true;
}

}  // namespace infrared

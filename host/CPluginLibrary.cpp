#include "CPluginLibrary.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>

namespace ircontrol::host {

CPluginLibrary::~CPluginLibrary() {
    Destroy();
    if (handle_ != nullptr) dlclose(handle_);
}

bool CPluginLibrary::Load(const std::string& path, std::string& error) {
    // dlopen's own message for a missing file names the search, not the file: say it plainly.
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        error = "plugin library not found: " + path;
        return false;
    }
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* reason = dlerror();
        error = "cannot load plugin library: " + std::string(reason != nullptr ? reason : path);
        return false;
    }
    auto create = reinterpret_cast<int (*)()>(dlsym(handle, "CreatePlugin"));
    auto destroy = reinterpret_cast<int (*)()>(dlsym(handle, "DestroyPlugin"));
    if (create == nullptr || destroy == nullptr) {
        error = path + " is not a plugin (no CreatePlugin/DestroyPlugin)";
        dlclose(handle);
        return false;
    }
    if (handle_ != nullptr) {
        Destroy();
        dlclose(handle_);
    }
    handle_ = handle;
    create_ = create;
    destroy_ = destroy;
    return true;
}

void CPluginLibrary::Create() {
    if (create_ == nullptr || started_) return;
    create_();  // always 1: a failed start shows only in the log and in the missing service
    started_ = true;
}

void CPluginLibrary::Destroy() {
    if (!started_) return;
    destroy_();
    started_ = false;
}

bool CPluginLibrary::Unload() {
    Destroy();
    if (handle_ == nullptr) return true;
    Dl_info info{};
    const std::string path = dladdr(reinterpret_cast<void*>(create_), &info) != 0 && info.dli_fname != nullptr
                                 ? std::string(info.dli_fname)
                                 : std::string();
    dlclose(handle_);
    handle_ = nullptr;
    create_ = nullptr;
    destroy_ = nullptr;
    if (path.empty()) return false;
    void* still = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (still == nullptr) return true;
    dlclose(still);
    return false;
}

std::string CPluginLibrary::BesideExecutable() {
    char self[PATH_MAX] = {};
    const ssize_t n = readlink("/proc/self/exe", self, sizeof(self) - 1);
    std::string dir = n > 0 ? std::string(self, static_cast<std::size_t>(n)) : std::string(".");
    const std::size_t slash = dir.rfind('/');
    dir = slash == std::string::npos ? std::string(".") : dir.substr(0, slash);
    return dir + "/libircontrol-plugin.so";
}

}  // namespace ircontrol::host

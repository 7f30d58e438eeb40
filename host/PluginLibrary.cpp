#include "PluginLibrary.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>

namespace irhost {

PluginLibrary::~PluginLibrary() {
    Destroy();
    if (handle_ != nullptr) dlclose(handle_);
}

bool PluginLibrary::Load(const std::string& path, std::string& error) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        error = "plugin library not found: " + path;
        return false;
    }
    handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* reason = dlerror();
        error = "cannot load plugin library: " + std::string(reason != nullptr ? reason : path);
        return false;
    }
    create_ = reinterpret_cast<int (*)()>(dlsym(handle_, "CreatePlugin"));
    destroy_ = reinterpret_cast<int (*)()>(dlsym(handle_, "DestroyPlugin"));
    if (create_ == nullptr || destroy_ == nullptr) {
        error = path + " is not an IR control plugin (no CreatePlugin/DestroyPlugin)";
        dlclose(handle_);
        handle_ = nullptr;
        return false;
    }
    path_ = path;
    return true;
}

void PluginLibrary::Create() {
    if (create_ == nullptr) return;
    create_();
    started_ = true;
}

void PluginLibrary::Destroy() {
    if (!started_) return;
    destroy_();
    started_ = false;
}

std::string PluginLibrary::BesideExecutable() {
    char self[PATH_MAX] = {};
    const ssize_t n = readlink("/proc/self/exe", self, sizeof(self) - 1);
    std::string dir = n > 0 ? std::string(self, static_cast<std::size_t>(n)) : std::string("./x");
    dir = dir.substr(0, dir.rfind('/'));
    return dir + "/libircontrol-plugin.so";
}

}  // namespace irhost

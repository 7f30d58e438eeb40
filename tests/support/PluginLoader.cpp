#include "PluginLoader.h"

#include <dlfcn.h>

#include <stdexcept>

namespace irctest {

PluginLoader::PluginLoader(const std::string& path) : path_(path) {
    handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) throw std::runtime_error(std::string("dlopen: ") + dlerror());
    create_ = reinterpret_cast<int (*)()>(dlsym(handle_, "CreatePlugin"));
    destroy_ = reinterpret_cast<int (*)()>(dlsym(handle_, "DestroyPlugin"));
    if (create_ == nullptr || destroy_ == nullptr) {
        dlclose(handle_);
        handle_ = nullptr;
        throw std::runtime_error("plugin lacks CreatePlugin/DestroyPlugin: " + path);
    }
}

PluginLoader::~PluginLoader() { Unload(); }

int PluginLoader::Create() const { return create_(); }

int PluginLoader::Destroy() const { return destroy_(); }

bool PluginLoader::Unload() {
    if (handle_ != nullptr) {
        dlclose(handle_);
        handle_ = nullptr;
    }
    return !IsResident(path_);
}

bool PluginLoader::IsResident(const std::string& path) {
    void* probe = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (probe == nullptr) return false;
    dlclose(probe);
    return true;
}

}  // namespace irctest

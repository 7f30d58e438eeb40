// The plugin library, loaded the way the TV's host loads it: dlopen, dlsym of CreatePlugin and
// DestroyPlugin, then Create(). The destructor calls DestroyPlugin (if started) and dlclose, so a
// process can run one plugin lifecycle per instance. Not thread-safe; owned by one thread.
#pragma once

#include <string>

namespace ircontrol::host {

class CPluginLibrary {
public:
    CPluginLibrary() = default;
    ~CPluginLibrary();
    CPluginLibrary(const CPluginLibrary&) = delete;
    CPluginLibrary& operator=(const CPluginLibrary&) = delete;

    // false with a one-line reason when the file is missing, not loadable or not a plugin.
    bool Load(const std::string& path, std::string& error);
    void Create();   // CreatePlugin, once
    void Destroy();  // DestroyPlugin, if created and not yet destroyed
    bool Loaded() const { return handle_ != nullptr; }
    // Destroy, then dlclose; true when the library is no longer mapped afterwards.
    bool Unload();

    // libircontrol-plugin.so in the directory of the running executable (/proc/self/exe).
    static std::string BesideExecutable();

private:
    void* handle_ = nullptr;
    int (*create_)() = nullptr;
    int (*destroy_)() = nullptr;
    bool started_ = false;
};

}  // namespace ircontrol::host

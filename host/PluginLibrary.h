// The plugin library loaded the way the TV's host loads it: dlopen, then CreatePlugin; the
// destructor calls DestroyPlugin (if started) and dlclose.
#pragma once

#include <string>

namespace irhost {

class PluginLibrary {
public:
    PluginLibrary() = default;
    ~PluginLibrary();
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    // false with a one-line reason when the file is missing, not loadable or not a plugin.
    bool Load(const std::string& path, std::string& error);
    void Create();
    void Destroy();
    const std::string& Path() const { return path_; }

    // libircontrol-plugin.so in the directory of the running executable.
    static std::string BesideExecutable();

private:
    std::string path_;
    void* handle_ = nullptr;
    int (*create_)() = nullptr;
    int (*destroy_)() = nullptr;
    bool started_ = false;
};

}  // namespace irhost

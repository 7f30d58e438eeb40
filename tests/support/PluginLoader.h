// Loads the plugin library the way the TV's host does (dlopen, CreatePlugin, DestroyPlugin) for
// tests, benchmarks and stress runs. Unloads it on destruction.
#pragma once

#include <string>

namespace irctest {

class PluginLoader {
public:
    // Throws std::runtime_error with dlerror's text if the library cannot be loaded or lacks
    // its entry points.
    explicit PluginLoader(const std::string& path);
    ~PluginLoader();
    PluginLoader(const PluginLoader&) = delete;
    PluginLoader& operator=(const PluginLoader&) = delete;

    int Create() const;
    int Destroy() const;
    // dlclose now; true if the library is then no longer mapped in the process.
    bool Unload();

    static bool IsResident(const std::string& path);

private:
    std::string path_;
    void* handle_ = nullptr;
    int (*create_)() = nullptr;
    int (*destroy_)() = nullptr;
};

}  // namespace irctest

// Loads the plugin into the desktop simulator the way the TV's host does.
#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <string>

#include "sim/Simulator.h"

int main() {
    char self[PATH_MAX] = {};
    ssize_t n = readlink("/proc/self/exe", self, sizeof(self) - 1);
    std::string dir = n > 0 ? std::string(self, static_cast<size_t>(n)) : std::string("./x");
    dir = dir.substr(0, dir.rfind('/'));
    std::string path = dir + "/libircontrol-plugin.so";
    void* lib = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (lib == nullptr) {
        std::fprintf(stderr, "cannot load %s: %s\n", path.c_str(), dlerror());
        return 1;
    }
    auto create = reinterpret_cast<int (*)()>(dlsym(lib, "CreatePlugin"));
    auto destroy = reinterpret_cast<int (*)()>(dlsym(lib, "DestroyPlugin"));
    if (create == nullptr || destroy == nullptr) {
        std::fprintf(stderr, "%s lacks CreatePlugin/DestroyPlugin\n", path.c_str());
        return 1;
    }
    create();
    for (const auto& line : sim::Log::Lines()) std::printf("%s\n", line.text.c_str());
    destroy();
    dlclose(lib);
    return 0;
}

#include "CWebAssets.h"

namespace ircontrol::host {

const WebAsset* CWebAssets::Find(const std::string& path) {
    const std::string wanted = path == "/" ? "/index.html" : path;
    std::size_t count = 0;
    const WebAsset* table = Table(count);
    for (std::size_t i = 0; i < count; ++i) {
        if (wanted == table[i].path) return &table[i];
    }
    return nullptr;
}

}  // namespace ircontrol::host

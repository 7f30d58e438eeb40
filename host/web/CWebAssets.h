// The page's files (HTML, CSS, JavaScript), embedded in the binary at build time. Read-only
// tables; safe from any thread.
#pragma once

#include <cstddef>
#include <string>

namespace ircontrol::host {

struct WebAsset {
    const char* path;         // "/index.html"
    const char* contentType;
    const unsigned char* data;
    std::size_t size;
};

class CWebAssets {
public:
    // The asset served at `path` ("/" is "/index.html"), nullptr if none.
    static const WebAsset* Find(const std::string& path);
    static const WebAsset* Table(std::size_t& count);  // generated
};

}  // namespace ircontrol::host

#include "CWebAssets.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace ircontrol::host {
namespace {

std::string Source(const std::string& name) {
    std::ifstream in(std::string(IRC_SOURCE_DIR) + "/host/web/assets/" + name, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string Text(const WebAsset* asset) { return std::string(reinterpret_cast<const char*>(asset->data), asset->size); }

TEST(CWebAssetsTest, ServesEachFileAsWrittenWithItsType) {
    const std::pair<const char*, const char*> files[] = {
        {"index.html", "text/html; charset=utf-8"},
        {"app.js", "text/javascript; charset=utf-8"},
        {"waveform.js", "text/javascript; charset=utf-8"},
        {"style.css", "text/css; charset=utf-8"},
    };
    for (const auto& [name, type] : files) {
        const WebAsset* asset = CWebAssets::Find(std::string("/") + name);
        ASSERT_NE(asset, nullptr) << name;
        EXPECT_STREQ(asset->contentType, type);
        EXPECT_EQ(Text(asset), Source(name)) << name;
    }
    EXPECT_EQ(CWebAssets::Find("/"), CWebAssets::Find("/index.html"));
    for (const char* missing : {"", "/nothing.js", "/../CMakeLists.txt", "index.html", "/INDEX.HTML"}) {
        EXPECT_EQ(CWebAssets::Find(missing), nullptr) << missing;
    }
    // Nothing from elsewhere: the page works without a network (that it loads whole, the
    // browser tests show).
    const std::string html = Text(CWebAssets::Find("/"));
    EXPECT_EQ(html.find("http://"), std::string::npos);
    EXPECT_EQ(html.find("https://"), std::string::npos);
}

}  // namespace
}  // namespace ircontrol::host

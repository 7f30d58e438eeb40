#include "util/CVconfUtil.h"

#include <vconf.h>

#include <cstdlib>
#include <memory>

#include "common/CException.h"

namespace ircontrol {
namespace {

void CheckKey(const std::string& key) {
    if (key.empty()) throw CException("vconf url is empty!!!", 4);
}

struct FreeDeleter {
    void operator()(char* text) const { std::free(text); }
};

}  // namespace

int CVconfUtil::GetInt(const std::string& key) {
    CheckKey(key);
    int value = 0;
    if (vconf_get_int(key.c_str(), &value) != 0) throw CException("vconf get int error", 8);
    return value;
}

std::string CVconfUtil::GetString(const std::string& key) {
    CheckKey(key);
    std::unique_ptr<char, FreeDeleter> text(vconf_get_str(key.c_str()));
    if (!text) throw CException("vconf get str returned null!", 8);
    return std::string(text.get());
}

void CVconfUtil::SetInt(const std::string& key, int value) {
    CheckKey(key);
    if (vconf_set_int(key.c_str(), value) != 0) throw CException("vconf set int failed!", 8);
}

void CVconfUtil::SetString(const std::string& key, const std::string& value) {
    CheckKey(key);
    if (vconf_set_str(key.c_str(), value.c_str()) != 0) throw CException("vconf set str failed!", 8);
}

void CVconfUtil::SetNotifyKeyChangedCb(const std::string& key, void (*cb)(keynode_t*, void*),
                                       void* userData) {
    CheckKey(key);
    if (cb == nullptr) throw CException("callback is null!!", 4);
    if (vconf_notify_key_changed(key.c_str(), cb, userData) != 0) {
        throw CException("vconf_notify_key_changed error", 8);
    }
}

void CVconfUtil::UnsetNotifyKeyChangedCb(const std::string& key, void (*cb)(keynode_t*, void*)) {
    CheckKey(key);
    if (cb == nullptr) throw CException("callback is null!!", 4);
    if (vconf_ignore_key_changed(key.c_str(), cb) != 0) {
        throw CException("vconf_ignore_key_changed error", 8);
    }
}

}  // namespace ircontrol

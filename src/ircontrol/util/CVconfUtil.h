// Static access to the platform's settings store (vconf). Stateless; callable from any thread.
// Throws CException: code 4 for a bad argument (empty key, null callback), code 8 when the
// store call fails. Logs nothing: the catcher logs.
#pragma once

#include <string>

typedef struct _keynode_t keynode_t;

namespace ircontrol {

class CVconfUtil {
public:
    CVconfUtil() = delete;

    static int GetInt(const std::string& key);
    static std::string GetString(const std::string& key);
    static void SetInt(const std::string& key, int value);
    static void SetString(const std::string& key, const std::string& value);
    static void SetNotifyKeyChangedCb(const std::string& key, void (*cb)(keynode_t*, void*),
                                      void* userData);
    static void UnsetNotifyKeyChangedCb(const std::string& key, void (*cb)(keynode_t*, void*));
};

}  // namespace ircontrol

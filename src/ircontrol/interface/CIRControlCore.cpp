#include "interface/CIRControlCore.h"

#include <exception>

#include "JsonException.h"
#include "SharedJson.h"
#include "common/ServiceLog.h"

namespace ircontrol {

void CIRControlCore::Init() {
    IRC_LOGE("Init");
    std::unique_lock<std::recursive_mutex> lock(mutex_);
    if (initialised_) {
        IRC_LOGE(IRC_RED("already initialized"));
        return;
    }
    try {
        init();
        initialised_ = true;
        IRC_LOGE(IRC_YELLOW("initialized"));
    } catch (const std::exception& e) {
        IRC_LOGE(IRC_RED("fail to init: %s"), e.what());
    } catch (...) {
        IRC_LOGE(IRC_RED("fail to init: unknown exception"));
    }
    if (!initialised_) {
        // Nothing is retried here: the partial start is taken down and the next CreatePlugin
        // runs the whole start again.
        IRC_LOGE(IRC_RED("need to retry"));
        deinit();
    }
}

void CIRControlCore::Deinit() {
    IRC_LOGE("Deinit");
    std::unique_lock<std::recursive_mutex> lock(mutex_);
    if (!initialised_) return;
    initialised_ = false;
    deinit();
    IRC_LOGE(IRC_YELLOW("deinitialized"));
}

void CIRControlCore::init() {
    // Every request rewrites JSON values in place; on a json-glib where that cannot be done
    // safely the service does not start, rather than fail in the middle of a request.
    if (!common::json::bugfix::Supported()) {
        throw common::json::JsonException("unsupported json-glib node layout");
    }
    service_.Init();
}

void CIRControlCore::deinit() noexcept {
    service_.Deinit();
}

}  // namespace ircontrol

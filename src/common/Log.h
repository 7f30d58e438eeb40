// The one set of logging macros of the project. Every line goes to the platform log through
// dlog_print as "<file base name> : <function>(<line>)  <message>".
#pragma once

#include <dlog.h>

namespace common::log {

// Evaluated at compile time inside the macros, so no path ever reaches the log.
constexpr const char* BaseName(const char* path) {
    const char* base = path;
    for (const char* p = path; *p != '\0'; ++p) {
        if (*p == '/') base = p + 1;
    }
    return base;
}

// Never called; it only lets the compiler check each message's format against its arguments.
[[gnu::format(printf, 1, 2)]] inline void CheckFormat(const char*, ...) {}

// Logs "> Entered" when built and "> Left" when destroyed, both at info priority.
class ScopeTrace {
public:
    ScopeTrace(const char* tag, const char* file, const char* func, int line) noexcept;
    ~ScopeTrace();
    ScopeTrace(const ScopeTrace&) = delete;
    ScopeTrace& operator=(const ScopeTrace&) = delete;

private:
    const char* tag_;
    const char* file_;
    const char* func_;
    int line_;
};

}  // namespace common::log

#define VYRF_TAG_IRCONTROL "IRCONTROL"
#define VYRF_TAG_COMMON "VYRF_COMMON"

#define VYRF_COLOR_RED "\033[31m"
#define VYRF_COLOR_YELLOW "\033[33m"
#define VYRF_COLOR_END "\033[0m"

#define VYRF_LOG(prio, tag, fmt, ...)                                                        \
    do {                                                                                     \
        if (false) ::common::log::CheckFormat(fmt, ##__VA_ARGS__);                           \
        constexpr const char* vyrf_log_file_ = ::common::log::BaseName(__FILE__);            \
        dlog_print(prio, tag, "%s : %s(%d)  " fmt, vyrf_log_file_, __func__, __LINE__,       \
                   ##__VA_ARGS__);                                                           \
    } while (0)

#define VYRF_LOG_ENTER(tag)                                                                  \
    dlog_print(DLOG_INFO, tag, "%s : %s(%d) > Entered\n", ::common::log::BaseName(__FILE__), \
               __func__, __LINE__)
#define VYRF_LOG_LEAVE(tag)                                                                  \
    dlog_print(DLOG_INFO, tag, "%s : %s(%d) > Left\n", ::common::log::BaseName(__FILE__),    \
               __func__, __LINE__)
#define VYRF_LOG_ENTER_AT(prio, tag)                                                         \
    dlog_print(prio, tag, "%s : %s(%d) > Entered\n", ::common::log::BaseName(__FILE__),      \
               __func__, __LINE__)
#define VYRF_LOG_LEAVE_AT(prio, tag)                                                         \
    dlog_print(prio, tag, "%s : %s(%d) > Left\n", ::common::log::BaseName(__FILE__),         \
               __func__, __LINE__)
#define VYRF_LOG_SCOPE(tag)                                                                  \
    ::common::log::ScopeTrace vyrf_scope_trace_(tag, ::common::log::BaseName(__FILE__),      \
                                                __func__, __LINE__)

// The JSON library and the system-info queries log with the tag "VYRF_COMMON".
#define COMMON_LOGD(fmt, ...) VYRF_LOG(DLOG_DEBUG, VYRF_TAG_COMMON, fmt, ##__VA_ARGS__)
#define COMMON_LOGI(fmt, ...) VYRF_LOG(DLOG_INFO, VYRF_TAG_COMMON, fmt, ##__VA_ARGS__)
#define COMMON_LOGE(fmt, ...) VYRF_LOG(DLOG_ERROR, VYRF_TAG_COMMON, fmt, ##__VA_ARGS__)

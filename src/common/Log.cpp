#include "Log.h"

namespace common::log {

ScopeTrace::ScopeTrace(const char* tag, const char* file, const char* func, int line) noexcept
    : tag_(tag), file_(file), func_(func), line_(line) {
    dlog_print(DLOG_INFO, tag_, "%s : %s(%d) > Entered\n", file_, func_, line_);
}

ScopeTrace::~ScopeTrace() {
    dlog_print(DLOG_INFO, tag_, "%s : %s(%d) > Left\n", file_, func_, line_);
}

}  // namespace common::log

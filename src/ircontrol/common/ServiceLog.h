// The service's log macros: tag "IRCONTROL", priorities 3 (debug), 4 (info), 6 (error).
#pragma once

#include "Log.h"  // the shared utility library's base macros

#define IRC_LOGD(fmt, ...) VYRF_LOG(DLOG_DEBUG, VYRF_TAG_IRCONTROL, fmt, ##__VA_ARGS__)
#define IRC_LOGI(fmt, ...) VYRF_LOG(DLOG_INFO, VYRF_TAG_IRCONTROL, fmt, ##__VA_ARGS__)
#define IRC_LOGE(fmt, ...) VYRF_LOG(DLOG_ERROR, VYRF_TAG_IRCONTROL, fmt, ##__VA_ARGS__)

// Entry and exit lines of a method ("> Entered" / "> Left"), at info priority.
#define IRC_ENTER() VYRF_LOG_ENTER(VYRF_TAG_IRCONTROL)
#define IRC_LEAVE() VYRF_LOG_LEAVE(VYRF_TAG_IRCONTROL)
#define IRC_ENTER_DEBUG() VYRF_LOG_ENTER_AT(DLOG_DEBUG, VYRF_TAG_IRCONTROL)
#define IRC_LEAVE_DEBUG() VYRF_LOG_LEAVE_AT(DLOG_DEBUG, VYRF_TAG_IRCONTROL)
#define IRC_SCOPE() VYRF_LOG_SCOPE(VYRF_TAG_IRCONTROL)

#define IRC_RED(text) VYRF_COLOR_RED text VYRF_COLOR_END
#define IRC_YELLOW(text) VYRF_COLOR_YELLOW text VYRF_COLOR_END

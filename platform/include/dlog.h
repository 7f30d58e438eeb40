#ifndef DLOG_H
#define DLOG_H

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    DLOG_UNKNOWN = 0, DLOG_DEFAULT, DLOG_VERBOSE, DLOG_DEBUG, DLOG_INFO,
    DLOG_WARN, DLOG_ERROR, DLOG_FATAL, DLOG_SILENT
} log_priority;   /* DLOG_DEBUG = 3, DLOG_INFO = 4, DLOG_ERROR = 6 */

int dlog_print(log_priority prio, const char *tag, const char *fmt, ...);

#ifdef __cplusplus
}
#endif

#endif /* DLOG_H */

/* The platform's log: one call writes one line. */
#ifndef ZERKLOG_H
#define ZERKLOG_H

#ifdef __cplusplus
extern "C" {
#endif

/* Levels, most severe first. */
enum {
  ZERK_LOG_ERROR = 0,   /* something failed */
  ZERK_LOG_WARNING = 1, /* something is missing or odd, work goes on */
  ZERK_LOG_NOTICE = 2,  /* progress worth knowing */
  ZERK_LOG_DETAIL = 3   /* for the developer */
};

/*
 * Writes one line, whatever its length, when `level` passes the threshold.
 * Threshold and target are settings of the log, not of its callers.
 *
 * module    number of the part of the platform that speaks
 * level     ZERK_LOG_ERROR ... ZERK_LOG_DETAIL; smaller counts as error,
 *           larger as detail
 * file, function  where the line comes from; either may be null
 * format    printf format of the message; null writes an empty message
 *
 * May be called from any thread, also during static construction and
 * destruction. Lines never mix, and no text can pass for a line of its own.
 * Never throws, never ends the process, keeps errno. Arguments are read before
 * the call returns.
 */
void ZERK_LOG_write_newline(int module, int level, const char* file, int line, const char* function,
                            const char* format, ...)
#if defined(__GNUC__)
    __attribute__((visibility("default"), format(printf, 6, 7)))
#endif
    ;

#ifdef __cplusplus
}
#endif

#endif

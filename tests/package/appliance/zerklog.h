/* What the library needs of an appliance's log, and no more. */
#ifndef ZERKLOG_H
#define ZERKLOG_H

#ifdef __cplusplus
extern "C" {
#endif

void ZERK_LOG_write_newline(int module, int level, const char* file, int line, const char* function,
                            const char* format, ...);

#ifdef __cplusplus
}
#endif

#endif

/**
 * \file
 * Where the library's few messages go. For example, nowhere:
 *
 *     static void ignore(MeridianText level, MeridianText message, void* context) {}
 *     meridian_set_log(ignore, NULL, NULL);
 */
#ifndef MERIDIAN_C_LOG_H
#define MERIDIAN_C_LOG_H

#include <meridian/c/error.h>
#include <meridian/c/text.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Receives a message, on any thread and on several at once. The level is "error" or "info"; the message has no newline
 * at its end and may hold any bytes from outside input.
 */
typedef void (*MeridianLog)(MeridianText level, MeridianText message, void* context);

/**
 * Sends the messages to a function. NULL restores the default, which writes lines to standard error. A message that
 * another thread is logging may still reach the old function, so its context must stay valid.
 */
MERIDIAN_C_API bool meridian_set_log(MeridianLog log, void* context, MeridianError** error) MERIDIAN_NOTHROW;

#ifdef __cplusplus
}
#endif

#endif

/**
 * \file
 * Errors (it failed) and warnings (it was noticed), each with a code, a place, a text and a remedy. For example:
 *
 *     MeridianError* error = NULL;
 *     MeridianLut* lut = meridian_lut_open(meridian_text("/looks/show.cube"), &error);
 *     if (lut == NULL) {
 *       fprintf(stderr, "%s\n", meridian_error_message(error).data);
 *       // "/looks/show.cube": cannot be opened: No such file or directory; check the spelling and that you may read it
 *       meridian_error_destroy(error);
 *     }
 *
 * A function that can fail has a last parameter `MeridianError** error`. If it fails it returns false or NULL, changes
 * nothing, and stores an error that the caller owns, unless `error` is NULL. If it succeeds it leaves `*error` as it
 * is.
 *
 * Nothing throws. Out of memory is an error like every other, with the code "outOfMemory" of the area "call"; it is
 * stored without allocating. Only JSON is made by a library that ends the process if memory runs out. Functions without
 * the parameter cannot fail.
 */
#ifndef MERIDIAN_C_ERROR_H
#define MERIDIAN_C_ERROR_H

#include <meridian/c/text.h>

#ifdef __cplusplus
extern "C" {
#endif

/** An error or a warning. */
typedef struct MeridianError MeridianError;

/**
 * Returns the vocabulary that the code belongs to: "property", "transcode", "transcodeWarning", "timecode", "lut",
 * "lutWarning", "image", "treeWalk", "claim", "analysis", "analysisImage", "analysisWarning", "analysisWritingWarning",
 * or "call" for what any call may meet.
 */
MERIDIAN_C_API MeridianText meridian_error_area(const MeridianError* error) MERIDIAN_NOTHROW;
/** Returns the code's number within its area, from 0. Later versions may number codes differently. */
MERIDIAN_C_API int meridian_error_code(const MeridianError* error) MERIDIAN_NOTHROW;
/** Returns the code's name, such as "notOpened". Names do not change. */
MERIDIAN_C_API MeridianText meridian_error_code_name(const MeridianError* error) MERIDIAN_NOTHROW;
/** Returns the path, flag or word that the error is about; any bytes, may be empty. */
MERIDIAN_C_API MeridianText meridian_error_place(const MeridianError* error) MERIDIAN_NOTHROW;
/** Returns what is wrong, as a clause without a subject: "cannot be opened". */
MERIDIAN_C_API MeridianText meridian_error_text(const MeridianError* error) MERIDIAN_NOTHROW;
/** Returns what is known beyond the code, such as a number of rows; may be empty. */
MERIDIAN_C_API MeridianText meridian_error_detail(const MeridianError* error) MERIDIAN_NOTHROW;
/** Returns what to do, as an imperative clause; may be empty. */
MERIDIAN_C_API MeridianText meridian_error_remedy(const MeridianError* error) MERIDIAN_NOTHROW;
/** Returns all of it as one line for a person, with control characters escaped. */
MERIDIAN_C_API MeridianText meridian_error_message(const MeridianError* error) MERIDIAN_NOTHROW;
/** Frees an error that a failed call stored. */
MERIDIAN_C_API void meridian_error_destroy(MeridianError* error) MERIDIAN_NOTHROW;

/** Owns a list of errors or warnings. */
typedef struct MeridianErrors MeridianErrors;

/** Returns the number of errors. */
MERIDIAN_C_API size_t meridian_errors_count(const MeridianErrors* errors) MERIDIAN_NOTHROW;
/** Returns the error at an index from 0; NULL for an index beyond the last. */
MERIDIAN_C_API const MeridianError* meridian_errors_at(const MeridianErrors* errors, size_t index) MERIDIAN_NOTHROW;
/** Frees the errors. */
MERIDIAN_C_API void meridian_errors_destroy(MeridianErrors* errors) MERIDIAN_NOTHROW;

#ifdef __cplusplus
}
#endif

#endif

/**
 * \file
 * Texts as C passes them: a pointer and a size. For example:
 *
 *     MeridianText path = meridian_text("/card/A001C001.mov");
 *     printf("%.*s\n", (int)path.size, path.data);
 *
 * The rules of this page hold for every header of the C interface:
 *
 * - **Ownership.** A pointer to a handle that is returned without `const` belongs to the caller: pass it to the
 *   `destroy` function of its type, which accepts NULL. Everything else that is returned, whether a text or a pointer
 *   to const, is a view: it is valid until its handle is changed or destroyed, and for the life of the process if no
 *   handle was passed.
 * - **Texts that are passed in.** Names of a vocabulary (flags, properties, presets, containers) are UTF-8 texts that
 *   end with a NUL; NULL counts as the empty text. All other texts (words, values, paths, names and extensions of
 *   files) are a MeridianText, which may hold any bytes. They are read during the call only.
 * - **Texts that are returned** are UTF-8, except words, values, paths, and what an error quotes of them, which hold
 * the bytes that were passed in. A NUL that `size` does not count follows each, except a text that a callback receives.
 *   An absent text has NULL as `data`.
 * - **Absent values.** A function that returns a value through a pointer returns false if there is none, and then
 * leaves the value unchanged.
 * - **Errors.** A function that can fail has a last parameter `error`, see error.h.
 * - **Arrays** are a pointer and a number of elements; the pointer may be NULL for none. A handle, a callback and a
 *   pointer to a result must not be NULL, unless their function says so.
 * - **Callbacks** get the `context` that was passed with them. They must not throw, jump out of the call or change the
 *   handle. Setting `*stop` to true ends the enumeration.
 * - **Threads.** Several threads may read a handle; a thread that changes or destroys one must be alone with it. A
 *   thread must not be cancelled within a call.
 */
#ifndef MERIDIAN_C_TEXT_H
#define MERIDIAN_C_TEXT_H

#include <stdbool.h>
#include <stddef.h>
#include <string.h>

#if defined(MERIDIAN_STATIC)
#define MERIDIAN_C_API
#else
#define MERIDIAN_C_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define MERIDIAN_NOTHROW noexcept
extern "C" {
#else
#define MERIDIAN_NOTHROW
#endif

/** Views a text of `size` bytes. NULL as `data` means an absent text, and counts as the empty text where one is needed.
 */
typedef struct MeridianText {
  const char* data;
  size_t size;
} MeridianText;

/** A key and its value, such as a flag and its value. */
typedef struct MeridianEntry {
  MeridianText key;
  MeridianText value;
} MeridianEntry;

/** Returns a view of a text that ends with a NUL; an absent text for NULL. */
static inline MeridianText meridian_text(const char* text) {
  MeridianText view;
  view.data = text;
  view.size = text == NULL ? 0 : strlen(text);
  return view;
}

/** Returns whether two texts have the same bytes. An absent text equals the empty text. */
static inline bool meridian_text_equal(MeridianText left, MeridianText right) {
  return left.size == right.size && (left.size == 0 || memcmp(left.data, right.data, left.size) == 0);
}

/** Receives a text of an enumeration. */
typedef void (*MeridianTextVisitor)(MeridianText text, bool* stop, void* context);

/** Receives an entry of an enumeration. */
typedef void (*MeridianEntryVisitor)(MeridianEntry entry, bool* stop, void* context);

/** Owns one text. */
typedef struct MeridianString MeridianString;

/** Returns the text. */
MERIDIAN_C_API MeridianText meridian_string_text(const MeridianString* string) MERIDIAN_NOTHROW;
/** Frees the text. */
MERIDIAN_C_API void meridian_string_destroy(MeridianString* string) MERIDIAN_NOTHROW;

/** Owns a list of texts. */
typedef struct MeridianTexts MeridianTexts;

/** Returns the number of texts. */
MERIDIAN_C_API size_t meridian_texts_count(const MeridianTexts* texts) MERIDIAN_NOTHROW;
/** Returns the text at an index from 0; absent for an index beyond the last. */
MERIDIAN_C_API MeridianText meridian_texts_at(const MeridianTexts* texts, size_t index) MERIDIAN_NOTHROW;
/**
 * Returns the texts as an array that ends with NULL. For execv() or posix_spawn(), copy it into an array that begins
 * with the program's name. A text with a NUL in it ends there.
 */
MERIDIAN_C_API char* const* meridian_texts_words(const MeridianTexts* texts) MERIDIAN_NOTHROW;
/** Frees the texts. */
MERIDIAN_C_API void meridian_texts_destroy(MeridianTexts* texts) MERIDIAN_NOTHROW;

/** Returns the version of the library that the process has loaded: "0.2.0". */
MERIDIAN_C_API MeridianText meridian_version(void) MERIDIAN_NOTHROW;

#ifdef __cplusplus
}
#endif

#endif

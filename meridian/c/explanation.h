/**
 * \file
 * An argument vector explained: where each setting came from, what its text means, and what became of every other word.
 * For example:
 *
 *     MeridianExplanation* explanation = meridian_explanation_create(words, count, true, &error);
 *     for (size_t index = 0; index < meridian_explanation_rejected_count(explanation); ++index) {
 *       MeridianRejected rejected = meridian_explanation_rejected_at(explanation, index);
 *       puts(meridian_error_message(rejected.error).data);  // "-vcoedc": is not a flag of the transcoder; ...
 *     }
 *
 * Every index counts from 0 and must be below its count.
 */
#ifndef MERIDIAN_C_EXPLANATION_H
#define MERIDIAN_C_EXPLANATION_H

#include <meridian/c/arguments.h>
#include <meridian/c/error.h>
#include <meridian/c/text.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What is found in an argument vector. All its texts, errors and the store are views into it. */
typedef struct MeridianExplanation MeridianExplanation;

/** Reads a vector once, as meridian_arguments_create() does, and explains it. */
MERIDIAN_C_API MeridianExplanation* meridian_explanation_create(const MeridianText* words, size_t count,
                                                                bool maintain_original_ordering,
                                                                MeridianError** error) MERIDIAN_NOTHROW;
/** Frees the explanation. */
MERIDIAN_C_API void meridian_explanation_destroy(MeridianExplanation* explanation) MERIDIAN_NOTHROW;

/** Returns the store that the vector gives. */
MERIDIAN_C_API const MeridianArguments* meridian_explanation_arguments(const MeridianExplanation* explanation)
    MERIDIAN_NOTHROW;

/** A setting of the store. */
typedef struct MeridianSetting {
  MeridianText flag;
  MeridianText value;
  /** The value as written, trimmed; empty for a preset's value. */
  MeridianText written_value;
  /** "given", "repeated" or "preset". */
  MeridianText source;
  /** The preset that gave the value, or whose value was overridden; absent without one. */
  MeridianText preset;
  /** The preset's value that was overridden; absent without one. */
  MeridianText preset_value;
  /** The name of the property that the flag stores or is a part of; absent for a flag without one. */
  MeridianText property;
  /** The value for people: "1920 x 1080"; empty where the text says it already. */
  MeridianText meaning;
  /** A valid text that was probably meant by one that is not; absent without one. */
  MeridianText readable_text;
  /** How many values were written earlier in the vector and overridden. */
  size_t earlier_value_count;
  size_t warning_count;
} MeridianSetting;

/** Returns the number of settings. */
MERIDIAN_C_API size_t meridian_explanation_setting_count(const MeridianExplanation* explanation) MERIDIAN_NOTHROW;
/** Returns a setting, in the order of the store. */
MERIDIAN_C_API MeridianSetting meridian_explanation_setting_at(const MeridianExplanation* explanation,
                                                               size_t index) MERIDIAN_NOTHROW;
/** Returns a value of a setting that was overridden, in the order of writing. */
MERIDIAN_C_API MeridianText meridian_explanation_earlier_value_at(const MeridianExplanation* explanation,
                                                                  size_t setting, size_t index) MERIDIAN_NOTHROW;
/** Returns a warning about a setting, the most important first. */
MERIDIAN_C_API const MeridianError* meridian_explanation_warning_at(const MeridianExplanation* explanation,
                                                                    size_t setting, size_t index) MERIDIAN_NOTHROW;

/** Returns the number of presets whose settings were merged into those given. */
MERIDIAN_C_API size_t meridian_explanation_preset_count(const MeridianExplanation* explanation) MERIDIAN_NOTHROW;
/** Returns the name of a preset that was merged. */
MERIDIAN_C_API MeridianText meridian_explanation_preset_at(const MeridianExplanation* explanation,
                                                           size_t index) MERIDIAN_NOTHROW;
/** Returns how many names of presets were written earlier in the vector and overridden by a preset. */
MERIDIAN_C_API size_t meridian_explanation_earlier_preset_count(const MeridianExplanation* explanation,
                                                                size_t preset) MERIDIAN_NOTHROW;
/** Returns such a name, in the order of writing. */
MERIDIAN_C_API MeridianText meridian_explanation_earlier_preset_at(const MeridianExplanation* explanation,
                                                                   size_t preset, size_t index) MERIDIAN_NOTHROW;

/** An entry that the store rejected. */
typedef struct MeridianRejected {
  MeridianText flag;
  /** The flag as written. */
  MeridianText written_flag;
  MeridianText value;
  /** The nearest known flag or preset; absent if none is near. */
  MeridianText suggestion;
  /**
   * The preceding flag if it needs a value and got none, since a value cannot begin with "-"; absent otherwise. The
   * rejected word was probably meant as its value.
   */
  MeridianText valueless;
  /** How many values were written earlier in the vector and overridden. */
  size_t earlier_value_count;
  /** Why it was rejected. */
  const MeridianError* error;
} MeridianRejected;

/** Returns the number of rejected entries. */
MERIDIAN_C_API size_t meridian_explanation_rejected_count(const MeridianExplanation* explanation) MERIDIAN_NOTHROW;
/** Returns a rejected entry, in the order of reading. */
MERIDIAN_C_API MeridianRejected meridian_explanation_rejected_at(const MeridianExplanation* explanation,
                                                                 size_t index) MERIDIAN_NOTHROW;

/** Returns a value of a rejected entry that was overridden, in the order of writing. */
MERIDIAN_C_API MeridianText meridian_explanation_rejected_earlier_value_at(const MeridianExplanation* explanation,
                                                                           size_t rejected,
                                                                           size_t index) MERIDIAN_NOTHROW;

/** A word that belongs to no flag. */
typedef struct MeridianDroppedWord {
  /** Its place in the vector, from 0. */
  size_t place;
  MeridianText word;
  const MeridianError* warning;
} MeridianDroppedWord;

/** Returns the number of dropped words. */
MERIDIAN_C_API size_t meridian_explanation_dropped_word_count(const MeridianExplanation* explanation) MERIDIAN_NOTHROW;
/** Returns a dropped word, in the order of the vector. */
MERIDIAN_C_API MeridianDroppedWord meridian_explanation_dropped_word_at(const MeridianExplanation* explanation,
                                                                        size_t index) MERIDIAN_NOTHROW;

/** Returns the number of notes. */
MERIDIAN_C_API size_t meridian_explanation_note_count(const MeridianExplanation* explanation) MERIDIAN_NOTHROW;
/** Returns what the settings mean together, one clause each: "video is left out". */
MERIDIAN_C_API MeridianText meridian_explanation_note_at(const MeridianExplanation* explanation,
                                                         size_t index) MERIDIAN_NOTHROW;

#ifdef __cplusplus
}
#endif

#endif

/**
 * \file
 * The argument store: the settings of one transcode, read from an argument vector, a dictionary or JSON, queried,
 * changed and rendered. For example:
 *
 *     MeridianArguments* arguments = meridian_arguments_create_from_main(argc, argv, true, &error);
 *     if (!meridian_arguments_all_flags_are_valid(arguments)) warn();
 *     meridian_arguments_set_property_text(arguments, "videoFrameRate", meridian_text("25"), &error);
 *     MeridianTexts* words = meridian_arguments_command_line_create(arguments, &error);
 *
 * properties.h has a function for each typed property, explanation.h says where each setting came from.
 */
#ifndef MERIDIAN_C_ARGUMENTS_H
#define MERIDIAN_C_ARGUMENTS_H

#include <meridian/c/error.h>
#include <meridian/c/text.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Stores the settings of one transcode. Flags are stored lower-cased and trimmed. Building never fails for what the
 * words say: unknown flags are kept aside and reported.
 */
typedef struct MeridianArguments MeridianArguments;

/**
 * Reads an argument vector, without a program path. A word that begins with "-" is a flag, and the word after it its
 * value unless that begins with "-" too. The last value of a repeated flag wins. A preset adds its settings where these
 * were not given. A rendered vector begins with the flags in their original order if `maintain_original_ordering` is
 * true.
 */
MERIDIAN_C_API MeridianArguments* meridian_arguments_create(const MeridianText* words, size_t count,
                                                            bool maintain_original_ordering,
                                                            MeridianError** error) MERIDIAN_NOTHROW;
/** Reads the parameters of main() in the same way; leaves out `argv[0]`, the program path. */
MERIDIAN_C_API MeridianArguments* meridian_arguments_create_from_main(int argc, char* const* argv,
                                                                      bool maintain_original_ordering,
                                                                      MeridianError** error) MERIDIAN_NOTHROW;
/**
 * Reads a dictionary from flags to values: checks and normalises its entries in their order and expands its presets. If
 * two flags differ only in case or white space, the later entry wins.
 */
MERIDIAN_C_API MeridianArguments* meridian_arguments_create_from_dictionary(const MeridianEntry* entries, size_t count,
                                                                            MeridianError** error) MERIDIAN_NOTHROW;
/**
 * Reads what meridian_arguments_json_create() returned, without checking the entries again. Flags that "orderedFlags"
 * does not list come in byte order. Fails with the code "notDecoded" of the area "call" for a text that is not such an
 * object; members of other names are ignored.
 */
MERIDIAN_C_API MeridianArguments* meridian_arguments_create_from_json(MeridianText json,
                                                                      MeridianError** error) MERIDIAN_NOTHROW;
/** Returns an independent copy. */
MERIDIAN_C_API MeridianArguments* meridian_arguments_copy(const MeridianArguments* arguments,
                                                          MeridianError** error) MERIDIAN_NOTHROW;
/** Frees the store. */
MERIDIAN_C_API void meridian_arguments_destroy(MeridianArguments* arguments) MERIDIAN_NOTHROW;

/**
 * Returns whether the flag is stored. Pass the flag in lower case, as the constants are. A flag with a NUL in it, which
 * JSON can hold, is found by meridian_arguments_enumerate() alone.
 */
MERIDIAN_C_API bool meridian_arguments_has_flag(const MeridianArguments* arguments, const char* flag) MERIDIAN_NOTHROW;
/** Returns the flag's value, empty for a flag without one; absent if the flag is not stored. */
MERIDIAN_C_API MeridianText meridian_arguments_value(const MeridianArguments* arguments,
                                                     const char* flag) MERIDIAN_NOTHROW;
/** Stores the value under the trimmed flag as it is, neither normalised nor checked; an absent value removes the flag.
 */
MERIDIAN_C_API bool meridian_arguments_set_value(MeridianArguments* arguments, const char* flag, MeridianText value,
                                                 MeridianError** error) MERIDIAN_NOTHROW;
/** Returns the number of stored flags. */
MERIDIAN_C_API size_t meridian_arguments_count(const MeridianArguments* arguments) MERIDIAN_NOTHROW;
/** Passes each stored flag with its value, in the order in which the store got them. */
MERIDIAN_C_API void meridian_arguments_enumerate(const MeridianArguments* arguments, MeridianEntryVisitor visit,
                                                 void* context) MERIDIAN_NOTHROW;

/** Returns whether nothing was rejected in reading. */
MERIDIAN_C_API bool meridian_arguments_all_flags_are_valid(const MeridianArguments* arguments) MERIDIAN_NOTHROW;
/** Passes each rejected flag with its value, in the order of reading. */
MERIDIAN_C_API void meridian_arguments_enumerate_rejected(const MeridianArguments* arguments,
                                                          MeridianEntryVisitor visit, void* context) MERIDIAN_NOTHROW;

/**
 * Renders the argument vector: the flags that are still stored in their kept order, then the remainder. Each flag and
 * its value, even an empty one, are two words.
 */
MERIDIAN_C_API MeridianTexts* meridian_arguments_command_line_create(const MeridianArguments* arguments,
                                                                     MeridianError** error) MERIDIAN_NOTHROW;
/**
 * Returns the store as JSON, an object with the members "flagValueLookup", "invalidKeyValueLookup" and "orderedFlags".
 * Fails with the code "notEncoded" of the area "call" for a flag or value that is not valid UTF-8.
 */
MERIDIAN_C_API MeridianString* meridian_arguments_json_create(const MeridianArguments* arguments,
                                                              MeridianError** error) MERIDIAN_NOTHROW;
/** Warns about each value that a reader of the rendered vector gets differently. */
MERIDIAN_C_API MeridianErrors* meridian_arguments_reading_back_warnings_create(const MeridianArguments* arguments,
                                                                               MeridianError** error) MERIDIAN_NOTHROW;

/**
 * Returns whether the source has to be analysed before the transcode can be planned: there is video, its size is set,
 * and the aspect scaling depends on the source's aspect ratio.
 */
MERIDIAN_C_API bool meridian_arguments_source_file_analysis_required(const MeridianArguments* arguments)
    MERIDIAN_NOTHROW;

/** Receives an input file and the number of its group. */
typedef void (*MeridianInputFileVisitor)(MeridianText path, int64_t group, bool* stop, void* context);

/** Passes the input files group by group, in ascending order of the groups' numbers and of the places within each. */
MERIDIAN_C_API bool meridian_arguments_enumerate_input_files(const MeridianArguments* arguments,
                                                             MeridianInputFileVisitor visit, void* context,
                                                             MeridianError** error) MERIDIAN_NOTHROW;
/** Makes the paths the only input files, as group 0; no paths remove all. Fails for a path that no argument can be. */
MERIDIAN_C_API bool meridian_arguments_set_input_files(MeridianArguments* arguments, const MeridianText* paths,
                                                       size_t count, MeridianError** error) MERIDIAN_NOTHROW;

/** Receives the number of an audio track, from 0. */
typedef void (*MeridianTrackVisitor)(int64_t track, bool* stop, void* context);

/** Passes the audio tracks that are left out, in ascending order. */
MERIDIAN_C_API bool meridian_arguments_enumerate_ignored_audio_file_tracks(const MeridianArguments* arguments,
                                                                           MeridianTrackVisitor visit, void* context,
                                                                           MeridianError** error) MERIDIAN_NOTHROW;
/** Leaves out these audio tracks and no others. Fails for a negative number. */
MERIDIAN_C_API bool meridian_arguments_set_ignored_audio_file_tracks(MeridianArguments* arguments,
                                                                     const int64_t* tracks, size_t count,
                                                                     MeridianError** error) MERIDIAN_NOTHROW;

/** What is known about a property. */
typedef struct MeridianProperty {
  MeridianText name;
  /** The flag that stores the property; empty if several flags make it up. */
  MeridianText flag;
  /** How it is written: "switch", "text", "path", "number", "frameRate", "integer", "dimensions",
   * "timecode", "color", "file", "files", "trackNumbers", or for one of a list of texts "fileFormat", "videoCodec",
   * "aspectRatio", "cropAnchor", "overlayAnchor", "colorSpace", "audioFormat", "audioQuality", "channelLayout" and
   * "timecodeSource". */
  MeridianText kind;
  /** The unit of a number or size; empty where there is none. */
  MeridianText unit;
  /** What happens without the property: "as the source". */
  MeridianText when_absent;
  /** A valid value. */
  MeridianText example;
  /** What the property does: "Set the frame rate". */
  MeridianText meaning;
} MeridianProperty;

/** Returns the number of properties. */
MERIDIAN_C_API size_t meridian_property_count(void) MERIDIAN_NOTHROW;
/** Returns the property at an index below meridian_property_count(), in the order of the groups of flags. */
MERIDIAN_C_API MeridianProperty meridian_property_at(size_t index) MERIDIAN_NOTHROW;
/** Returns the texts of which a property accepts one; none for a property of another kind. */
MERIDIAN_C_API MeridianTexts* meridian_property_allowed_texts_create(const char* name,
                                                                     MeridianError** error) MERIDIAN_NOTHROW;

/**
 * Returns the property of this name as text: the text that its flag stores, "true" or "false" for a switch. If the
 * property is absent, returns NULL and stores no error. If no property has this name, returns NULL and stores an error
 * that suggests the nearest name.
 */
MERIDIAN_C_API MeridianString* meridian_arguments_property_text_create(const MeridianArguments* arguments,
                                                                       const char* name,
                                                                       MeridianError** error) MERIDIAN_NOTHROW;
/**
 * Sets the property of this name to a person's input: surrounding blanks and, where one of a list of texts is accepted,
 * letter case are ignored, and a switch accepts "true", "false", "on", "off", "yes" and "no". The empty input removes
 * it.
 */
MERIDIAN_C_API bool meridian_arguments_set_property_text(MeridianArguments* arguments, const char* name,
                                                         MeridianText input, MeridianError** error) MERIDIAN_NOTHROW;
/** Removes the property of this name, so that its default applies. */
MERIDIAN_C_API bool meridian_arguments_remove_property(MeridianArguments* arguments, const char* name,
                                                       MeridianError** error) MERIDIAN_NOTHROW;

/** Passes every flag that a store knows. */
MERIDIAN_C_API void meridian_enumerate_known_flags(MeridianTextVisitor visit, void* context) MERIDIAN_NOTHROW;
/** Passes the settings of a built-in preset, such as SAVSolvaneCloudPresetValue; fails if there is no such preset. */
MERIDIAN_C_API bool meridian_enumerate_preset(const char* preset, MeridianEntryVisitor visit, void* context,
                                              MeridianError** error) MERIDIAN_NOTHROW;
/** Returns the word by which an application starts itself in transcoding mode. It is not a flag: a store rejects it. */
MERIDIAN_C_API MeridianText meridian_transcode_mode_flag(void) MERIDIAN_NOTHROW;

#ifdef __cplusplus
}
#endif

#endif

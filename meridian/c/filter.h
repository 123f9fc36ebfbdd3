/**
 * \file
 * What a copying application leaves out, item by item, and the walk over a directory tree. For example:
 *
 *     MeridianFilterSettings settings = {0};
 *     settings.ignore_hidden_items = true;
 *     MeridianFilter* filter = meridian_filter_create(&settings, &error);
 *     meridian_walk_tree(meridian_text("/card"), filter, copy, report, context, &error);
 */
#ifndef MERIDIAN_C_FILTER_H
#define MERIDIAN_C_FILTER_H

#include <meridian/c/error.h>
#include <meridian/c/text.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Which items are left out. All zero leaves out none. */
typedef struct MeridianFilterSettings {
  /** Extensions in any case, with or without a leading dot. */
  const MeridianText* extensions;
  size_t extension_count;
  /** Copies only files with a listed extension, instead of all others. */
  bool only_listed_extensions;
  bool ignore_hidden_items;
  /** Names of items to ignore, in any case. */
  const MeridianText* ignored_names;
  size_t ignored_name_count;
} MeridianFilterSettings;

/** Whether an item is copied, and why. */
typedef struct MeridianDecision {
  /** True if the item is not copied. */
  bool is_ignored;
  /** The rule that decided: "forced component", "hidden", "directory", "no extensions" or "extension". */
  MeridianText rule;
} MeridianDecision;

/** Settings that were prepared to decide on any number of items. Several threads may use it at once. */
typedef struct MeridianFilter MeridianFilter;

/** Prepares settings. */
MERIDIAN_C_API MeridianFilter* meridian_filter_create(const MeridianFilterSettings* settings,
                                                      MeridianError** error) MERIDIAN_NOTHROW;
/** Frees the filter. */
MERIDIAN_C_API void meridian_filter_destroy(MeridianFilter* filter) MERIDIAN_NOTHROW;
/** Decides on an item. Asks the file system about it unless its name decides. */
MERIDIAN_C_API bool meridian_filter_decide(const MeridianFilter* filter, MeridianText path, MeridianDecision* decision,
                                           MeridianError** error) MERIDIAN_NOTHROW;
/** Passes the names that systems leave on volumes, for settings that ignore them. */
MERIDIAN_C_API void meridian_enumerate_default_ignored_names(MeridianTextVisitor visit, void* context) MERIDIAN_NOTHROW;

/** The kind of an item itself: symbolic links are not followed. */
typedef enum MeridianItemKind {
  MERIDIAN_ITEM_FILE,
  MERIDIAN_ITEM_DIRECTORY,
  MERIDIAN_ITEM_SYMBOLIC_LINK,
  /** A socket, a pipe or a device. */
  MERIDIAN_ITEM_OTHER
} MeridianItemKind;

/** An item of a tree. The texts are valid during the call that passes it. */
typedef struct MeridianTreeItem {
  /** The directory as it was passed, followed by the names on the way to the item. */
  MeridianText path;
  /** The last component of the path. */
  MeridianText name;
  MeridianItemKind kind;
  MeridianDecision decision;
} MeridianTreeItem;

/** Receives an item. */
typedef void (*MeridianTreeVisitor)(const MeridianTreeItem* item, bool* stop, void* context);
/** Receives an error of the area "treeWalk", which is valid during the call: the walk continues after it. */
typedef void (*MeridianTreeReport)(const MeridianError* error, void* context);

/**
 * Passes every item below a directory to `visit`, ignored ones too: a directory before its items, and the items of a
 * directory in the byte order of their names. Ignored directories and links are not entered. What cannot be read goes
 * to `report`, which may be NULL. Returns false only if the walk could not go on for lack of memory.
 */
MERIDIAN_C_API bool meridian_walk_tree(MeridianText directory, const MeridianFilter* filter, MeridianTreeVisitor visit,
                                       MeridianTreeReport report, void* context,
                                       MeridianError** error) MERIDIAN_NOTHROW;

#ifdef __cplusplus
}
#endif

#endif

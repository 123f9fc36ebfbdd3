/**
 * \file
 * Unused names for output files, and files created under them. For example:
 *
 *     MeridianClaim* claim = meridian_claim_create(meridian_text("/out/clip.mov"), &error);
 *     if (claim == NULL) return fail(error);
 *     write_to(meridian_claim_at(claim, 0).path);  // "/out/clip.mov", or "/out/clip 2.mov" if that name was in use
 *     meridian_claim_destroy(claim);               // the file stays
 */
#ifndef MERIDIAN_C_NAMES_H
#define MERIDIAN_C_NAMES_H

#include <meridian/c/error.h>
#include <meridian/c/text.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Returns the path itself if nothing exists there, otherwise a path with a number after the name: "/out/clip 2.mov".
 * Nothing is created, so another process can take the name at any time.
 */
MERIDIAN_C_API MeridianString* meridian_free_path_create(MeridianText path, MeridianError** error) MERIDIAN_NOTHROW;
/**
 * Returns a name, such as "clip 2.mov", that exists in none of the directories. An absent extension gives names without
 * one; an empty one gives "name", then "name 2." with a dot.
 */
MERIDIAN_C_API MeridianString* meridian_free_name_create(MeridianText base_name, MeridianText extension,
                                                         const MeridianText* directories, size_t directory_count,
                                                         MeridianError** error) MERIDIAN_NOTHROW;
/**
 * Returns a path for each extension, in their order, all with the same name and number, which is unused in all the
 * directories: "clip-2.mov" and "clip-2.xml". The paths are in the last directory; without directories there are none.
 */
MERIDIAN_C_API MeridianTexts* meridian_free_paths_create(MeridianText name, const MeridianText* extensions,
                                                         size_t extension_count, const MeridianText* directories,
                                                         size_t directory_count,
                                                         MeridianError** error) MERIDIAN_NOTHROW;

/** Files that were created, empty and closed, under unused names. Destroying the claim keeps the files. */
typedef struct MeridianClaim MeridianClaim;

/** A file of a claim. */
typedef struct MeridianClaimedFile {
  MeridianText path;
  /** The extension that the file was asked for as part of a set; empty for a single name. */
  MeridianText extension;
} MeridianClaimedFile;

/**
 * Creates the file that meridian_free_path_create() names, so that several processes never get the same name. This and
 * the next two fail with an error of the area "claim", and create all files or none.
 */
MERIDIAN_C_API MeridianClaim* meridian_claim_create(MeridianText path, MeridianError** error) MERIDIAN_NOTHROW;
/** Creates a file in each directory, under the name of meridian_free_name_create(). */
MERIDIAN_C_API MeridianClaim* meridian_claim_create_amongst_directories(MeridianText base_name, MeridianText extension,
                                                                        const MeridianText* directories,
                                                                        size_t directory_count,
                                                                        MeridianError** error) MERIDIAN_NOTHROW;
/** Creates a file for each extension in each directory, under the names of meridian_free_paths_create(). */
MERIDIAN_C_API MeridianClaim* meridian_claim_create_consistent(MeridianText name, const MeridianText* extensions,
                                                               size_t extension_count, const MeridianText* directories,
                                                               size_t directory_count,
                                                               MeridianError** error) MERIDIAN_NOTHROW;
/** Returns the number of files. */
MERIDIAN_C_API size_t meridian_claim_count(const MeridianClaim* claim) MERIDIAN_NOTHROW;
/** Returns the file at an index below meridian_claim_count(): directory by directory, in the order of the extensions.
 */
MERIDIAN_C_API MeridianClaimedFile meridian_claim_at(const MeridianClaim* claim, size_t index) MERIDIAN_NOTHROW;
/** Frees the claim; the files stay. */
MERIDIAN_C_API void meridian_claim_destroy(MeridianClaim* claim) MERIDIAN_NOTHROW;

#ifdef __cplusplus
}
#endif

#endif

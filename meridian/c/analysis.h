/**
 * \file
 * The command line of the media-analysis tool: built from options, read back into options, and checked. For example:
 *
 *     MeridianText path = meridian_text("/card/a.mov");
 *     MeridianAnalysisOptions options = {0};
 *     options.paths_to_analyze = &path;
 *     options.path_count = 1;
 *     options.work_directory = meridian_text("/tmp");
 *     options.results_file_path = meridian_text("/out/a.json");
 *     MeridianAnalysis* analysis = meridian_analysis_create(&options, &error);
 *     MeridianErrors* errors = meridian_analysis_errors_create(analysis, &error);
 */
#ifndef MERIDIAN_C_ANALYSIS_H
#define MERIDIAN_C_ANALYSIS_H

#include <meridian/c/error.h>
#include <meridian/c/text.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** All options of the tool. All zero are none. Numbers that may be absent come with a `has_` member. */
typedef struct MeridianAnalysisOptions {
  /** The media to analyse. */
  const MeridianText* paths_to_analyze;
  size_t path_count;
  /** The name of the run; absent without one. */
  MeridianText analysis_id;
  /** The directory for scratch files. */
  MeridianText work_directory;
  /** The file that the tool writes its results to. */
  MeridianText results_file_path;
  /** Requests the deep analysis. */
  bool deep_analysis;

  /** Whether still images are taken. Without it, the members down to `lut_to_apply` do not count. */
  bool has_images;
  /** The positions in the media at which images are taken, passed on to the tool as they are. */
  const float* snapshot_locations;
  size_t snapshot_count;
  /** The largest width of an image, in pixels. */
  float max_image_width;
  bool has_image_height;
  /** The height of every image, in pixels. */
  float image_height;
  bool has_compression_factor;
  /** How much images are compressed, passed on to the tool as it is. */
  float compression_factor;
  /** Lets the desktop's file browser show the images. */
  bool allow_finder_images;
  /** The LUT file that is applied to the images; absent without one. */
  MeridianText lut_to_apply;

  /** The process that starts the tool, and which application of the suite it is. */
  bool has_parent_pid;
  int32_t parent_pid;
  bool has_parent_app_number;
  int32_t parent_app_number;
} MeridianAnalysisOptions;

/** Options of the tool, with the warnings of their reading. */
typedef struct MeridianAnalysis MeridianAnalysis;

/** Takes a copy of the options. Accepts every value; the functions below find what the tool cannot work with. */
MERIDIAN_C_API MeridianAnalysis* meridian_analysis_create(const MeridianAnalysisOptions* options,
                                                          MeridianError** error) MERIDIAN_NOTHROW;
/**
 * Reads an argument vector, without a program path. Never fails for what the words say: a value that is not valid is
 * ignored with a warning.
 */
MERIDIAN_C_API MeridianAnalysis* meridian_analysis_create_from_words(const MeridianText* words, size_t count,
                                                                     MeridianError** error) MERIDIAN_NOTHROW;
/** Frees the options. */
MERIDIAN_C_API void meridian_analysis_destroy(MeridianAnalysis* analysis) MERIDIAN_NOTHROW;

/** Returns the options; its texts and arrays are views. */
MERIDIAN_C_API MeridianAnalysisOptions meridian_analysis_options(const MeridianAnalysis* analysis) MERIDIAN_NOTHROW;
/** Returns the argument vector: the basic options, those of the images, those of the process. */
MERIDIAN_C_API MeridianTexts* meridian_analysis_command_line_create(const MeridianAnalysis* analysis,
                                                                    MeridianError** error) MERIDIAN_NOTHROW;
/** Returns the number of words that reading warned of; 0 for options that were not read. */
MERIDIAN_C_API size_t meridian_analysis_warning_count(const MeridianAnalysis* analysis) MERIDIAN_NOTHROW;
/** Returns a warning of the area "analysisWarning", at an index below the count. */
MERIDIAN_C_API const MeridianError* meridian_analysis_warning_at(const MeridianAnalysis* analysis,
                                                                 size_t index) MERIDIAN_NOTHROW;
/**
 * Returns the errors that stop the tool, found before it is started: options that are not supplied, and paths that the
 * file system does not have or that exist already. Changes nothing.
 */
MERIDIAN_C_API MeridianErrors* meridian_analysis_errors_create(const MeridianAnalysis* analysis,
                                                               MeridianError** error) MERIDIAN_NOTHROW;
/** Warns about each option that would not read back from the argument vector. */
MERIDIAN_C_API MeridianErrors* meridian_analysis_writing_warnings_create(const MeridianAnalysis* analysis,
                                                                         MeridianError** error) MERIDIAN_NOTHROW;

#ifdef __cplusplus
}
#endif

#endif

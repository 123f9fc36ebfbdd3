/* The command line of the media-analysis tool. */
#include <meridian/c/meridian.h>
#include <string.h>

#include "check.h"

#define COUNT(array) (sizeof(array) / sizeof((array)[0]))

static void check_words(const MeridianAnalysis* analysis, const char* expected) {
  char joined[512] = "";
  MeridianTexts* words = meridian_analysis_command_line_create(analysis, NULL);
  for (char* const* word = meridian_texts_words(words); *word != NULL; ++word) strcat(strcat(joined, *word), " ");
  CHECK_TEXT(meridian_text(joined), expected);
  meridian_texts_destroy(words);
}

static void options_become_words_and_words_options(void) {
  const MeridianText paths[] = {meridian_text("/card/a.mov"), meridian_text("/card/b.mov")};
  const float locations[] = {0.5F, 2};
  static const char* const expected =
      "-pathToAnalyze /card/a.mov -pathToAnalyze /card/b.mov -workDirectory /tmp -resultsFilePath /out/a.json "
      "-analysisId run -deepAnalysis -snapshotLocation 0.5 -snapshotLocation 2.0 -maxImageWidth 1920.0 "
      "-compressionFactor 0.25 -allowFinderImages -lutFile /a.cube -parentPid 42 -parentAppNumber 3 ";
  MeridianAnalysisOptions options = {.paths_to_analyze = paths, .path_count = COUNT(paths)};
  options.work_directory = meridian_text("/tmp");
  options.results_file_path = meridian_text("/out/a.json");
  options.analysis_id = meridian_text("run");
  options.deep_analysis = options.has_images = options.allow_finder_images = true;
  options.snapshot_locations = locations;
  options.snapshot_count = COUNT(locations);
  options.max_image_width = 1920;
  options.has_compression_factor = true;
  options.compression_factor = 0.25F;
  options.lut_to_apply = meridian_text("/a.cube");
  options.has_parent_pid = options.has_parent_app_number = true;
  options.parent_pid = 42;
  options.parent_app_number = 3;
  MeridianAnalysis* analysis = meridian_analysis_create(&options, NULL);
  check_words(analysis, expected);

  MeridianTexts* words = meridian_analysis_command_line_create(analysis, NULL);
  MeridianText texts[32];
  for (size_t index = 0; index < meridian_texts_count(words); ++index) texts[index] = meridian_texts_at(words, index);
  MeridianAnalysis* read = meridian_analysis_create_from_words(texts, meridian_texts_count(words), NULL);
  CHECK(meridian_analysis_warning_count(read) == 0);
  MeridianAnalysisOptions found = meridian_analysis_options(read);
  CHECK(found.path_count == 2 && found.snapshot_count == 2 && found.snapshot_locations[0] == 0.5F);
  CHECK_TEXT(found.paths_to_analyze[1], "/card/b.mov");
  CHECK(found.has_compression_factor && !found.has_image_height && found.parent_pid == 42);
  MeridianAnalysis* copy = meridian_analysis_create(&found, NULL);
  check_words(copy, expected);
  meridian_analysis_destroy(copy);
  meridian_analysis_destroy(read);
  meridian_texts_destroy(words);
  meridian_analysis_destroy(analysis);
}

static void mistakes_are_found_before_the_tool_starts(void) {
  const MeridianText words[] = {meridian_text("stray"), meridian_text("-maxImageWidth"), meridian_text("wide")};
  static const char* const errors[][2] = {{"analysis", "pathToAnalyzeNotSupplied"},
                                          {"analysis", "workDirectoryNotSupplied"},
                                          {"analysis", "resultsFilePathNotSupplied"},
                                          {"analysisImage", "missingSnapshotLocations"},
                                          {"analysisImage", "missingMaxImageWidth"}};
  MeridianAnalysis* analysis = meridian_analysis_create_from_words(words, COUNT(words), NULL);
  CHECK(meridian_analysis_warning_count(analysis) == 2);
  CHECK_TEXT(meridian_error_code_name(meridian_analysis_warning_at(analysis, 0)), "strayWord");
  CHECK_TEXT(meridian_error_message(meridian_analysis_warning_at(analysis, 1)),
             "\"-maxImageWidth\": needs a number from 0 to 3.4e38: \"wide\"");
  MeridianErrors* found = meridian_analysis_errors_create(analysis, NULL);
  CHECK(meridian_errors_count(found) == COUNT(errors));
  for (size_t index = 0; index < meridian_errors_count(found); ++index) {
    CHECK_TEXT(meridian_error_area(meridian_errors_at(found, index)), errors[index][0]);
    CHECK_TEXT(meridian_error_code_name(meridian_errors_at(found, index)), errors[index][1]);
  }
  meridian_errors_destroy(found);
  meridian_analysis_destroy(analysis);

  MeridianAnalysisOptions options = {.work_directory = meridian_text("-x")};
  analysis = meridian_analysis_create(&options, NULL);
  found = meridian_analysis_writing_warnings_create(analysis, NULL);
  CHECK(meridian_errors_count(found) == 1);
  CHECK_TEXT(meridian_error_code_name(meridian_errors_at(found, 0)), "readAsFlag");
  meridian_errors_destroy(found);
  meridian_analysis_destroy(analysis);
}

int main(void) {
  options_become_words_and_words_options();
  mistakes_are_found_before_the_tool_starts();
  return check_result();
}

/* The argument store, its typed properties and its explanation. */
#include <math.h>
#include <meridian/c/meridian.h>
#include <string.h>

#include "check.h"

#define COUNT(array) (sizeof(array) / sizeof((array)[0]))
#define MAXIMUM_WORDS 32

static const MeridianText absent = {NULL, 0};

/** Makes a store of words that end with NULL. */
static MeridianArguments* store_of(const char* const* words) {
  MeridianText texts[MAXIMUM_WORDS];
  size_t count = 0;
  for (; words[count] != NULL; ++count) texts[count] = meridian_text(words[count]);
  return meridian_arguments_create(texts, count, false, NULL);
}

/** Checks that the rendered words, joined by blanks, are this text. */
static void check_command_line(const MeridianArguments* arguments, const char* expected) {
  char joined[512] = "";
  MeridianTexts* words = meridian_arguments_command_line_create(arguments, NULL);
  char* const* word = meridian_texts_words(words);
  for (size_t index = 0; index < meridian_texts_count(words); ++index) {
    CHECK_TEXT(meridian_texts_at(words, index), word[index]);
    if (index > 0) strcat(joined, " ");
    strcat(joined, word[index]);
  }
  CHECK(word[meridian_texts_count(words)] == NULL);
  CHECK_TEXT(meridian_texts_at(words, meridian_texts_count(words)), NULL);
  CHECK_TEXT(meridian_text(joined), expected);
  meridian_texts_destroy(words);
}

static void append_entry(MeridianEntry entry, bool* stop, void* context) {
  char* joined = context;
  strcat(strcat(strcat(strcat(joined, entry.key.data), "="), entry.value.data), " ");
  *stop = strcmp(entry.key.data, "-stop") == 0;
}

static void stores_are_made_from_words_main_dictionaries_and_json(void) {
  static const char* const words[] = {"program", "-VR", "25", "-out", "/out/A.mov", "-foo", "1", NULL};
  const MeridianEntry entries[] = {{meridian_text("-VR"), meridian_text("25")},
                                   {meridian_text("-out"), meridian_text("/out/A.mov")},
                                   {meridian_text("-foo"), meridian_text("1")}};
  static char* main_words[] = {"program", "-VR", "25", "-out", "/out/A.mov", "-foo", "1", NULL};
  MeridianArguments* stores[4] = {store_of(words + 1), meridian_arguments_create_from_main(7, main_words, false, NULL),
                                  meridian_arguments_create_from_dictionary(entries, COUNT(entries), NULL), NULL};
  MeridianString* json = meridian_arguments_json_create(stores[0], NULL);
  stores[3] = meridian_arguments_create_from_json(meridian_string_text(json), NULL);
  for (size_t index = 0; index < COUNT(stores); ++index) {
    char entry_texts[128] = "";
    char rejected[128] = "";
    CHECK(meridian_arguments_count(stores[index]) == 2);
    CHECK_TEXT(meridian_arguments_value(stores[index], SAVVideoFrameRateFlag), "25");
    CHECK(!meridian_arguments_all_flags_are_valid(stores[index]));
    meridian_arguments_enumerate(stores[index], append_entry, entry_texts);
    CHECK_TEXT(meridian_text(entry_texts), index == 3 ? "-out=/out/A.mov -vr=25 " : "-vr=25 -out=/out/A.mov ");
    meridian_arguments_enumerate_rejected(stores[index], append_entry, rejected);
    CHECK_TEXT(meridian_text(rejected), "-foo=1 ");
    meridian_arguments_destroy(stores[index]);
  }
  CHECK_TEXT(
      meridian_string_text(json),
      "{\"flagValueLookup\":{\"-vr\":\"25\",\"-out\":\"/out/A.mov\"},\"invalidKeyValueLookup\":{\"-foo\":\"1\"}}");
  meridian_string_destroy(json);
}

static void the_last_of_equal_entries_of_a_dictionary_wins(void) {
  const MeridianEntry entries[] = {{meridian_text("-VR"), meridian_text("24")},
                                   {meridian_text("-vr"), meridian_text("25")},
                                   {meridian_text("-VR"), meridian_text("30")}};
  MeridianArguments* arguments = meridian_arguments_create_from_dictionary(entries, COUNT(entries), NULL);
  CHECK_TEXT(meridian_arguments_value(arguments, "-vr"), "30");
  meridian_arguments_destroy(arguments);
}

static void json_that_cannot_be_read_is_an_error(void) {
  static const char* const documents[] = {
      "", "{", "[]", "{}", "{\"flagValueLookup\": 1}", "{\"flagValueLookup\": {\"-a\": 1}}"};
  for (size_t index = 0; index < COUNT(documents); ++index) {
    MeridianError* error = NULL;
    CHECK(meridian_arguments_create_from_json(meridian_text(documents[index]), &error) == NULL);
    CHECK(error != NULL);
    CHECK_TEXT(meridian_error_area(error), "call");
    CHECK_TEXT(meridian_error_code_name(error), "notDecoded");
    CHECK(meridian_error_message(error).size > meridian_error_text(error).size);
    meridian_error_destroy(error);
  }
}

static void texts_may_hold_any_bytes(void) {
  const MeridianText words[] = {{"-out", 4}, {"/\xff\0/a", 5}};
  MeridianArguments* arguments = meridian_arguments_create(words, COUNT(words), true, NULL);
  MeridianError* error = NULL;
  CHECK(meridian_text_equal(meridian_arguments_output_file(arguments), words[1]));
  CHECK(meridian_arguments_json_create(arguments, &error) == NULL);
  CHECK_TEXT(meridian_error_code_name(error), "notEncoded");
  meridian_error_destroy(error);
  meridian_arguments_destroy(arguments);
}

static void flags_are_set_and_removed(void) {
  static const char* const words[] = {"-overwrite", NULL};
  MeridianArguments* arguments = store_of(words);
  MeridianArguments* copy = meridian_arguments_copy(arguments, NULL);
  CHECK(meridian_arguments_has_flag(arguments, SAVOverwriteExistingFlag));
  CHECK(!meridian_arguments_has_flag(arguments, NULL));
  CHECK(meridian_arguments_set_value(arguments, "-vr", meridian_text("30"), NULL));
  CHECK(meridian_arguments_set_value(arguments, "-overwrite", absent, NULL));
  check_command_line(arguments, "-vr 30");
  check_command_line(copy, "-overwrite ");
  meridian_arguments_destroy(arguments);
  meridian_arguments_destroy(copy);
}

static void typed_properties_are_read_and_set(void) {
  static const char* const none[] = {NULL};
  MeridianArguments* arguments = store_of(none);
  float rate = -1;
  int64_t depth = -1;
  MeridianSize size = {0, 0};
  MeridianColor color = {0, 0, 0};
  MeridianTimecode timecode = {0, 0, 0, 0, false};
  CHECK(!meridian_arguments_video_frame_rate(arguments, &rate) && rate == -1);
  CHECK_TEXT(meridian_arguments_video_format(arguments), NULL);
  CHECK_TEXT(meridian_arguments_lut_file(arguments), NULL);
  CHECK(!meridian_arguments_gpu_decode(arguments) && meridian_arguments_include_video(arguments));

  CHECK(meridian_arguments_set_video_frame_rate(arguments, 23.976F, NULL));
  CHECK(meridian_arguments_set_video_bit_depth(arguments, 10, NULL));
  CHECK(meridian_arguments_set_video_dimensions(arguments, (MeridianSize){1920, 1080}, NULL));
  CHECK(meridian_arguments_set_watermark_text_font_color(arguments, (MeridianColor){255, 128, 0}, NULL));
  CHECK(meridian_arguments_set_timecode(arguments, (MeridianTimecode){1, 2, 3, 4, true}, NULL));
  CHECK(meridian_arguments_set_video_format(arguments, meridian_text(SAVProRes422), NULL));
  CHECK(meridian_arguments_set_video_crop_anchor(arguments, meridian_text(SAVAnchorTopLeft), NULL));
  CHECK(meridian_arguments_set_lut_file(arguments, meridian_text("/Looks/A.cube"), NULL));
  CHECK(meridian_arguments_set_gpu_decode(arguments, true, NULL));
  check_command_line(arguments,
                     "-vr 23.976 -vbd 10 -dims 1920.000000x1080.000000 -wmt_font_rgb 255,128,0 -tc_custom 01:02:03;04 "
                     "-vcodec prores422 -crop_anchor tl -clut /Looks/A.cube -gpu_decoding ");

  CHECK(meridian_arguments_video_frame_rate(arguments, &rate) && rate == 23.976F);
  CHECK(meridian_arguments_video_bit_depth(arguments, &depth) && depth == 10);
  CHECK(meridian_arguments_video_dimensions(arguments, &size) && size.width == 1920 && size.height == 1080);
  CHECK(meridian_arguments_watermark_text_font_color(arguments, &color) && color.green == 128);
  CHECK(meridian_arguments_timecode(arguments, &timecode) && timecode.frames == 4 && timecode.is_drop_frame);
  CHECK_TEXT(meridian_arguments_timecode_source(arguments), "custom");
  CHECK_TEXT(meridian_arguments_video_format(arguments), SAVProRes422);
  CHECK_TEXT(meridian_arguments_video_crop_anchor(arguments), SAVAnchorTopLeft);
  CHECK_TEXT(meridian_arguments_lut_file(arguments), "/Looks/A.cube");
  CHECK(meridian_arguments_gpu_decode(arguments));

  CHECK(meridian_arguments_set_video_format(arguments, absent, NULL));
  CHECK(!meridian_arguments_has_flag(arguments, SAVVideoFormatFlag));
  meridian_arguments_destroy(arguments);
}

static void values_that_are_not_valid_change_nothing(void) {
  static const char* const words[] = {"-vr", "25", NULL};
  MeridianArguments* arguments = store_of(words);
  MeridianError* error = NULL;
  const struct {
    const char* property;
    MeridianText input;
    const char* code;
    const char* remedy;
  } cases[] = {{"videoFrameRate", meridian_text("fast"), "invalidValue", NULL},
               {"videoFormat", meridian_text("vhs"), "invalidValue", NULL},
               {"outputFile", {"-a", 2}, "beginsWithDash", NULL},
               {"outputFile", {"a\0b", 3}, "containsNul", "remove the NUL byte"},
               {"videoFromat", meridian_text("h264"), "unknownProperty", "did you mean videoFormat?"}};
  for (size_t index = 0; index < COUNT(cases); ++index) {
    CHECK(!meridian_arguments_set_property_text(arguments, cases[index].property, cases[index].input, &error));
    CHECK_TEXT(meridian_error_area(error), "property");
    CHECK_TEXT(meridian_error_code_name(error), cases[index].code);
    CHECK_TEXT(meridian_error_place(error), cases[index].property);
    if (cases[index].remedy != NULL) CHECK_TEXT(meridian_error_remedy(error), cases[index].remedy);
    meridian_error_destroy(error);
    CHECK(!meridian_arguments_set_property_text(arguments, cases[index].property, cases[index].input, NULL));
  }
  CHECK(!meridian_arguments_set_video_frame_rate(arguments, INFINITY, &error));
  CHECK_TEXT(meridian_error_code_name(error), "invalidValue");
  CHECK(meridian_error_code(error) == 1);
  meridian_error_destroy(error);
  check_command_line(arguments, "-vr 25");
  meridian_arguments_destroy(arguments);
}

static void every_property_accepts_its_example_by_name(void) {
  static const char* const none[] = {NULL};
  CHECK(meridian_property_count() > 50);
  for (size_t index = 0; index < meridian_property_count(); ++index) {
    const MeridianProperty property = meridian_property_at(index);
    MeridianArguments* arguments = store_of(none);
    MeridianString* text = NULL;
    MeridianError* error = NULL;
    CHECK(property.meaning.size > 0 && property.kind.size > 0);
    CHECK(meridian_arguments_set_property_text(arguments, property.name.data, property.example, &error));
    text = meridian_arguments_property_text_create(arguments, property.name.data, &error);
    CHECK(text != NULL && error == NULL);
    meridian_string_destroy(text);
    CHECK(meridian_arguments_remove_property(arguments, property.name.data, &error));
    text = meridian_arguments_property_text_create(arguments, property.name.data, &error);
    CHECK(error == NULL && (text != NULL) == meridian_text_equal(property.kind, meridian_text("switch")));
    meridian_string_destroy(text);
    meridian_arguments_destroy(arguments);
  }
}

static void append_path(MeridianText path, int64_t group, bool* stop, void* context) {
  char* joined = context;
  const size_t end = strlen(joined);
  snprintf(joined + end, 64, "%d:%.*s ", (int)group, (int)path.size, path.data);
  *stop = strcmp(path.data, "last") == 0;
}

static void append_track(int64_t track, bool* stop, void* context) {
  (void)stop;
  *(int64_t*)context = *(int64_t*)context * 10 + track;
}

static void inputs_and_ignored_tracks_are_lists(void) {
  static const char* const words[] = {"-in_1_0", "b", "-in_0_1", "last", "-in_0_0", "a", "-ac_omit_2", NULL};
  const MeridianText paths[] = {meridian_text("x"), meridian_text("y")};
  const int64_t tracks[] = {3, 1};
  const int64_t negative[] = {-1};
  MeridianArguments* arguments = store_of(words);
  char joined[128] = "";
  int64_t digits = 0;
  CHECK(meridian_arguments_enumerate_input_files(arguments, append_path, joined, NULL));
  CHECK_TEXT(meridian_text(joined), "0:a 0:last ");
  CHECK(meridian_arguments_set_input_files(arguments, paths, COUNT(paths), NULL));
  joined[0] = '\0';
  CHECK(meridian_arguments_enumerate_input_files(arguments, append_path, joined, NULL));
  CHECK_TEXT(meridian_text(joined), "0:x 0:y ");
  CHECK(meridian_arguments_set_input_files(arguments, NULL, 0, NULL));
  CHECK(!meridian_arguments_has_flag(arguments, "-in_0_0"));
  CHECK(meridian_arguments_set_ignored_audio_file_tracks(arguments, tracks, COUNT(tracks), NULL));
  CHECK(meridian_arguments_enumerate_ignored_audio_file_tracks(arguments, append_track, &digits, NULL) && digits == 13);
  CHECK(!meridian_arguments_set_ignored_audio_file_tracks(arguments, negative, COUNT(negative), NULL));
  meridian_arguments_destroy(arguments);
}

static void count_text(MeridianText text, bool* stop, void* context) {
  (void)text;
  *stop = ++*(size_t*)context == 3;
}

static void the_vocabulary_is_enumerated(void) {
  char joined[1024] = "";
  size_t count = 0;
  MeridianError* error = NULL;
  MeridianTexts* texts = meridian_property_allowed_texts_create("audioQuality", NULL);
  CHECK(meridian_texts_count(texts) == 5);
  CHECK_TEXT(meridian_texts_at(texts, 4), "max");
  meridian_texts_destroy(texts);
  CHECK(meridian_enumerate_preset(SAVSolvaneCloudPresetValue, append_entry, joined, NULL));
  CHECK(strstr(joined, "-dims=960x540 ") != NULL);
  CHECK(!meridian_enumerate_preset("none", append_entry, joined, &error));
  CHECK_TEXT(meridian_error_code_name(error), "unknownName");
  meridian_error_destroy(error);
  meridian_enumerate_known_flags(count_text, &count);
  CHECK(count == 3);
  CHECK_TEXT(meridian_transcode_mode_flag(), "-isTranscoder");
}

static void an_explanation_says_what_became_of_each_word(void) {
  static const char* const words[] = {"stray",  "-dims",   "1280 x 720", "-vr", "24", "-vr",
                                      "23.976", "-vcoedc", "h264",       "-vn", NULL};
  MeridianText texts[COUNT(words) - 1];
  for (size_t index = 0; index < COUNT(texts); ++index) texts[index] = meridian_text(words[index]);
  MeridianExplanation* explanation = meridian_explanation_create(texts, COUNT(texts), true, NULL);
  CHECK(meridian_explanation_setting_count(explanation) == 3);
  CHECK(meridian_arguments_count(meridian_explanation_arguments(explanation)) == 3);

  const MeridianSetting dimensions = meridian_explanation_setting_at(explanation, 0);
  CHECK_TEXT(dimensions.property, "videoDimensions");
  CHECK_TEXT(dimensions.readable_text, "1280x720");
  CHECK_TEXT(dimensions.preset, NULL);
  CHECK(dimensions.warning_count > 0);
  const MeridianError* warning = meridian_explanation_warning_at(explanation, 0, 0);
  CHECK_TEXT(meridian_error_area(warning), "transcodeWarning");
  CHECK_TEXT(meridian_error_code_name(warning), "invalidValue");
  CHECK_TEXT(meridian_error_place(warning), "-dims");

  const MeridianSetting rate = meridian_explanation_setting_at(explanation, 1);
  CHECK_TEXT(rate.source, "repeated");
  CHECK_TEXT(rate.meaning, "23.976 fps = 24000/1001");
  CHECK(rate.earlier_value_count == 1);
  CHECK_TEXT(meridian_explanation_earlier_value_at(explanation, 1, 0), "24");

  CHECK(meridian_explanation_rejected_count(explanation) == 1);
  const MeridianRejected rejected = meridian_explanation_rejected_at(explanation, 0);
  CHECK_TEXT(rejected.suggestion, "-vcodec");
  CHECK_TEXT(meridian_error_message(rejected.error),
             "\"-vcoedc\": is not a flag of the transcoder; did you mean -vcodec?");

  CHECK(meridian_explanation_dropped_word_count(explanation) == 1);
  CHECK_TEXT(meridian_explanation_dropped_word_at(explanation, 0).word, "stray");
  CHECK(meridian_explanation_note_count(explanation) > 0);
  CHECK_TEXT(meridian_explanation_note_at(explanation, 0), "video is left out");
  meridian_explanation_destroy(explanation);
}

static void a_vector_that_reads_back_differently_is_warned_of(void) {
  static const char* const none[] = {NULL};
  MeridianArguments* arguments = store_of(none);
  CHECK(meridian_arguments_set_value(arguments, "-vprofile", meridian_text("Main"), NULL));
  MeridianErrors* warnings = meridian_arguments_reading_back_warnings_create(arguments, NULL);
  CHECK(meridian_errors_count(warnings) == 1);
  CHECK_TEXT(meridian_error_code_name(meridian_errors_at(warnings, 0)), "readsBackDifferently");
  CHECK(meridian_errors_at(warnings, 1) == NULL);
  meridian_errors_destroy(warnings);
  meridian_arguments_destroy(arguments);
}

int main(void) {
  stores_are_made_from_words_main_dictionaries_and_json();
  the_last_of_equal_entries_of_a_dictionary_wins();
  json_that_cannot_be_read_is_an_error();
  texts_may_hold_any_bytes();
  flags_are_set_and_removed();
  typed_properties_are_read_and_set();
  values_that_are_not_valid_change_nothing();
  every_property_accepts_its_example_by_name();
  inputs_and_ignored_tracks_are_lists();
  the_vocabulary_is_enumerated();
  an_explanation_says_what_became_of_each_word();
  a_vector_that_reads_back_differently_is_warned_of();
  return check_result();
}

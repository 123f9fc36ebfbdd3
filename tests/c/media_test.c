/* Containers, rates, timecode and frame numbers. */
#include <meridian/c/meridian.h>
#include <string.h>

#include "check.h"

#define COUNT(array) (sizeof(array) / sizeof((array)[0]))

static void append(MeridianText text, bool* stop, void* context) {
  strcat(strcat(context, text.data), " ");
  *stop = strcmp(text.data, "Avid") == 0;
}

static void containers_are_enumerated_until_stopped(void) {
  char joined[256] = "";
  meridian_enumerate_containers_of_extension("MOV", append, joined);
  CHECK_TEXT(meridian_text(joined), "QuickTime ");
  joined[0] = '\0';
  meridian_enumerate_container_extensions(SLVMediaFileContainerMXF, append, joined);
  CHECK_TEXT(meridian_text(joined), "mxf ");
  meridian_enumerate_container_extensions(NULL, append, joined);
  meridian_enumerate_container_extensions(SLVMediaFileContainerImageSequence, append, joined);
  CHECK_TEXT(meridian_text(joined), "mxf ");
  joined[0] = '\0';
  meridian_enumerate_makers(append, joined);
  CHECK_TEXT(meridian_text(joined), "Adobe Apple Arri Avid ");
}

static void rates_match_the_standard_ones(void) {
  static const struct {
    MeridianRational rational;
    const char* name;
    const char* text;
    int64_t frames;
    int64_t dropped;
  } cases[] = {{{24000, 1001}, "ntsc24p", "23.98 FPS", 24, 0},
               {{25, 1}, "pal25p", "25 FPS", 25, 0},
               {{2997, 100}, "ntsc30p", "29.97 FPS", 30, 2},
               {{60000, 1001}, "ntsc60p", "59.94 FPS", 60, 4},
               {{25, 2}, "custom", "12.50 FPS", 13, 0}};
  for (size_t index = 0; index < COUNT(cases); ++index) {
    MeridianFrameRate rate;
    int64_t number = 0;
    CHECK(meridian_frame_rate_matching(cases[index].rational, &rate));
    CHECK_TEXT(meridian_frame_rate_name(rate), cases[index].name);
    MeridianString* string = meridian_frame_rate_string_create(rate, NULL);
    CHECK_TEXT(meridian_string_text(string), cases[index].text);
    meridian_string_destroy(string);
    CHECK(meridian_timecode_frames_per_second(rate, &number) && number == cases[index].frames);
    CHECK(meridian_timecode_dropped_labels_per_minute(rate, &number) == (cases[index].dropped != 0));
    if (cases[index].dropped != 0) CHECK(number == cases[index].dropped);
  }
  MeridianFrameRate rate = {{25, 1}, 99};
  CHECK(!meridian_frame_rate_matching((MeridianRational){25, 0}, &rate) && rate.standard == 99);
  CHECK_TEXT(meridian_frame_rate_name(rate), "custom");
  CHECK_TEXT(meridian_frame_rate_name(meridian_frame_rate_custom((MeridianRational){25, 1})), "custom");
  for (size_t index = 0; index < meridian_standard_frame_rate_count(); ++index) {
    const MeridianFrameRate standard = meridian_standard_frame_rate_at(index);
    CHECK(meridian_frame_rate_matching(standard.rational, &rate) && rate.standard == (int)index);
  }
  MeridianString* description = meridian_frame_rate_description_create(23.976, NULL);
  CHECK_TEXT(meridian_string_text(description), "23.976 fps = 24000/1001");
  meridian_string_destroy(description);
}

static void frames_and_labels_convert_both_ways(void) {
  MeridianFrameRate rate;
  MeridianTimecode label;
  MeridianError* error = NULL;
  int64_t number = 0;
  CHECK(meridian_frame_rate_matching((MeridianRational){30000, 1001}, &rate));
  CHECK(meridian_timecode_of_frame(1800, rate, true, &label, NULL));
  MeridianString* text = meridian_timecode_string_create(label, NULL);
  CHECK_TEXT(meridian_string_text(text), "00:01:00;02");
  meridian_string_destroy(text);
  CHECK(meridian_frame_number(label, rate, &number, NULL) && number == 1800);

  CHECK(meridian_timecode_parse(meridian_text("00:01:00;00"), &label));
  CHECK(!meridian_frame_number(label, rate, &number, &error) && number == 1800);
  CHECK_TEXT(meridian_error_message(error),
             "\"00:01:00;00\": is a label that drop-frame timecode skips; start such a minute at frame 02, or 04 at "
             "59.94");
  meridian_error_destroy(error);
  CHECK(!meridian_timecode_of_frame(-1, rate, false, &label, &error));
  CHECK_TEXT(meridian_error_area(error), "timecode");
  CHECK_TEXT(meridian_error_code_name(error), "negativeFrameNumber");
  meridian_error_destroy(error);

  CHECK(!meridian_timecode_parse(meridian_text("1:2:3:4"), &label));
  label = meridian_timecode_sanitized(meridian_text("1:x:3;4"));
  CHECK(label.hours == 1 && label.minutes == 0 && label.seconds == 3 && label.frames == 4 && label.is_drop_frame);
}

int main(void) {
  containers_are_enumerated_until_stopped();
  rates_match_the_standard_ones();
  frames_and_labels_convert_both_ways();
  return check_result();
}

/* LUT files: facts, samples and images. */
#include <meridian/c/meridian.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "check.h"

#define COUNT(array) (sizeof(array) / sizeof((array)[0]))

static char path[64] = "/tmp/meridian_c_lutXXXXXX";

/** Writes a cube of 2 points per axis, blue fastest, that inverts each channel. */
static void write_inverting_cube(void) {
  close(mkstemp(path));
  unlink(path);
  strcat(path, ".cube");
  FILE* file = fopen(path, "w");
  fputs("LUT_3D_SIZE 2\nDOMAIN_MIN 0.0 0.0 0.0\nDOMAIN_MAX 1.0 1.0 2.0\n", file);
  for (int row = 0; row < 8; ++row) {
    fprintf(file, "%d.0 %d.0 %d.0\n", 1 - row / 4, 1 - row / 2 % 2, 1 - row % 2);
  }
  fclose(file);
}

static void count_message(MeridianText level, MeridianText message, void* context) {
  CHECK(level.size > 0 && message.size > 0);
  ++*(int*)context;
}

static void a_file_that_is_not_a_lut_is_an_error(void) {
  int messages = 0;
  CHECK(meridian_set_log(count_message, &messages, NULL));
  static const struct {
    const char* path;
    const char* code;
    bool has_reason;
  } cases[] = {{"/nowhere/a.cube", "notOpened", true}, {"/tmp", "unsupportedExtension", false}};
  for (size_t index = 0; index < COUNT(cases); ++index) {
    MeridianError* error = NULL;
    CHECK(meridian_lut_open(meridian_text(cases[index].path), &error) == NULL);
    CHECK_TEXT(meridian_error_area(error), "lut");
    CHECK_TEXT(meridian_error_code_name(error), cases[index].code);
    CHECK_TEXT(meridian_error_place(error), cases[index].path);
    CHECK((strstr(meridian_error_message(error).data, "No such file") != NULL) == cases[index].has_reason);
    meridian_error_destroy(error);
    CHECK(meridian_lut_open(meridian_text(cases[index].path), NULL) == NULL);
  }
  CHECK(messages == 4);
  CHECK(meridian_set_log(NULL, NULL, NULL));
}

static void a_lut_tells_what_it_holds_and_converts_samples(const MeridianLut* lut) {
  const MeridianLutFacts facts = meridian_lut_facts(lut);
  const uint64_t black[3] = {0, 0, 1023};
  uint64_t result[3] = {7, 7, 7};
  CHECK(facts.is_cube && !facts.has_code_values && facts.size == 2 && facts.rows == 8);
  CHECK(facts.low_value == 0 && facts.high_value == 1 && facts.input_bit_depth == 0);
  CHECK(facts.declares_domain && facts.domain_minimum[2] == 0 && facts.domain_maximum[2] == 2);
  CHECK(meridian_lut_rows(lut)[0] == 1 && meridian_lut_rows(lut)[23] == 0);
  CHECK(meridian_lut_sample(lut, black, 10, 12, result));
  CHECK(result[0] == 4095 && result[1] == 4095 && result[2] == 0);
}

static void a_published_lut_has_its_own_axes_and_rounds(void) {
  MeridianError* error = NULL;
  MeridianLut* lut = meridian_lut_open_published(meridian_text(path), &error);
  CHECK(lut != NULL && error == NULL);
  if (lut == NULL) return;
  CHECK_TEXT(meridian_lut_format(lut), "cube");
  CHECK(meridian_lut_warning_count(lut) == 0);
  const MeridianLutFacts facts = meridian_lut_facts(lut);
  CHECK(facts.is_cube && facts.size == 2 && facts.rows == 0 && facts.domain_maximum[2] == 2);
  CHECK(meridian_lut_rows(lut) == NULL);
  /* Red is fastest, so the cube exchanges red and blue, whose domain ends at 2. */
  const uint64_t sample[3] = {255, 0, 255};
  uint64_t result[3] = {7, 7, 7};
  CHECK(!meridian_lut_sample(lut, sample, 8, 64, result) && result[0] == 7);
  CHECK(meridian_lut_sample(lut, sample, 8, 8, result));
  CHECK(result[0] == 128 && result[1] == 255 && result[2] == 0);
  uint8_t pixel[3] = {255, 0, 255};
  const MeridianImage image = meridian_image_packed(MERIDIAN_SAMPLES_UINT8, pixel, 3, 1, 1);
  CHECK(meridian_lut_apply(lut, &image, &image, NULL, 1, NULL));
  CHECK(pixel[0] == 128 && pixel[1] == 255 && pixel[2] == 0);
  meridian_lut_destroy(lut);
  CHECK(meridian_lut_open_published(meridian_text("/nowhere/a.cube"), &error) == NULL);
  CHECK_TEXT(meridian_error_code_name(error), "notOpened");
  meridian_error_destroy(error);
}

static void images_of_every_kind_are_converted(const MeridianLut* lut) {
  uint8_t bytes[2][4] = {{0, 255, 0, 9}, {255, 0, 255, 200}};
  uint16_t words[3] = {0, 1023, 1023};
  float floats[3] = {0.25F, 1, 0};
  MeridianImage image = meridian_image_packed(MERIDIAN_SAMPLES_UINT8, bytes, 4, 1, 2);
  CHECK(meridian_lut_apply(lut, &image, &image, NULL, 1, NULL));
  CHECK(bytes[0][0] == 255 && bytes[0][1] == 0 && bytes[0][3] == 9 && bytes[1][1] == 255 && bytes[1][3] == 200);

  image = meridian_image_packed(MERIDIAN_SAMPLES_UINT16, words, 3, 1, 1);
  image.bit_depth = 10;
  CHECK(meridian_lut_apply(lut, &image, &image, NULL, 0, NULL));
  CHECK(words[0] == 1023 && words[1] == 0 && words[2] == 0);

  image = meridian_image_packed(MERIDIAN_SAMPLES_FLOAT, floats, 3, 1, 1);
  CHECK(meridian_lut_apply(lut, &image, &image, NULL, 1, NULL));
  CHECK(floats[0] > 0.749F && floats[0] < 0.751F && floats[1] == 0 && floats[2] == 1);
}

static void planes_strides_ranges_and_options_count(const MeridianLut* lut) {
  /* Rows stored bottom up, in planes, in limited range: 64 is black, 940 is white. */
  uint16_t planes[3][2][4] = {{{64, 0, 0, 0}, {940, 0, 0, 0}}, {{64, 0, 0, 0}, {64, 0, 0, 0}}, {{0}}};
  const MeridianLutOptions options = {.tetrahedral = true, .declared_domain = true, .nearest = true};
  MeridianImage image = {.width = 1, .height = 2, .samples = MERIDIAN_SAMPLES_UINT16, .bit_depth = 10};
  MeridianError* error = NULL;
  image.range = MERIDIAN_RANGE_LIMITED;
  planes[2][0][0] = planes[2][1][0] = 940;
  for (size_t channel = 0; channel < 3; ++channel) {
    image.planes[channel] = (MeridianPlane){planes[channel][1], -8, 2};
  }
  MeridianImageLut* prepared = meridian_image_lut_create(lut, &image, &image, &options, NULL);
  CHECK(meridian_image_lut_apply(prepared, &image, &image, 1, NULL));
  CHECK(planes[0][0][0] == 940 && planes[0][1][0] == 64 && planes[1][0][0] == 940);
  /* The domain of blue is 0 to 2, so that white is in its middle. */
  CHECK(planes[2][0][0] == 502 && planes[2][0][1] == 0);

  image.range = MERIDIAN_RANGE_FULL;
  CHECK(!meridian_image_lut_apply(prepared, &image, &image, 1, &error));
  CHECK_TEXT(meridian_error_code_name(error), "otherFormat");
  meridian_error_destroy(error);
  meridian_image_lut_destroy(prepared);
}

static void images_that_cannot_be_used_are_errors(const MeridianLut* lut) {
  uint16_t samples[12] = {0};
  const MeridianImage usable = meridian_image_packed(MERIDIAN_SAMPLES_UINT16, samples, 3, 2, 2);
  MeridianImage images[11];
  static const char* const codes[COUNT(images)] = {
      "noSamples",   "unusableStride", "unequalSizes",  "unusableBitDepth", "unusableRange",    "otherFormat",
      "otherFormat", "unusableRange",  "unusableRange", "unusableRange",    "misalignedSamples"};
  for (size_t index = 0; index < COUNT(images); ++index) images[index] = usable;
  images[0] = meridian_image_packed(MERIDIAN_SAMPLES_UINT16, samples, 5, 2, 2);
  images[1].planes[1].row_stride = 3;
  images[2].height = 1;
  images[3].bit_depth = 17;
  images[4].range = MERIDIAN_RANGE_LIMITED;
  images[4].bit_depth = 7;
  images[5].samples = MERIDIAN_SAMPLES_FLOAT;
  images[6].samples = 9;
  images[7].range = 7;
  images[8].range = 256;
  images[9].range = -1;
  images[10].planes[2].samples = (char*)samples + 1;
  for (size_t index = 0; index < COUNT(images); ++index) {
    MeridianError* error = NULL;
    CHECK(!meridian_lut_apply(lut, &usable, &images[index], NULL, 1, &error));
    CHECK_TEXT(meridian_error_area(error), "image");
    CHECK_TEXT(meridian_error_code_name(error), codes[index]);
    meridian_error_destroy(error);
  }
}

int main(void) {
  a_file_that_is_not_a_lut_is_an_error();
  write_inverting_cube();
  MeridianError* error = NULL;
  MeridianLut* lut = meridian_lut_open(meridian_text(path), &error);
  CHECK(lut != NULL);
  if (lut == NULL) {
    fprintf(stderr, "%s\n", meridian_error_message(error).data);
    return 1;
  }
  a_lut_tells_what_it_holds_and_converts_samples(lut);
  CHECK_TEXT(meridian_lut_format(lut), NULL);
  CHECK(meridian_lut_warning_count(lut) == 2);
  CHECK_TEXT(meridian_error_area(meridian_lut_warning_at(lut, 0)), "lutWarning");
  CHECK_TEXT(meridian_error_code_name(meridian_lut_warning_at(lut, 0)), "domainNotApplied");
  a_published_lut_has_its_own_axes_and_rounds();
  unlink(path);
  images_of_every_kind_are_converted(lut);
  planes_strides_ranges_and_options_count(lut);
  images_that_cannot_be_used_are_errors(lut);
  meridian_lut_destroy(lut);
  return check_result();
}

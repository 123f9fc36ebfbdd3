/* Texts and their views, and the error that needs no memory. */
#include <meridian/c/meridian.h>

#include "check.h"

static void texts_compare_by_their_bytes(void) {
  const MeridianText absent = {NULL, 0};
  const MeridianText with_nul = {"a\0b", 3};
  CHECK(meridian_text(NULL).data == NULL);
  CHECK(meridian_text_equal(absent, meridian_text("")));
  CHECK(!meridian_text_equal(with_nul, meridian_text("a")));
  CHECK_TEXT(meridian_version(), "0.2.0");
}

static void null_handles_may_be_destroyed(void) {
  meridian_error_destroy(NULL);
  meridian_errors_destroy(NULL);
  meridian_string_destroy(NULL);
  meridian_texts_destroy(NULL);
}

/* The address sanitizer ends the process for such a size. */
#if !defined(__has_feature)
#define __has_feature(feature) 0
#endif
#if !defined(__SANITIZE_ADDRESS__) && !__has_feature(address_sanitizer)
static void lack_of_memory_is_an_error(void) {
  const size_t counts[] = {(size_t)1 << 55, SIZE_MAX / 2};
  for (size_t index = 0; index < sizeof(counts) / sizeof(counts[0]); ++index) {
    const MeridianText word = meridian_text("-vn");
    MeridianError* error = NULL;
    CHECK(meridian_arguments_create(&word, counts[index], false, &error) == NULL);
    CHECK_TEXT(meridian_error_area(error), "call");
    CHECK_TEXT(meridian_error_code_name(error), "outOfMemory");
    CHECK_TEXT(meridian_error_message(error), "there is not enough memory; close other programs, or do less at once");
    meridian_error_destroy(error);
  }
}
#else
static void lack_of_memory_is_an_error(void) {}
#endif

int main(void) {
  lack_of_memory_is_an_error();
  texts_compare_by_their_bytes();
  null_handles_may_be_destroyed();
  return check_result();
}

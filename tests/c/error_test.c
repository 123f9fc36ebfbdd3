/* Texts and their views. */
#include <meridian/c/error.h>
#include <meridian/c/text.h>

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

int main(void) {
  texts_compare_by_their_bytes();
  null_handles_may_be_destroyed();
  return check_result();
}

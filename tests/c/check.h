/* What the C tests share: checks that are counted and reported, and do not end the test. */
#ifndef MERIDIAN_TESTS_C_CHECK_H
#define MERIDIAN_TESTS_C_CHECK_H

#include <meridian/c/text.h>
#include <stdio.h>

static int check_failures = 0;

static inline void check_at(bool holds, const char* condition, const char* file, int line) {
  if (holds) return;
  ++check_failures;
  fprintf(stderr, "%s:%d: not true: %s\n", file, line, condition);
}

static inline void check_text_at(MeridianText found, const char* expected, const char* file, int line) {
  if ((found.data == NULL) == (expected == NULL) && meridian_text_equal(found, meridian_text(expected))) return;
  ++check_failures;
  fprintf(stderr, "%s:%d: expected \"%s\", found \"%.*s\"\n", file, line, expected == NULL ? "(absent)" : expected,
          (int)found.size, found.data == NULL ? "" : found.data);
}

#define CHECK(condition) check_at((condition), #condition, __FILE__, __LINE__)
/* A NULL as `expected` means an absent text. */
#define CHECK_TEXT(found, expected) check_text_at((found), (expected), __FILE__, __LINE__)

static inline int check_result(void) { return check_failures == 0 ? 0 : 1; }

#endif

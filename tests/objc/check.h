/* What the tests in plain Objective-C share: checks that are counted and reported, and do not end the test. */
#ifndef MERIDIAN_TESTS_OBJC_CHECK_H
#define MERIDIAN_TESTS_OBJC_CHECK_H

#import <Foundation/Foundation.h>
#include <stdio.h>

#include "leaks.h"

static int check_failures = 0;

static inline void check_at(BOOL holds, const char* condition, const char* file, int line) {
  if (holds) return;
  ++check_failures;
  fprintf(stderr, "%s:%d: not true: %s\n", file, line, condition);
}

#define CHECK(condition) check_at((condition) ? YES : NO, #condition, __FILE__, __LINE__)
/* Both may be nil. */
#define CHECK_EQUAL(found, expected)                                              \
  do {                                                                            \
    id check_found = (found);                                                     \
    id check_expected = (expected);                                               \
    CHECK(check_found == check_expected || [check_found isEqual:check_expected]); \
    if (check_found != check_expected && ![check_found isEqual:check_expected]) { \
      fprintf(stderr, "  found %s\n", [[check_found description] UTF8String]);    \
    }                                                                             \
  } while (0)
#define CHECK_RAISES(exception, statement)     \
  do {                                         \
    NSString* check_raised = nil;              \
    @try {                                     \
      statement;                               \
    } @catch (NSException * check_exception) { \
      check_raised = [check_exception name];   \
    }                                          \
    CHECK_EQUAL(check_raised, exception);      \
  } while (0)

#endif

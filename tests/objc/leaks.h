/* What the address sanitizer shall not report as leaks: the tables of GCC's Objective-C runtime, and what classes of
   GNUstep Base make once, when the runtime initialises them. No function of the runtime calls a method that makes an
   object, so that leaks of objects are still reported. GNUstep has no frame pointers: to see who called whom, the
   sanitizer has to read the unwinding tables. One source of a program includes this. */
#ifndef MERIDIAN_TESTS_OBJC_LEAKS_H
#define MERIDIAN_TESTS_OBJC_LEAKS_H

#ifdef __cplusplus
extern "C" {
#endif
const char* __lsan_default_suppressions(void);
const char* __asan_default_options(void);

__attribute__((no_sanitize("address"))) const char* __lsan_default_suppressions(void) { return "leak:libobjc.so\n"; }
/* GNUstep leaks what it has half decoded when an exception passes through it. Between these two no leak is reported. */
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MERIDIAN_LEAKS_ARE_REPORTED 1
#endif
#endif
#ifdef MERIDIAN_LEAKS_ARE_REPORTED
void __lsan_disable(void);
void __lsan_enable(void);
#else
static inline void __lsan_disable(void) {}
static inline void __lsan_enable(void) {}
#endif

__attribute__((no_sanitize("address"))) const char* __asan_default_options(void) { return "fast_unwind_on_malloc=0"; }
#ifdef __cplusplus
}
#endif

#endif

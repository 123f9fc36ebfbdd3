/* Checks the argument vector of a transcode: prints every mistake with a suggestion, then the vector as it will be run.
   With "--set property value" it changes properties first. In C alone: compile with `pkg-config --cflags --libs
   meridian-c`. */
#include <meridian/c/meridian.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/** Prints the error and frees it. Returns the status of a program that failed. */
static int fail(MeridianError* error) {
  fprintf(stderr, "%s\n", meridian_error_message(error).data);
  meridian_error_destroy(error);
  return EXIT_FAILURE;
}

/** Prints what was noticed about the words. Returns the number of words that were rejected. */
static size_t print_findings(const MeridianExplanation* explanation) {
  const size_t rejected = meridian_explanation_rejected_count(explanation);
  for (size_t index = 0; index < rejected; ++index) {
    printf("error: %s\n", meridian_error_message(meridian_explanation_rejected_at(explanation, index).error).data);
  }
  for (size_t index = 0; index < meridian_explanation_dropped_word_count(explanation); ++index) {
    const MeridianDroppedWord dropped = meridian_explanation_dropped_word_at(explanation, index);
    printf("warning: %s\n", meridian_error_message(dropped.warning).data);
  }
  for (size_t index = 0; index < meridian_explanation_setting_count(explanation); ++index) {
    const MeridianSetting setting = meridian_explanation_setting_at(explanation, index);
    for (size_t warning = 0; warning < setting.warning_count; ++warning) {
      printf("warning: %s\n",
             meridian_error_message(meridian_explanation_warning_at(explanation, index, warning)).data);
    }
    if (setting.meaning.size > 0) printf("%s: %s\n", setting.flag.data, setting.meaning.data);
  }
  return rejected;
}

int main(int argc, char** argv) {
  MeridianError* error = NULL;
  int first = 1;
  while (first + 2 < argc && strcmp(argv[first], "--set") == 0) first += 3;

  MeridianText* words = malloc(((size_t)argc + 1) * sizeof(*words));
  if (words == NULL) return EXIT_FAILURE;
  for (int index = first; index < argc; ++index) words[index - first] = meridian_text(argv[index]);
  MeridianExplanation* explanation = meridian_explanation_create(words, (size_t)(argc - first), true, &error);
  free(words);
  if (explanation == NULL) return fail(error);
  const size_t rejected = print_findings(explanation);

  MeridianArguments* arguments = meridian_arguments_copy(meridian_explanation_arguments(explanation), &error);
  meridian_explanation_destroy(explanation);
  if (arguments == NULL) return fail(error);
  for (int index = 1; index < first; index += 3) {
    if (!meridian_arguments_set_property_text(arguments, argv[index + 1], meridian_text(argv[index + 2]), &error)) {
      meridian_arguments_destroy(arguments);
      return fail(error);
    }
  }

  MeridianTexts* line = meridian_arguments_command_line_create(arguments, &error);
  meridian_arguments_destroy(arguments);
  if (line == NULL) return fail(error);
  for (size_t index = 0; index < meridian_texts_count(line); ++index) {
    printf("[%s]\n", meridian_texts_at(line, index).data);
  }
  meridian_texts_destroy(line);
  return rejected == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

/* Filter decisions, tree walks, free names and claims, in a directory of the test's own. */
#include <meridian/c/meridian.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "check.h"

#define COUNT(array) (sizeof(array) / sizeof((array)[0]))

static char directory[] = "/tmp/meridian_c_filesXXXXXX";

/** Returns the path of a name in the directory, valid until the next call but three. */
static MeridianText at(const char* name) {
  static char paths[4][128];
  static size_t next = 0;
  char* path = paths[next++ % COUNT(paths)];
  snprintf(path, sizeof(paths[0]), "%s/%s", directory, name);
  return meridian_text(path);
}

static void make_file(const char* name) { fclose(fopen(at(name).data, "w")); }

static MeridianFilter* make_filter(void) {
  const MeridianText extensions[] = {meridian_text(".XML")};
  const MeridianText names[] = {meridian_text("thumbs")};
  MeridianFilterSettings settings = {.extensions = extensions, .extension_count = COUNT(extensions)};
  settings.ignore_hidden_items = true;
  settings.ignored_names = names;
  settings.ignored_name_count = COUNT(names);
  return meridian_filter_create(&settings, NULL);
}

static void items_are_decided_on(const MeridianFilter* filter) {
  static const struct {
    const char* name;
    bool is_ignored;
    const char* rule;
  } cases[] = {{"Thumbs", true, "forced component"},
               {".hidden", true, "hidden"},
               {"sub", false, "directory"},
               {"a.xml", true, "extension"},
               {"a.mov", false, "extension"}};
  for (size_t index = 0; index < COUNT(cases); ++index) {
    MeridianDecision decision;
    CHECK(meridian_filter_decide(filter, at(cases[index].name), &decision, NULL));
    CHECK(decision.is_ignored == cases[index].is_ignored);
    CHECK_TEXT(decision.rule, cases[index].rule);
  }
  MeridianFilterSettings settings = {0};
  MeridianFilter* all = meridian_filter_create(&settings, NULL);
  MeridianDecision decision;
  CHECK(meridian_filter_decide(all, at("a.xml"), &decision, NULL) && !decision.is_ignored);
  meridian_filter_destroy(all);
}

typedef struct Walk {
  char items[256];
  char errors[256];
  bool stops;
} Walk;

static void visit(const MeridianTreeItem* item, bool* stop, void* context) {
  Walk* walk = context;
  const size_t end = strlen(walk->items);
  snprintf(walk->items + end, sizeof(walk->items) - end, "%s%.*s%s ", item->decision.is_ignored ? "-" : "",
           (int)item->name.size, item->name.data, item->kind == MERIDIAN_ITEM_DIRECTORY ? "/" : "");
  CHECK(item->path.size > item->name.size);
  *stop = walk->stops;
}

static void report(const MeridianError* error, void* context) {
  Walk* walk = context;
  strcat(walk->errors, meridian_error_code_name(error).data);
}

static void trees_are_walked_with_the_decisions(const MeridianFilter* filter) {
  Walk walk = {"", "", false};
  CHECK(meridian_walk_tree(meridian_text(directory), filter, visit, report, &walk, NULL));
  CHECK_TEXT(meridian_text(walk.items), "-.hidden a.mov -a.xml sub/ b.mov ");
  CHECK_TEXT(meridian_text(walk.errors), "");
  walk = (Walk){"", "", true};
  CHECK(meridian_walk_tree(meridian_text(directory), filter, visit, report, &walk, NULL));
  CHECK_TEXT(meridian_text(walk.items), "-.hidden ");
  CHECK(meridian_walk_tree(meridian_text("/nowhere"), filter, visit, report, &walk, NULL));
  CHECK_TEXT(meridian_text(walk.errors), "unreadableItem");
  CHECK(meridian_walk_tree(meridian_text("/nowhere"), filter, visit, NULL, &walk, NULL));
}

static void check_string(MeridianString* string, MeridianText expected) {
  CHECK_TEXT(meridian_string_text(string), expected.data);
  meridian_string_destroy(string);
}

static void free_names_are_found(void) {
  const MeridianText absent = {NULL, 0};
  const MeridianText directories[] = {meridian_text(directory)};
  const MeridianText extensions[] = {meridian_text("mov"), meridian_text("aac")};
  check_string(meridian_free_path_create(at("a.mov"), NULL), at("a 2.mov"));
  check_string(meridian_free_path_create(at("new.mov"), NULL), at("new.mov"));
  check_string(meridian_free_name_create(meridian_text("a"), meridian_text("mov"), directories, 1, NULL),
               meridian_text("a 2.mov"));
  check_string(meridian_free_name_create(meridian_text("sub"), absent, directories, 1, NULL), meridian_text("sub 2"));
  MeridianTexts* paths = meridian_free_paths_create(meridian_text("a"), extensions, 2, directories, 1, NULL);
  CHECK(meridian_texts_count(paths) == 2);
  CHECK_TEXT(meridian_texts_at(paths, 0), at("a-2.mov").data);
  CHECK_TEXT(meridian_texts_at(paths, 1), at("a-2.aac").data);
  meridian_texts_destroy(paths);
}

static void check_claim(MeridianClaim* claim, const char* const* names, size_t count) {
  CHECK(meridian_claim_count(claim) == count);
  for (size_t index = 0; index < meridian_claim_count(claim); ++index) {
    const MeridianClaimedFile file = meridian_claim_at(claim, index);
    CHECK_TEXT(file.path, at(names[index]).data);
    CHECK(unlink(file.path.data) == 0);
  }
  meridian_claim_destroy(claim);
}

static void claims_create_files_or_say_why_not(void) {
  const MeridianText directories[] = {meridian_text(directory)};
  const MeridianText extensions[] = {meridian_text("mov"), meridian_text("aac")};
  MeridianError* error = NULL;
  check_claim(meridian_claim_create(at("a.mov"), NULL), (const char*[]){"a 2.mov"}, 1);
  check_claim(meridian_claim_create_amongst_directories(meridian_text("a"), meridian_text("mov"), directories, 1, NULL),
              (const char*[]){"a 2.mov"}, 1);
  check_claim(meridian_claim_create_consistent(meridian_text("a"), extensions, 2, directories, 1, NULL),
              (const char*[]){"a-2.mov", "a-2.aac"}, 2);
  CHECK(meridian_claim_create(meridian_text("/nowhere/a.mov"), &error) == NULL);
  CHECK_TEXT(meridian_error_area(error), "claim");
  CHECK_TEXT(meridian_error_code_name(error), "notCreated");
  meridian_error_destroy(error);
}

int main(void) {
  CHECK(mkdtemp(directory) != NULL);
  CHECK(mkdir(at("sub").data, 0700) == 0);
  static const char* const files[] = {".hidden", "a.mov", "a.xml", "sub/b.mov"};
  for (size_t index = 0; index < COUNT(files); ++index) make_file(files[index]);

  MeridianFilter* filter = make_filter();
  items_are_decided_on(filter);
  trees_are_walked_with_the_decisions(filter);
  meridian_filter_destroy(filter);
  free_names_are_found();
  claims_create_files_or_say_why_not();

  for (size_t index = 0; index < COUNT(files); ++index) unlink(at(files[index]).data);
  rmdir(at("sub").data);
  CHECK(rmdir(directory) == 0);
  return check_result();
}

// meridian transcode: what a transcode would do, and the transcoder's listings.
#include "tools/meridian/transcoding.h"
#include "tools/meridian/vector_input.h"

namespace meridian::command {

Subcommand transcodeCommand() {
  using enum Option::Kind;
  return {
      .name = "transcode",
      .description = "Plan a transcode: what would be decoded, changed, encoded and written, or every error at once",
      .details =
          "This version plans transcodes but does not carry them out yet, so --plan is needed. Planning looks at the\n"
          "files and changes none. Warnings are printed on standard error; with errors the exit status is 1.\n"
          "The transcoder's listing commands, such as -codecs, print their listing in place of a plan.\n"
          "\"meridian-transcoder WORD...\" does the same without printing a plan, with the vector alone, for "
          "applications.",
      .example =
          "meridian transcode --plan -- -in_0_0 a.mov -out b.mov -vcodec h264 -dims 1280x720\n"
          "meridian transcode -- -codecs",
      .takesWords = true,
      .fileOption = "from",
      .options = {{flag, "plan", "Print what would be done, and do nothing"},
                  {flag, "json", "With --plan, print JSON: the plan or null, and the errors; or the listing"},
                  fromOption()},
      .checkNames =
          [](const Arguments& arguments) {
            if (arguments.has("json") && !arguments.has("plan")) throw UsageError("--json is for --plan");
          },
      .action =
          [](const Arguments& arguments) {
            return forEachVector(arguments, [&arguments](const GivenVector& given) {
              return transcode(given.wordViews(), {.program = "meridian",
                                                   .line = given.line,
                                                   .isPlanOnly = arguments.has("plan"),
                                                   .isJson = arguments.has("json")});
            });
          },
  };
}

}  // namespace meridian::command

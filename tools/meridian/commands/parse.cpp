// meridian parse: the encoded form of an argument vector.
#include <nlohmann/json.hpp>

#include "meridian/cli/transcode_cli_arguments.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

Status parse(const Arguments& arguments) {
  const TranscodeCliArguments store(arguments.words, arguments.has("keep-order"));
  warnOfInvalidText(arguments.words);
  printJson(asJson(store));
  return arguments.has("strict") && reportUnknownFlags(store) ? failed : done;
}

}  // namespace

Subcommand parseCommand() {
  using enum Option::Kind;
  return {
      .name = "parse",
      .description = "Read an argument vector and print its settings as JSON, in their stored form",
      .example = "meridian parse --keep-order -- -preset solvane_cloud -out /out/a.mov -overwrite",
      .takesWords = true,
      .options = {{flag, "keep-order", "Keep the order of the flags"},
                  {flag, "strict", "Exit with status 1 if a flag or a preset is rejected"}},
      .action = parse,
  };
}

}  // namespace meridian::command

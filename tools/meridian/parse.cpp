// meridian parse: the encoded form of the store that an argument vector gives.
#include <iostream>

#include "meridian/base/printable.h"
#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/serialization/transcode_cli_arguments_json.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

Status parse(const Arguments& arguments) {
  const TranscodeCliArguments store(arguments.words, arguments.has("keep-order"));
  warnOfInvalidText(arguments.words);
  printJson(store);
  if (!arguments.has("strict") || store.allFlagsAreValid()) return done;
  store.enumerateUnknownFlags([](std::string_view flag, std::string_view value) {
    std::cerr << "meridian: rejected: " << printable(flag) << (value.empty() ? "" : " ") << printable(value) << '\n';
  });
  std::cerr << "meridian: \"meridian explain\" with the same words says what may have been meant\n";
  return refused;
}

}  // namespace

Subcommand parseCommand() {
  using enum Option::Kind;
  return {
      .name = "parse",
      .description = "Print the store of an argument vector in its encoded form, as JSON",
      .example = "meridian parse --keep-order -- -preset solvane_cloud -out /out/a.mov -overwrite",
      .takesWords = true,
      .options = {{flag, "keep-order", "Keep the order of the flags in the store"},
                  {flag, "strict", "End with status 1 when a flag or a preset is rejected"}},
      .action = parse,
  };
}

}  // namespace meridian::command

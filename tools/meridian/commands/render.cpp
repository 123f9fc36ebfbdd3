// meridian render: an argument vector, read and rendered again.
#include <iostream>

#include "meridian/cli/transcode_cli_arguments.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

Status render(const Arguments& arguments) {
  const TranscodeCliArguments store(arguments.words, arguments.has("keep-order"));
  reportUnknownFlags(store);
  if (arguments.has("cli-string")) {
    std::cout << store.cliString() << '\n';
    return done;
  }
  printVector(store.commandLine(), arguments);
  return done;
}

}  // namespace

Subcommand renderCommand() {
  using enum Option::Kind;
  return {
      .name = "render",
      .description = "Read an argument vector and print it as the transcoder gets it, one element per line",
      .example = "meridian render --null -- -preset solvane_4444xq -out /out/a.mov | xargs -0 transcoder",
      .takesWords = true,
      .options = {{flag, "keep-order", "Keep the order of the flags"},
                  {flag, "json", "Print a JSON list"},
                  {flag, "null", "End each element with a NUL, for xargs -0; elements may contain newlines"},
                  {flag, "cli-string", "Print all elements joined, for comparing; not for a shell"}},
      .exclusive = {"json", "null", "cli-string"},
      .action = render,
  };
}

}  // namespace meridian::command

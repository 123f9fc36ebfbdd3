// meridian render: an argument vector, read and rendered again.
#include <iostream>

#include "tools/meridian/command.h"
#include "tools/meridian/output.h"
#include "tools/meridian/vector_findings.h"
#include "tools/meridian/vector_input.h"

namespace meridian::command {
namespace {

Status renderVector(const GivenVector& given, const Arguments& arguments) {
  const TranscodeExplanation explanation = explain(given.wordViews(), arguments.has("keep-order"));
  reportFindings(explanation, given.place(), Findings::unusedWords);
  if (given.store) warnOfReadingBack(*given.store, given.place());
  const TranscodeCliArguments& store = given.store ? *given.store : explanation.arguments;
  if (arguments.has("cli-string")) {
    std::cout << store.cliString() << '\n';
  } else {
    printGivenVector(store.commandLine(), given, arguments);
  }
  return done;
}

}  // namespace

Subcommand renderCommand() {
  using enum Option::Kind;
  return {
      .name = "render",
      .description = "Read an argument vector and print it as the transcoder gets it, one element per line",
      .details = "Several vectors are printed one on each line: quoted for a shell, or with --json as JSON lists.",
      .example =
          "meridian render --null -- -preset solvane_4444xq -out /out/a.mov | xargs -0 meridian-transcoder\n"
          "meridian render --json --from jobs.txt",
      .takesWords = true,
      .fileOptions = {"from"},
      .options = {{flag, "keep-order", "Keep the order of the flags; a store keeps its own"},
                  {flag, "json", "Print a JSON list"},
                  {flag, "null", "End each element with a NUL, for xargs -0; elements may contain newlines"},
                  {flag, "shell", "Print one line that is quoted for a shell"},
                  {flag, "cli-string", "Print all elements joined, for comparing; not for a shell"},
                  fromOption()},
      .exclusive = {"json", "null", "shell", "cli-string"},
      .action =
          [](const Arguments& arguments) {
            return forEachVector(arguments,
                                 [&arguments](const GivenVector& given) { return renderVector(given, arguments); });
          },
  };
}

}  // namespace meridian::command

// meridian parse: the encoded form of an argument vector.
#include <nlohmann/json.hpp>

#include "tools/meridian/command.h"
#include "tools/meridian/output.h"
#include "tools/meridian/vector_findings.h"
#include "tools/meridian/vector_input.h"

namespace meridian::command {
namespace {

/// Rejected flags are in the document, so that they are reported by --strict only.
Status parseVector(const GivenVector& given, const Arguments& arguments) {
  const std::vector<std::string_view> words = given.wordViews();
  const TranscodeExplanation explanation = explain(words, arguments.has("keep-order"));
  const bool isStrict = arguments.has("strict");
  const bool isAny = reportFindings(explanation, given.place(), isStrict ? Findings::all : Findings::strayWords);
  warnOfInvalidText(words);
  printJson(storeAsJson(given.store ? *given.store : explanation.arguments),
            given.isFromFile() ? JsonForm::oneLine : JsonForm::indented);
  return isStrict && isAny ? failed : done;
}

}  // namespace

Subcommand parseCommand() {
  using enum Option::Kind;
  return {
      .name = "parse",
      .description = "Read an argument vector and print its settings as JSON, in their stored form",
      .details = "With --from, each store is printed on a line of its own.",
      .example =
          "meridian parse --keep-order -- -preset solvane_cloud -out /out/a.mov -overwrite\n"
          "meridian parse --strict --from jobs.txt",
      .takesWords = true,
      .fileOptions = {"from"},
      .options = {{flag, "keep-order", "Keep the order of the flags; a store keeps its own"},
                  strictOption(),
                  fromOption()},
      .action =
          [](const Arguments& arguments) {
            return forEachVector(arguments,
                                 [&arguments](const GivenVector& given) { return parseVector(given, arguments); });
          },
  };
}

}  // namespace meridian::command

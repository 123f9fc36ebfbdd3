#include "tools/meridian/transcoding.h"

#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "tools/meridian/engine_module.h"
#include "tools/meridian/output.h"

namespace meridian::command {

Status transcode(std::span<const std::string_view> words, const TranscodeRequest& request) {
  const EngineModule& engine = engineModule();
  const TranscodeExplanation explanation = explain(words);
  const bool isJson = request.isPlanOnly && request.isJson;
  const auto print = [&request](const Json& content) {
    Json document = request.line > 0 ? Json{{"line", request.line}} : Json::object();
    document.update(content);
    printJson(document, request.line > 0 ? JsonForm::oneLine : JsonForm::indented);
  };
  if (const auto listing = engine.listing(explanation)) {
    if (isJson) {
      print({{"listing", *listing}});
    } else {
      printSections(*listing);
    }
    return done;
  }
  PlannedTranscode planned = engine.plan(explanation);
  if (isJson) {
    warnOfInvalidText(words, "The transcode uses the bytes unchanged");
    print(engine.encode(planned));
    return planned ? done : failed;
  }
  const auto report = [&request](std::string_view kind, const auto& errorOrWarning) {
    std::cerr << request.program << ": " << (request.line > 0 ? "line " + std::to_string(request.line) + ": " : "")
              << kind << errorOrWarning.message() << '\n';
  };
  if (!planned) {
    for (const TranscodePlanError& error : planned.error()) report("", error);
    return failed;
  }
  const std::vector<TranscodePlanWarning> warnings = std::exchange(planned->warnings, {});
  if (request.isPlanOnly) {
    printSections(engine.describe(*planned));
    std::cout.flush();
  }
  for (const TranscodePlanWarning& warning : warnings) report("warning: ", warning);
  if (!request.isPlanOnly) {
    throw CommandError(
        "this version plans transcodes but does not carry them out yet; \"meridian transcode --plan\" "
        "shows what would be done");
  }
  return done;
}

}  // namespace meridian::command

#include "tools/meridian/transcoding.h"

#include <algorithm>
#include <csignal>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stop_token>
#include <string>
#include <utility>

#include "meridian/base/joined.h"
#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/serialization/transcode_plan_json.h"
#include "meridian/serialization/transcode_result_json.h"
#include "tools/meridian/engine_module.h"
#include "tools/meridian/interruption.h"
#include "tools/meridian/output.h"
#include "tools/meridian/transcode_progress.h"

namespace meridian::command {
namespace {

/// Prints one request's documents and messages.
class Reporter {
 public:
  explicit Reporter(const TranscodeRequest& request) : request_(request) {}

  void print(const Json& content) const {
    Json document = request_.line > 0 ? Json{{"line", request_.line}} : Json::object();
    document.update(content);
    printJson(document, request_.line > 0 ? JsonForm::oneLine : JsonForm::indented);
  }

  void report(std::string_view kind, std::string_view message) const {
    const std::string place = request_.line > 0 ? "line " + std::to_string(request_.line) + ": " : "";
    std::cerr << request_.program << ": " << place << kind << message << '\n';
  }

 private:
  const TranscodeRequest& request_;
};

/// Prints the listings that the words ask for; returns whether they ask for one.
bool printListing(const TranscodeExplanation& words, const TranscodeRequest& request, const Reporter& reporter) {
  const auto listing = engineModule().listing(words);
  if (!listing) return false;
  if (request.isJson) {
    reporter.print({{"listing", *listing}});
  } else {
    printSections(*listing);
  }
  return true;
}

Status printPlan(std::span<const std::string_view> words, const TranscodeRequest& request) {
  const EngineModule& engine = engineModule();
  const Reporter reporter(request);
  const TranscodeExplanation explanation = explain(words);
  if (printListing(explanation, request, reporter)) return done;
  const PlannedTranscode planned = engine.plan(explanation);
  if (request.isJson) {
    warnOfInvalidText(words, "The transcode uses the bytes unchanged");
    reporter.print(engine.encode(planned));
    return planned ? done : failed;
  }
  if (!planned) {
    for (const TranscodePlanError& error : planned.error()) reporter.report("", error.message());
    return failed;
  }
  TranscodePlan plan = *planned;
  const std::vector<TranscodePlanWarning> warnings = std::exchange(plan.warnings, {});
  printSections(engine.describe(plan));
  std::cout.flush();
  for (const TranscodePlanWarning& warning : warnings) reporter.report("warning: ", warning.message());
  return done;
}

/// Tells an application that follows the progress file why there is no transcode. A file that cannot be used for
/// progress is left alone.
void tellOfErrors(const TranscodeExplanation& words, const std::vector<TranscodePlanError>& errors) {
  constexpr std::string_view flag = SAVProgressFileFlag.rawValue();
  const auto setting = std::ranges::find(words.settings, flag, &ExplainedSetting::flag);
  if (setting == words.settings.end() || setting->value.empty()) return;
  if (std::ranges::find(errors, flag, &TranscodePlanError::place) != errors.end()) return;
  const std::stop_source now;
  now.request_stop();
  // What is no file of progress is left alone; the errors are on standard error as well.
  if (!ProgressFile::mayReplace(setting->value)) return;
  // A FIFO is not waited for.
  const ProgressFile file(setting->value, now.get_token());
  file.write({{"state", "failed"}, {"portion", 0.0}, {"error", errors.front()}});
}

Status carryOut(std::span<const std::string_view> words, const TranscodeRequest& request,
                const std::stop_source& stop) {
  const Reporter reporter(request);
  const TranscodeExplanation explanation = explain(words);
  if (printListing(explanation, request, reporter)) return done;
  const PlannedTranscode planned = engineModule().plan(explanation);
  if (!planned) {
    if (request.isJson) reporter.print({{"result", nullptr}, {"errors", planned.error()}, {"warnings", Json::array()}});
    for (const TranscodePlanError& error : planned.error()) reporter.report("", error.message());
    tellOfErrors(explanation, planned.error());
    return failed;
  }
  for (const TranscodePlanWarning& warning : planned->warnings) reporter.report("warning: ", warning.message());
  TranscodeReport progress(planned->output, TranscodeReport::Bar::shown, stop.get_token());
  const auto result = engineModule().transcode(
      *planned, {.acceptsDamaged = request.acceptsDamaged,
                 .progress = [&progress](const TranscodeProgress& each) { progress.show(each); },
                 .stop = stop.get_token()});
  progress.end(result);
  if (request.isJson) {
    warnOfInvalidText(words, "The transcode uses the bytes unchanged");
    reporter.print({{"result", result ? Json(*result) : Json()},
                    {"errors", result ? Json::array() : Json::array({Json(result.error())})},
                    {"warnings", planned->warnings}});
  } else if (result && !planned->output.progressPrefix) {
    std::cout << summaryOf(*result) << '\n' << std::flush;
  }
  if (!result) {
    reporter.report("", result.error().message());
    return failed;
  }
  for (const TranscodeRunWarning& warning : result->warnings) reporter.report("warning: ", warning.message());
  return done;
}

}  // namespace

std::string summaryOf(const TranscodeResult& result) {
  const double elapsed = std::chrono::duration<double>(result.elapsed).count();
  std::string text = printable(result.path) + ": ";
  if (result.frames > 0) text += countText(result.frames, "frame") + ", ";
  text += fixedDecimalText(result.seconds, 2) + " s, " + fixedDecimalText(static_cast<double>(result.bytes) / 1e6, 2) +
          " MB in " + fixedDecimalText(elapsed, 2) + " s";
  return elapsed > 0 ? text + " (" + fixedDecimalText(result.seconds / elapsed, 2) + "x)" : text;
}

Status transcode(std::span<const std::string_view> words, const TranscodeRequest& request) {
  if (request.isPlanOnly) return printPlan(words, request);
  // A file that gets too large for the process, or a pipe without a reader, is an error like a full volume.
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  const std::stop_source stop;
  const StopOnInterruption interruption(stop);
  const Status status = carryOut(words, request, stop);
  interruption.endIfInterrupted();
  return status;
}

}  // namespace meridian::command

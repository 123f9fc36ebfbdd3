#include "tools/meridian/job_list.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "meridian/base/printable.h"
#include "tools/meridian/command.h"
#include "tools/meridian/vector_input.h"

namespace meridian::command {
namespace {

/// Returns the same text for all spellings of a path, also of one that is not there yet.
std::string spelledOut(const std::string& path) {
  std::error_code error;
  const auto canonical = std::filesystem::weakly_canonical(std::filesystem::absolute(path, error), error);
  return error ? path : canonical.string();
}

/// The jobs that read or write a path.
struct Uses {
  std::vector<Job*> readers;
  std::vector<Job*> writers;
};

std::optional<std::string> valueOfFlag(const Job& job, std::string_view flag) {
  const auto found = std::ranges::find(job.words.settings, flag, &ExplainedSetting::flag);
  return found != job.words.settings.end() && !found->value.empty() ? std::optional(found->value) : std::nullopt;
}

std::map<std::string, Uses> usesOf(std::vector<Job>& jobs) {
  std::map<std::string, Uses> uses;
  for (Job& job : jobs) {
    for (const ExplainedSetting& setting : job.words.settings) {
      const bool isRead = TranscodeCliArguments::isInputFileFlag(setting.flag) ||
                          setting.flag == SAVColorLutFileFlag.rawValue() ||
                          setting.flag == SAVWatermarkFileBurnFilePathFlag.rawValue();
      if (isRead && !setting.value.empty()) uses[spelledOut(setting.value)].readers.push_back(&job);
    }
    for (const std::string_view flag : {SAVOutputFileFlag.rawValue(), SAVProgressFileFlag.rawValue()}) {
      if (const auto path = valueOfFlag(job, flag)) uses[spelledOut(*path)].writers.push_back(&job);
    }
  }
  return uses;
}

/// Notes why a job cannot be carried out, unless a reason is known already.
void refuse(Job& job, std::string reason) {
  if (job.error.empty()) job.error = std::move(reason);
}

void refuseConflicts(std::vector<Job>& jobs) {
  for (const auto& [path, each] : usesOf(jobs)) {
    for (Job* const writer : each.writers) {
      for (const Job* const other : each.writers) {
        if (writer == other) continue;
        refuse(*writer, "writes " + inQuotes(path) + ", as job " + std::to_string(other->number) +
                            " does; give each job a file of its own");
      }
      for (const Job* const reader : each.readers) {
        if (writer == reader) continue;
        refuse(*writer, "writes " + inQuotes(path) + ", which job " + std::to_string(reader->number) +
                            " reads; put one of them into another list");
      }
    }
  }
}

}  // namespace

std::vector<Job> readJobs(const std::string& path) {
  const std::string contents = valueOf(contentsOfInput(path));
  auto vectors = vectorsOfText(contents);
  if (!vectors) {
    vectors.error().place = path == "-" ? "standard input" : path;
    throw CommandError(vectors.error());
  }
  std::vector<Job> jobs;
  for (ReadVector& vector : *vectors) {
    Job& job = jobs.emplace_back();
    job.number = jobs.size();
    if (vector) {
      job.words = explain(vector->wordViews());
    } else {
      job.error = vector.error().message();
    }
  }
  refuseConflicts(jobs);
  return jobs;
}

}  // namespace meridian::command

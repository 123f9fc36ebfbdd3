#include "tools/meridian/job_state.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "meridian/base/printable.h"
#include "meridian/serialization/transcode_plan_json.h"
#include "tools/meridian/command.h"
#include "tools/meridian/job_results.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

/// FNV-1a with 64 bits (Fowler, Noll and Vo), from two beginnings.
class Hash {
 public:
  void add(std::string_view text) noexcept {
    for (const char c : text) {
      for (std::uint64_t& each : state_) {
        each ^= static_cast<unsigned char>(c);
        each *= 0x100000001b3U;
      }
      state_[1] = (state_[1] << 1U) | (state_[1] >> 63U);
    }
    // So that two texts are not one.
    for (std::uint64_t& each : state_) each = (each ^ text.size()) * 0x100000001b3U;
  }

  [[nodiscard]] std::string text() const {
    std::string digits;
    for (const std::uint64_t each : state_) {
      for (int shift = 60; shift >= 0; shift -= 4)
        digits += "0123456789abcdef"[each >> static_cast<unsigned>(shift) & 15U];
    }
    return digits;
  }

 private:
  std::array<std::uint64_t, 2> state_{0xcbf29ce484222325U, 0x84222325cbf29ce4U};
};

/// The size and time of change of a file, in bytes and nanoseconds.
struct FileState {
  std::uint64_t size = 0;
  std::int64_t modified = 0;
  std::uint64_t fileNumber = 0;
};

std::optional<FileState> stateOf(const std::string& path) {
  struct stat status{};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  constexpr std::int64_t nanoseconds = 1'000'000'000;
  return FileState{static_cast<std::uint64_t>(status.st_size),
                   std::int64_t{status.st_mtim.tv_sec} * nanoseconds + status.st_mtim.tv_nsec,
                   static_cast<std::uint64_t>(status.st_ino)};
}

void addFile(Hash& hash, const std::string& path) {
  hash.add(path);
  if (const auto state = stateOf(path)) {
    hash.add(std::to_string(state->size));
    hash.add(std::to_string(state->modified));
  }
}

/// Adds a file, or all files of a directory.
void addSource(Hash& hash, const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_directory(path, error)) {
    addFile(hash, path);
    return;
  }
  std::vector<std::string> files;
  for (std::filesystem::directory_iterator each(path, error), end; !error && each != end; each.increment(error)) {
    files.push_back(each->path().string());
  }
  std::ranges::sort(files);
  for (const std::string& file : files) addFile(hash, file);
}

/// Returns a path as JSON has it, with U+FFFD for what is not UTF-8: paths that become equal have hashes of their own.
std::string textOf(const std::string& path) {
  return Json::parse(Json(path).dump(-1, ' ', false, Json::error_handler_t::replace)).get<std::string>();
}

/// Begins with a newline, so that it is a line of its own even after one that was cut short.
std::string lineOf(const Json& entry) {
  return "\n" + entry.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

std::string jobHash(const TranscodePlan& plan, std::string_view versions) {
  Hash hash;
  Json document = plan;
  // How progress is told does not change the output.
  document.erase("warnings");
  for (const char* const name : {"progressFile", "progressPrefix", "replacesExisting", "mayReplace"}) {
    if (document.contains("output")) document["output"].erase(name);
  }
  hash.add(document.dump(-1, ' ', false, Json::error_handler_t::replace));
  hash.add(plan.output.path);
  hash.add(versions);
  for (const PlannedSource& source : plan.sources) {
    for (const PlannedPart& part : source.parts) addSource(hash, part.path);
  }
  if (!plan.video) return hash.text();
  for (const PlannedStep& planned : plan.video->steps) {
    if (const auto* const lut = std::get_if<LutStep>(&planned.step)) addFile(hash, lut->path);
    if (const auto* const watermark = std::get_if<WatermarkStep>(&planned.step)) addFile(hash, watermark->path);
  }
  return hash.text();
}

JobState::JobState(const std::string& listPath, std::optional<std::size_t> only) : path_(listPath + ".state") {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::file_type type = fs::status(path_, error).type();
  if (type != fs::file_type::regular && type != fs::file_type::not_found) {
    throw CommandError(inQuotes(path_) + " is not a file that tells which jobs are complete; remove it");
  }
  if (type == fs::file_type::regular && access(path_.c_str(), R_OK) != 0) {
    throw CommandError(inQuotes(path_) + " cannot be read: " + std::generic_category().message(errno));
  }
  std::ifstream file(path_, std::ios::binary);
  for (std::string line; std::getline(file, line);) addEntry(Json::parse(line, nullptr, false));
  const JobResults results(listPath);
  if (only) {
    if (const auto result = results.read(*only)) addEntry(result->value("completion", Json()));
    return;
  }
  for (const Json& result : results.all()) addEntry(result.value("completion", Json()));
}

std::optional<JobState::Entry> JobState::entryOf(const Json& json) {
  if (!json.is_object()) return std::nullopt;
  Entry entry;
  const auto hash = json.find("job");
  const auto size = json.find("size");
  const auto modified = json.find("modified");
  const auto number = json.find("fileNumber");
  if (hash == json.end() || !hash->is_string() || size == json.end() || !size->is_number_unsigned())
    return std::nullopt;
  entry.hash = hash->get<std::string>();
  entry.size = size->get<std::uint64_t>();
  if (modified != json.end() && modified->is_number_integer()) entry.modified = modified->get<std::int64_t>();
  if (number != json.end() && number->is_number_unsigned()) entry.fileNumber = number->get<std::uint64_t>();
  return entry.modified || entry.fileNumber ? std::optional(entry) : std::nullopt;
}

void JobState::addEntry(const Json& json) {
  const auto entry = entryOf(json);
  if (!entry) return;
  const auto output = json.find("output");
  if (output != json.end() && output->is_string()) entries_.emplace(output->get<std::string>(), *entry);
}

Json JobState::completionOf(const TranscodePlan& plan, const std::string& hash) {
  const auto state = stateOf(plan.output.path);
  if (!state) return nullptr;
  return {{"output", plan.output.path}, {"job", hash}, {"size", state->size}, {"modified", state->modified}};
}

Json JobState::intentionOf(const TranscodePlan& plan, const std::string& hash, std::uint64_t size,
                           std::uint64_t fileNumber) {
  return {{"output", plan.output.path}, {"job", hash}, {"size", size}, {"fileNumber", fileNumber}};
}

bool JobState::isThere(const Json& entry) {
  const auto read = entryOf(entry);
  const auto output = read ? entry.find("output") : entry.end();
  if (!read || output == entry.end() || !output->is_string()) return false;
  const auto state = stateOf(output->get<std::string>());
  return state && state->size == read->size &&
         (state->modified == read->modified || state->fileNumber == read->fileNumber);
}

bool JobState::isComplete(const TranscodePlan& plan, const std::string& hash) const {
  const auto state = stateOf(plan.output.path);
  if (!state) return false;
  const std::lock_guard lock(mutex_);
  const auto [first, last] = entries_.equal_range(textOf(plan.output.path));
  return std::any_of(first, last, [&](const auto& each) {
    const Entry& entry = each.second;
    return entry.hash == hash && entry.size == state->size &&
           (entry.modified == state->modified || entry.fileNumber == state->fileNumber);
  });
}

std::error_code JobState::add(const TranscodePlan& plan, const std::string& hash) {
  const Json entry = completionOf(plan, hash);
  return entry.is_null() ? std::error_code() : add(entry);
}

std::error_code JobState::add(const Json& entry) {
  const std::lock_guard lock(mutex_);
  addEntry(entry);
  return append(lineOf(entry));
}

void JobState::absorb(const JobResults& results) {
  std::string lines;
  for (const Json& result : results.all()) {
    const Json entry = result.value("completion", Json());
    if (entry.is_object()) lines += lineOf(entry);
  }
  if (!lines.empty()) {
    if (const auto error = append(lines)) {
      throw CommandError(inQuotes(path_) + " cannot be written: " + error.message());
    }
  }
  results.clear();
}

std::error_code JobState::append(const std::string& lines) const {
  constexpr mode_t newFile = 0666;
  const int file = open(path_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, newFile);
  const bool isWritten =
      file >= 0 && write(file, lines.data(), lines.size()) == static_cast<ssize_t>(lines.size()) && fsync(file) == 0;
  const int reason = errno;
  if (file >= 0) close(file);
  return isWritten ? std::error_code() : std::error_code(reason, std::generic_category());
}

}  // namespace meridian::command

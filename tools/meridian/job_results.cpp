#include "tools/meridian/job_results.h"

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>

#include "meridian/base/printable.h"
#include "meridian/platform/path_text.h"
#include "meridian/platform/whole_file.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

namespace fs = std::filesystem;

constexpr const char* extension = ".json";

std::optional<Json> readFile(const std::string& path) {
  std::error_code error;
  if (fs::status(path, error).type() != fs::file_type::regular) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  Json document = Json::parse(file, nullptr, false);
  return document.is_object() ? std::optional(std::move(document)) : std::nullopt;
}

[[noreturn]] void throwNotWritten(const std::string& path, const std::error_code& error) {
  throw CommandError(inQuotes(path) + " cannot be written: " + error.message());
}

}  // namespace

std::string JobResults::pathOf(std::size_t job) const {
  return appendingPathComponent(directory_, std::to_string(job) + extension);
}

void JobResults::write(std::size_t job, const Json& result) const {
  std::error_code error;
  fs::create_directory(directory_, error);
  if (error) throwNotWritten(directory_, error);
  const std::string path = pathOf(job);
  auto file = WholeFile::create(path, {.replaces = true});
  if (!file) throwNotWritten(path, file.error());
  error = file->write(result.dump(2, ' ', false, Json::error_handler_t::replace) + '\n');
  if (!error) error = file->publish();
  if (error) throwNotWritten(path, error);
}

std::optional<Json> JobResults::read(std::size_t job) const { return readFile(pathOf(job)); }

std::vector<Json> JobResults::all() const {
  std::vector<Json> results;
  std::error_code error;
  for (fs::directory_iterator each(directory_, error), end; !error && each != end; each.increment(error)) {
    if (each->path().extension() != extension) continue;
    if (auto result = readFile(each->path().string())) results.push_back(*std::move(result));
  }
  return results;
}

void JobResults::clear() const {
  std::error_code error;
  for (fs::directory_iterator each(directory_, error), end; !error && each != end; each.increment(error)) {
    std::error_code ignored;
    if (each->path().extension() == extension) fs::remove(each->path(), ignored);
  }
}

}  // namespace meridian::command

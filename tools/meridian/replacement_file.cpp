#include "tools/meridian/replacement_file.h"

#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "meridian/base/printable.h"
#include "tools/meridian/command.h"
#include "tools/meridian/interruption.h"

namespace meridian::command {
namespace {

[[noreturn]] void throwWriteError(const std::string& path, const std::error_code& error) {
  std::error_code ignored;
  std::string why = error.message();
  if (error == std::errc::not_supported) why = "it is a device or a pipe";
  if (error == std::errc::no_such_file_or_directory && std::filesystem::is_symlink(path, ignored)) {
    why = "it is a link to a file that does not exist";
  }
  throw CommandError(inQuotes(path) + " cannot be written: " + printable(why));
}

}  // namespace

WholeFile createReplacement(const std::string& path, WholeFileOptions options) {
  options.replaces = true;
  options.guard = [](const std::string& hidden) { return std::make_shared<RemovedOnInterruption>(hidden); };
  auto file = WholeFile::create(path, options);
  if (!file) throwWriteError(path, file.error());
  return *std::move(file);
}

void publishReplacement(WholeFile& file, const std::string& path) {
  if (const std::error_code error = file.publish()) throwWriteError(path, error);
}

}  // namespace meridian::command

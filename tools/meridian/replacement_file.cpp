#include "tools/meridian/replacement_file.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>

#include "meridian/base/printable.h"
#include "tools/meridian/command.h"
#include "tools/meridian/interruption.h"

namespace meridian::command {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void throwWriteError(const std::string& path, const std::string& why) {
  throw CommandError(inQuotes(path) + " cannot be written: " + printable(why));
}

std::string systemText(int error) { return std::generic_category().message(error); }

/// Opens and closes the file. Returns the system's error number, or 0.
int tryOpening(const std::string& path, const char* mode) {
  std::FILE* const file = std::fopen(path.c_str(), mode);
  if (file == nullptr) return errno;
  static_cast<void>(std::fclose(file));
  return 0;
}

/// Returns the file at the end of a chain of links.
fs::path targetOf(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) {
    if (error && error != std::errc::no_such_file_or_directory) throwWriteError(path, error.message());
    if (fs::is_symlink(fs::symlink_status(path, error)))
      throwWriteError(path, "it is a link to a file that does not exist");
    return path;
  }
  if (fs::is_directory(status)) throwWriteError(path, systemText(EISDIR));
  if (!fs::is_regular_file(status)) throwWriteError(path, "it is a device or a pipe");
  // A rename would replace even a write-protected file.
  if (const int failure = tryOpening(path, "r+b"); failure != 0) throwWriteError(path, systemText(failure));
  return fs::canonical(path, error);
}

std::string temporaryName(const fs::path& target) {
  std::random_device random;
  const std::uint64_t number = (std::uint64_t{random()} << 32U) | random();
  return ".meridian-" + std::to_string(number) + target.extension().string();
}

}  // namespace

ReplacementFile::ReplacementFile(const std::string& path) {
  const fs::path target = targetOf(path);
  target_ = target.string();
  const std::string temporary = (target.parent_path() / temporaryName(target)).string();
  removeFileOnInterruption(temporary);
  if (const int failure = tryOpening(temporary, "wbx"); failure != 0) {
    removeFileOnInterruption({});
    throwWriteError(path, systemText(failure));
  }
  temporary_ = temporary;
}

ReplacementFile::~ReplacementFile() {
  std::error_code ignored;
  if (!temporary_.empty()) fs::remove(temporary_, ignored);
  removeFileOnInterruption({});
}

void ReplacementFile::replace() {
  std::error_code error;
  const fs::file_status old = fs::status(target_, error);
  if (fs::exists(old)) fs::permissions(temporary_, old.permissions(), error);
  fs::rename(temporary_, target_, error);
  if (error) throwWriteError(target_, error.message());
  temporary_.clear();
}

}  // namespace meridian::command

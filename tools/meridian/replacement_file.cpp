#include "tools/meridian/replacement_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "meridian/base/printable.h"
#include "meridian/platform/whole_file.h"
#include "tools/meridian/command.h"

namespace meridian::command {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void throwWriteError(const std::string& path, const std::string& why) {
  throw CommandError(inQuotes(path) + " cannot be written: " + printable(why));
}

std::string systemText(int error) { return std::generic_category().message(error); }

/// Opens and closes the file. Returns the system's error number, or 0.
int tryOpening(const std::string& path, int flags) {
  const int file = open(path.c_str(), flags | O_CLOEXEC);
  if (file < 0) return errno;
  close(file);
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
  if (const int failure = tryOpening(path, O_RDWR); failure != 0) throwWriteError(path, systemText(failure));
  return fs::canonical(path, error);
}

/// The permissions of a new file, of which the user's mask takes some away.
constexpr mode_t newFile = 0666;

}  // namespace

ReplacementFile::ReplacementFile(const std::string& path, Unfinished preferred) {
  const fs::path target = targetOf(path);
  target_ = target.string();
  if (preferred == Unfinished::withoutName) descriptor_ = openNamelessFile(target.parent_path().string());
  if (descriptor_ >= 0) {
    opened_ = descriptorPath(descriptor_);
    return;
  }
  hidden_ = hiddenPathBeside(target_);
  removal_ = std::make_unique<RemovedOnInterruption>(hidden_);
  descriptor_ = open(hidden_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, newFile);
  if (descriptor_ < 0) throwWriteError(path, systemText(errno));
  opened_ = hidden_;
}

ReplacementFile::~ReplacementFile() {
  if (descriptor_ >= 0) close(descriptor_);
  if (!hidden_.empty()) unlink(hidden_.c_str());
}

void ReplacementFile::replace() {
  if (fsync(descriptor_) != 0) throwWriteError(target_, systemText(errno));
  struct stat old{};
  // Not every file system has permissions.
  if (stat(target_.c_str(), &old) == 0) static_cast<void>(fchmod(descriptor_, old.st_mode & 07777U));
  if (hidden_.empty()) {
    // Until the link exists, the name may be that of another file, which has to stay.
    std::string name = hiddenPathBeside(target_);
    auto removal = std::make_unique<RemovedOnInterruption>(name);
    if (linkat(AT_FDCWD, opened_.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) != 0) {
      throwWriteError(target_, systemText(errno));
    }
    hidden_ = std::move(name);
    removal_ = std::move(removal);
  }
  const int file = std::exchange(descriptor_, -1);
  if (close(file) != 0) throwWriteError(target_, systemText(errno));
  if (rename(hidden_.c_str(), target_.c_str()) != 0) throwWriteError(target_, systemText(errno));
  hidden_.clear();
  removal_.reset();
}

}  // namespace meridian::command

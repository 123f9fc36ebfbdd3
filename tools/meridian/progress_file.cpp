#include "tools/meridian/progress_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>
#include <thread>

#include "meridian/base/printable.h"
#include "tools/meridian/command.h"

namespace meridian::command {
namespace {

constexpr std::string_view stateKey = "state";

[[noreturn]] void throwNotWritten(const std::string& path, const std::string& why) {
  throw CommandError(inQuotes(path) + " cannot be written, so that progress cannot be told: " + why +
                     "; check the path of -progress_file");
}

}  // namespace

bool ProgressFile::mayReplace(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return true;
  struct stat status{};
  const std::string wanted = "{\"" + std::string(stateKey) + "\"";
  std::string found(wanted.size(), ' ');
  const bool hasContent = fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
  const bool isProgress = hasContent &&
                          pread(file, found.data(), found.size(), 0) == static_cast<ssize_t>(wanted.size()) &&
                          found == wanted;
  close(file);
  return !hasContent || isProgress;
}

ProgressFile::ProgressFile(const std::string& path, const std::stop_token& stop) {
  if (!mayReplace(path)) throwNotWritten(path, "it is there already, and holds something else");
  constexpr mode_t newFile = 0666;
  // A FIFO without a reader is not opened; another try follows.
  constexpr std::chrono::milliseconds between(50);
  for (;;) {
    descriptor_ = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, newFile);
    if (descriptor_ >= 0 || errno != ENXIO || stop.stop_requested()) break;
    std::this_thread::sleep_for(between);
  }
  if (descriptor_ >= 0 || stop.stop_requested()) return;
  throwNotWritten(path, std::generic_category().message(errno));
}

ProgressFile::~ProgressFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

void ProgressFile::write(const nlohmann::ordered_json& document) const {
  const std::string line = document.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
  std::string_view rest = line;
  while (!rest.empty() && descriptor_ >= 0) {
    const ssize_t count = ::write(descriptor_, rest.data(), rest.size());
    if (count < 0 && errno == EINTR) continue;
    // A line that fits into the buffer of a FIFO is written whole or not at all.
    if (count < 0) return;
    rest.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace meridian::command

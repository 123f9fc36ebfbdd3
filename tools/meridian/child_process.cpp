#include "tools/meridian/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "meridian/base/printable.h"
#include "tools/meridian/command.h"

namespace meridian::command {
namespace {

/// A pipe from a child.
struct Pipe {
  std::array<int, 2> ends{-1, -1};

  Pipe() {
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category());
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  Pipe(Pipe&&) = delete;
  Pipe& operator=(Pipe&&) = delete;
  ~Pipe() {
    closeEnd(0);
    closeEnd(1);
  }

  void closeEnd(std::size_t end) {
    if (ends[end] >= 0) close(ends[end]);
    ends[end] = -1;
  }
};

class FileActions {
 public:
  FileActions() { posix_spawn_file_actions_init(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  FileActions(FileActions&&) = delete;
  FileActions& operator=(FileActions&&) = delete;
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }

  [[nodiscard]] posix_spawn_file_actions_t* get() noexcept { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

/// Reads both pipes to their ends.
void readBoth(Pipe& output, Pipe& errors, ChildOutcome& outcome) {
  std::array<pollfd, 2> awaited{
      {{.fd = output.ends[0], .events = POLLIN, .revents = 0}, {.fd = errors.ends[0], .events = POLLIN, .revents = 0}}};
  const std::array<std::string*, 2> texts{&outcome.output, &outcome.errors};
  int open = 2;
  while (open > 0) {
    if (poll(awaited.data(), awaited.size(), -1) < 0 && errno != EINTR) return;
    for (std::size_t each = 0; each < awaited.size(); ++each) {
      if (awaited[each].fd < 0 || awaited[each].revents == 0) continue;
      std::array<char, 4096> bytes{};
      const ssize_t count = read(awaited[each].fd, bytes.data(), bytes.size());
      if (count > 0) {
        texts[each]->append(bytes.data(), static_cast<std::size_t>(count));
      } else if (count == 0 || errno != EINTR) {
        awaited[each].fd = -1;
        --open;
      }
    }
  }
}

}  // namespace

ChildOutcome runChild(const std::vector<std::string>& words) {
  Pipe output;
  Pipe errors;
  FileActions actions;
  posix_spawn_file_actions_addopen(actions.get(), STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(actions.get(), output.ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(actions.get(), errors.ends[1], STDERR_FILENO);
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  pid_t child = 0;
  const int error = posix_spawnp(&child, arguments.front(), actions.get(), nullptr, arguments.data(), environ);
  if (error != 0) {
    throw CommandError(inQuotes(words.front()) + " cannot be started: " + std::generic_category().message(error));
  }
  output.closeEnd(1);
  errors.closeEnd(1);
  ChildOutcome outcome;
  readBoth(output, errors, outcome);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  constexpr int signalled = 128;
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : signalled + WTERMSIG(status);
  return outcome;
}

}  // namespace meridian::command

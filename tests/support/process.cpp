#include "tests/support/process.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace meridian::test {
namespace {

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

File temporaryFile() {
  File file(std::tmpfile(), &std::fclose);
  if (!file) throw std::runtime_error("no temporary file");
  return file;
}

std::string contentsOf(FILE* file) {
  std::rewind(file);
  std::string contents;
  std::array<char, 65536> buffer{};
  while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), file)) {
    contents.append(buffer.data(), count);
  }
  return contents;
}

[[noreturn]] void become(const std::vector<std::string>& command, const RunOptions& options) {
  for (const std::string& setting : options.environment) {
    const std::size_t equals = setting.find('=');
    setenv(setting.substr(0, equals).c_str(), setting.substr(equals + 1).c_str(), 1);
  }
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  execvp(arguments.front(), arguments.data());
  _exit(127);
}

}  // namespace

int waitForStatus(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

Outcome run(const std::vector<std::string>& command, const RunOptions& options) {
  const File output = temporaryFile();
  const File errors = temporaryFile();
  const pid_t child = fork();
  if (child == 0) {
    const int to =
        options.outputFile.empty() ? fileno(output.get()) : open(options.outputFile.c_str(), O_WRONLY | O_CLOEXEC);
    dup2(to, STDOUT_FILENO);
    dup2(fileno(errors.get()), STDERR_FILENO);
    become(command, options);
  }
  const int status = waitForStatus(child);
  return {status, contentsOf(output.get()), contentsOf(errors.get())};
}

Outcome runOnTerminal(const std::vector<std::string>& command, const RunOptions& options) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) become(command, options);
  Outcome outcome;
  std::array<char, 4096> buffer{};
  ssize_t count = 0;
  while ((count = read(terminal, buffer.data(), buffer.size())) > 0) {
    outcome.output.append(buffer.data(), static_cast<std::size_t>(count));
  }
  close(terminal);
  outcome.status = waitForStatus(child);
  return outcome;
}

}  // namespace meridian::test

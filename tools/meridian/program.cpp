#include "tools/meridian/program.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <memory>
#include <vector>

#include "meridian/base/printable.h"
#include "meridian/suite/logger.h"

namespace meridian::command {
namespace {

class SilentLogger final : public Logger {
 public:
  void log(LogLevel /*level*/, std::string_view /*message*/) override {}
};

}  // namespace

int runProgram(std::string_view name, int argc, char** argv,
               const std::function<Status(std::span<const std::string_view>)>& run) {
  const auto report = [name](std::string_view message, Status status) {
    std::cerr << name << ": " << message << '\n';
    return status;
  };
  try {
    std::ios::sync_with_stdio(false);
    setLogger(std::make_shared<SilentLogger>());
    const std::vector<std::string_view> words(argv + std::min(argc, 1), argv + argc);
    const Status status = run(words);
    if (!std::cout.flush()) throw CommandError("standard output cannot be written");
    return status;
  } catch (const UsageError& error) {
    return report(error.what(), wrongUsage);
  } catch (const CommandError& error) {
    return report(error.what(), failed);
  } catch (const std::exception& error) {
    return report(printable(error.what()), failed);
  }
}

}  // namespace meridian::command

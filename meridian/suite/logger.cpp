#include "meridian/suite/logger.h"

#include <cstdio>
#include <utility>

#include "meridian/base/no_destructor.h"
#include "meridian/base/printable.h"
#include "meridian/base/shared_slot.h"

namespace meridian::inline v0_2 {
namespace {

class StandardErrorLogger final : public Logger {
 public:
  void log(LogLevel level, std::string_view message) override {
    std::string line(rawValue(level));
    line += ": ";
    line += printable(message);
    line += '\n';
    // One call a line: the stream's own lock keeps lines of several threads apart.
    std::fwrite(line.data(), 1, line.size(), stderr);
  }
};

SharedSlot<Logger>& loggerInUse() {
  static NoDestructor<SharedSlot<Logger>> slot(std::make_shared<StandardErrorLogger>());
  return *slot;
}

}  // namespace

Logger::~Logger() = default;

std::shared_ptr<Logger> currentLogger() { return loggerInUse().get(); }

void setLogger(std::shared_ptr<Logger> logger) {
  if (!logger) logger = std::make_shared<StandardErrorLogger>();
  loggerInUse().set(std::move(logger));
}

void log(LogLevel level, LogTag tag, std::string_view text) {
  std::string message(tag.text());
  message += text;
  currentLogger()->log(level, message);
}

}  // namespace meridian::inline v0_2

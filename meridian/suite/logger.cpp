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
    // One call per line, so that lines of different threads do not mix.
    std::fwrite(line.data(), 1, line.size(), stderr);
  }
};

SharedSlot<Logger>& loggerSlot() {
  static NoDestructor<SharedSlot<Logger>> slot(std::make_shared<StandardErrorLogger>());
  return *slot;
}

}  // namespace

Logger::~Logger() = default;

std::shared_ptr<Logger> currentLogger() { return loggerSlot().get(); }

void setLogger(std::shared_ptr<Logger> logger) {
  if (!logger) logger = std::make_shared<StandardErrorLogger>();
  loggerSlot().set(std::move(logger));
}

void log(LogLevel level, LogTag tag, std::string_view text) {
  std::string message(tag.text());
  message += text;
  currentLogger()->log(level, message);
}

}  // namespace meridian::inline v0_2

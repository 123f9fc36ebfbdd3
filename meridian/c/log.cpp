#include "meridian/c/log.h"

#include "meridian/c/handles.h"
#include "meridian/suite/logger.h"

namespace m = meridian;
using m::c::textOf;

namespace {

class FunctionLogger final : public m::Logger {
 public:
  FunctionLogger(MeridianLog function, void* context) : function_(function), context_(context) {}

  void log(m::LogLevel level, std::string_view message) override {
    function_(textOf(rawValue(level)), textOf(message), context_);
  }

 private:
  MeridianLog function_;
  void* context_;
};

}  // namespace

bool meridian_set_log(MeridianLog log, void* context, MeridianError** error) noexcept {
  return m::c::done(error, [&] {
    m::setLogger(log == nullptr ? nullptr : std::make_shared<FunctionLogger>(log, context));
    return true;
  });
}

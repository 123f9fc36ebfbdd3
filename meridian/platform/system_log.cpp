#include "meridian/platform/system_log.h"

#include <syslog.h>

namespace meridian {

void writeToSystemLog(std::string_view message) noexcept {
  syslog(LOG_ERR, "%.*s", static_cast<int>(message.size()), message.data());
}

}  // namespace meridian

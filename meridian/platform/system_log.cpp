#include "meridian/platform/system_log.h"

#include <syslog.h>

namespace meridian::inline v0_2 {

void writeToSystemLog(std::string_view message) noexcept {
  syslog(LOG_ERR, "%.*s", static_cast<int>(message.size()), message.data());
}

}  // namespace meridian::inline v0_2

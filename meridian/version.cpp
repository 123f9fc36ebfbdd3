#include "meridian/version.h"

#define MERIDIAN_TEXT_OF(number) #number
#define MERIDIAN_VERSION_TEXT(major, minor, patch) \
  MERIDIAN_TEXT_OF(major) "." MERIDIAN_TEXT_OF(minor) "." MERIDIAN_TEXT_OF(patch)

namespace meridian::inline v0_2 {

Version libraryVersion() noexcept { return headerVersion; }

std::string_view versionText() noexcept {
  return MERIDIAN_VERSION_TEXT(MERIDIAN_VERSION_MAJOR, MERIDIAN_VERSION_MINOR, MERIDIAN_VERSION_PATCH);
}

}  // namespace meridian::inline v0_2

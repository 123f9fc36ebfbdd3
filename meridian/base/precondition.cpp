#include "meridian/base/precondition.h"

#include <cstdio>
#include <cstdlib>

namespace meridian::inline v0_2 {

void preconditionFailed(std::string_view message) noexcept {
  std::fprintf(stderr, "meridian: fatal: %.*s\n", static_cast<int>(message.size()), message.data());
  std::abort();
}

}  // namespace meridian::inline v0_2

#include "meridian/cli/transcode_flags.h"

#include "meridian/base/text.h"

namespace meridian::inline v0_2 {

std::string normalizedFlag(std::string_view word) { return lowercased(trimmed(word)); }

}  // namespace meridian::inline v0_2

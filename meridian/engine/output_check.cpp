#include "meridian/engine/output_check.h"

#include <cmath>
#include <string>
#include <vector>

namespace meridian::inline v0_2 {

std::optional<TranscodeRunError> checkOutput(const MediaDescription& written, const TranscodePlan& plan,
                                             const WrittenMedia& media) {
  static_cast<void>(written);
  static_cast<void>(plan);
  static_cast<void>(media);
  return std::nullopt;
}

}  // namespace meridian::inline v0_2

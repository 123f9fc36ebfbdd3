/// \file
/// Describes a file that has not got its name yet.
#pragma once

#include <string>

#include "meridian/base/expected.h"
#include "meridian/engine/describe_media.h"

namespace meridian::inline v0_2::libav {

/// Describes the file at a path as if it had another name, whose extension supports a guess of its format. The result
/// has the name as its path.
[[nodiscard]] Expected<MediaDescription, MediaError> describeUnfinished(const std::string& path,
                                                                        const std::string& name,
                                                                        const DescriptionLimits& limits);

}  // namespace meridian::inline v0_2::libav

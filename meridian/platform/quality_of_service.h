// The classes of work that the suite's applications tell apart by how soon a person needs its result.
#pragma once

#include <array>
#include <cstdint>

#include "meridian/base/enumeration.h"

namespace meridian::inline v0_2 {

/// From the most to the least urgent. `unspecified` says nothing, `default_` that nothing special is known.
enum class QualityOfService : std::uint8_t {
  userInteractive,
  userInitiated,
  default_,
  utility,
  background,
  unspecified
};

template <>
struct EnumerationTable<QualityOfService> {
  static constexpr auto rows = std::to_array<EnumerationRow<QualityOfService>>({
      {QualityOfService::userInteractive, "userInteractive"},
      {QualityOfService::userInitiated, "userInitiated"},
      {QualityOfService::default_, "default"},
      {QualityOfService::utility, "utility"},
      {QualityOfService::background, "background"},
      {QualityOfService::unspecified, "unspecified"},
  });
};

}  // namespace meridian::inline v0_2

/// \file
/// Classes of work by how soon a person needs the result. For example:
///
///     DispatchQueue::global(QualityOfService::utility)->sync(verifyCopy);
#pragma once

#include <array>
#include <cstdint>

#include "meridian/base/enumeration.h"

namespace meridian::inline v0_2 {

/// From the most to the least urgent. `default_` is ordinary work; `unspecified` makes no statement.
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

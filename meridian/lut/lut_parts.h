/// \file
/// The parts of a LUT file that samples pass through, by their classes.
#pragma once

#include <cstdint>
#include <optional>

#include "meridian/lut/lut_file.h"
#include "meridian/lut/sample_converter.h"

namespace meridian::inline v0_2::detail {

/// Pointers into a file, null for what it does not have. Valid while the file is there.
struct LutParts {
  const ThreeDimensionalLutConverter* cube = nullptr;
  /// Absent for floating point.
  std::optional<std::int64_t> cubeBitDepth;

  const OneDimensionConverter* table = nullptr;
  /// The same converter as `table`; null for floating point.
  const OneDimensionsUnsignedIntegerConverter* integerTable = nullptr;
};

/// Returns the parts of a file: the only place that asks for its class.
[[nodiscard]] LutParts partsOf(const ParsedLutFile& file) noexcept;

}  // namespace meridian::inline v0_2::detail

/// \file
/// What may surprise about a LUT that was read, although nothing failed. For example:
///
///     for (const LutWarning& warning : warningsOf(*file, {})) std::cerr << warning.message() << '\n';
///     // "/looks/show.cube": declares a domain that is not applied: 0 to 4; apply the declared domain, or ...
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"
#include "meridian/export.h"
#include "meridian/lut/image_lut_options.h"

namespace meridian::inline v0_2 {

class ParsedLutFile;

/// What was noticed about a LUT: ignoredLines for both readings, negativeResults, nanValues, domainPartlyApplied,
/// depthExceeded, depthUnused, wholeNumbers and otherLibrary for published files, noPublishedFormat for files that a
/// published reading leaves to the suite's, all others for files as the suite reads them.
enum class LutWarningCode : std::uint8_t {
  domainNotApplied,
  highestBelowFullScale,
  highestAboveFullScale,
  oneDimensionalByRowCount,
  cubeReadAs1D,
  bothSizesDeclared,
  cubeOfOnePoint,
  negativeValues,
  tooFewRows,
  otherAxisOrder,
  ignoredLines,
  negativeResults,
  nanValues,
  domainPartlyApplied,
  depthExceeded,
  depthUnused,
  wholeNumbers,
  otherLibrary,
  noPublishedFormat,
  otherPublishedFormat,
};

template <>
struct EnumerationTable<LutWarningCode> {
  static constexpr auto rows = std::to_array<ErrorRow<LutWarningCode>>({
      {LutWarningCode::domainNotApplied, "domainNotApplied", "declares a domain that is not applied",
       "apply the declared domain, or read the file as its format publishes it"},
      {LutWarningCode::highestBelowFullScale, "highestBelowFullScale",
       "has a highest value below full scale, so that all inputs above it give the last point",
       "apply the declared domain, or read the file as its format publishes it"},
      {LutWarningCode::highestAboveFullScale, "highestAboveFullScale",
       "has a highest value above full scale, at which its axes end",
       "apply the declared domain, or read the file as its format publishes it"},
      {LutWarningCode::oneDimensionalByRowCount, "oneDimensionalByRowCount",
       "is read as a 1D LUT because of its number of rows, which is also that of a cube",
       "if it is a cube, add a line LUT_3D_SIZE with the size"},
      {LutWarningCode::cubeReadAs1D, "cubeReadAs1D",
       "is read as a 1D LUT because of its number of rows, but its format has cubes only",
       "read the file as its format publishes it"},
      {LutWarningCode::bothSizesDeclared, "bothSizesDeclared", "declares a 1D and a 3D size, but is read as one LUT",
       "read the file as its format publishes it"},
      {LutWarningCode::cubeOfOnePoint, "cubeOfOnePoint", "is a cube of one point, so that every input gives one colour",
       "check that the file is complete"},
      {LutWarningCode::negativeValues, "negativeValues",
       "has negative values, which become 0 in images of code values and for which sample converters have no result",
       "apply it to floating-point images to keep them, or replace them with 0 in the file"},
      {LutWarningCode::tooFewRows, "tooFewRows", "has fewer rows than its size needs", "copy or export the LUT again"},
      {LutWarningCode::otherAxisOrder, "otherAxisOrder", "is not read with the axis order of its format",
       "read the file as its format publishes it"},
      {LutWarningCode::ignoredLines, "ignoredLines", "has lines that are ignored", "check what they say"},
      {LutWarningCode::negativeResults, "negativeResults",
       "has negative results, which become 0 in images of code values",
       "apply it to floating-point images to keep them"},
      {LutWarningCode::nanValues, "nanValues", "has values that are NaN, which become 0 in images",
       "export the LUT again"},
      {LutWarningCode::domainPartlyApplied, "domainPartlyApplied", "declares a domain that is not applied everywhere",
       "check which domain the LUT is for, and remove the other line"},
      {LutWarningCode::depthExceeded, "depthExceeded",
       "has values of more than twice the declared bit depth, so that the depth is taken from the values",
       "correct its Mesh line"},
      {LutWarningCode::depthUnused, "depthUnused",
       "has values far below the declared bit depth, so that images become dark", "correct its Mesh line"},
      {LutWarningCode::wholeNumbers, "wholeNumbers",
       "has whole numbers like code values, although 1 is white in its format",
       "if they are code values, read the file as the suite does, or export it with numbers from 0 to 1"},
      {LutWarningCode::otherLibrary, "otherLibrary", "has operations that another library computes",
       "export the LUT as .cube if its results must not depend on that library"},
      {LutWarningCode::noPublishedFormat, "noPublishedFormat",
       "is not in a published LUT format and is read as the suite reads it",
       "export the LUT as .cube if another program shows other colours"},
      {LutWarningCode::otherPublishedFormat, "otherPublishedFormat",
       "is in a format that the suite takes for rows of its own", "read the file as its format publishes it"},
  });
};

/// Names the file in `place`. `detail` gives the numbers or lines that the warning is about.
using LutWarning = Warning<LutWarningCode>;

/// Returns what may surprise about a file that was read as the suite reads it and is applied to images with these
/// options (single samples are converted as with the default options). In the order of the codes, each at most once.
/// Reads the file's beginning again if only its number of rows makes it a 1D LUT.
[[nodiscard]] MERIDIAN_API std::vector<LutWarning> warningsOf(const ParsedLutFile& file,
                                                              const ImageLutOptions& options = {});

}  // namespace meridian::inline v0_2

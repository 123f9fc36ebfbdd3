// Whole images through a look-up table.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <type_traits>

#include "meridian/base/enumeration.h"
#include "meridian/export.h"
#include "meridian/lut/image_view.h"
#include "meridian/lut/lut_file.h"
#include "meridian/lut/lut_interpolation.h"

namespace meridian::inline v0_2 {

/// Which axis the rows of a file run along first.
enum class LutAxisOrder : std::uint8_t {
  blueFastest,  ///< as everywhere else in this library
  redFastest,   ///< as the published `.cube` format says
};

template <>
struct EnumerationTable<LutAxisOrder> {
  static constexpr auto rows = std::to_array<EnumerationRow<LutAxisOrder>>({
      {LutAxisOrder::blueFastest, "blueFastest"},
      {LutAxisOrder::redFastest, "redFastest"},
  });
};

/// Which input values a table's axes stand for.
enum class LutInputDomain : std::uint8_t {
  /// As the converters say: from 0 to the cube's highest value; a one-dimensional table from its first row to its last.
  dataRange,
  /// What the file declares: 0 to 1, which is all code values, where it declares nothing.
  declared,
};

template <>
struct EnumerationTable<LutInputDomain> {
  static constexpr auto rows = std::to_array<EnumerationRow<LutInputDomain>>({
      {LutInputDomain::dataRange, "dataRange"},
      {LutInputDomain::declared, "declared"},
  });
};

struct ImageLutOptions {
  LutInterpolation interpolation = LutInterpolation::trilinear;
  LutAxisOrder axisOrder = LutAxisOrder::blueFastest;
  LutInputDomain domain = LutInputDomain::dataRange;
};

/// A look-up table made ready for images of one kind. It keeps nothing of the file, and may be used from several
/// threads at once.
///
/// Code values get what the file's converter gives them, bit for bit on every machine, with one difference: a result
/// that is no code value of the destination's depth becomes the nearest one that is, and one that is not a number 0,
/// where a converter stops the process or gives a larger number.
///
/// Floating-point samples are on the scale from 0 to 1, which stands for all code values of a table of integers; they
/// are not truncated. What is not a number counts as the lowest value. Results are computed in single precision, to
/// about six digits of the table's largest value; the last digit may differ from machine to machine. What is too large
/// for single precision becomes infinite.
class MERIDIAN_API ImageLut {
 public:
  /// For images of code values, with depths from 1 to 16 bits; absent for other depths.
  [[nodiscard]] static std::optional<ImageLut> forCodeValues(const ParsedLutFile& file, int sourceBitDepth,
                                                             int destinationBitDepth,
                                                             const ImageLutOptions& options = {});

  /// For images of floating-point samples.
  [[nodiscard]] static ImageLut forFloats(const ParsedLutFile& file, const ImageLutOptions& options = {});

  ImageLut(ImageLut&&) noexcept;
  ImageLut& operator=(ImageLut&&) noexcept;
  ImageLut(const ImageLut&) = delete;
  ImageLut& operator=(const ImageLut&) = delete;
  ~ImageLut();

  /// Leads every pixel of `source` through the table into `destination`, which may be the same samples, but overlaps
  /// them in no other way. The layouts may differ: alpha goes through, at the destination's depth, and is opaque where
  /// the source has none. `threads` work on bands of rows, 0 as many as the machine runs at once, 256 at most; a caller
  /// with threads of its own calls for some rows from each. Absent when it is done; an image with a fault is not
  /// touched.
  [[nodiscard]] std::optional<ImageErrorCode> apply(const ImageView<const std::uint8_t>& source,
                                                    const ImageView<std::uint8_t>& destination,
                                                    unsigned threads = 1) const;
  [[nodiscard]] std::optional<ImageErrorCode> apply(const ImageView<const std::uint16_t>& source,
                                                    const ImageView<std::uint16_t>& destination,
                                                    unsigned threads = 1) const;
  [[nodiscard]] std::optional<ImageErrorCode> apply(const ImageView<const float>& source,
                                                    const ImageView<float>& destination, unsigned threads = 1) const;

  /// What `apply` makes of one pixel of code values, by the plain definition in double precision.
  [[nodiscard]] std::array<std::uint16_t, 3> pixel(std::uint16_t red, std::uint16_t green,
                                                   std::uint16_t blue) const noexcept;

  /// What `apply` approximates for one pixel of floating-point samples.
  [[nodiscard]] LutColor pixel(const LutColor& color) const noexcept;

 private:
  struct Prepared;
  explicit ImageLut(std::unique_ptr<const Prepared> prepared) noexcept;

  template <ImageSample Sample>
  [[nodiscard]] std::optional<ImageErrorCode> applyTo(const ImageView<const Sample>& source,
                                                      const ImageView<Sample>& destination, unsigned threads) const;

  std::unique_ptr<const Prepared> prepared_;
};

/// Leads an image through a table in one call. The depths are those of the views.
template <ImageSample Sample>
  requires(!std::is_const_v<Sample>)
[[nodiscard]] std::optional<ImageErrorCode> applyLut(const ParsedLutFile& file,
                                                     const std::type_identity_t<ImageView<const Sample>>& source,
                                                     const ImageView<Sample>& destination,
                                                     const ImageLutOptions& options = {}, unsigned threads = 1) {
  if constexpr (ImageView<Sample>::hasCodeValues) {
    if (const auto fault = source.fault()) return fault;
    if (const auto fault = destination.fault()) return fault;
    const auto lut = ImageLut::forCodeValues(file, source.bitDepth, destination.bitDepth, options);
    return lut ? lut->apply(source, destination, threads) : ImageErrorCode::unusableBitDepth;
  } else {
    return ImageLut::forFloats(file, options).apply(source, destination, threads);
  }
}

}  // namespace meridian::inline v0_2

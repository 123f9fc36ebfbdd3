/// \file
/// Applies a LUT to whole images. For example, as the file's format publishes it, in place and on all cores:
///
///     const auto lut = readPublishedLut(Url::fromFilePath("/looks/show.cube"));
///     if (!lut) return report(lut.error().message());
///     const auto image = ImageView<std::uint16_t>::packed(ImageLayout::rgb, samples, 3840, 2160, 10);
///     if (const auto done = applyLut(*lut, image, image, {}, 0); !done) report(description(done.error()));
#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <type_traits>

#include "meridian/base/expected.h"
#include "meridian/export.h"
#include "meridian/lut/code_value_format.h"
#include "meridian/lut/image_lut_options.h"
#include "meridian/lut/image_view.h"
#include "meridian/lut/lut_file.h"
#include "meridian/lut/lut_stages.h"

namespace meridian::inline v0_2 {

/// A LUT prepared for images of one kind. It keeps nothing of the file and may be used from several threads at once.
///
/// Full-range code values become what the file's converter returns for them, bit for bit on every machine, with one
/// difference: where a converter terminates the process or exceeds the destination's depth, the result is the nearest
/// code value of that depth, and 0 where the LUT yields NaN.
///
/// With LutRounding::nearest, and always if the source or the destination is limited range, both are converted by way
/// of the scale from 0 to 1, on which 1 is the largest code value of a LUT of code values:
///
///     input = (code - black) / (white - black)
///     code  = Round(black + result * (white - black))
///
/// with black and white as CodeValueFormat says, and `Round` to the nearest integer, halves up. All of it is computed
/// in double precision, so that a result that is exactly half an integer may be rounded down. An identity therefore
/// keeps every code value, even if the LUT's code values have another depth than the image. Code values below black and
/// above white become inputs below 0 and above 1, which the axes of the LUT clamp unless its declared domain is
/// wider. Results outside 0 to 1 are kept as far as `CodeValueFormat::lowest` and `highest`.
///
/// Floating-point samples are on the scale from 0 to 1. For a LUT of code values, 1 is its largest code value. Results
/// are neither truncated nor rounded. NaN counts as the lowest input. Results are computed in single precision, to
/// about six digits of the LUT's largest value; the last digit may differ between machines. Results too large for
/// single precision become infinite.
///
/// A LUT that was read as its format publishes it (`readPublishedLut`) is prepared in the same way; its stages say what
/// its axes are, and no converter truncates its results. So `axisOrder`, `domain` and `rounding` of the options are
/// unused: code values are always rounded as LutRounding::nearest says. `interpolation` is that of cubes that declare
/// none. A single cube, and any LUT without a cube or matrix, converts code values exactly as `applied` and the
/// formulas above define. With several stages, each stage's result is rounded to single precision from the first cube
/// or matrix on, so results have about six digits: code values are those of the definition but for some that are next
/// to a half, which differ by one.
class MERIDIAN_API ImageLut {
 public:
  /// Prepares a LUT for images of code values. Returns unusableBitDepth for depths outside 1 to 16, and unusableRange
  /// for limited range below 8 bits.
  [[nodiscard]] static Expected<ImageLut, ImageErrorCode> forCodeValues(const ParsedLutFile& file,
                                                                        CodeValueFormat source,
                                                                        CodeValueFormat destination,
                                                                        const ImageLutOptions& options = {});

  [[nodiscard]] static Expected<ImageLut, ImageErrorCode> forCodeValues(const PublishedLut& lut, CodeValueFormat source,
                                                                        CodeValueFormat destination,
                                                                        const ImageLutOptions& options = {});

  /// Prepares a LUT for images of floating-point samples.
  [[nodiscard]] static ImageLut forFloats(const ParsedLutFile& file, const ImageLutOptions& options = {});
  [[nodiscard]] static ImageLut forFloats(const PublishedLut& lut, const ImageLutOptions& options = {});

  ImageLut(ImageLut&&) noexcept;
  ImageLut& operator=(ImageLut&&) noexcept;
  ImageLut(const ImageLut&) = delete;
  ImageLut& operator=(const ImageLut&) = delete;
  ~ImageLut();

  /// Applies the LUT to every pixel of `source` and stores the results in `destination`. The two may be the same
  /// samples with the same strides, but must not overlap otherwise; their layouts may differ. Alpha is converted to the
  /// destination's bit depth, unchanged between equal depths, and is opaque where the source has none. `threads` work
  /// on bands of rows: 0 means as many as the machine runs at once, 256 is the maximum; callers with their own threads
  /// pass each a part of the image (`ImageView::rows`). Nothing is written if an image is unusable.
  [[nodiscard]] Expected<void, ImageErrorCode> apply(const ImageView<const std::uint8_t>& source,
                                                     const ImageView<std::uint8_t>& destination,
                                                     unsigned threads = 1) const;
  [[nodiscard]] Expected<void, ImageErrorCode> apply(const ImageView<const std::uint16_t>& source,
                                                     const ImageView<std::uint16_t>& destination,
                                                     unsigned threads = 1) const;
  [[nodiscard]] Expected<void, ImageErrorCode> apply(const ImageView<const float>& source,
                                                     const ImageView<float>& destination, unsigned threads = 1) const;

  /// Returns what `apply` makes of one pixel of code values, by the plain definition in double precision. Terminates
  /// the process if the LUT was prepared for floating point.
  [[nodiscard]] std::array<std::uint16_t, 3> pixel(std::uint16_t red, std::uint16_t green,
                                                   std::uint16_t blue) const noexcept;

  /// Returns what `apply` approximates for one pixel of floating-point samples.
  [[nodiscard]] LutColor pixel(const LutColor& color) const noexcept;

 private:
  struct Prepared;
  explicit ImageLut(std::unique_ptr<const Prepared> prepared) noexcept;

  template <typename Lut>
  [[nodiscard]] static Expected<ImageLut, ImageErrorCode> preparedFor(const Lut& lut, CodeValueFormat source,
                                                                      CodeValueFormat destination,
                                                                      const ImageLutOptions& options);

  template <ImageSample Sample>
  [[nodiscard]] Expected<void, ImageErrorCode> applyTo(const ImageView<const Sample>& source,
                                                       const ImageView<Sample>& destination, unsigned threads) const;

  std::unique_ptr<const Prepared> prepared_;
};

/// A LUT that images can be converted with: a file as the suite reads it, or as its format publishes it.
template <typename Type>
concept LutForImages = std::derived_from<Type, ParsedLutFile> || std::same_as<Type, PublishedLut>;

/// Applies a LUT to an image in one call, with the bit depths and ranges of the views.
template <LutForImages Lut, ImageSample Sample>
  requires(!std::is_const_v<Sample>)
[[nodiscard]] Expected<void, ImageErrorCode> applyLut(const Lut& lut,
                                                      const std::type_identity_t<ImageView<const Sample>>& source,
                                                      const ImageView<Sample>& destination,
                                                      const ImageLutOptions& options = {}, unsigned threads = 1) {
  if constexpr (ImageView<Sample>::hasCodeValues) {
    if (const auto usable = source.check(); !usable) return usable;
    if (const auto usable = destination.check(); !usable) return usable;
    const auto prepared = ImageLut::forCodeValues(lut, source.format, destination.format, options);
    if (!prepared) return Unexpected(prepared.error());
    return prepared->apply(source, destination, threads);
  } else {
    return ImageLut::forFloats(lut, options).apply(source, destination, threads);
  }
}

}  // namespace meridian::inline v0_2

/// \file
/// Chooses images of a clip at equal distances while it is read once. For example:
///
///     Filmstrip strip(video, options, expectedSeconds);
///     while (auto image = read()) strip.take(*image->frame, image->time);
///     strip.takeImages();
#pragma once

#include <optional>
#include <vector>

#include "meridian/engine/deep_analysis.h"
#include "meridian/engine/libav/still_image.h"
#include "meridian/engine/libav/time_line.h"

namespace meridian::inline v0_2::libav {

class Filmstrip {
 public:
  /// `expected` is how long the clip lasts; 0 if that is not known.
  Filmstrip(const VideoStreamDescription& video, const DeepAnalysisOptions& options, Ticks expected);

  void take(const AVFrame& image, Ticks time);

  /// Returns the images; fewer than were asked for of a clip of fewer images, or that ends early.
  [[nodiscard]] std::vector<FilmstripImage> takeImages();

 private:
  void halve();

  std::size_t wanted_;
  /// The distance of the images in time; it doubles when a clip is longer than was expected.
  Ticks step_;
  Ticks next_;
  StillImages stills_;
  bool isFirst_ = true;
  std::optional<FilmstripImage> first_;
  std::vector<FilmstripImage> images_;
};

}  // namespace meridian::inline v0_2::libav

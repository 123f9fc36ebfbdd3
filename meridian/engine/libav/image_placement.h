/// \file
/// Places images on the grid of a constant rate. For example, of images at 0, 1/24 s, 2/24 s at 60 images a second:
///
///     ImagePlacement placement(60/1);
///     // 0 0 0 1 1 2 2 2
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "meridian/base/function_ref.h"
#include "meridian/engine/libav/source_reader.h"
#include "meridian/engine/libav/time_line.h"
#include "meridian/media/rational.h"

namespace meridian::inline v0_2::libav {

/// Each image is shown from the nearest place of the grid on, until the next one is. Of several images for one place
/// the nearest is shown.
class ImagePlacement {
 public:
  /// Receives the image of the next place; returns an error to stop.
  using Sink = FunctionRef<std::optional<TranscodeRunError>(const SourceImage& image, std::int64_t place)>;

  explicit ImagePlacement(const MediaRational& rate) : rate_(rate) {}

  /// Takes the next image, and hands on the images of all places before its own.
  [[nodiscard]] std::optional<TranscodeRunError> take(SourceImage image, Sink sink) {
    const std::int64_t place = std::max<std::int64_t>(placeOf(image.time), 0);
    if (held_ && place <= place_) {
      dropped_.add(1, image.time);
      if (distance(image.time, place_) < distance(held_->time, place_)) held_ = std::move(image);
      return std::nullopt;
    }
    if (held_) {
      if (auto error = fillUpTo(place, sink)) return error;
    }
    held_ = std::move(image);
    place_ = place;
    return std::nullopt;
  }

  /// Hands on what is left up to a time.
  [[nodiscard]] std::optional<TranscodeRunError> finish(Ticks end, Sink sink) {
    if (!held_) return std::nullopt;
    // One image is shown in any case.
    return fillUpTo(std::max<std::int64_t>(placeOf(end), 1), sink);
  }

  /// Return how many images had no place of their own, and how many places none of their own.
  [[nodiscard]] const Occurrences& dropped() const noexcept { return dropped_; }
  [[nodiscard]] const Occurrences& repeated() const noexcept { return repeated_; }

 private:
  [[nodiscard]] std::int64_t placeOf(Ticks time) const noexcept {
    return av_rescale_rnd(time, rate_.numerator, std::int64_t{timeLine.den} * rate_.denominator, AV_ROUND_NEAR_INF);
  }

  [[nodiscard]] Ticks timeOf(std::int64_t place) const noexcept {
    return av_rescale(place, std::int64_t{timeLine.den} * rate_.denominator, rate_.numerator);
  }

  [[nodiscard]] Ticks distance(Ticks time, std::int64_t place) const noexcept {
    const Ticks exact = timeOf(place);
    return time < exact ? exact - time : time - exact;
  }

  [[nodiscard]] std::optional<TranscodeRunError> fillUpTo(std::int64_t end, Sink sink) {
    if (end > next_ + 1) repeated_.add(end - next_ - 1, timeOf(next_ + 1));
    for (; next_ < end; ++next_) {
      if (auto error = sink(*held_, next_)) return error;
    }
    return std::nullopt;
  }

  MediaRational rate_;
  std::optional<SourceImage> held_;
  std::int64_t place_ = 0;
  std::int64_t next_ = 0;
  Occurrences dropped_;
  Occurrences repeated_;
};

}  // namespace meridian::inline v0_2::libav

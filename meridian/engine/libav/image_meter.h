/// \file
/// Measures the images of a clip one after the other. For example:
///
///     ImageMeter meter(video, 0);
///     while (auto image = read()) meter.take(*image->frame, image->time, image->duration);
///     const DeepVideoAnalysis found = meter.finish();
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "meridian/engine/deep_analysis.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/libav/filter_graph.h"
#include "meridian/engine/libav/interval_list.h"
#include "meridian/engine/libav/media_digest.h"
#include "meridian/engine/libav/time_line.h"

namespace meridian::inline v0_2::libav {

/// Judges by the difference of an image from those before it whether it is frozen, or begins a scene.
class MotionMeter {
 public:
  /// Takes an image with planes of luma and chroma, each of the same size and format as the one before.
  void take(const AVFrame& image, std::int64_t number, Ticks time);
  /// Forgets the images before, as after one that cannot be compared.
  void interrupt(Ticks time);

  [[nodiscard]] std::vector<MediaInterval> takeFrozen(Ticks end);
  [[nodiscard]] std::vector<SceneChange> takeSceneChanges() noexcept { return std::move(changes_); }

 private:
  void noteChange(double difference, std::int64_t number, Ticks time);
  [[nodiscard]] bool isFrozen(const AVFrame& image, std::optional<std::uint64_t> lumaDifferences) const;

  FramePointer before_;
  double differenceBefore_ = 0;
  /// The first of the images that do not differ, and its time.
  FramePointer reference_;
  Ticks referenceTime_ = 0;
  IntervalList frozen_{2 * Ticks{timeLine.den}};
  std::vector<SceneChange> changes_;
};

/// Counts the code values of luma, and finds black.
class LumaMeter {
 public:
  /// Takes the luma of an image; all have the depth and range of the first.
  void take(const AVFrame& image, Ticks time);
  void interrupt(Ticks time);

  [[nodiscard]] std::vector<MediaInterval> takeBlack(Ticks end);
  [[nodiscard]] LumaStatistics statistics() const;

 private:
  /// Returns the code value of a limited range's value of 8 bits, or of the portion of a full range.
  [[nodiscard]] int codeValue(int limited, double full) const noexcept;

  int bitDepth_ = 0;
  ColorRange range_ = ColorRange::limited;
  std::vector<std::uint64_t> counts_;
  std::vector<std::uint64_t> countsOfImage_;
  std::optional<Ticks> blackStart_;
  IntervalList black_{2 * Ticks{timeLine.den}};
};

/// Tells from the images whether they have fields.
class FieldMeter {
 public:
  /// Takes an image of the same size and format as the first; it is not changed.
  void take(const AVFrame& image);

  /// Returns the counts; absent if FFmpeg's detector is missing.
  [[nodiscard]] std::optional<FieldCounts> finish();

 private:
  void receive();

  bool isOpened_ = false;
  std::unique_ptr<FrameFilter> filter_;
  std::optional<FieldCounts> counts_;
};

/// Measures everything but the filmstrip.
class ImageMeter {
 public:
  explicit ImageMeter(const VideoStreamDescription& video) : video_(video) {}

  /// Takes the next image. Returns why nothing but its time is measured; nothing if all is.
  [[nodiscard]] std::optional<std::string> take(const AVFrame& image, Ticks time, Ticks duration);

  /// Returns what was found, without MD5 and filmstrip.
  [[nodiscard]] DeepVideoAnalysis finish();

 private:
  void noteTime(Ticks time, Ticks duration);
  [[nodiscard]] bool isVariable() const;
  /// Returns the image with planes of luma and chroma; the error is why it cannot be had.
  [[nodiscard]] Expected<const AVFrame*, std::string> withPlanes(const AVFrame& image);
  [[nodiscard]] Expected<FramePointer, std::string> convertedImage(const AVFrame& image);

  const VideoStreamDescription& video_;
  int width_ = 0;
  int height_ = 0;
  int format_ = -1;
  std::int64_t count_ = 0;
  /// When each image is shown.
  std::vector<Ticks> times_;
  Ticks end_ = 0;
  Ticks shortest_ = 0;
  Ticks longest_ = 0;
  std::unique_ptr<FrameFilter> converter_;
  FramePointer converted_;
  LumaMeter luma_;
  MotionMeter motion_;
  FieldMeter fields_;
};

}  // namespace meridian::inline v0_2::libav

#include "meridian/engine/libav/image_meter.h"

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string_view>
#include <utility>

#include "meridian/base/numbers.h"
#include "meridian/engine/libav/plane_statistics.h"

namespace meridian::inline v0_2::libav {
namespace {

constexpr std::size_t mostPlanes = 4;

/// What FFmpeg's filters "blackdetect", "freezedetect" and "scdet" take without options, so that the answers are those
/// that people know.
constexpr double blackPortion = 0.98;
constexpr double blackRange = 0.1;
constexpr double frozenDifference = 0.001;
constexpr double sceneScore = 10;

/// Returns the mean of absolute differences as a portion of the code values.
double portionOf(std::uint64_t differences, std::uint64_t count, int bitDepth) noexcept {
  return std::ldexp(static_cast<double>(differences) / static_cast<double>(count), -bitDepth);
}

bool isFullRange(const AVFrame& image) {
  const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(image.format));
  if (format != nullptr && std::string_view(format->name).starts_with("yuvj")) return true;
  if (image.color_range != AVCOL_RANGE_UNSPECIFIED) return image.color_range == AVCOL_RANGE_JPEG;
  // Luma alone without a tag is full range, as in image files.
  return format != nullptr && format->nb_components < 3;
}

FilterInput inputOf(const AVFrame& image) noexcept {
  return {image.width, image.height, static_cast<AVPixelFormat>(image.format), {1, 1}};
}

}  // namespace

void MotionMeter::noteChange(double difference, std::int64_t number, Ticks time) {
  const double percent = 100 * difference;
  const double score = std::min(percent, std::abs(percent - differenceBefore_));
  differenceBefore_ = percent;
  if (score >= sceneScore) changes_.push_back({number, secondsOfTicks(time), score});
}

bool MotionMeter::isFrozen(const AVFrame& image, std::optional<std::uint64_t> lumaDifferences) const {
  std::uint64_t differences = 0;
  std::uint64_t count = 0;
  for (std::size_t each = 0; each < mostPlanes; ++each) count += planeOf(image, each).count();
  for (std::size_t each = 0; each < mostPlanes; ++each) {
    const PlaneView plane = planeOf(image, each);
    if (plane.count() == 0) break;
    differences +=
        each == 0 && lumaDifferences ? *lumaDifferences : sumOfDifferences(planeOf(*reference_, each), plane);
    if (portionOf(differences, count, plane.bitDepth) > frozenDifference) return false;
  }
  return true;
}

void MotionMeter::take(const AVFrame& image, std::int64_t number, Ticks time) {
  const PlaneView luma = planeOf(image, 0);
  std::optional<std::uint64_t> differences;
  if (before_) {
    differences = sumOfDifferences(planeOf(*before_, 0), luma);
    noteChange(portionOf(*differences, luma.count(), luma.bitDepth), number, time);
  }
  // While nothing is frozen, the image that others are compared with is the one before.
  if (reference_ && before_ && reference_->data[0] != before_->data[0]) differences.reset();
  if (!reference_ || !isFrozen(image, differences)) {
    if (reference_) frozen_.add(referenceTime_, time);
    reference_.reset(av_frame_clone(&image));
    referenceTime_ = time;
  }
  before_.reset(av_frame_clone(&image));
}

void MotionMeter::interrupt(Ticks time) {
  if (reference_) frozen_.add(referenceTime_, time);
  reference_.reset();
  before_.reset();
  differenceBefore_ = 0;
}

std::vector<MediaInterval> MotionMeter::takeFrozen(Ticks end) {
  interrupt(end);
  return frozen_.take();
}

int LumaMeter::codeValue(int limited, double full) const noexcept {
  if (range_ == ColorRange::full) return static_cast<int>(full * ((1 << bitDepth_) - 1));
  return bitDepth_ >= 8 ? limited << (bitDepth_ - 8) : limited >> (8 - bitDepth_);
}

void LumaMeter::take(const AVFrame& image, Ticks time) {
  const PlaneView plane = planeOf(image, 0);
  if (counts_.empty()) {
    bitDepth_ = plane.bitDepth;
    range_ = isFullRange(image) ? ColorRange::full : ColorRange::limited;
    counts_.resize(std::size_t{1} << static_cast<unsigned>(bitDepth_));
    countsOfImage_.resize(counts_.size());
  }
  std::ranges::fill(countsOfImage_, 0);
  addToHistogram(plane, countsOfImage_);
  for (std::size_t value = 0; value < counts_.size(); ++value) counts_[value] += countsOfImage_[value];

  const double black = codeValue(16, 0);
  const double white = codeValue(235, 1);
  const auto threshold = static_cast<std::size_t>(black + blackRange * (white - black));
  std::uint64_t dark = 0;
  for (std::size_t value = 0; value <= threshold && value < counts_.size(); ++value) dark += countsOfImage_[value];
  const bool isBlack = static_cast<double>(dark) >= blackPortion * static_cast<double>(plane.count());
  if (isBlack && !blackStart_) blackStart_ = time;
  if (!isBlack) interrupt(time);
}

void LumaMeter::interrupt(Ticks time) {
  if (blackStart_) black_.add(*blackStart_, time);
  blackStart_.reset();
}

std::vector<MediaInterval> LumaMeter::takeBlack(Ticks end) {
  interrupt(end);
  return black_.take();
}

LumaStatistics LumaMeter::statistics() const {
  LumaStatistics found;
  if (counts_.empty()) return found;
  found.bitDepth = bitDepth_;
  found.range = range_;
  std::uint64_t total = 0;
  double sum = 0;
  for (std::size_t value = 0; value < counts_.size(); ++value) {
    total += counts_[value];
    sum += static_cast<double>(value) * static_cast<double>(counts_[value]);
    found.histogram[value * found.histogram.size() / counts_.size()] += counts_[value];
  }
  if (total == 0) return found;
  const auto samples = static_cast<double>(total);
  found.average = sum / samples;
  const auto first = std::ranges::find_if(counts_, [](std::uint64_t count) { return count > 0; });
  found.minimum = static_cast<int>(first - counts_.begin());
  // The value that a portion of the samples is at or below.
  const auto quantile = [&](double portion) {
    std::uint64_t below = 0;
    std::size_t value = 0;
    while (value + 1 < counts_.size() && static_cast<double>(below += counts_[value]) <= portion * samples) ++value;
    return static_cast<int>(value);
  };
  constexpr double thousandth = 0.001;
  found.low = quantile(thousandth);
  found.high = quantile(1 - thousandth);
  std::size_t last = counts_.size() - 1;
  while (counts_[last] == 0) --last;
  found.maximum = static_cast<int>(last);
  if (range_ == ColorRange::full) return found;
  std::uint64_t below = 0;
  std::uint64_t above = 0;
  for (std::size_t value = 0; value < counts_.size(); ++value) {
    if (static_cast<int>(value) < codeValue(16, 0)) below += counts_[value];
    if (static_cast<int>(value) > codeValue(235, 1)) above += counts_[value];
  }
  found.belowBlack = static_cast<double>(below) / samples;
  found.aboveWhite = static_cast<double>(above) / samples;
  return found;
}

void FieldMeter::take(const AVFrame& image) {
  if (!std::exchange(isOpened_, true)) {
    auto opened = FrameFilter::open("idet", inputOf(image), 1);
    if (opened) filter_ = *std::move(opened);
  }
  if (!filter_) return;
  FramePointer frame(av_frame_clone(&image));
  if (!frame || !filter_->send(std::move(frame))) {
    filter_.reset();
    return;
  }
  receive();
}

void FieldMeter::receive() {
  while (const FramePointer frame = filter_->receive()) {
    const auto count = [&frame](const char* key) {
      const AVDictionaryEntry* const entry =
          av_dict_get(frame->metadata, (std::string("lavfi.idet.multiple.") + key).c_str(), nullptr, 0);
      return entry == nullptr ? 0 : std::llround(doubleFromText(entry->value).value_or(0));
    };
    counts_ = FieldCounts{count("progressive"), count("tff"), count("bff"), count("undetermined")};
  }
}

std::optional<FieldCounts> FieldMeter::finish() {
  if (filter_ && filter_->send(nullptr)) receive();
  return counts_;
}

Expected<FramePointer, std::string> ImageMeter::convertedImage(const AVFrame& image) {
  const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(image.format));
  if (format == nullptr) return Unexpected(std::string("its pixel format is not known"));
  if (!converter_) {
    const int depth = format->comp[0].depth;
    // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flags.
    const bool isRgb = (format->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
    std::string suffix = "16";
    if (depth <= 12) suffix = "12";
    if (depth <= 10) suffix = "10";
    if (depth <= 8) suffix.clear();
    const bool isGray = !isRgb && format->nb_components < 3;
    std::string filters = "scale,format=yuv420p" + suffix;
    if (isRgb) filters = "scale=out_color_matrix=bt709:out_range=limited,format=yuv444p" + suffix;
    // Luma alone is full range, as in image files.
    if (isGray) filters = "scale=in_range=full:out_range=full,format=gray" + suffix;
    auto opened = FrameFilter::open(filters, inputOf(image), 1);
    if (!opened) return Unexpected(std::move(opened).error());
    converter_ = *std::move(opened);
  }
  FramePointer frame(av_frame_clone(&image));
  if (!frame || !converter_->send(std::move(frame))) return Unexpected(std::string("it cannot be converted"));
  FramePointer converted = converter_->receive();
  if (!converted) return Unexpected(std::string("it cannot be converted"));
  return converted;
}

Expected<const AVFrame*, std::string> ImageMeter::withPlanes(const AVFrame& image) {
  if (hasLumaPlanes(static_cast<AVPixelFormat>(image.format))) return &image;
  auto converted = convertedImage(image);
  if (!converted) return Unexpected(std::move(converted).error());
  converted_ = *std::move(converted);
  return converted_.get();
}

void ImageMeter::noteTime(Ticks time, Ticks duration) {
  ++count_;
  if (!times_.empty() && time > times_.back()) {
    const Ticks shown = time - times_.back();
    shortest_ = shortest_ == 0 ? shown : std::min(shortest_, shown);
    longest_ = std::max(longest_, shown);
  }
  times_.push_back(time);
  end_ = std::max(end_, time + duration);
}

bool ImageMeter::isVariable() const {
  if (times_.size() < 3) return false;
  // The clock of the container, of which all times are multiples: 1/600 s, 1/1000 s, or the duration of an image
  // itself.
  Ticks clock = 0;
  for (const Ticks time : times_) clock = std::gcd(clock, time - times_.front());
  const Ticks rounding = std::min(std::max(clock, Ticks{timeLine.den / 1000}), shortest_ / 2);
  const auto count = static_cast<double>(times_.size() - 1);
  const auto all = static_cast<double>(times_.back() - times_.front());
  for (std::size_t image = 0; image < times_.size(); ++image) {
    const double steady = all * static_cast<double>(image) / count;
    if (std::abs(static_cast<double>(times_[image] - times_.front()) - steady) > static_cast<double>(rounding))
      return true;
  }
  return false;
}

std::optional<std::string> ImageMeter::take(const AVFrame& image, Ticks time, Ticks duration) {
  const std::int64_t number = count_;
  noteTime(time, duration);
  if (number == 0) {
    width_ = image.width;
    height_ = image.height;
    format_ = image.format;
  }
  std::optional<std::string> reason;
  if (image.width != width_ || image.height != height_) {
    reason = "the image changes to " + std::to_string(image.width) + " x " + std::to_string(image.height);
  } else if (image.format != format_) {
    const char* const name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(image.format));
    reason = "the image changes to the pixel format " + std::string(name != nullptr ? name : "unknown");
  }
  if (!reason) {
    const auto planes = withPlanes(image);
    if (planes) {
      luma_.take(**planes, time);
      motion_.take(**planes, number, time);
      fields_.take(**planes);
      return std::nullopt;
    }
    reason = planes.error();
  }
  luma_.interrupt(time);
  motion_.interrupt(time);
  return reason;
}

DeepVideoAnalysis ImageMeter::finish() {
  DeepVideoAnalysis found;
  found.frameCount = count_;
  found.seconds = secondsOfTicks(end_);
  // A single image is shown until the end.
  found.shortestFrame = secondsOfTicks(count_ == 1 ? end_ : shortest_);
  found.longestFrame = secondsOfTicks(count_ == 1 ? end_ : longest_);
  found.isVariable = isVariable();
  found.black = luma_.takeBlack(end_);
  found.frozen = motion_.takeFrozen(end_);
  found.sceneChanges = motion_.takeSceneChanges();
  found.fields = fields_.finish();
  found.luma = luma_.statistics();
  return found;
}

}  // namespace meridian::inline v0_2::libav

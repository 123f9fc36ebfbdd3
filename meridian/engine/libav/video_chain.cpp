#include "meridian/engine/libav/video_chain.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "meridian/cli/transcode_flags.h"
#include "meridian/engine/libav/filter_graph.h"
#include "meridian/engine/libav/frame_conversion.h"
#include "meridian/engine/libav/image_placement.h"
#include "meridian/engine/libav/overlay.h"
#include "meridian/engine/libav/planar_rgb_view.h"
#include "meridian/engine/libav/text_mask.h"
#include "meridian/engine/libav/timecode_reading.h"
#include "meridian/engine/libav/watermark_image.h"
#include "meridian/engine/media_snapshot.h"
#include "meridian/lut/image_lut.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2::libav {
namespace {

using enum TranscodeRunErrorCode;

/// Makes one image of one; the error is a reason.
using ImageStage = std::function<Expected<FramePointer, std::string>(FramePointer image)>;
using OpenedStage = Expected<ImageStage, std::string>;

AVPixelFormat formatOf(const ImageForm& form) noexcept { return av_get_pix_fmt(form.pixelFormat.c_str()); }

FilterInput inputOf(const ImageForm& form) noexcept {
  return {form.width,
          form.height,
          formatOf(form),
          {static_cast<int>(form.pixelAspectRatio.numerator), static_cast<int>(form.pixelAspectRatio.denominator)}};
}

Unexpected<std::string> withoutMemory() { return Unexpected(std::string("there is no memory for an image")); }

/// Returns a stage of a filter that gives an image for each that it gets, at once.
OpenedStage filterStage(const std::string& filters, const ImageForm& from, unsigned threads) {
  auto opened = FrameFilter::open(filters, inputOf(from), threads);
  if (!opened) return Unexpected(std::move(opened).error());
  return ImageStage([filter = std::shared_ptr<FrameFilter>(*std::move(opened)),
                     from](FramePointer image) -> Expected<FramePointer, std::string> {
    tagImage(*image, from);
    if (!filter->send(std::move(image))) return Unexpected(std::string("a filter fails"));
    FramePointer filtered = filter->receive();
    if (!filtered) return Unexpected(std::string("a filter gives no image"));
    return filtered;
  });
}

/// Returns zscale's conversion between two forms; its codes of colours are those of H.273.
std::string colorFilters(const ImageForm& from, const ImageForm& to) {
  const auto range = [](const ImageForm& form) { return form.range == ColorRange::full ? "full" : "limited"; };
  const auto codes = [](const ColorSpaceCodes& color, const std::string& suffix) {
    return "matrix" + suffix + "=" + std::to_string(color.matrix) + ":transfer" + suffix + "=" +
           std::to_string(color.transfer) + ":primaries" + suffix + "=" + std::to_string(color.primaries);
  };
  return "zscale=width=" + std::to_string(to.width) + ":height=" + std::to_string(to.height) +
         ":filter=bicubic:" + codes(from.color, "in") + ":rangein=" + range(from) + ":" + codes(to.color, "") +
         ":range=" + range(to) + ",format=" + to.pixelFormat;
}

/// Returns whether swscale would be inexact: between the ranges it counts in 8 bits, so that white of 10 bits becomes
/// 1020 instead of 1023.
bool needsExactRange(const ImageForm& from, const ImageForm& to) noexcept {
  const bool isRgb = from.color.matrix == ColorSpaceCodes::rgbMatrix || to.color.matrix == ColorSpaceCodes::rgbMatrix;
  return !isRgb && from.range != to.range && std::max(from.bitDepth, to.bitDepth) > 8;
}

OpenedStage conversionStage(const ImageForm& from, const ImageForm& to, unsigned threads) {
  if (needsExactRange(from, to)) return filterStage(colorFilters(from, to), from, threads);
  auto opened = FrameConverter::open(from, to);
  if (!opened) return Unexpected(std::move(opened).error());
  return ImageStage([converter = std::shared_ptr<FrameConverter>(*std::move(opened))](
                        FramePointer image) -> Expected<FramePointer, std::string> {
    FramePointer converted = converter->converted(*image);
    if (!converted) return withoutMemory();
    return converted;
  });
}

std::string rotationFilters(const RotateStep& step, const std::string& pixelFormat) {
  std::string filters = step.isMirrored ? "hflip," : "";
  if (step.degrees == 90) filters += "transpose=clock,";
  if (step.degrees == 180) filters += "hflip,vflip,";
  if (step.degrees == 270) filters += "transpose=cclock,";
  return filters + "format=" + pixelFormat;
}

ImageStage cropStage(const CropStep& step, const ImageForm& to) {
  return [step, to](FramePointer image) -> Expected<FramePointer, std::string> {
    image->crop_left = static_cast<std::size_t>(step.x);
    image->crop_top = static_cast<std::size_t>(step.y);
    image->crop_right = static_cast<std::size_t>(image->width - to.width - step.x);
    image->crop_bottom = static_cast<std::size_t>(image->height - to.height - step.y);
    if (av_frame_apply_cropping(image.get(), AV_FRAME_CROP_UNALIGNED) < 0) {
      return Unexpected(std::string("it cannot be cropped"));
    }
    return image;
  };
}

/// Fills an image with black.
bool fillBlack(AVFrame& image, const ImageForm& form) {
  std::array<std::ptrdiff_t, 4> strides{};
  std::ranges::copy(std::span(image.linesize).first(4), strides.begin());
  return av_image_fill_black(image.data, strides.data(), formatOf(form),
                             form.range == ColorRange::full ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG, image.width,
                             image.height) >= 0;
}

ImageStage padStage(const PadStep& step, const ImageForm& to) {
  return [step, to](FramePointer image) -> Expected<FramePointer, std::string> {
    FramePointer padded = newImage(to);
    if (!padded || !fillBlack(*padded, to)) return withoutMemory();
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(formatOf(to));
    std::array<std::uint8_t*, 4> places{};
    for (std::size_t plane = 0; plane < places.size() && padded->data[plane] != nullptr; ++plane) {
      const bool isChroma = (plane == 1 || plane == 2) && (format.flags & AV_PIX_FMT_FLAG_RGB) == 0;
      const int x = step.x >> (isChroma ? format.log2_chroma_w : 0);
      const int y = step.y >> (isChroma ? format.log2_chroma_h : 0);
      places[plane] = padded->data[plane] + static_cast<std::ptrdiff_t>(padded->linesize[plane]) * y +
                      static_cast<std::ptrdiff_t>(x) * format.comp[0].step;
    }
    av_image_copy(places.data(), padded->linesize, const_cast<const std::uint8_t**>(image->data), image->linesize,
                  formatOf(to), image->width, image->height);
    if (av_frame_copy_props(padded.get(), image.get()) < 0) return withoutMemory();
    return padded;
  };
}

OpenedStage lutStage(const LutStep& step, const ImageForm& form) {
  auto read = SnapshotLut::read(Url::fromFilePath(step.path));
  if (!read) {
    return Unexpected(std::string(read.error().text()) +
                      (read.error().detail.empty() ? "" : ": " + read.error().detail));
  }
  return ImageStage([lut = std::make_shared<ImageLut>(read->forBitDepth(form.bitDepth)),
                     depth = form.bitDepth](FramePointer image) -> Expected<FramePointer, std::string> {
    if (av_frame_make_writable(image.get()) < 0) return withoutMemory();
    const auto view = planarRgbView<std::uint16_t>(*image, depth);
    if (const auto applied = lut->apply(view, view); !applied) {
      return Unexpected(std::string(description(applied.error())));
    }
    return image;
  });
}

/// Burns the labels of a plan's timecode into the images of the output.
class TimecodeBurn {
 public:
  TimecodeBurn(GlyphSheet glyphs, TextStyle style, ImageForm form, const PlannedTimecode& timecode)
      : glyphs_(std::move(glyphs)), style_(style), form_(std::move(form)), timecode_(timecode) {}

  /// `place` counts the images of the output, `part` is that of the source that the image is from.
  void burn(AVFrame& image, std::int64_t place, std::size_t part) {
    if (part != part_) {
      part_ = part;
      // The labels of a part that does not go on where the one before it ended begin anew.
      const auto start = part < timecode_.partStarts.size() ? timecode_.partStarts[part] : std::nullopt;
      if (start) {
        first_ = place;
        start_ = *start;
      }
    }
    TimecodeDescription labels;
    labels.start = start_;
    labels.rate = timecode_.rate;
    const auto label = labelOfImage(place - first_, form_.frameRate, labels);
    if (!label) return;
    const Overlay overlay = Overlay::ofText(glyphs_.textOf(label->timecodeString()), style_, form_);
    const OverlayPlace corner = placeOf(style_.anchor, overlay.size(), form_, style_.margin);
    overlay.blend(image, corner.x, corner.y);
  }

 private:
  GlyphSheet glyphs_;
  TextStyle style_;
  ImageForm form_;
  const PlannedTimecode& timecode_;
  std::size_t part_ = 0;
  std::int64_t first_ = 0;
  TimecodeComponents start_ = timecode_.start;
};

/// An overlay that is the same for all images.
struct PlacedOverlay {
  Overlay overlay;
  OverlayPlace place;
};

using BurnIn = std::variant<TimecodeBurn, PlacedOverlay>;

class StepChain final : public VideoChain {
 public:
  StepChain(const TranscodePlan& plan, unsigned threads)
      : plan_(plan), video_(*plan.video), threads_(threads), placement_(video_.output().frameRate.rawValue()) {}

  [[nodiscard]] std::optional<TranscodeRunError> open() {
    const ImageForm* form = &video_.source;
    for (std::size_t place = 0; place < video_.steps.size(); ++place) {
      const std::size_t last = place + (isMergedWithNext(place) ? 1 : 0);
      const PlannedStep& step = video_.steps[last];
      if (auto error = openStep(video_.steps[place], *form, step.result)) return error;
      form = &step.result;
      place = last;
    }
    return std::nullopt;
  }

  std::optional<TranscodeRunError> take(SourceImage image, ImageSink sink) override {
    auto prepared = asPlanned(std::move(image.frame));
    if (!prepared) return imageError(image.time, std::move(prepared).error());
    image.frame = *std::move(prepared);
    if (deinterlacer_ == nullptr) return place(std::move(image), sink);
    image.frame->pts = image.time;
    parts_.emplace_back(image.time, image.part);
    if (!deinterlacer_->send(std::move(image.frame))) return imageError(image.time, "the filter bwdif fails");
    return takeDeinterlaced(sink);
  }

  std::optional<TranscodeRunError> finish(Ticks end, ImageSink sink) override {
    if (deinterlacer_ != nullptr) {
      if (!deinterlacer_->send(nullptr)) return imageError(end, "the filter bwdif fails");
      if (auto error = takeDeinterlaced(sink)) return error;
    }
    return placement_.finish(end,
                             [&](const SourceImage& each, std::int64_t number) { return show(each, number, sink); });
  }

  [[nodiscard]] Occurrences droppedImages() const override {
    return changesRate_ ? Occurrences() : placement_.dropped();
  }
  [[nodiscard]] Occurrences repeatedImages() const override {
    return changesRate_ ? Occurrences() : placement_.repeated();
  }
  [[nodiscard]] const std::vector<TranscodeRunWarning>& warnings() const override { return warnings_; }

 private:
  [[nodiscard]] const std::string& path() const { return plan_.sources.front().parts.front().path; }

  [[nodiscard]] TranscodeRunError imageError(Ticks time, const std::string& reason) const {
    return {imageNotConverted, path(), "at " + std::to_string(secondsOfTicks(time)) + " s: " + reason};
  }

  /// Scaling and a conversion of the format are one pass of swscale.
  [[nodiscard]] bool isMergedWithNext(std::size_t place) const {
    if (place + 1 >= video_.steps.size()) return false;
    const VideoStep& step = video_.steps[place].step;
    const VideoStep& next = video_.steps[place + 1].step;
    return (std::holds_alternative<ScaleStep>(step) && std::holds_alternative<FormatStep>(next)) ||
           (std::holds_alternative<FormatStep>(step) && std::holds_alternative<ScaleStep>(next));
  }

  [[nodiscard]] std::optional<TranscodeRunError> openStep(const PlannedStep& planned, const ImageForm& from,
                                                          const ImageForm& to) {
    return std::visit([this, &from, &to](const auto& step) { return this->openOf(step, from, to); }, planned.step);
  }

  [[nodiscard]] std::optional<TranscodeRunError> add(OpenedStage stage) {
    if (!stage) return TranscodeRunError{imageNotConverted, path(), std::move(stage).error()};
    (changesRate_ ? late_ : early_).push_back(*std::move(stage));
    return std::nullopt;
  }

  [[nodiscard]] std::optional<TranscodeRunError> openOf(const DeinterlaceStep& /*step*/, const ImageForm& from,
                                                        const ImageForm& /*to*/) {
    auto opened =
        FrameFilter::open("bwdif=mode=send_frame:deint=all,format=" + from.pixelFormat, inputOf(from), threads_);
    if (!opened) return TranscodeRunError{imageNotConverted, path(), std::move(opened).error()};
    deinterlacer_ = *std::move(opened);
    return std::nullopt;
  }
  [[nodiscard]] std::optional<TranscodeRunError> openOf(const RateStep& /*step*/, const ImageForm& /*from*/,
                                                        const ImageForm& /*to*/) {
    changesRate_ = true;
    return std::nullopt;
  }
  [[nodiscard]] std::optional<TranscodeRunError> openOf(const RotateStep& step, const ImageForm& from,
                                                        const ImageForm& /*to*/) {
    return add(filterStage(rotationFilters(step, from.pixelFormat), from, threads_));
  }
  [[nodiscard]] std::optional<TranscodeRunError> openOf(const ScaleStep& /*step*/, const ImageForm& from,
                                                        const ImageForm& to) {
    return add(conversionStage(from, to, threads_));
  }
  [[nodiscard]] std::optional<TranscodeRunError> openOf(const FormatStep& /*step*/, const ImageForm& from,
                                                        const ImageForm& to) {
    return add(conversionStage(from, to, threads_));
  }
  [[nodiscard]] std::optional<TranscodeRunError> openOf(const CropStep& step, const ImageForm& /*from*/,
                                                        const ImageForm& to) {
    return add(cropStage(step, to));
  }
  [[nodiscard]] std::optional<TranscodeRunError> openOf(const PadStep& step, const ImageForm& /*from*/,
                                                        const ImageForm& to) {
    return add(padStage(step, to));
  }
  [[nodiscard]] std::optional<TranscodeRunError> openOf(const ColorStep& /*step*/, const ImageForm& from,
                                                        const ImageForm& to) {
    return add(filterStage(colorFilters(from, to), from, threads_));
  }
  [[nodiscard]] std::optional<TranscodeRunError> openOf(const LutStep& step, const ImageForm& /*from*/,
                                                        const ImageForm& to) {
    auto stage = lutStage(step, to);
    if (!stage) return TranscodeRunError{lutNotUsed, step.path, std::move(stage).error()};
    return add(std::move(stage));
  }
  [[nodiscard]] std::optional<TranscodeRunError> openOf(const TimecodeBurnStep& step, const ImageForm& /*from*/,
                                                        const ImageForm& to) {
    auto glyphs = GlyphSheet::open(step.style.fontSize);
    if (!glyphs) return TranscodeRunError{imageNotConverted, path(), "burning in timecode: " + glyphs.error()};
    noteWidth(SAVTimecodeAddBurnFlag.rawValue(), glyphs->textOf("00:00:00:00").width, to);
    burnIns_.emplace_back(TimecodeBurn(*std::move(glyphs), step.style, to, *plan_.timecode));
    return std::nullopt;
  }
  [[nodiscard]] std::optional<TranscodeRunError> openOf(const TextBurnStep& step, const ImageForm& /*from*/,
                                                        const ImageForm& to) {
    const auto mask = maskOfText(step.text, step.style.fontSize, to.width);
    if (!mask) return TranscodeRunError{imageNotConverted, path(), "burning in a text: " + mask.error()};
    if (mask->width == 0) return std::nullopt;
    const std::string_view flag = SAVWatermarkTextBurnTextFlag.rawValue();
    noteWidth(flag, mask->width, to);
    if (std::string missing = missingCharacters(step.text); !missing.empty()) {
      warnings_.push_back({TranscodeRunWarningCode::charactersMissing, std::string(flag), std::move(missing)});
    }
    addOverlay(Overlay::ofText(*mask, step.style, to), step.style.anchor, to, step.style.margin);
    return std::nullopt;
  }
  [[nodiscard]] std::optional<TranscodeRunError> openOf(const WatermarkStep& step, const ImageForm& /*from*/,
                                                        const ImageForm& to) {
    auto overlay = readWatermark(step, to);
    if (!overlay) return TranscodeRunError{watermarkNotUsed, step.path, std::move(overlay).error()};
    addOverlay(*std::move(overlay), step.anchor, to, step.margin);
    return std::nullopt;
  }

  void noteWidth(std::string_view flag, int width, const ImageForm& form) {
    if (width <= form.width) return;
    warnings_.push_back({TranscodeRunWarningCode::textCut, std::string(flag),
                         "use a smaller size for " + std::to_string(form.width) + " pixels"});
  }

  void addOverlay(Overlay overlay, const SAVTranscodeArgumentOverlayAnchorValue& anchor, const ImageForm& form,
                  int margin) {
    const OverlayPlace place = placeOf(anchor, overlay.size(), form, margin);
    burnIns_.emplace_back(PlacedOverlay{std::move(overlay), place});
  }

  /// Converts an image whose pixel format is not the planned one, as a GPU's decoder may have another.
  [[nodiscard]] Expected<FramePointer, std::string> asPlanned(FramePointer image) {
    const ImageForm& planned = video_.source;
    if (image->width != planned.width || image->height != planned.height) {
      return Unexpected("the image changes to " + std::to_string(image->width) + " x " + std::to_string(image->height));
    }
    if (image->format == formatOf(planned)) return image;
    const char* const name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(image->format));
    if (name == nullptr) return Unexpected(std::string("its pixel format is not known"));
    auto known = normalizers_.find(image->format);
    if (known == normalizers_.end()) {
      ImageForm actual = planned;
      actual.pixelFormat = name;
      auto opened = FrameConverter::open(actual, planned);
      if (!opened) return Unexpected(std::move(opened).error());
      known = normalizers_.emplace(image->format, *std::move(opened)).first;
    }
    FramePointer converted = known->second->converted(*image);
    if (!converted) return withoutMemory();
    return converted;
  }

  [[nodiscard]] std::optional<TranscodeRunError> takeDeinterlaced(ImageSink sink) {
    while (FramePointer image = deinterlacer_->receive()) {
      SourceImage each{std::move(image)};
      each.time = each.frame->pts;
      while (!parts_.empty() && parts_.front().first <= each.time) {
        each.part = parts_.front().second;
        parts_.pop_front();
      }
      if (auto error = place(std::move(each), sink)) return error;
    }
    return std::nullopt;
  }

  [[nodiscard]] std::optional<TranscodeRunError> place(SourceImage image, ImageSink sink) {
    // What a change of rate would drop is dropped before it costs more; what it repeats is converted once before it.
    if (auto error = run(early_, image)) return error;
    return placement_.take(std::move(image),
                           [&](const SourceImage& each, std::int64_t number) { return show(each, number, sink); });
  }

  [[nodiscard]] std::optional<TranscodeRunError> run(const std::vector<ImageStage>& stages, SourceImage& image) const {
    for (const ImageStage& stage : stages) {
      auto next = stage(std::move(image.frame));
      if (!next) return imageError(image.time, std::move(next).error());
      image.frame = *std::move(next);
    }
    return std::nullopt;
  }

  [[nodiscard]] std::optional<TranscodeRunError> show(const SourceImage& source, std::int64_t number, ImageSink sink) {
    SourceImage image{.frame = FramePointer(av_frame_clone(source.frame.get())),
                      .time = source.time,
                      .duration = source.duration,
                      .part = source.part,
                      .otherVideo = source.otherVideo};
    if (!image.frame) return TranscodeRunError{outOfMemory, path()};
    if (auto error = run(late_, image)) return error;
    if (!burnIns_.empty() && av_frame_make_writable(image.frame.get()) < 0)
      return TranscodeRunError{outOfMemory, path()};
    for (BurnIn& each : burnIns_) {
      if (auto* const timecode = std::get_if<TimecodeBurn>(&each)) {
        timecode->burn(*image.frame, number, image.part);
      } else {
        const auto& [overlay, corner] = std::get<PlacedOverlay>(each);
        overlay.blend(*image.frame, corner.x, corner.y);
      }
    }
    tagImage(*image.frame, video_.output());
    image.frame->pts = number;
    return sink(std::move(image.frame));
  }

  const TranscodePlan& plan_;
  const PlannedVideo& video_;
  unsigned threads_;
  /// By the pixel format that is not the planned one.
  std::map<int, std::unique_ptr<FrameConverter>> normalizers_;
  std::unique_ptr<FrameFilter> deinterlacer_;
  /// When images that the deinterlacer has begin, and the part that each is from.
  std::deque<std::pair<Ticks, std::size_t>> parts_;
  /// The steps before and after images are placed on the grid of the output's rate.
  std::vector<ImageStage> early_;
  std::vector<ImageStage> late_;
  ImagePlacement placement_;
  bool changesRate_ = false;
  std::vector<BurnIn> burnIns_;
  std::vector<TranscodeRunWarning> warnings_;
};

}  // namespace

Expected<std::unique_ptr<VideoChain>, TranscodeRunError> VideoChain::open(const TranscodePlan& plan, unsigned threads) {
  auto chain = std::make_unique<StepChain>(plan, threads);
  if (auto error = chain->open()) return Unexpected(*std::move(error));
  return chain;
}

}  // namespace meridian::inline v0_2::libav

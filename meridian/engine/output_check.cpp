#include "meridian/engine/output_check.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/engine/channel_layouts.h"
#include "meridian/engine/creation_date.h"
#include "meridian/engine/output_container.h"
#include "meridian/engine/plan_context.h"

namespace meridian::inline v0_2 {
namespace {

/// What may be missing in a written file: its name, and what was planned and found.
struct Difference {
  std::string name;
  std::string planned;
  std::string found;
};

std::string secondsText(double seconds) { return fixedDecimalText(seconds, 3) + " s"; }

std::string aspectRatioText(const MediaRational& ratio) {
  return std::to_string(ratio.numerator) + "/" + std::to_string(ratio.denominator);
}

std::string codesText(const ColorSpaceCodes& codes) {
  return std::to_string(codes.primaries) + "-" + std::to_string(codes.transfer) + "-" + std::to_string(codes.matrix);
}

/// Compares a description with a plan, and keeps the first difference.
class Comparison {
 public:
  Comparison(const MediaDescription& written, const TranscodePlan& plan, const WrittenMedia& media)
      : written_(written), plan_(plan), media_(media) {}

  [[nodiscard]] const std::optional<Difference>& run() {
    compareVideo();
    compareSound();
    compareTimecode();
    compareTags();
    return first_;
  }

 private:
  [[nodiscard]] OutputContainer container() const noexcept { return plan_.output.container; }
  /// A raw stream of images has neither rate nor tags of its own.
  [[nodiscard]] bool isRaw() const noexcept { return container() == OutputContainer::mjpeg; }
  [[nodiscard]] bool isMxf() const noexcept { return container() == OutputContainer::mxf; }

  void differ(std::string name, std::string planned, std::string found) {
    if (!first_) first_ = {std::move(name), std::move(planned), found.empty() ? "none" : std::move(found)};
  }

  void compare(std::string name, const std::string& planned, const std::string& found) {
    if (planned != found) differ(std::move(name), planned, found);
  }

  void compareDuration(const std::string& name, double planned, double found, double tolerance) {
    if (std::abs(planned - found) > tolerance) differ(name, secondsText(planned), secondsText(found));
  }

  void compareVideo() {
    const VideoStreamDescription* const found = written_.mainVideo();
    if (!plan_.video) {
      if (found != nullptr) differ("the number of video streams", "0", "1");
      return;
    }
    if (found == nullptr) {
      differ("the number of video streams", "1", "0");
      return;
    }
    const PlannedVideo& planned = *plan_.video;
    compare("the size", sizeText(planned.output()),
            std::to_string(found->width) + " x " + std::to_string(found->height));
    if (planned.isCopied()) {
      compare("the video codec", planned.codecName, found->codecName);
    } else {
      compare("the video codec", planned.encoder->codec.string(),
              found->format ? found->format->string() : found->codecName);
      compareSamples(planned, *found);
    }
    comparePixels(planned, *found);
    compareTimes(planned, *found);
    compareColor(planned, *found);
  }

  /// Compares what an encoder decides.
  void compareSamples(const PlannedVideo& planned, const VideoStreamDescription& found) {
    const ImageForm& image = planned.output();
    // What has 10 bits in ProRes 4444 is decoded as 12.
    const bool isDeeper = planned.encoder->codec == SAVProRes4444 || planned.encoder->codec == SAVProRes4444XQ;
    constexpr int depthOf4444 = 12;
    if (found.bitDepth) {
      compare("the bit depth", std::to_string(isDeeper ? depthOf4444 : image.bitDepth),
              std::to_string(*found.bitDepth));
    }
    if (found.chroma) {
      compare("the chroma", std::string(description(image.chroma)), std::string(description(*found.chroma)));
    }
    if (isRaw() || found.fieldOrder == FieldOrder::unknown) return;
    const auto scan = [](bool hasFields) { return std::string(hasFields ? "interlaced" : "progressive"); };
    compare("the scan", scan(image.isInterlaced), scan(isInterlaced(found.fieldOrder)));
  }

  void comparePixels(const PlannedVideo& planned, const VideoStreamDescription& found) {
    if (isRaw() || isMxf()) return;
    const auto ratio = inLowestTerms(planned.output().pixelAspectRatio);
    if (ratio) compare("the pixel aspect ratio", aspectRatioText(*ratio), aspectRatioText(found.pixelAspectRatio));
  }

  void compareTimes(const PlannedVideo& planned, const VideoStreamDescription& found) {
    if (found.frameCount && *found.frameCount != media_.frames) {
      differ("the number of frames", std::to_string(media_.frames), std::to_string(*found.frameCount));
    }
    if (isRaw()) return;
    const double rate = planned.output().frameRate.rawValue().rawValue();
    if (rate <= 0) return;
    // A container may state a constant rate for images at irregular times.
    const bool isIrregular = std::abs(static_cast<double>(media_.frames) / rate - media_.videoSeconds) > 1.5 / rate;
    const bool isVariable = planned.isCopied() && (planned.isVariable || isIrregular);
    // Far less than the thousandth between 29.97 and 30.
    constexpr double roundingOfRates = 1e-4;
    if (!isVariable && found.exactFrameRate &&
        std::abs(found.exactFrameRate->rawValue() - rate) > rate * roundingOfRates) {
      differ("the frame rate", fixedDecimalText(rate, 3), fixedDecimalText(found.exactFrameRate->rawValue(), 3));
    }
    if (!found.duration) return;
    // Containers state the duration by the times of decoding, which at a variable rate end earlier or later than those
    // of display: by up to the 16 frames that a decoder holds back.
    double frames = 0.5;
    if (planned.isCopied()) frames = isVariable ? 16.5 : 1.5;
    const double tolerance = frames / rate + 1e-3;
    compareDuration("the duration of the video", media_.videoSeconds, found.duration->rawValue(), tolerance);
  }

  void compareColor(const PlannedVideo& planned, const VideoStreamDescription& found) {
    const ImageForm& image = planned.output();
    const bool isFull = image.range == ColorRange::full;
    if (!planned.isCopied() && isFull != (found.range == ColorRange::full)) {
      differ("the range", isFull ? "full" : "limited", std::string(rawValue(found.range)));
    }
    // MXF states colours by labels that FFmpeg writes for some alone.
    if (isRaw() || isMxf() || (planned.isCopied() && planned.isColorAssumed)) return;
    const ColorSpaceCodes codes{found.primaries.number, found.transfer.number, found.matrix.number};
    if (planned.isCopied() && image.chroma == ChromaSubsampling::rgb) return;
    compare("the colour", codesText(image.color), codesText(codes));
  }

  void compareSound() {
    if (written_.audio.size() != plan_.audio.size()) {
      differ("the number of audio tracks", std::to_string(plan_.audio.size()), std::to_string(written_.audio.size()));
      return;
    }
    for (std::size_t track = 0; track < plan_.audio.size(); ++track) compareTrack(track);
  }

  void compareTrack(std::size_t track) {
    const PlannedAudioTrack& planned = plan_.audio[track];
    const AudioStreamDescription& found = written_.audio[track];
    const std::string of = " of audio track " + std::to_string(track);
    // FFmpeg names these encoders as their codecs.
    compare("the codec" + of, planned.isCopied() ? planned.copiedCodec : planned.encoder, found.codecName);
    compare("the sample rate" + of, std::to_string(planned.sampleRate), std::to_string(found.sampleRate));
    compare("the number of channels" + of, std::to_string(planned.channelCount), std::to_string(found.channelCount));
    if (planned.bits && found.bitsPerChannel && !planned.isCopied()) {
      compare("the bits" + of, std::to_string(*planned.bits), std::to_string(*found.bitsPerChannel));
    }
    const auto places = bitmapOfChannels(planned.channels);
    if (!planned.channels.empty() && places && found.channelBitmap && !planned.isCopied()) {
      // Surround channels at the back and at the sides have one name in some containers.
      const bool isSame = *places == *found.channelBitmap || withOtherSurround(*places) == *found.channelBitmap;
      if (!isSame) differ("the layout" + of, namesOf(planned.channels), printable(found.layoutName));
    }
    compareSoundDuration(track, found, of);
  }

  void compareSoundDuration(std::size_t track, const AudioStreamDescription& found, const std::string& of) {
    if (!found.duration || track >= media_.audioSeconds.size()) return;
    // Coded sound has packets, the first of which begins before what is heard and the last of which ends after it.
    constexpr double packets = 0.12;
    constexpr double rounding = 2e-3;
    const bool isLinear = found.codecName.starts_with("pcm_");
    const double planned = isMxf() ? media_.videoSeconds : media_.audioSeconds[track];
    const double rate = isMxf() ? plan_.video->output().frameRate.rawValue().rawValue() : 0;
    const double tolerance = (isLinear ? rounding : packets) + (rate > 0 ? 1 / rate : 0);
    compareDuration("the duration" + of, planned, found.duration->rawValue(), tolerance);
  }

  void compareTimecode() {
    if (!plan_.timecode || !plan_.timecode->isInTrack) return;
    const std::string planned = plan_.timecode->start.timecodeString();
    compare("the timecode", planned, written_.timecode ? written_.timecode->start.timecodeString() : "none");
    if (!written_.timecode) return;
    compare("the rate of the timecode", frameRateText(plan_.timecode->rate), frameRateText(written_.timecode->rate));
  }

  void compareTags() {
    if (!tableRow(container()).keepsTags) return;
    for (const PlannedOption& tag : plan_.output.tags) {
      if (tag.name == "creation_time") {
        compareCreationTime(tag.value);
        continue;
      }
      std::string found;
      if (tag.name == "com.apple.quicktime.creationdate") found = written_.creationDate;
      if (tag.name == "com.apple.quicktime.make") found = written_.maker;
      if (tag.name == "com.apple.quicktime.model") found = written_.model;
      if (tag.name == "reel_name") found = written_.reelName;
      compare("the tag " + tag.name, printable(tag.value), printable(found));
    }
  }

  /// The header of a movie has whole seconds.
  void compareCreationTime(const std::string& planned) {
    const std::string found(tagValue(written_.tags, "creation_time").value_or(""));
    const auto plannedDate = creationDateFrom(planned);
    const auto foundDate = creationDateFrom(found);
    if (plannedDate && (!foundDate || foundDate->time != plannedDate->time)) {
      differ("the time of creation", printable(planned), printable(found));
    }
  }

  const MediaDescription& written_;
  const TranscodePlan& plan_;
  const WrittenMedia& media_;
  std::optional<Difference> first_;
};

}  // namespace

std::optional<TranscodeRunError> checkOutput(const MediaDescription& written, const TranscodePlan& plan,
                                             const WrittenMedia& media) {
  Comparison comparison(written, plan, media);
  const auto& difference = comparison.run();
  if (!difference) return std::nullopt;
  return TranscodeRunError{
      TranscodeRunErrorCode::outputIncomplete, plan.output.path,
      difference->name + " is " + difference->found + " where " + difference->planned + " was planned"};
}

}  // namespace meridian::inline v0_2

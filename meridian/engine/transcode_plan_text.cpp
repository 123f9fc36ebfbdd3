#include "meridian/engine/transcode_plan_text.h"

#include <algorithm>
#include <array>
#include <ranges>
#include <vector>

#include "meridian/base/joined.h"
#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/cli/transcode_detail_values.h"
#include "meridian/engine/plan_context.h"

namespace meridian::inline v0_2 {
namespace {

/// Sections of rows, each of a name and a text.
class Sections {
 public:
  void begin(std::string_view title) { sections_.push_back({std::string(title), {}}); }
  void add(std::string_view name, std::string text) {
    sections_.back().rows.push_back({std::string(name), std::move(text)});
  }
  [[nodiscard]] std::string text() const {
    std::string text;
    for (const Section& section : sections_) {
      std::size_t width = 0;
      for (const Row& row : section.rows) width = std::max(width, displayWidth(row.name));
      text += section.title + '\n';
      for (const Row& row : section.rows) {
        text += "  " + row.name;
        if (!row.text.empty())
          text += std::string(width - displayWidth(row.name) + (width > 0 ? 2 : 0), ' ') + row.text;
        text += '\n';
      }
    }
    return text;
  }

 private:
  struct Row {
    std::string name;
    std::string text;
  };
  struct Section {
    std::string title;
    std::vector<Row> rows;
  };
  std::vector<Section> sections_;
};

/// Returns an anchor in words: "the bottom centre".
std::string placeText(const SAVTranscodeArgumentOverlayAnchorValue& anchor) {
  const auto known = fromRawValue<VideoCropAnchor>(anchor.rawValue());
  return "the " + (known ? lowercased(description(*known)) : printable(anchor.rawValue()));
}

std::string secondsText(const MediaRational& seconds) {
  return plainDecimalText(doubleFromText(fixedDecimalText(seconds.rawValue(), 3)).value_or(0)) + " s";
}

std::string rangeOf(const ImageForm& image) {
  return image.range == ColorRange::unknown ? "" : std::string(description(image.range)) + " range";
}

/// Returns everything about an image, or what is other than in the image before it.
std::string formText(const ImageForm& image, const ImageForm* before, bool isColorAssumed = false) {
  std::vector<std::string> texts;
  const auto add = [&](bool isOther, std::string text) {
    if ((before == nullptr || isOther) && !text.empty()) texts.push_back(std::move(text));
  };
  add(before != nullptr && (image.width != before->width || image.height != before->height), sizeText(image));
  const bool isSquare = image.pixelAspectRatio == MediaRational{1, 1};
  if (before == nullptr ? !isSquare : image.pixelAspectRatio != before->pixelAspectRatio) {
    texts.push_back(isSquare ? "square pixels"
                             : "pixels " + std::to_string(image.pixelAspectRatio.numerator) + ":" +
                                   std::to_string(image.pixelAspectRatio.denominator));
  }
  add(before != nullptr && image.pixelFormat != before->pixelFormat, printable(image.pixelFormat));
  add(before != nullptr && image.color != before->color, nameOf(image.color) + (isColorAssumed ? " (assumed)" : ""));
  add(before != nullptr && image.range != before->range, rangeOf(image));
  if (before == nullptr && image.isInterlaced) texts.emplace_back("interlaced");
  add(before != nullptr && image.frameRate != before->frameRate, frameRateText(image.frameRate));
  return joined(texts, ", ");
}

std::string styleText(const TextStyle& style) {
  return "at " + placeText(style.anchor) + ", " + fixedDecimalText(style.fontSize, style.fontSize < 4 ? 1 : 0) +
         " pixels high, " + style.fontColor.text() + " on " + style.boxColor.text();
}

/// Says what is particular to a step, beside the image that it gives.
struct StepDetail {
  std::string operator()(const DeinterlaceStep&) const { return "bwdif, one frame for every two fields"; }
  std::string operator()(const RateStep&) const { return "drop or repeat frames"; }
  std::string operator()(const RotateStep& step) const {
    std::string text = step.isMirrored ? "mirrored" : "";
    if (step.degrees != 0) {
      text += (text.empty() ? "" : ", then ") + std::to_string(step.degrees) + " degrees clockwise";
    }
    return text;
  }
  std::string operator()(const ScaleStep&) const { return "bicubic"; }
  std::string operator()(const CropStep& step) const {
    return "from " + std::to_string(step.x) + ", " + std::to_string(step.y) + " (" +
           lowercased(description(step.anchor)) + ")";
  }
  std::string operator()(const PadStep& step) const {
    return "black bars, image at " + std::to_string(step.x) + ", " + std::to_string(step.y);
  }
  std::string operator()(const ColorStep&) const { return ""; }
  std::string operator()(const FormatStep&) const { return ""; }
  std::string operator()(const LutStep& step) const {
    return inQuotes(step.path) + ", " + std::string(rawValue(step.interpolation)) + ", " +
           (step.axisOrder == LutAxisOrder::redFastest ? "red" : "blue") + " fastest, " +
           (step.domain == LutInputDomain::declared ? "declared domain" : "domain of its data");
  }
  std::string operator()(const TimecodeBurnStep& step) const { return styleText(step.style); }
  std::string operator()(const TextBurnStep& step) const { return inQuotes(step.text) + " " + styleText(step.style); }
  std::string operator()(const WatermarkStep& step) const {
    std::string text = inQuotes(step.path) + " at " + placeText(step.anchor);
    if (step.size.width > 0) {
      text += ", " + sizeText(step.size);
    } else if (step.scale != 1) {
      text += ", " + plainDecimalText(step.scale) + " times its size";
    }
    return text;
  }
};

std::string optionTexts(const std::vector<PlannedOption>& options) {
  std::vector<std::string> texts;
  for (const PlannedOption& option : options) texts.push_back(option.name + "=" + printable(option.value));
  return joined(texts, ", ");
}

void addSources(Sections& sections, const TranscodePlan& plan) {
  sections.begin("Sources");
  for (const PlannedSource& source : plan.sources) {
    // Of many parts the first and the last are enough for a person.
    constexpr std::size_t most = 8;
    const bool isLong = source.parts.size() > most;
    for (std::size_t place = 0; place < source.parts.size(); ++place) {
      const PlannedPart& part = source.parts[place];
      std::string text = inQuotes(part.path);
      if (source.givesImage) text += source.isImageSequence ? ", the image, as a sequence" : ", the image";
      if (part.frameCount) text += ", " + countText(*part.frameCount, "frame");
      if (part.duration) text += ", " + secondsText(*part.duration);
      sections.add(part.flag, std::move(text));
      if (!isLong || place != 0) continue;
      place = source.parts.size() - 2;
      sections.add("...", std::to_string(place) + " more");
    }
    const auto frames = isLong ? source.frameCount() : std::nullopt;
    if (frames) sections.add("in all", countText(*frames, "frame"));
  }
}

void addVideo(Sections& sections, const TranscodePlan& plan) {
  sections.begin("Video");
  if (!plan.video) {
    sections.add("none", "");
    return;
  }
  const PlannedVideo& video = *plan.video;
  std::string source = (video.codecName.empty() ? "unknown codec" : printable(video.codecName)) + ", " +
                       formText(video.source, nullptr, video.isColorAssumed) + (video.isVariable ? ", variable" : "");
  if (video.isCopied()) {
    if (video.rotation != 0) source += ", turned by " + std::to_string(video.rotation) + " degrees when played";
    sections.add("copy", std::move(source));
    return;
  }
  sections.add(video.decodesOnGpu ? "decode on GPU" : "decode", std::move(source));
  const ImageForm* before = &video.source;
  for (const PlannedStep& step : video.steps) {
    std::string text = std::visit(StepDetail(), step.step);
    const std::string change = formText(step.result, before);
    if (!change.empty()) text += (text.empty() ? "to " : " to ") + change;
    sections.add(nameOf(step.step), std::move(text));
    before = &step.result;
  }
  const PlannedVideoEncoder& encoder = *video.encoder;
  std::string text = encoder.codec.string() + " with " + printable(encoder.name) + ", " +
                     std::string(rawValue(encoder.pixelFormat)) + ", " + sizeText(video.output()) + ", " +
                     frameRateText(video.output().frameRate) + ", " + nameOf(video.output().color) +
                     (video.isColorStated ? " (stated, not converted)" : "");
  if (video.frameCount) text += ", " + countText(*video.frameCount, "frame");
  if (encoder.bitRate) text += ", " + plainDecimalText(*encoder.bitRate) + " Mb/s";
  if (encoder.quantizer) text += ", quantizer " + std::to_string(*encoder.quantizer);
  if (encoder.keepsFields) text += ", fields kept";
  sections.add(encoder.usesGpu ? "encode on GPU" : "encode", std::move(text));
  if (!encoder.options.empty()) sections.add("options", optionTexts(encoder.options));
}

void addAudio(Sections& sections, const TranscodePlan& plan) {
  sections.begin("Audio");
  if (plan.audio.empty()) sections.add("none", "");
  for (std::size_t place = 0; place < plan.audio.size(); ++place) {
    const PlannedAudioTrack& track = plan.audio[place];
    std::vector<std::string> numbers;
    for (const AudioOrigin& origin : track.origins) numbers.push_back(std::to_string(origin.track));
    std::string text = (numbers.size() == 1 ? "from track " : "from tracks ") + joined(numbers, ", ") + ": ";
    text += track.isCopied() ? "copy " + printable(track.copiedCodec) : "encode with " + track.encoder;
    if (track.bits) text += ", " + std::to_string(*track.bits) + " bits";
    text += ", " + std::to_string(track.sampleRate) + " samples a second";
    if (track.sampleRate != track.sourceSampleRate) text += " from " + std::to_string(track.sourceSampleRate);
    text += ", ";
    if (track.channels.empty()) {
      text += countText(track.channelCount, track.isCopied() ? "channel" : "discrete channel");
    } else {
      text += namesOf(track.channels);
      const auto from = bitmapOfChannels(track.sourceChannels);
      const auto to = bitmapOfChannels(track.channels);
      // Surround channels at the sides become those at the back, or the reverse, without a mix.
      const bool isRenamed = from && to && withOtherSurround(*from) == *to;
      const bool isMixed = from != to && !isRenamed;
      if (isMixed && !track.sourceChannels.empty()) text += " mixed from " + namesOf(track.sourceChannels);
    }
    if (track.bitRate && !track.isCopied()) text += ", " + std::to_string(*track.bitRate) + " bits a second";
    if (!track.language.empty()) text += ", " + printable(track.language);
    sections.add("track " + std::to_string(place), std::move(text));
  }
}

void addTimecode(Sections& sections, const TranscodePlan& plan) {
  if (!plan.timecode) return;
  const PlannedTimecode& timecode = *plan.timecode;
  const bool isBurnt = plan.video && std::ranges::any_of(plan.video->steps, [](const PlannedStep& step) {
                         return std::holds_alternative<TimecodeBurnStep>(step.step);
                       });
  sections.begin("Timecode");
  sections.add("start", timecode.start.timecodeString() + ", " +
                            (timecode.isAssumed ? "the source has none" : lowercased(description(timecode.source))));
  sections.add("counts", frameRateText(timecode.rate) + (timecode.start.isDropFrame ? ", drop frame" : ""));
  const std::string_view inTrack = isBurnt ? "in the file, and burnt in" : "in the file";
  sections.add("stored", std::string(timecode.isInTrack ? inTrack : "burnt in"));
  // A track has the labels of the first part alone.
  if (timecode.partStarts.empty() || !isBurnt) return;
  constexpr std::size_t most = 8;
  std::vector<std::string> starts;
  for (const auto& start : timecode.partStarts | std::views::take(most)) {
    starts.push_back(start ? start->timecodeString() : "goes on");
  }
  if (timecode.partStarts.size() > most) starts.push_back(std::to_string(timecode.partStarts.size() - most) + " more");
  sections.add("parts", joined(starts, ", "));
}

void addOutput(Sections& sections, const TranscodePlan& plan) {
  const PlannedOutput& output = plan.output;
  sections.begin("Output");
  sections.add("file", inQuotes(output.path) + (output.replacesExisting ? ", replaces the existing file" : ""));
  sections.add("container", std::string(description(output.container)));
  if (!output.options.empty()) sections.add("options", optionTexts(output.options));
  if (!output.tags.empty()) sections.add("tags", optionTexts(output.tags));
  if (!output.workDirectory.empty()) sections.add("unfinished", "in " + inQuotes(output.workDirectory));
  if (!output.progressFile.empty()) sections.add("progress", "to " + inQuotes(output.progressFile));
  if (output.progressPrefix) {
    sections.add("progress", "to standard output, each line after " + inQuotes(*output.progressPrefix));
  }
}

}  // namespace

std::string describe(const TranscodePlan& plan) {
  Sections sections;
  addSources(sections, plan);
  addVideo(sections, plan);
  addAudio(sections, plan);
  addTimecode(sections, plan);
  addOutput(sections, plan);
  if (!plan.warnings.empty()) {
    sections.begin("Warnings");
    for (const TranscodePlanWarning& warning : plan.warnings) sections.add(warning.message(), "");
  }
  return sections.text();
}

}  // namespace meridian::inline v0_2

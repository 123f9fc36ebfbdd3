// A deep analysis: one thread reads, decodes and measures sound, one measures images, and one computes their MD5.
#include "meridian/engine/deep_analysis.h"

#include <algorithm>
#include <array>
#include <exception>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>
#include <tuple>
#include <utility>
#include <variant>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/engine/bounded_queue.h"
#include "meridian/engine/image_sequence.h"
#include "meridian/engine/libav/filmstrip.h"
#include "meridian/engine/libav/image_meter.h"
#include "meridian/engine/libav/log_collector.h"
#include "meridian/engine/libav/media_digest.h"
#include "meridian/engine/libav/sound_meter.h"
#include "meridian/engine/libav/source_part.h"
#include "meridian/media/media_names.h"

namespace meridian::inline v0_2 {

namespace {

using libav::Filmstrip;
using libav::FramePointer;
using libav::ImageMeter;
using libav::MediaDigest;
using libav::PartSource;
using libav::SoundMeter;
using libav::SourceImage;
using libav::SourceSound;
using libav::Ticks;
using libav::timeLine;

/// What the images of a sequence count as, which have no rate.
constexpr VideoFrameRate rateOfSequences = VideoFrameRate::pal25p;
constexpr std::size_t mostFaults = 1000;

/// Tells what is wrong with images or sound when it begins, and not for each of them.
class ChangeOfReason {
 public:
  /// Takes what is wrong with the next of them, if anything is. Returns it if it has begun here; null otherwise.
  [[nodiscard]] const std::string* begun(const std::optional<std::string>& reason) {
    const bool isNew = std::exchange(last_, reason) != reason;
    return isNew && last_ ? &*last_ : nullptr;
  }

 private:
  std::optional<std::string> last_;
};

/// Analyses one clip.
class DeepRun {
 public:
  DeepRun(const MediaDescription& media, const DeepAnalysisOptions& options, DeepAnalysisProgressBlock progress,
          std::stop_token stop)
      : media_(media), options_(options), progress_(progress), stop_(std::move(stop)) {}

  Expected<DeepAnalysis, DeepAnalysisError> result() {
    const libav::QuietDecoding quiet;
    chooseStreams();
    if (!wanted_.hasVideo && wanted_.sounds.empty() && wanted_.otherVideo.empty()) {
      return Unexpected(DeepAnalysisError{DeepAnalysisErrorCode::notDecodable, media_.path});
    }
    auto part = opened();
    if (!part) return Unexpected(std::move(part).error());
    isOpened_ = true;
    if (auto error = measure(**part)) return Unexpected(*std::move(error));
    return finished();
  }

 private:
  void chooseStreams() {
    video_ = media_.mainVideo();
    if (video_ != nullptr && !video_->isDecodable) {
      noteFault(0, std::nullopt, "FFmpeg has no decoder for " + video_->codecName);
      video_ = nullptr;
    }
    if (video_ != nullptr) {
      wanted_.hasVideo = true;
      wanted_.image.width = video_->width;
      wanted_.image.height = video_->height;
      wanted_.isVariable = video_->isVariable;
      if (isSequence()) result_.assumedRate = wanted_.image.frameRate = rateOfSequences;
      if (!isSequence() && video_->frameRate) {
        wanted_.image.frameRate =
            video_->exactFrameRate ? VideoFrameRate::custom(*video_->exactFrameRate) : *video_->frameRate;
      }
    }
    for (const VideoStreamDescription& stream : media_.video) {
      if (&stream == media_.mainVideo() || stream.isAttachedImage) continue;
      if (!stream.isDecodable) {
        noteFault(0, std::nullopt, "FFmpeg has no decoder for " + stream.codecName);
        continue;
      }
      wanted_.otherVideo.push_back(stream.index);
      result_.otherVideo.push_back({.stream = stream.index, .frameCount = 0, .md5 = {}});
    }
    otherDigests_.resize(wanted_.otherVideo.size());
    for (std::size_t track = 0; track < media_.audio.size(); ++track) {
      if (!media_.audio[track].isDecodable) {
        noteFault(0, track, "FFmpeg has no decoder for " + media_.audio[track].codecName);
        continue;
      }
      wanted_.sounds.push_back({track, 0, track, false});
      sounds_.try_emplace(track, track);
    }
  }

  [[nodiscard]] bool isSequence() const { return media_.container == SLVMediaFileContainerImageSequence; }

  [[nodiscard]] Expected<std::unique_ptr<PartSource>, DeepAnalysisError> opened() {
    const libav::ReadingOptions reading{
        .acceptsDamaged = true,
        .stop = stop_,
        .decodesInTurn = true,
        .notesDamage = [this](Ticks time, std::optional<std::size_t> track, std::string_view reason) {
          // What is known before anything is read is in the description.
          if (isOpened_) noteFault(std::max<Ticks>(time, 0), track, reason);
        }};
    auto part = isSequence() ? openedSequence(reading) : libav::openPart(media_.path, wanted_, reading);
    if (!part) return Unexpected(errorOf(part.error()));
    return *std::move(part);
  }

  [[nodiscard]] Expected<std::unique_ptr<PartSource>, TranscodeRunError> openedSequence(
      const libav::ReadingOptions& reading) const {
    auto images = imageSequence(media_.path);
    if (!images) {
      return Unexpected(TranscodeRunError{TranscodeRunErrorCode::sourceNotRead, media_.path,
                                          std::string(images.error().text()), images.error().systemError});
    }
    std::int64_t place = 0;
    return libav::openImages(libav::placedImages(*std::move(images), place), wanted_, reading);
  }

  [[nodiscard]] DeepAnalysisError errorOf(const TranscodeRunError& error) const {
    using enum DeepAnalysisErrorCode;
    DeepAnalysisErrorCode code = notRead;
    if (error.code == TranscodeRunErrorCode::interrupted) code = stopped;
    if (error.code == TranscodeRunErrorCode::notDecoded) code = notDecodable;
    DeepAnalysisError own{code, media_.path, error.detail, error.systemError};
    if (own.detail.empty() && !own.systemError && own.code == notRead) own.detail = error.text();
    return own;
  }

  void noteFault(Ticks time, std::optional<std::size_t> track, std::string_view reason) {
    ++result_.faultCount;
    if (result_.faults.size() < mostFaults) {
      result_.faults.push_back({libav::secondsOfTicks(time), track, printable(reason)});
    }
  }

  void noteImageFault(Ticks time, std::string reason) {
    ++imageFaultCount_;
    if (imageFaults_.size() < mostFaults) {
      imageFaults_.push_back({libav::secondsOfTicks(time), std::nullopt, std::move(reason)});
    }
  }

  /// Reads to the end, while other threads measure images.
  [[nodiscard]] std::optional<DeepAnalysisError> measure(PartSource& part) {
    if (video_ != nullptr) {
      meter_.emplace(*video_);
      strip_.emplace(*video_, options_, expectedTicks());
    }
    std::optional<DeepAnalysisError> error;
    {
      const std::jthread measuring([this] { guarded([this] { measureImages(); }); });
      const std::jthread digesting([this] { guarded([this] { digestImages(); }); });
      guarded([&] { error = read(part); });
      measured_.close();
      digested_.close();
    }
    if (exception_) std::rethrow_exception(exception_);
    return error;
  }

  template <typename Work>
  void guarded(const Work& work) noexcept {
    try {
      work();
    } catch (...) {
      {
        const std::lock_guard lock(exceptionMutex_);
        if (!exception_) exception_ = std::current_exception();
      }
      measured_.cancel();
      digested_.cancel();
    }
  }

  [[nodiscard]] std::optional<DeepAnalysisError> read(PartSource& part) {
    for (;;) {
      auto item = part.next();
      if (!item) {
        measured_.cancel();
        digested_.cancel();
        return errorOf(item.error());
      }
      if (!*item) return std::nullopt;
      if (auto* const image = std::get_if<SourceImage>(&**item)) {
        if (image->otherVideo) {
          otherDigests_[*image->otherVideo].addImage(*image->frame);
          ++result_.otherVideo[*image->otherVideo].frameCount;
          continue;
        }
        tell(image->time);
        if (!handOn(std::move(*image))) return std::nullopt;
      } else if (const auto* const sound = std::get_if<SourceSound>(&**item)) {
        if (video_ == nullptr) tell(sound->time);
        const auto reason = sounds_.at(sound->track).take(*sound->frame, sound->time);
        if (const auto* const begun = soundReasons_[sound->track].begun(reason)) {
          noteFault(sound->time, sound->track, *begun);
        }
      }
    }
  }

  [[nodiscard]] bool handOn(SourceImage image) {
    FramePointer same(av_frame_clone(image.frame.get()));
    if (!same) throw std::bad_alloc();
    return digested_.push(std::move(same), 1) && measured_.push(std::move(image), 1);
  }

  [[nodiscard]] Ticks expectedTicks() const {
    if (isSequence()) {
      const MediaRational rate = rateOfSequences.rawValue();
      const std::int64_t frames = video_->frameCount.value_or(0);
      return av_rescale(frames, std::int64_t{timeLine.den} * rate.denominator, rate.numerator);
    }
    return media_.duration ? libav::timeLineOf(*media_.duration) : 0;
  }

  void tell(Ticks time) const {
    const Ticks expected = expectedTicks();
    progress_(expected > 0 ? std::clamp(static_cast<double>(time) / static_cast<double>(expected), 0.0, 1.0) : 0);
  }

  void measureImages() {
    while (const auto image = measured_.pop()) {
      strip_->take(*image->frame, image->time);
      const auto reason = meter_->take(*image->frame, image->time, image->duration);
      if (const auto* const begun = imageReason_.begun(reason)) noteImageFault(image->time, *begun);
    }
  }

  void digestImages() {
    while (const auto image = digested_.pop()) digest_.addImage(**image);
  }

  [[nodiscard]] DeepAnalysis finished() {
    if (meter_) {
      DeepVideoAnalysis& video = result_.video.emplace(meter_->finish());
      video.isVariable = video.isVariable && !isSequence();
      video.md5 = digest_.text();
      video.filmstrip = strip_->takeImages();
    }
    for (auto& [track, meter] : sounds_) result_.audio.push_back(meter.finish());
    for (std::size_t place = 0; place < otherDigests_.size(); ++place) {
      result_.otherVideo[place].md5 = otherDigests_[place].text();
    }
    result_.faultCount += imageFaultCount_;
    std::ranges::move(imageFaults_, std::back_inserter(result_.faults));
    std::ranges::sort(result_.faults, {},
                      [](const DecodeFault& fault) { return std::tuple(fault.seconds, fault.track, fault.reason); });
    if (result_.faults.size() > mostFaults) result_.faults.resize(mostFaults);
    return std::move(result_);
  }

  const MediaDescription& media_;
  const DeepAnalysisOptions& options_;
  DeepAnalysisProgressBlock progress_;
  const std::stop_token stop_;
  const VideoStreamDescription* video_ = nullptr;
  libav::WantedStreams wanted_;
  bool isOpened_ = false;
  DeepAnalysis result_;

  std::map<std::size_t, SoundMeter> sounds_;
  std::optional<ImageMeter> meter_;
  std::optional<Filmstrip> strip_;
  MediaDigest digest_;
  std::vector<MediaDigest> otherDigests_;
  std::map<std::size_t, ChangeOfReason> soundReasons_;
  /// Of the thread that measures images, until it has ended.
  ChangeOfReason imageReason_;
  std::vector<DecodeFault> imageFaults_;
  std::int64_t imageFaultCount_ = 0;

  /// Images that wait: enough that no thread waits for another at each of them.
  static constexpr std::size_t queueLength = 3;
  BoundedQueue<SourceImage> measured_{queueLength};
  BoundedQueue<FramePointer> digested_{queueLength};
  std::mutex exceptionMutex_;
  std::exception_ptr exception_;
};

}  // namespace

Expected<DeepAnalysis, DeepAnalysisError> analyzeDeeply(const MediaDescription& media,
                                                        const DeepAnalysisOptions& options,
                                                        DeepAnalysisProgressBlock progress,
                                                        const std::stop_token& stop) {
  return DeepRun(media, options, progress, stop).result();
}

std::optional<DeepAnalysisError> errorOfFaults(const DeepAnalysis& deep, const std::string& path) {
  if (deep.faults.empty()) return std::nullopt;
  const DecodeFault& first = deep.faults.front();
  std::string detail = deep.faultCount == 1 ? "at " : std::to_string(deep.faultCount) + ", the first at ";
  detail += fixedDecimalText(first.seconds, 3) + " s";
  if (first.track) detail += " in audio track " + std::to_string(*first.track + 1);
  return DeepAnalysisError{DeepAnalysisErrorCode::faulty, path, detail + ": " + first.reason};
}

Expected<DeepAnalysis, DeepAnalysisError> analyzeDeeply(const MediaDescription& media) {
  return analyzeDeeply(media, {}, [](double) {});
}

}  // namespace meridian::inline v0_2

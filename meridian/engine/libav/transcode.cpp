// A transcode carried out: one thread reads and decodes, one converts, and the caller's encodes and writes.
#include "meridian/engine/transcode.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <thread>
#include <utility>
#include <variant>

#include "meridian/base/joined.h"
#include "meridian/base/numbers.h"
#include "meridian/engine/bounded_queue.h"
#include "meridian/engine/describe_media.h"
#include "meridian/engine/libav/audio_chain.h"
#include "meridian/engine/libav/log_collector.h"
#include "meridian/engine/libav/media_output.h"
#include "meridian/engine/libav/source_reader.h"
#include "meridian/engine/libav/unfinished_media.h"
#include "meridian/engine/libav/video_chain.h"
#include "meridian/engine/output_check.h"
#include "meridian/engine/transcode_pace.h"
#include "meridian/platform/file_identity.h"
#include "meridian/platform/whole_file.h"

namespace meridian::inline v0_2 {
namespace {

using enum TranscodeRunErrorCode;
using libav::AudioChain;
using libav::CopiedPacket;
using libav::FramePointer;
using libav::MediaOutput;
using libav::SourceImage;
using libav::SourceItem;
using libav::SourceReader;
using libav::SourceSound;
using libav::Ticks;
using libav::VideoChain;

/// What the writer does next: an image or sound to encode, or a packet to copy.
struct ConvertedImage {
  FramePointer image;
};
struct ConvertedSound {
  std::size_t track = 0;
  FramePointer sound;
};
using WriterItem = std::variant<ConvertedImage, ConvertedSound, CopiedPacket>;

/// A queue holds one image, or sound and packets of a few megabytes. More would cost memory and no time less.
constexpr std::size_t queueCapacity = 64;
constexpr std::size_t bytesOfWeight = 65'536;

std::size_t weightOf(const SourceImage& /*image*/) noexcept { return queueCapacity; }
std::size_t weightOf(const ConvertedImage& /*image*/) noexcept { return queueCapacity; }
std::size_t weightOf(const SourceSound& /*sound*/) noexcept { return 1; }
std::size_t weightOf(const ConvertedSound& /*sound*/) noexcept { return 1; }
std::size_t weightOf(const CopiedPacket& copied) noexcept {
  return 1 + static_cast<std::size_t>(copied.packet->size) / bytesOfWeight;
}

template <typename Queue, typename Item>
bool pushWeighed(Queue& queue, Item item) {
  const std::size_t weight = std::visit([](const auto& each) { return weightOf(each); }, item);
  return queue.push(std::move(item), weight);
}

std::chrono::milliseconds cpuTimeOfProcess() noexcept {
  rusage usage{};
  if (getrusage(RUSAGE_SELF, &usage) != 0) return {};
  const auto of = [](const timeval& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
  };
  return std::chrono::duration_cast<std::chrono::milliseconds>(of(usage.ru_utime) + of(usage.ru_stime));
}

/// Returns the seconds that the output will last; absent if the sources do not say.
std::optional<double> plannedSeconds(const TranscodePlan& plan) {
  if (plan.video && plan.video->frameCount) {
    const double rate = plan.video->output().frameRate.rawValue().rawValue();
    if (rate > 0) return static_cast<double>(*plan.video->frameCount) / rate;
  }
  double longest = 0;
  for (const PlannedSource& source : plan.sources) {
    double seconds = 0;
    for (const PlannedPart& part : source.parts) {
      if (!part.duration) return std::nullopt;
      seconds += part.duration->rawValue();
    }
    longest = std::max(longest, seconds);
  }
  return longest;
}

/// One transcode.
class Run {
 public:
  Run(const TranscodePlan& plan, const TranscodeOptions& options)
      : plan_(plan),
        options_(options),
        pace_(plannedSeconds(plan), plan.video ? plan.video->frameCount : std::nullopt) {}

  Expected<TranscodeResult, TranscodeRunError> result() {
    const auto cpuBefore = cpuTimeOfProcess();
    if (auto error = checkPlace()) return Unexpected(*std::move(error));
    auto file = WholeFile::create(plan_.output.path,
                                  {.replaces = plan_.output.mayReplace, .workDirectory = plan_.output.workDirectory});
    if (!file) return Unexpected(outputError(file.error()));
    if (auto error = carryOut(*file)) return Unexpected(*std::move(error));
    auto description = checkedOutput(*file);
    if (!description) return Unexpected(std::move(description).error());
    if (options_.beforePublishing) tellOfOutput(*file);
    if (const std::error_code error = file->publish(options_.stop)) return Unexpected(outputError(error));
    TranscodeResult result;
    result.path = plan_.output.path;
    result.output = *std::move(description);
    result.bytes = result.output.size;
    result.frames = written_.frames;
    result.seconds = longestSeconds();
    result.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Pace::Clock::now() - pace_.start());
    result.cpuTime = cpuTimeOfProcess() - cpuBefore;
    result.warnings = std::move(warnings_);
    if (options_.progress) options_.progress(pace_.complete(result.frames, result.seconds, result.bytes));
    return result;
  }

 private:
  using Pace = TranscodePace;

  void tellOfOutput(const WholeFile& file) const {
    struct stat status{};
    if (fstat(file.descriptor(), &status) != 0) return;
    options_.beforePublishing(static_cast<std::uint64_t>(status.st_size), static_cast<std::uint64_t>(status.st_ino));
  }

  [[nodiscard]] TranscodeRunError outputError(const std::error_code& error) const {
    if (error == std::errc::file_exists) return {outputExists, plan_.output.path};
    if (error == std::errc::operation_canceled) return {interrupted, plan_.output.path};
    return {outputNotWritten, plan_.output.path, {}, error};
  }

  /// Refuses an output that is there already, or that is a source under another name: the plan may be old.
  [[nodiscard]] std::optional<TranscodeRunError> checkPlace() const {
    const auto output = targetIdentity(plan_.output.path);
    if (!output) return std::nullopt;
    for (const PlannedSource& source : plan_.sources) {
      for (const PlannedPart& part : source.parts) {
        if (targetIdentity(part.path) == output) return TranscodeRunError{outputIsSource, plan_.output.path, part.path};
      }
    }
    if (!plan_.output.mayReplace) return TranscodeRunError{outputExists, plan_.output.path};
    return std::nullopt;
  }

  void fail(TranscodeRunError error) {
    {
      const std::lock_guard lock(errorMutex_);
      if (!error_) error_ = std::move(error);
    }
    cancelQueues();
  }

  void cancelQueues() {
    read_.cancel();
    converted_.cancel();
  }

  /// Runs the work of a thread and ends the others if it fails. What it throws is thrown on by `carryOut`.
  void guarded(std::optional<TranscodeRunError> (Run::*work)()) noexcept {
    try {
      if (auto error = (this->*work)()) fail(*std::move(error));
    } catch (...) {
      {
        const std::lock_guard lock(errorMutex_);
        if (!exception_) exception_ = std::current_exception();
      }
      cancelQueues();
    }
  }

  [[nodiscard]] std::optional<TranscodeRunError> carryOut(WholeFile& file) {
    const libav::QuietDecoding quiet;
    auto reader = SourceReader::open(plan_, {options_.acceptsDamaged, options_.stop, options_.threads});
    if (!reader) return std::move(reader).error();
    reader_ = *std::move(reader);
    if (auto error = openOutput(file)) return error;
    if (auto error = openChains()) return error;
    {
      const std::jthread telling([this] { guarded(&Run::tell); });
      const EndOfTelling end(*this);
      runThreads();
      if (!isCancelled()) {
        if (auto error = output_->finish()) fail(*std::move(error));
      }
    }
    if (exception_) std::rethrow_exception(exception_);
    if (!error_ && options_.stop.stop_requested()) error_ = TranscodeRunError{interrupted, plan_.output.path};
    if (error_) return error_;
    noteWritten();
    output_.reset();
    return std::nullopt;
  }

  void runThreads() {
    const std::stop_callback stopped(options_.stop, [this] { fail({interrupted, plan_.output.path}); });
    const std::jthread reading([this] { guarded(&Run::read); });
    const std::jthread converting([this] { guarded(&Run::convert); });
    guarded(&Run::write);
  }

  /// Opens the encoders; the CPU's where the GPU's fails.
  [[nodiscard]] std::optional<TranscodeRunError> openOutput(WholeFile& file) {
    auto output = MediaOutput::open(plan_, *reader_, file, options_.threads);
    if (!output && plan_.video && plan_.video->encoderWithoutGpu) {
      warnings_.push_back({TranscodeRunWarningCode::gpuNotUsed, std::string(SAVVideoGPUEncodingFlag.rawValue()),
                           output.error().detail});
      plan_.video->encoder = std::exchange(plan_.video->encoderWithoutGpu, std::nullopt);
      output = MediaOutput::open(plan_, *reader_, file, options_.threads);
    }
    if (!output) return std::move(output).error();
    output_ = *std::move(output);
    return std::nullopt;
  }

  [[nodiscard]] std::optional<TranscodeRunError> openChains() {
    if (plan_.video && !plan_.video->isCopied()) {
      auto chain = VideoChain::open(plan_, options_.threads);
      if (!chain) return std::move(chain).error();
      video_ = *std::move(chain);
    }
    for (std::size_t track = 0; track < plan_.audio.size(); ++track) {
      auto& chain = audio_.emplace_back();
      if (plan_.audio[track].isCopied()) continue;
      auto opened = AudioChain::open(plan_.audio[track], output_->samplesPerFrame(track), plan_.output.path);
      if (!opened) return std::move(opened).error();
      chain = *std::move(opened);
    }
    return std::nullopt;
  }

  [[nodiscard]] std::optional<TranscodeRunError> read() {
    // An image that is decoded before there is room for it would be one more in memory.
    while (read_.waitForRoom()) {
      auto item = reader_->next();
      if (!item) return std::move(item).error();
      if (!*item) break;
      if (!pushWeighed(read_, **std::move(item))) return std::nullopt;
    }
    read_.close();
    return std::nullopt;
  }

  [[nodiscard]] auto sinkOfSound(std::size_t track) {
    return [this, track](FramePointer sound) { return handOn(ConvertedSound{track, std::move(sound)}); };
  }

  [[nodiscard]] std::optional<TranscodeRunError> convert() {
    const auto sinkOfImages = [this](FramePointer image) { return handOn(ConvertedImage{std::move(image)}); };
    while (auto item = read_.pop()) {
      std::optional<TranscodeRunError> error;
      if (auto* const image = std::get_if<SourceImage>(&*item)) {
        error = video_->take(std::move(*image), sinkOfImages);
      } else if (auto* const sound = std::get_if<SourceSound>(&*item)) {
        error = audio_[sound->track]->take(sound->origin, *sound->frame, sound->time, sinkOfSound(sound->track));
      } else {
        error = handOn(std::get<CopiedPacket>(std::move(*item)));
      }
      if (error) return error;
    }
    if (isCancelled()) return std::nullopt;
    if (auto error = finishChains(sinkOfImages)) return error;
    converted_.close();
    return std::nullopt;
  }

  [[nodiscard]] std::optional<TranscodeRunError> finishChains(libav::ImageSink sinkOfImages) {
    const Ticks end = reader_->imageEnd();
    if (video_) {
      if (auto error = video_->finish(end, sinkOfImages)) return error;
    }
    // MXF has sound for each of its images, and no more.
    const bool isFitted = plan_.video && tableRow(plan_.output.container).needsVideo;
    for (std::size_t track = 0; track < audio_.size(); ++track) {
      if (!audio_[track]) continue;
      const auto soundEnd = isFitted ? std::optional(end) : std::nullopt;
      if (auto error = audio_[track]->finish(soundEnd, sinkOfSound(track))) return error;
    }
    return std::nullopt;
  }

  /// Hands an item to the writer; the error that ended the transcode where there is one.
  [[nodiscard]] std::optional<TranscodeRunError> handOn(WriterItem item) {
    if (pushWeighed(converted_, std::move(item))) return std::nullopt;
    const std::lock_guard lock(errorMutex_);
    return error_;
  }

  [[nodiscard]] bool isCancelled() {
    const std::lock_guard lock(errorMutex_);
    return error_ || exception_;
  }

  [[nodiscard]] std::optional<TranscodeRunError> write() {
    while (auto item = converted_.pop()) {
      std::optional<TranscodeRunError> error;
      if (auto* const image = std::get_if<ConvertedImage>(&*item)) {
        error = output_->writeImage(std::move(image->image));
      } else if (auto* const sound = std::get_if<ConvertedSound>(&*item)) {
        error = output_->writeSound(sound->track, std::move(sound->sound));
      } else {
        error = output_->writePacket(std::get<CopiedPacket>(std::move(*item)));
      }
      if (error) return error;
    }
    if (isCancelled()) return std::nullopt;
    return endStreams();
  }

  [[nodiscard]] std::optional<TranscodeRunError> endStreams() {
    if (plan_.video) {
      if (auto error = output_->endImages()) return error;
    }
    for (std::size_t track = 0; track < plan_.audio.size(); ++track) {
      if (auto error = output_->endSound(track)) return error;
    }
    return std::nullopt;
  }

  /// Tells how far the transcode is, also while an encoder or the muxer takes long.
  [[nodiscard]] std::optional<TranscodeRunError> tell() {
    if (!options_.progress) return std::nullopt;
    const auto interval = std::max(options_.interval, std::chrono::milliseconds(1));
    std::unique_lock lock(tellingMutex_);
    while (!tellingEnds_.wait_for(lock, interval, [this] { return isTold_; })) {
      lock.unlock();
      options_.progress(pace_.at(output_->images(), libav::secondsOfTicks(output_->writtenTime()), output_->bytes()));
      lock.lock();
    }
    return std::nullopt;
  }

  /// Ends `tell`.
  class EndOfTelling {
   public:
    explicit EndOfTelling(Run& run) : run_(run) {}
    EndOfTelling(const EndOfTelling&) = delete;
    EndOfTelling& operator=(const EndOfTelling&) = delete;
    EndOfTelling(EndOfTelling&&) = delete;
    EndOfTelling& operator=(EndOfTelling&&) = delete;
    ~EndOfTelling() {
      {
        const std::lock_guard lock(run_.tellingMutex_);
        run_.isTold_ = true;
      }
      run_.tellingEnds_.notify_all();
    }

   private:
    Run& run_;
  };

  void noteWritten() {
    written_.frames = output_->images();
    written_.videoSeconds = libav::secondsOfTicks(output_->imageDuration());
    for (std::size_t track = 0; track < plan_.audio.size(); ++track) {
      written_.audioSeconds.push_back(libav::secondsOfTicks(output_->soundDuration(track)));
    }
    const auto& noticed = reader_->warnings();
    warnings_.insert(warnings_.end(), noticed.begin(), noticed.end());
    const auto note = [this](TranscodeRunWarningCode code, const std::string& path, const libav::Occurrences& found,
                             const char* unit) {
      warnings_.push_back({code, path,
                           countText(found.count, unit) + ", the first near " +
                               fixedDecimalText(libav::secondsOfTicks(found.first), 2) + " s"});
    };
    if (video_) {
      warnings_.insert(warnings_.end(), video_->warnings().begin(), video_->warnings().end());
      const auto noteImages = [&](TranscodeRunWarningCode code, const libav::Occurrences& found) {
        if (found.count > 0) note(code, reader_->imagePathAt(found.first), found, "frame");
      };
      noteImages(TranscodeRunWarningCode::framesRepeated, video_->repeatedImages());
      noteImages(TranscodeRunWarningCode::framesDropped, video_->droppedImages());
    }
    for (std::size_t track = 0; track < audio_.size(); ++track) {
      if (!audio_[track]) continue;
      const auto [origin, samples] = audio_[track]->filledSound();
      if (samples.count == 0) continue;
      note(TranscodeRunWarningCode::soundFilled, reader_->soundPathAt(track, origin, samples.first), samples, "sample");
    }
  }

  [[nodiscard]] double longestSeconds() const {
    double longest = written_.videoSeconds;
    for (const double seconds : written_.audioSeconds) longest = std::max(longest, seconds);
    return longest;
  }

  /// Reads the file back before it has its name.
  [[nodiscard]] Expected<MediaDescription, TranscodeRunError> checkedOutput(const WholeFile& file) const {
    constexpr DescriptionLimits unlimited{.bytes = std::numeric_limits<std::uint64_t>::max(),
                                          .time = std::chrono::milliseconds::max(),
                                          .indexEntries = std::numeric_limits<std::uint64_t>::max()};
    auto description = libav::describeUnfinished(file.unfinishedPath(), plan_.output.path, unlimited);
    if (!description) {
      const MediaError& error = description.error();
      std::string detail = "it " + std::string(error.text()) + (error.detail.empty() ? "" : ": " + error.detail);
      return Unexpected(TranscodeRunError{outputIncomplete, plan_.output.path, std::move(detail)});
    }
    if (auto error = checkOutput(*description, plan_, written_)) return Unexpected(*std::move(error));
    return *std::move(description);
  }

  TranscodePlan plan_;
  const TranscodeOptions& options_;
  Pace pace_;
  std::unique_ptr<SourceReader> reader_;
  std::unique_ptr<VideoChain> video_;
  /// By track; null for one that is copied.
  std::vector<std::unique_ptr<AudioChain>> audio_;
  std::unique_ptr<MediaOutput> output_;
  BoundedQueue<SourceItem> read_{queueCapacity};
  BoundedQueue<WriterItem> converted_{queueCapacity};
  std::mutex errorMutex_;
  std::optional<TranscodeRunError> error_;
  std::exception_ptr exception_;
  std::mutex tellingMutex_;
  std::condition_variable tellingEnds_;
  bool isTold_ = false;
  WrittenMedia written_;
  std::vector<TranscodeRunWarning> warnings_;
};

}  // namespace

Expected<TranscodeResult, TranscodeRunError> transcode(const TranscodePlan& plan, const TranscodeOptions& options) {
  try {
    return Run(plan, options).result();
  } catch (const std::bad_alloc&) {
    return Unexpected(TranscodeRunError{outOfMemory, plan.output.path});
  } catch (const std::system_error& error) {
    // No thread could be started.
    return Unexpected(TranscodeRunError{outOfMemory, plan.output.path, {}, error.code()});
  }
}

}  // namespace meridian::inline v0_2

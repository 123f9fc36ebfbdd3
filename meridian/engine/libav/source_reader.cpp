#include "meridian/engine/libav/source_reader.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <map>
#include <span>
#include <string>
#include <utility>

#include "meridian/base/numbers.h"
#include "meridian/engine/describe_media.h"
#include "meridian/engine/image_sequence.h"
#include "meridian/engine/libav/copied_sound.h"
#include "meridian/engine/libav/decode_times.h"
#include "meridian/engine/libav/source_part.h"
#include "meridian/platform/file_queries.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2::libav {
namespace {

using enum TranscodeRunErrorCode;

/// The parts of a group, one after the other.
class GroupReader {
 public:
  GroupReader(const PlannedSource& source, WantedStreams wanted, const ReadingOptions& options)
      : source_(source), wanted_(std::move(wanted)), options_(options) {}

  /// Opens the first part.
  [[nodiscard]] std::optional<TranscodeRunError> open() {
    auto part = openedPart();
    if (!part) return std::move(part).error();
    current_ = *std::move(part);
    beginPart();
    return prepareCopies();
  }

  /// Returns the next item on the time line of the clip; nothing at the end of the last part.
  [[nodiscard]] Expected<std::optional<SourceItem>, TranscodeRunError> next() {
    for (;;) {
      if (!waiting_.empty()) {
        SourceItem item = std::move(waiting_.front());
        waiting_.pop_front();
        return item;
      }
      auto item = current_->next();
      if (!item) return item;
      if (*item) {
        if (auto error = place(**std::move(item))) return Unexpected(*std::move(error));
        continue;
      }
      if (auto error = endPart()) return Unexpected(*std::move(error));
      if (isEnded_) return std::nullopt;
    }
  }

  /// Returns how far the group was read.
  [[nodiscard]] Ticks position() const noexcept { return position_; }
  [[nodiscard]] Ticks end() const { return offset_ + (isEnded_ ? 0 : current_->end()); }
  [[nodiscard]] bool givesImage() const noexcept { return wanted_.hasVideo; }
  [[nodiscard]] bool gives(std::size_t track) const {
    return std::ranges::find(wanted_.sounds, track, &WantedSound::track) != wanted_.sounds.end();
  }
  [[nodiscard]] bool gives(std::size_t track, std::size_t origin) const {
    return std::ranges::any_of(
        wanted_.sounds, [&](const WantedSound& sound) { return sound.track == track && sound.origin == origin; });
  }
  [[nodiscard]] CopiedStream copiedStream(std::optional<std::size_t> track) const {
    return first_->copiedStream(track);
  }

  /// Returns the file that is read at a time; of an image sequence the first one, or its directory.
  [[nodiscard]] const std::string& pathAt(Ticks time) const {
    const auto after = std::ranges::upper_bound(begins_, time);
    const auto part = std::max<std::ptrdiff_t>(after - begins_.begin() - 1, 0);
    return source_.parts[static_cast<std::size_t>(part)].path;
  }

  [[nodiscard]] std::vector<TranscodeRunWarning> takeWarnings() { return std::exchange(warnings_, {}); }

 private:
  [[nodiscard]] bool isLastPart() const noexcept {
    return source_.isImageSequence || part_ + 1 == source_.parts.size();
  }

  /// Packets can follow those of another part only if a decoder needs the same parameters for both: an output has one
  /// description of each stream. The images of all parts are decoded as far ahead as those of any part, since the file
  /// of a few images may state that none is decoded ahead.
  [[nodiscard]] std::optional<TranscodeRunError> prepareCopies() {
    if (source_.isImageSequence || source_.parts.size() < 2) return std::nullopt;
    std::vector<std::optional<std::size_t>> copied;
    if (wanted_.hasVideo && wanted_.copiesVideo) copied.emplace_back();
    for (const WantedSound& sound : wanted_.sounds) {
      if (sound.isCopied) copied.emplace_back(sound.track);
    }
    int delay = 0;
    for (std::size_t place = 0; place < source_.parts.size() && !copied.empty(); ++place) {
      const std::string& path = source_.parts[place].path;
      const auto part = openPart(path, wanted_, options_);
      if (!part) return part.error();
      for (const auto& track : copied) {
        const AVCodecParameters& parameters = *(*part)->copiedStream(track).parameters;
        if (!track) delay = std::max(delay, parameters.video_delay);
        if (decodesAlike(*first_->copiedStream(track).parameters, parameters)) continue;
        return TranscodeRunError{track ? soundNotCopyable : notCopyable, path,
                                 "it is coded with other parameters than the part before it"};
      }
    }
    joinedTimes_.emplace(delay, wanted_.imageDuration());
    return std::nullopt;
  }

  static bool decodesAlike(const AVCodecParameters& left, const AVCodecParameters& right) {
    const auto extra = [](const AVCodecParameters& each) {
      return std::span(each.extradata, static_cast<std::size_t>(std::max(each.extradata_size, 0)));
    };
    return left.codec_id == right.codec_id && std::ranges::equal(extra(left), extra(right));
  }

  [[nodiscard]] Expected<std::unique_ptr<PartSource>, TranscodeRunError> openedPart() {
    if (!source_.isImageSequence) return openPart(source_.parts[part_].path, wanted_, options_);
    std::vector<PlacedImage> placed;
    std::int64_t place = 0;
    for (const PlannedPart& part : source_.parts) {
      if (!pathIsDirectory(part.path)) {
        placed.push_back({part.path, place++});
        continue;
      }
      auto images = imageSequence(part.path);
      if (!images) {
        return Unexpected(TranscodeRunError{sourceNotRead, part.path, std::string(images.error().text()),
                                            images.error().systemError});
      }
      if (auto error = noteMissing(*images, part.path)) return Unexpected(*std::move(error));
      std::ranges::move(placedImages(*std::move(images), place), std::back_inserter(placed));
    }
    return openImages(std::move(placed), wanted_, options_);
  }

  /// Returns the error of a sequence that lacks images, unless that is accepted.
  [[nodiscard]] std::optional<TranscodeRunError> noteMissing(const ImageSequence& images, const std::string& path) {
    if (images.missingCount == 0) return std::nullopt;
    std::size_t after = 1;
    while (images.numbers[after] - images.numbers[after - 1] <= 1) ++after;
    std::string detail = "the image with the number " + std::to_string(images.numbers[after - 1] + 1) + " is missing";
    if (images.missingCount > 1) detail += ", the first of " + std::to_string(images.missingCount);
    if (!options_.acceptsDamaged) return TranscodeRunError{sourceDamaged, path, std::move(detail)};
    warnings_.push_back({TranscodeRunWarningCode::damageAccepted, path, std::move(detail)});
    return std::nullopt;
  }

  /// Prepares the copied sound for the part that was opened.
  void beginPart() {
    if (first_ == nullptr) first_ = current_;
    begins_.push_back(offset_);
    end_.reset();
    if (!isLastPart()) {
      if (const auto stated = current_->statedEnd()) end_ = offset_ + *stated;
    }
    for (const WantedSound& sound : wanted_.sounds) {
      if (!sound.isCopied) continue;
      const auto [found, isNew] = copied_.try_emplace(sound.track, *first_->copiedStream(sound.track).parameters);
      found->second.beginPart(offset_, end_);
    }
  }

  [[nodiscard]] std::optional<TranscodeRunError> endPart() {
    offset_ += current_->end();
    std::ranges::move(current_->takeWarnings(), std::back_inserter(warnings_));
    noteCut();
    if (isLastPart()) {
      isEnded_ = true;
      return std::nullopt;
    }
    ++part_;
    auto part = openedPart();
    if (!part) return std::move(part).error();
    current_ = *std::move(part);
    beginPart();
    return std::nullopt;
  }

  /// Warns of sound that was cut, unless it is shorter than an image.
  void noteCut() {
    Ticks cut = std::exchange(cutSound_, 0);
    for (const auto& [track, sound] : copied_) {
      cut = std::max(cut, sound.cut() - std::exchange(countedCuts_[track], sound.cut()));
    }
    if (cut <= std::max<Ticks>(wanted_.imageDuration(), timeLine.den / 25)) return;
    warnings_.push_back({TranscodeRunWarningCode::soundCut, source_.parts[part_].path,
                         fixedDecimalText(secondsOfTicks(cut), 3) + " s"});
  }

  /// Moves an item to the place of its part.
  [[nodiscard]] std::optional<TranscodeRunError> place(SourceItem item) {
    if (auto* const image = std::get_if<SourceImage>(&item)) {
      image->time += offset_;
      image->part = part_;
      position_ = image->time;
    } else if (auto* const sound = std::get_if<SourceSound>(&item)) {
      sound->time += offset_;
      position_ = sound->time;
      if (!cutAtJoins(*sound)) return std::nullopt;
    } else {
      auto& packet = std::get<CopiedPacket>(item);
      return placePacket(std::move(packet));
    }
    waiting_.push_back(std::move(item));
    return std::nullopt;
  }

  /// Cuts sound that the next part replaces, and sound before a part that is not the first; false if nothing is left.
  [[nodiscard]] bool cutAtJoins(SourceSound& sound) {
    AVFrame& frame = *sound.frame;
    const auto samplesOf = [&frame](Ticks duration) { return av_rescale(duration, frame.sample_rate, timeLine.den); };
    if (part_ > 0 && sound.time + av_rescale(frame.nb_samples, timeLine.den, frame.sample_rate) <= offset_)
      return false;
    if (!end_) return true;
    const std::int64_t kept = std::clamp<std::int64_t>(samplesOf(*end_ - sound.time), 0, frame.nb_samples);
    if (sound.track == wanted_.sounds.front().track) {
      cutSound_ += av_rescale(frame.nb_samples - kept, timeLine.den, frame.sample_rate);
    }
    frame.nb_samples = static_cast<int>(kept);
    return kept > 0;
  }

  [[nodiscard]] std::optional<TranscodeRunError> placePacket(CopiedPacket copied) {
    AVPacket& packet = *copied.packet;
    packet.pts += offset_;
    packet.dts += offset_;
    position_ = packet.dts;
    if (copied.track) {
      CopiedSound& sound = copied_.at(*copied.track);
      if (!sound.fit(packet)) return std::nullopt;
      if (PacketPointer silence = sound.takeSilence()) {
        waiting_.emplace_back(CopiedPacket{copied.track, std::move(silence)});
      }
    } else {
      if (packet.pts < offset_ && part_ > 0) {
        return TranscodeRunError{notCopyable, source_.parts[part_].path,
                                 "its first images overlap the last of the part before it"};
      }
      if (joinedTimes_) packet.dts = joinedTimes_->next(packet.pts);
    }
    waiting_.emplace_back(std::move(copied));
    return std::nullopt;
  }

  const PlannedSource& source_;
  const WantedStreams wanted_;
  const ReadingOptions& options_;
  std::size_t part_ = 0;
  std::shared_ptr<PartSource> current_;
  /// The first part, whose streams describe the copied ones.
  std::shared_ptr<PartSource> first_;
  Ticks offset_ = 0;
  /// Where each part begins that was opened.
  std::vector<Ticks> begins_;
  /// Where the sound of this part is cut: at the begin of the next part.
  std::optional<Ticks> end_;
  Ticks position_ = std::numeric_limits<Ticks>::min();
  bool isEnded_ = false;
  std::deque<SourceItem> waiting_;
  std::map<std::size_t, CopiedSound> copied_;
  std::map<std::size_t, Ticks> countedCuts_;
  Ticks cutSound_ = 0;
  /// When the images of several parts are decoded.
  std::optional<DecodeTimes> joinedTimes_;
  std::vector<TranscodeRunWarning> warnings_;
};

/// Returns what is wanted of a group; the places of its tracks are those in its first part.
Expected<WantedStreams, TranscodeRunError> wantedOf(const TranscodePlan& plan, const PlannedSource& source) {
  WantedStreams wanted;
  wanted.hasVideo = plan.video && source.givesImage;
  if (wanted.hasVideo) {
    wanted.copiesVideo = plan.video->isCopied();
    wanted.decodesOnGpu = plan.video->decodesOnGpu;
    wanted.image = plan.video->source;
    wanted.isVariable = plan.video->isVariable;
  }
  std::vector<int> indices;
  for (std::size_t track = 0; track < plan.audio.size(); ++track) {
    const PlannedAudioTrack& planned = plan.audio[track];
    for (std::size_t origin = 0; origin < planned.origins.size(); ++origin) {
      if (planned.origins[origin].group != source.group) continue;
      wanted.sounds.push_back({track, origin, 0, planned.isCopied()});
      indices.push_back(planned.origins[origin].stream);
    }
  }
  if (indices.empty()) return wanted;
  const std::string& path = source.parts.front().path;
  const auto media = describeMedia(Url::fromFilePath(path));
  if (!media) {
    return Unexpected(
        TranscodeRunError{sourceNotRead, path, std::string(media.error().text()), media.error().systemError});
  }
  for (std::size_t place = 0; place < indices.size(); ++place) {
    const auto found = std::ranges::find(media->audio, indices[place], &AudioStreamDescription::index);
    if (found == media->audio.end()) return Unexpected(TranscodeRunError{sourceChanged, path, "it was changed"});
    wanted.sounds[place].place = static_cast<std::size_t>(found - media->audio.begin());
  }
  return wanted;
}

/// Reads all groups side by side.
class GroupsReader final : public SourceReader {
 public:
  explicit GroupsReader(ReadingOptions options) : options_(std::move(options)) {}

  [[nodiscard]] std::optional<TranscodeRunError> open(const TranscodePlan& plan) {
    for (const PlannedSource& source : plan.sources) {
      auto wanted = wantedOf(plan, source);
      if (!wanted) return std::move(wanted).error();
      if (!wanted->hasVideo && wanted->sounds.empty()) continue;
      auto& group = groups_.emplace_back(std::make_unique<GroupReader>(source, *std::move(wanted), options_));
      if (auto error = group->open()) return error;
      active_.push_back(group.get());
    }
    return std::nullopt;
  }

  Expected<std::optional<SourceItem>, TranscodeRunError> next() override {
    while (!active_.empty()) {
      const auto group = std::ranges::min_element(active_, {}, &GroupReader::position);
      auto item = (*group)->next();
      std::ranges::move((*group)->takeWarnings(), std::back_inserter(warnings_));
      if (!item || *item) return item;
      active_.erase(group);
    }
    return std::nullopt;
  }

  [[nodiscard]] CopiedStream copiedStream(std::optional<std::size_t> track) const override {
    for (const auto& group : groups_) {
      if (track ? group->gives(*track) : group->givesImage()) return group->copiedStream(track);
    }
    return {};
  }

  [[nodiscard]] Ticks imageEnd() const override {
    for (const auto& group : groups_) {
      if (group->givesImage()) return group->end();
    }
    return 0;
  }

  [[nodiscard]] const std::string& imagePathAt(Ticks time) const override {
    return pathAt([](const GroupReader& group) { return group.givesImage(); }, time);
  }

  [[nodiscard]] const std::string& soundPathAt(std::size_t track, std::size_t origin, Ticks time) const override {
    return pathAt([&](const GroupReader& group) { return group.gives(track, origin); }, time);
  }

  [[nodiscard]] const std::vector<TranscodeRunWarning>& warnings() const override { return warnings_; }

 private:
  [[nodiscard]] const std::string& pathAt(auto isWanted, Ticks time) const {
    const auto group = std::ranges::find_if(groups_, [&](const auto& each) { return isWanted(*each); });
    return (group != groups_.end() ? *group : groups_.front())->pathAt(time);
  }

  const ReadingOptions options_;
  std::vector<std::unique_ptr<GroupReader>> groups_;
  /// Those that have not ended.
  std::vector<GroupReader*> active_;
  std::vector<TranscodeRunWarning> warnings_;
};

}  // namespace

Expected<std::unique_ptr<SourceReader>, TranscodeRunError> SourceReader::open(const TranscodePlan& plan,
                                                                              const ReadingOptions& options) {
  auto reader = std::make_unique<GroupsReader>(options);
  if (auto error = reader->open(plan)) return Unexpected(*std::move(error));
  return reader;
}

}  // namespace meridian::inline v0_2::libav

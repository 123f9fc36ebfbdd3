#include "meridian/engine/libav/filmstrip.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace meridian::inline v0_2::libav {
namespace {

SnapshotOptions snapshotOptions(const DeepAnalysisOptions& options) {
  SnapshotOptions snapshot;
  snapshot.maxWidth = options.filmstripWidth;
  snapshot.height = options.filmstripHeight;
  return snapshot;
}

}  // namespace

Filmstrip::Filmstrip(const VideoStreamDescription& video, const DeepAnalysisOptions& options, Ticks expected)
    : wanted_(options.filmstripImages),
      step_(wanted_ > 0 ? std::max<Ticks>(expected / static_cast<Ticks>(wanted_), 1) : 1),
      // In the middle of the part of the clip that the image stands for.
      next_(expected > 0 ? step_ / 2 : 0),
      stills_(video, snapshotOptions(options)) {}

void Filmstrip::take(const AVFrame& image, Ticks time) {
  if (wanted_ == 0) return;
  const bool isFirst = std::exchange(isFirst_, false);
  if (time < next_ && !isFirst) return;
  if (time < next_) {
    // It stands for a clip that has no image at the places that are wanted.
    if (auto taken = stills_.samples(image)) first_ = *std::move(taken);
    return;
  }
  while (next_ <= time) next_ += std::max<Ticks>(step_, (time - next_) / step_ * step_);
  auto taken = stills_.samples(image);
  if (!taken) return;
  taken->seconds = secondsOfTicks(time);
  images_.push_back(*std::move(taken));
  if (images_.size() >= 2 * wanted_) halve();
}

void Filmstrip::halve() {
  for (std::size_t each = 1; 2 * each < images_.size(); ++each) images_[each] = std::move(images_[2 * each]);
  images_.resize((images_.size() + 1) / 2);
  step_ *= 2;
}

std::vector<FilmstripImage> Filmstrip::takeImages() {
  std::vector<FilmstripImage> chosen;
  if (images_.empty() && first_) chosen.push_back(*std::move(first_));
  const std::size_t count = std::min(wanted_, images_.size());
  for (std::size_t each = 0; each < count; ++each) {
    chosen.push_back(std::move(images_[(2 * each + 1) * images_.size() / (2 * count)]));
  }
  return chosen;
}

}  // namespace meridian::inline v0_2::libav

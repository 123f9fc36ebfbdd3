#include "meridian/lut/stages_kernel.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <type_traits>

namespace meridian::inline v0_2::detail {
namespace {

/// The pixels of a block: few enough that their colours stay in a processor's cache.
constexpr std::size_t blockSize = 2048;

constexpr std::array channelsOfStages{&LutColor::red, &LutColor::green, &LutColor::blue};

/// A stage's cube, as the kernel reads it. The values' range is not used, since the axes cover a domain.
class StageCube final : public ThreeDimensionalLutCube {
 public:
  explicit StageCube(const LutCubeStage& stage) : points_(stage.points), faceSize_(stage.faceSize) {}

  [[nodiscard]] LutLattice lattice() const noexcept override {
    return {points_->data(), static_cast<std::size_t>(faceSize_)};
  }
  [[nodiscard]] std::int64_t faceSize() const noexcept override { return faceSize_; }
  [[nodiscard]] double lowValue() const noexcept override { return 0; }
  [[nodiscard]] double highValue() const noexcept override { return 1; }

 private:
  SharedLutColors points_;
  std::int64_t faceSize_;
};

/// Returns whether each channel's result depends on that channel alone.
bool keepsChannelsApart(const LutStage& stage) noexcept {
  return std::holds_alternative<LutRange>(stage) || std::holds_alternative<LutCurve>(stage);
}

}  // namespace

CubeDefinition definitionOf(const LutCubeStage& stage, LutInterpolation interpolation) {
  static_cast<void>(applied(stage, {}));  // terminates for an unusable stage
  LutDeclaredDomain domain = stage.domain;
  domain.isDeclared = true;
  return {std::make_shared<const StageCube>(stage), std::nullopt, domain,
          ImageLutOptions{.interpolation = interpolation, .domain = LutInputDomain::declared}};
}

/// Consecutive pixels of a row, a plane for each channel. All of them are read before any is stored, since source and
/// destination may be the same samples. Alpha is as in the source, which single precision holds exactly.
struct StagesKernel::Block {
  std::array<std::array<float, blockSize>, 4> planes;

  [[nodiscard]] ImageView<float> view(std::size_t count) noexcept {
    ImageView<float> result{.width = count, .height = 1};
    for (std::size_t channel = 0; channel < 3; ++channel) result.planes[channel].samples = planes[channel].data();
    return result;
  }
};

StagesKernel::StagesKernel(const PublishedLut& lut, const std::optional<ImageFormats>& formats,
                           LutInterpolation interpolation)
    : lut_(lut), formats_(formats), interpolation_(interpolation) {
  if (formats_) {
    const auto firstMixing = std::ranges::find_if_not(lut_.stages, keepsChannelsApart);
    foldedStages_ = static_cast<std::size_t>(firstMixing - lut_.stages.begin());
  }
  for (const LutStage& stage : std::span(lut_.stages).subspan(foldedStages_)) {
    if (const auto* const cube = std::get_if<LutCubeStage>(&stage)) {
      stages_.emplace_back(std::in_place_type<CubeKernel>, definitionOf(*cube, interpolation), std::nullopt);
    } else {
      stages_.emplace_back(stage);
    }
  }
  if (formats_) prepareEntries();
}

void StagesKernel::prepareEntries() {
  // A sample may hold code values above the depth's largest too.
  const std::size_t count = formats_->source.bitDepth <= 8 ? 256 : 65536;
  entries_.reserve(count);
  for (std::size_t code = 0; code < count; ++code) entries_.push_back(entryOf(static_cast<std::uint16_t>(code)));
}

/// Returns what the folded stages make of a code value in each channel: the resulting code value if no stage is left.
std::array<float, 3> StagesKernel::entryOf(std::uint16_t code) const {
  const LutColor found = folded(normalized({code, code, code}));
  if (!stages_.empty()) {
    return {static_cast<float>(found.red), static_cast<float>(found.green), static_cast<float>(found.blue)};
  }
  const PixelCodes codes = resultCodes(found);
  return {static_cast<float>(codes[0]), static_cast<float>(codes[1]), static_cast<float>(codes[2])};
}

LutColor StagesKernel::normalized(const PixelCodes& input) const noexcept {
  return {normalizedCodeValue(input[0], formats_->source), normalizedCodeValue(input[1], formats_->source),
          normalizedCodeValue(input[2], formats_->source)};
}

LutColor StagesKernel::folded(const LutColor& input) const {
  LutColor result = input;
  for (std::size_t i = 0; i < foldedStages_; ++i) result = applied(lut_.stages[i], result, interpolation_);
  return result;
}

/// Returns the code values of a result; NaN becomes the lowest.
PixelCodes StagesKernel::resultCodes(const LutColor& color) const noexcept {
  const CodeValueFormat& destination = formats_->destination;
  const ResultScale scaled =
      formats_->areRounded() ? ResultScale::rounded(1, destination) : ResultScale{.factor = destination.white()};
  PixelCodes codes{};
  for (std::size_t i = 0; i < 3; ++i) codes[i] = limitedCodeValue(scaled(color.*channelsOfStages[i]), 0, destination);
  return codes;
}

PixelCodes StagesKernel::codeValues(const PixelCodes& input) const { return resultCodes(color(normalized(input))); }

LutColor StagesKernel::color(const LutColor& input) const {
  const LutColor result = applied(lut_, input, interpolation_);
  const auto number = [](double value) { return std::isnan(value) ? 0 : value; };
  return {number(result.red), number(result.green), number(result.blue)};
}

void StagesKernel::applyStages(Block& block, std::size_t count) const {
  const ImageView<float> view = block.view(count);
  auto& [red, green, blue, alpha] = block.planes;
  for (const FloatStage& stage : stages_) {
    if (const auto* const cube = std::get_if<CubeKernel>(&stage)) {
      applyCube(*cube, PixelRows<float>{view, view});
      continue;
    }
    for (std::size_t i = 0; i < count; ++i) {
      const LutColor result = applied(std::get<LutStage>(stage), {red[i], green[i], blue[i]}, interpolation_);
      red[i] = static_cast<float>(result.red);
      green[i] = static_cast<float>(result.green);
      blue[i] = static_cast<float>(result.blue);
    }
  }
}

/// Reads a row of at most a block's pixels.
template <ImageSample Sample>
void StagesKernel::loadPixels(const ImageView<const Sample>& source, Block& block) const {
  for (std::size_t channel = 0; channel < 3; ++channel) {
    const ImagePlane<const Sample>& plane = source.planes[channel];
    std::array<float, blockSize>& values = block.planes[channel];
    for (std::size_t i = 0; i < source.width; ++i) {
      const Sample sample = *plane.at(0, i);
      if constexpr (std::is_same_v<Sample, float>) {
        values[i] = sample;
      } else {
        values[i] = sample < entries_.size() ? entries_[sample][channel] : entryOf(sample)[channel];
      }
    }
  }
  for (std::size_t i = 0; source.hasAlpha() && i < source.width; ++i) {
    block.planes[3][i] = static_cast<float>(*source.alpha().at(0, i));
  }
}

/// Stores the colours, and alpha if the destination has it.
template <ImageSample Sample>
void StagesKernel::storePixels(const Block& block, bool hasAlpha, const ImageView<Sample>& destination) const {
  const auto& [red, green, blue, alpha] = block.planes;
  for (std::size_t i = 0; i < destination.width; ++i) {
    if constexpr (std::is_same_v<Sample, float>) {
      const auto number = [](float value) { return std::isnan(value) ? 0.0F : value; };
      *destination.red().at(0, i) = number(red[i]);
      *destination.green().at(0, i) = number(green[i]);
      *destination.blue().at(0, i) = number(blue[i]);
      if (destination.hasAlpha()) *destination.alpha().at(0, i) = hasAlpha ? alpha[i] : 1.0F;
    } else {
      const PixelCodes codes =
          stages_.empty() ? PixelCodes{static_cast<std::uint16_t>(red[i]), static_cast<std::uint16_t>(green[i]),
                                       static_cast<std::uint16_t>(blue[i])}
                          : resultCodes({red[i], green[i], blue[i]});
      for (std::size_t channel = 0; channel < 3; ++channel) {
        *destination.planes[channel].at(0, i) = static_cast<Sample>(codes[channel]);
      }
      if (!destination.hasAlpha()) continue;
      *destination.alpha().at(0, i) =
          static_cast<Sample>(hasAlpha ? rescaledAlpha(static_cast<std::uint16_t>(alpha[i]), *formats_)
                                       : largestCodeValue(formats_->destination.bitDepth));
    }
  }
}

template <ImageSample Sample>
void StagesKernel::apply(const PixelRows<Sample>& rows) const {
  const auto block = std::make_unique<Block>();
  const auto columns = [](auto view, std::size_t row, std::size_t first, std::size_t count) {
    view = view.rows(row, 1);
    view.width = count;
    for (auto& plane : view.planes) {
      if (plane.samples != nullptr) plane.samples = plane.at(0, first);
    }
    return view;
  };
  for (std::size_t row = 0; row < rows.source.height; ++row) {
    for (std::size_t first = 0; first < rows.source.width; first += blockSize) {
      const std::size_t count = std::min(blockSize, rows.source.width - first);
      loadPixels(columns(rows.source, row, first, count), *block);
      applyStages(*block, count);
      storePixels(*block, rows.source.hasAlpha(), columns(rows.destination, row, first, count));
    }
  }
}

template void StagesKernel::apply(const PixelRows<std::uint8_t>&) const;
template void StagesKernel::apply(const PixelRows<std::uint16_t>&) const;
template void StagesKernel::apply(const PixelRows<float>&) const;

}  // namespace meridian::inline v0_2::detail

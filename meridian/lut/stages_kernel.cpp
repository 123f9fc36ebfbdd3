#include "meridian/lut/stages_kernel.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>

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

using Planes = std::array<std::array<float, blockSize>, 4>;

void applyStage(const LutMatrix& matrix, Planes& planes, std::size_t count) noexcept {
  auto& [red, green, blue, alpha] = planes;
  const auto result = [&matrix](std::size_t row, double r, double g, double b) {
    const std::array<double, 3>& factors = matrix.rows[row];
    return static_cast<float>(factors[0] * r + factors[1] * g + factors[2] * b + matrix.offset[row]);
  };
  for (std::size_t i = 0; i < count; ++i) {
    const std::array<double, 3> input{red[i], green[i], blue[i]};
    red[i] = result(0, input[0], input[1], input[2]);
    green[i] = result(1, input[0], input[1], input[2]);
    blue[i] = result(2, input[0], input[1], input[2]);
  }
}

void applyStage(const LutRange& range, Planes& planes, std::size_t count) noexcept {
  for (std::size_t channel = 0; channel < 3; ++channel) {
    const auto member = channelsOfStages[channel];
    const double scale = range.scale.*member;
    const double offset = range.offset.*member;
    const double lowest = range.lowest.*member;
    const double highest = range.highest.*member;
    for (std::size_t i = 0; i < count; ++i) {
      double value = planes[channel][i] * scale + offset;
      value = value < lowest ? lowest : value;
      planes[channel][i] = static_cast<float>(value > highest ? highest : value);
    }
  }
}

void applyStage(const LutCurve& curve, Planes& planes, std::size_t count) noexcept {
  const std::vector<LutColor>& rows = *curve.rows;
  const std::size_t last = rows.size() - 1;
  for (std::size_t channel = 0; channel < 3; ++channel) {
    const auto member = channelsOfStages[channel];
    const double low = curve.domain.minimum.*member;
    const double high = curve.domain.maximum.*member;
    const double extent = high - low;  // divided by before the rows count, since its inverse may be infinite
    for (std::size_t i = 0; i < count; ++i) {
      double value = planes[channel][i];
      value = value < high ? value : high;
      const double place =
          planes[channel][i] >= low ? (value - low) / extent * static_cast<double>(last) : 0;  // NaN is at 0 too
      // By way of a signed integer, which takes one instruction.
      const std::size_t lower = std::min(static_cast<std::size_t>(static_cast<std::int64_t>(place)), last);
      const std::size_t upper = std::min(lower + 1, last);
      planes[channel][i] =
          static_cast<float>(blended(rows[lower].*member, rows[upper].*member, place - static_cast<double>(lower)));
    }
  }
}

void applyStage(const CubeKernel& cube, Planes& planes, std::size_t count) {
  ImageView<float> view{.width = count, .height = 1};
  for (std::size_t channel = 0; channel < 3; ++channel) view.planes[channel].samples = planes[channel].data();
  applyCube(cube, cube.cellsFor(count), PixelRows<float>{view, view});
}

void applyStage(const LutFunction& function, Planes& planes, std::size_t count) {
  auto& [red, green, blue, alpha] = planes;
  function.apply({red.data(), count}, {green.data(), count}, {blue.data(), count});
}

/// The samples of a plane's first row.
template <ImageSample Sample>
class RowSamples {
 public:
  explicit RowSamples(const ImagePlane<Sample>& plane) noexcept
      : samples_(plane.samples), step_(plane.pixelStride / static_cast<std::ptrdiff_t>(sizeof(Sample))) {}
  [[nodiscard]] Sample& operator[](std::size_t i) const noexcept {
    return samples_[static_cast<std::ptrdiff_t>(i) * step_];
  }

 private:
  Sample* samples_;
  std::ptrdiff_t step_;
};

}  // namespace

CubeDefinition definitionOf(const LutCubeStage& stage, LutInterpolation interpolation) {
  static_cast<void>(applied(stage, {}));  // terminates for an unusable stage
  LutDeclaredDomain domain = stage.domain;
  domain.isDeclared = true;
  return {std::make_shared<const StageCube>(stage), std::nullopt, domain,
          ImageLutOptions{.interpolation = stage.interpolation.value_or(interpolation),
                          .domain = LutInputDomain::declared}};
}

/// Consecutive pixels of a row, a plane for each channel. All of them are read before any is stored, since source and
/// destination may be the same samples. Alpha is as in the source, which single precision holds exactly.
struct StagesKernel::Block {
  Planes planes;
};

StagesKernel::StagesKernel(PublishedLut lut, const std::optional<ImageFormats>& formats, LutInterpolation interpolation)
    : lut_(std::move(lut)), formats_(formats), interpolation_(interpolation) {
  if (formats_) {
    const auto firstMixing = std::ranges::find_if_not(lut_.stages, [](const LutStage& stage) {
      return std::holds_alternative<LutRange>(stage) || std::holds_alternative<LutCurve>(stage);
    });
    foldedStages_ = static_cast<std::size_t>(firstMixing - lut_.stages.begin());
  }
  for (const LutStage& stage : std::span(lut_.stages).subspan(foldedStages_)) {
    static_cast<void>(applied(stage, {}));  // terminates for an unusable stage
    std::visit(
        [&]<typename Stage>(const Stage& each) {
          if constexpr (std::is_same_v<Stage, LutCubeStage>) {
            stages_.emplace_back(std::in_place_type<CubeKernel>, definitionOf(each, interpolation), std::nullopt);
          } else {
            stages_.emplace_back(each);
          }
        },
        stage);
  }
  if (formats_) prepareEntries();
}

void StagesKernel::prepareEntries() {
  // A sample may hold code values above the depth's largest too.
  const std::size_t count = formats_->source.bitDepth <= 8 ? 256 : 65536;
  for (std::size_t code = 0; code < count; ++code) {
    const std::array<float, 3> entry = entryOf(static_cast<std::uint16_t>(code));
    for (std::size_t channel = 0; channel < 3; ++channel) entries_[channel].push_back(entry[channel]);
  }
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
  const ResultScale scaled = ResultScale::rounded(1, destination);
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
  for (const FloatStage& stage : stages_) {
    std::visit([&](const auto& each) { applyStage(each, block.planes, count); }, stage);
  }
}

/// Reads a row of at most a block's pixels.
template <ImageSample Sample>
void StagesKernel::loadPixels(const ImageView<const Sample>& source, Block& block) const {
  for (std::size_t channel = 0; channel < 3; ++channel) {
    const RowSamples samples(source.planes[channel]);
    std::array<float, blockSize>& values = block.planes[channel];
    for (std::size_t i = 0; i < source.width; ++i) {
      const Sample sample = samples[i];
      if constexpr (std::is_same_v<Sample, float>) {
        values[i] = sample;
      } else {
        const std::vector<float>& entries = entries_[channel];
        values[i] = sample < entries.size() ? entries[sample] : entryOf(sample)[channel];
      }
    }
  }
  if (!source.hasAlpha()) return;
  const RowSamples samples(source.alpha());
  for (std::size_t i = 0; i < source.width; ++i) block.planes[3][i] = static_cast<float>(samples[i]);
}

/// Stores the colours, and alpha if the destination has it.
template <ImageSample Sample>
void StagesKernel::storePixels(const Block& block, bool hasAlpha, const ImageView<Sample>& destination) const {
  for (std::size_t channel = 0; channel < 3; ++channel) {
    const RowSamples samples(destination.planes[channel]);
    const std::array<float, blockSize>& values = block.planes[channel];
    if constexpr (std::is_same_v<Sample, float>) {
      for (std::size_t i = 0; i < destination.width; ++i) samples[i] = std::isnan(values[i]) ? 0 : values[i];
    } else if (stages_.empty()) {
      for (std::size_t i = 0; i < destination.width; ++i) samples[i] = static_cast<Sample>(values[i]);
    } else {
      // What limitedCodeValue returns, without its branches.
      const ResultScale scale = ResultScale::rounded(1, formats_->destination);
      const auto lowest = static_cast<double>(formats_->destination.lowest());
      const auto highest = static_cast<double>(formats_->destination.highest());
      for (std::size_t i = 0; i < destination.width; ++i) {
        double code = static_cast<double>(values[i]) * scale.factor + scale.offset;
        code = code > lowest ? code : lowest;  // NaN as well
        samples[i] = static_cast<Sample>(static_cast<std::int32_t>(code < highest ? code : highest));
      }
    }
  }
  if (!destination.hasAlpha()) return;
  const RowSamples samples(destination.alpha());
  const std::array<float, blockSize>& alpha = block.planes[3];
  for (std::size_t i = 0; i < destination.width; ++i) {
    if constexpr (std::is_same_v<Sample, float>) {
      samples[i] = hasAlpha ? alpha[i] : 1;
    } else {
      samples[i] = static_cast<Sample>(hasAlpha ? rescaledAlpha(static_cast<std::uint16_t>(alpha[i]), *formats_)
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

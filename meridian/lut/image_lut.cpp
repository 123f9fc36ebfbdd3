#include "meridian/lut/image_lut.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <system_error>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include "meridian/base/precondition.h"
#include "meridian/lut/cube_kernel.h"
#include "meridian/lut/image_definition.h"
#include "meridian/lut/parsed_lut_factory.h"

namespace meridian::inline v0_2 {
namespace {

using detail::ImageDepths;
using detail::PixelCodes;

/// The values that a one-dimensional table has for code values, so that an image needs no more than to look them up.
class LookedUpTable {
 public:
  LookedUpTable(detail::TableDefinition tableDefinition, const std::optional<ImageDepths>& depths)
      : definition(std::move(tableDefinition)) {
    if (!depths) return;
    // A code value above the depth's largest may stand in a sample too.
    const std::size_t count = depths->source <= 8 ? 256 : 65536;
    codes_.resize(count);
    for (std::size_t code = 0; code < count; ++code) {
      const auto value = static_cast<std::uint16_t>(code);
      codes_[code] = definition.codeValues({value, value, value}, *depths);
    }
  }

  [[nodiscard]] PixelCodes look(const PixelCodes& input, const ImageDepths& depths) const noexcept {
    if (std::ranges::max(input) >= codes_.size()) return definition.codeValues(input, depths);
    return {codes_[input[0]][0], codes_[input[1]][1], codes_[input[2]][2]};
  }

  detail::TableDefinition definition;

 private:
  std::vector<PixelCodes> codes_;
};

std::optional<std::int64_t> integerDepthOf(const ParsedLutFile& file) noexcept {
  const auto* const integers = dynamic_cast<const UnsignedIntegerLutFile*>(&file);
  return integers == nullptr ? std::nullopt : std::optional(integers->bitDepth());
}

/// The samples of one pixel, wherever they lie.
template <typename Sample>
struct PixelPlace {
  std::array<Sample*, 3> channels;
  Sample* alpha;
};

template <ImageSample Sample>
PixelPlace<Sample> pixelOf(const ImageView<Sample>& view, std::size_t row, std::size_t column) noexcept {
  const std::ptrdiff_t offset = view.rowDistance() * static_cast<std::ptrdiff_t>(row) +
                                static_cast<std::ptrdiff_t>(column * view.samplesPerPixel(view.layout));
  if (view.layout == ImageLayout::planar) {
    return {{view.planes[0] + offset, view.planes[1] + offset, view.planes[2] + offset}, nullptr};
  }
  Sample* const first = view.planes[0] + offset;
  return {{first, first + 1, first + 2}, view.layout == ImageLayout::rgba ? first + 3 : nullptr};
}

void convertPixel(const LookedUpTable& table, const std::optional<ImageDepths>& /*depths*/,
                  const PixelPlace<const float>& source, const PixelPlace<float>& destination) noexcept {
  const LutColor color = table.definition.color({*source.channels[0], *source.channels[1], *source.channels[2]});
  const float alpha = source.alpha != nullptr ? *source.alpha : 1;
  *destination.channels[0] = static_cast<float>(color.red);
  *destination.channels[1] = static_cast<float>(color.green);
  *destination.channels[2] = static_cast<float>(color.blue);
  if (destination.alpha != nullptr) *destination.alpha = alpha;
}

template <typename Sample>
void convertPixel(const LookedUpTable& table, const std::optional<ImageDepths>& depths,
                  const PixelPlace<const Sample>& source, const PixelPlace<Sample>& destination) noexcept {
  const PixelCodes codes = table.look({*source.channels[0], *source.channels[1], *source.channels[2]}, *depths);
  if (destination.alpha != nullptr) {
    *destination.alpha = static_cast<Sample>(
        source.alpha != nullptr ? detail::limitedCodeValue(*source.alpha, depths->source, depths->destination)
                                : largestCodeValue(depths->destination));
  }
  for (std::size_t channel = 0; channel < 3; ++channel) {
    *destination.channels[channel] = static_cast<Sample>(codes[channel]);
  }
}

/// Calls `work` with the first row and the number of rows of each band. Each thread takes the next band when it has
/// done one, so that a thread that is kept waiting by the system keeps nobody else waiting.
template <typename Work>
void inBands(std::size_t height, unsigned threads, const Work& work) {
  constexpr unsigned most = 256;
  constexpr std::size_t bandsPerThread = 16;
  if (threads == 0) threads = std::max(1U, std::thread::hardware_concurrency());
  const std::size_t workers = std::clamp<std::size_t>(height, 1, std::min(threads, most));
  const std::size_t bands = workers == 1 ? 1 : workers * bandsPerThread;
  const std::size_t rows = std::max<std::size_t>((height + bands - 1) / bands, 1);
  std::atomic<std::size_t> next = 0;
  const auto takeBands = [&] {
    for (std::size_t first = next.fetch_add(rows); first < height; first = next.fetch_add(rows)) work(first, rows);
  };
  std::vector<std::jthread> others;
  others.reserve(workers - 1);
  while (others.size() + 1 < workers) {
    try {
      others.emplace_back(takeBands);
    } catch (const std::system_error&) {
      break;  // no further thread is to be had: those that are there do it all
    }
  }
  takeBands();
}

}  // namespace

struct ImageLut::Prepared {
  Prepared(const ParsedLutFile& file, const std::optional<ImageDepths>& imageDepths, const ImageLutOptions& options)
      : depths(imageDepths), table(tableOf(file, imageDepths, options)) {}

  using Table = std::variant<detail::CubeKernel, LookedUpTable>;

  static Table tableOf(const ParsedLutFile& file, const std::optional<ImageDepths>& depths,
                       const ImageLutOptions& options) {
    const LutRGBSampleConverter& converter = file.inputConverter();
    if (const auto* const cube = dynamic_cast<const ThreeDimensionalLutConverter*>(&converter)) {
      return Table(
          std::in_place_type<detail::CubeKernel>,
          detail::CubeDefinition(cube->interpolator().cube(), integerDepthOf(file), file.declaredDomain(), options),
          depths);
    }
    const auto* const rows = dynamic_cast<const OneDimensionConverter*>(&converter);
    if (rows == nullptr) preconditionFailed("an image needs a look-up table that is a cube or a one-dimensional table");
    return Table(std::in_place_type<LookedUpTable>, detail::TableDefinition(*rows, file.declaredDomain(), options),
                 depths);
  }

  /// One of the two.
  [[nodiscard]] const detail::CubeKernel* cube() const noexcept { return std::get_if<detail::CubeKernel>(&table); }
  [[nodiscard]] const LookedUpTable* rows() const noexcept { return std::get_if<LookedUpTable>(&table); }

  std::optional<ImageDepths> depths;
  Table table;
};

ImageLut::ImageLut(std::unique_ptr<const Prepared> prepared) noexcept : prepared_(std::move(prepared)) {}
ImageLut::ImageLut(ImageLut&&) noexcept = default;
ImageLut& ImageLut::operator=(ImageLut&&) noexcept = default;
ImageLut::~ImageLut() = default;

std::optional<ImageLut> ImageLut::forCodeValues(const ParsedLutFile& file, int sourceBitDepth, int destinationBitDepth,
                                                const ImageLutOptions& options) {
  constexpr int largest = ImageView<std::uint16_t>::sampleBits;
  for (const int depth : {sourceBitDepth, destinationBitDepth}) {
    if (depth < 1 || depth > largest) return std::nullopt;
  }
  return ImageLut(std::make_unique<const Prepared>(file, ImageDepths{sourceBitDepth, destinationBitDepth}, options));
}

ImageLut ImageLut::forFloats(const ParsedLutFile& file, const ImageLutOptions& options) {
  return ImageLut(std::make_unique<const Prepared>(file, std::nullopt, options));
}

template <ImageSample Sample>
std::optional<ImageErrorCode> ImageLut::applyTo(const ImageView<const Sample>& source,
                                                const ImageView<Sample>& destination, unsigned threads) const {
  if (const auto fault = source.fault()) return fault;
  if (const auto fault = destination.fault()) return fault;
  if (source.width != destination.width || source.height != destination.height) return ImageErrorCode::unequalSizes;
  const std::optional<ImageDepths>& depths = prepared_->depths;
  if (depths.has_value() != ImageView<Sample>::hasCodeValues) return ImageErrorCode::otherBitDepth;
  if (depths && (source.bitDepth != depths->source || destination.bitDepth != depths->destination)) {
    return ImageErrorCode::otherBitDepth;
  }

  inBands(source.height, threads, [&](std::size_t first, std::size_t count) {
    const detail::PixelRows<Sample> rows{source.rows(first, count), destination.rows(first, count)};
    if (const detail::CubeKernel* const cube = prepared_->cube()) {
      detail::applyCube(*cube, rows);
      return;
    }
    const LookedUpTable& table = *prepared_->rows();
    for (std::size_t row = 0; row < rows.source.height; ++row) {
      for (std::size_t column = 0; column < rows.source.width; ++column) {
        convertPixel(table, depths, pixelOf(rows.source, row, column), pixelOf(rows.destination, row, column));
      }
    }
  });
  return std::nullopt;
}

std::optional<ImageErrorCode> ImageLut::apply(const ImageView<const std::uint8_t>& source,
                                              const ImageView<std::uint8_t>& destination, unsigned threads) const {
  return applyTo(source, destination, threads);
}
std::optional<ImageErrorCode> ImageLut::apply(const ImageView<const std::uint16_t>& source,
                                              const ImageView<std::uint16_t>& destination, unsigned threads) const {
  return applyTo(source, destination, threads);
}
std::optional<ImageErrorCode> ImageLut::apply(const ImageView<const float>& source, const ImageView<float>& destination,
                                              unsigned threads) const {
  return applyTo(source, destination, threads);
}

std::array<std::uint16_t, 3> ImageLut::pixel(std::uint16_t red, std::uint16_t green,
                                             std::uint16_t blue) const noexcept {
  const std::optional<ImageDepths>& depths = prepared_->depths;
  if (!depths) preconditionFailed("code values asked of a look-up table made for floating point");
  if (const detail::CubeKernel* const cube = prepared_->cube()) {
    return cube->definition.codeValues({red, green, blue}, *depths);
  }
  return prepared_->rows()->definition.codeValues({red, green, blue}, *depths);
}

LutColor ImageLut::pixel(const LutColor& color) const noexcept {
  const detail::CubeKernel* const cube = prepared_->cube();
  return cube != nullptr ? cube->definition.color(color) : prepared_->rows()->definition.color(color);
}

}  // namespace meridian::inline v0_2

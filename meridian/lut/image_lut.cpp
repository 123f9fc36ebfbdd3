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
#include "meridian/lut/lut_parts.h"
#include "meridian/lut/stages_kernel.h"

namespace meridian::inline v0_2 {
namespace {

using detail::ImageFormats;
using detail::PixelCodes;

/// The values that a 1D LUT has for code values, so that an image only has to look them up.
class TableKernel {
 public:
  TableKernel(detail::TableDefinition tableDefinition, const std::optional<ImageFormats>& formats)
      : definition(std::move(tableDefinition)) {
    if (!formats) return;
    // A sample may hold code values above the depth's largest too.
    const std::size_t count = formats->source.bitDepth <= 8 ? 256 : 65536;
    codes_.resize(count);
    for (std::size_t code = 0; code < count; ++code) {
      const auto value = static_cast<std::uint16_t>(code);
      codes_[code] = definition.codeValues({value, value, value}, *formats);
    }
  }

  [[nodiscard]] PixelCodes codeValues(const PixelCodes& input, const ImageFormats& formats) const noexcept {
    if (std::ranges::max(input) >= codes_.size()) return definition.codeValues(input, formats);
    return {codes_[input[0]][0], codes_[input[1]][1], codes_[input[2]][2]};
  }

  detail::TableDefinition definition;

 private:
  std::vector<PixelCodes> codes_;
};

/// The samples of one pixel; alpha is null if there is none.
template <typename Sample>
using Pixel = std::array<Sample*, 4>;

template <ImageSample Sample>
Pixel<Sample> pixelOf(const ImageView<Sample>& view, std::size_t row, std::size_t column) noexcept {
  return {view.red().at(row, column), view.green().at(row, column), view.blue().at(row, column),
          view.hasAlpha() ? view.alpha().at(row, column) : nullptr};
}

void convertPixel(const TableKernel& table, const std::optional<ImageFormats>& /*formats*/,
                  const Pixel<const float>& source, const Pixel<float>& destination) noexcept {
  const LutColor color = table.definition.color({*source[0], *source[1], *source[2]});
  const float alpha = source[3] != nullptr ? *source[3] : 1;
  *destination[0] = static_cast<float>(color.red);
  *destination[1] = static_cast<float>(color.green);
  *destination[2] = static_cast<float>(color.blue);
  if (destination[3] != nullptr) *destination[3] = alpha;
}

template <typename Sample>
void convertPixel(const TableKernel& table, const std::optional<ImageFormats>& formats,
                  const Pixel<const Sample>& source, const Pixel<Sample>& destination) noexcept {
  const PixelCodes codes = table.codeValues({*source[0], *source[1], *source[2]}, *formats);
  if (destination[3] != nullptr) {
    *destination[3] = static_cast<Sample>(source[3] != nullptr ? detail::rescaledAlpha(*source[3], *formats)
                                                               : largestCodeValue(formats->destination.bitDepth));
  }
  for (std::size_t channel = 0; channel < 3; ++channel) *destination[channel] = static_cast<Sample>(codes[channel]);
}

template <ImageSample Sample>
void applyTable(const TableKernel& table, const std::optional<ImageFormats>& formats,
                const detail::PixelRows<Sample>& rows) noexcept {
  for (std::size_t row = 0; row < rows.source.height; ++row) {
    for (std::size_t column = 0; column < rows.source.width; ++column) {
      convertPixel(table, formats, pixelOf(rows.source, row, column), pixelOf(rows.destination, row, column));
    }
  }
}

/// Returns success if images of code values of this format can be converted.
Expected<void, ImageErrorCode> checkFormat(CodeValueFormat format) noexcept {
  if (format.bitDepth < 1 || format.bitDepth > 16) return Unexpected(ImageErrorCode::unusableBitDepth);
  if (!format.hasRange()) return Unexpected(ImageErrorCode::unusableRange);
  return {};
}

/// Terminates the process if an option is not a case of its enumeration.
void checkOptions(const ImageLutOptions& options) noexcept {
  const auto isCase = []<typename Option>(Option option) {
    return static_cast<std::size_t>(option) < allCases<Option>().size();
  };
  if (!isCase(options.interpolation) || !isCase(options.axisOrder) || !isCase(options.domain) ||
      !isCase(options.rounding)) {
    preconditionFailed("ImageLut: an option is not a case of its enumeration");
  }
}

/// Threads that are joined at the end of the scope, as std::jthread is, which libc++ 19 does not have.
struct JoinedThreads {
  JoinedThreads() = default;
  JoinedThreads(const JoinedThreads&) = delete;
  JoinedThreads& operator=(const JoinedThreads&) = delete;
  ~JoinedThreads() {
    for (std::thread& each : threads) each.join();
  }

  std::vector<std::thread> threads;
};

/// Calls `work` with the first row and the number of rows of each band. Each thread fetches the next band when it has
/// finished one, so that a thread that the system suspends does not hold up the others.
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
  JoinedThreads others;
  others.threads.reserve(workers - 1);
  while (others.threads.size() + 1 < workers) {
    try {
      others.threads.emplace_back(takeBands);
    } catch (const std::system_error&) {
      break;  // the system has no further thread: those that run share the work
    }
  }
  takeBands();
}

}  // namespace

struct ImageLut::Prepared {
  Prepared(const ParsedLutFile& file, const std::optional<ImageFormats>& imageFormats, const ImageLutOptions& options)
      : formats(imageFormats), kernel(kernelOf(file, imageFormats, options)) {}

  Prepared(const PublishedLut& lut, const std::optional<ImageFormats>& imageFormats, const ImageLutOptions& options)
      : formats(imageFormats), kernel(kernelOf(lut, imageFormats, options)) {}

  using Kernel = std::variant<detail::CubeKernel, TableKernel, detail::StagesKernel>;

  static Kernel kernelOf(const ParsedLutFile& file, const std::optional<ImageFormats>& formats,
                         const ImageLutOptions& options) {
    checkOptions(options);
    const detail::LutParts parts = detail::partsOf(file);
    if (parts.cube != nullptr) {
      return Kernel(
          std::in_place_type<detail::CubeKernel>,
          detail::CubeDefinition(parts.cube->interpolator().cube(), parts.cubeBitDepth, file.declaredDomain(), options),
          formats);
    }
    if (parts.table == nullptr) preconditionFailed("an image needs a LUT that is a cube or a 1D LUT of this library");
    const auto valueType = parts.integerTable != nullptr ? LutValueType::integer : LutValueType::floatingPoint;
    return Kernel(std::in_place_type<TableKernel>,
                  detail::TableDefinition(*parts.table, valueType, file.declaredDomain(), options), formats);
  }

  static Kernel kernelOf(const PublishedLut& lut, const std::optional<ImageFormats>& formats,
                         const ImageLutOptions& options) {
    checkOptions(options);
    if (lut.stages.size() == 1) {
      if (const auto* const cube = std::get_if<LutCubeStage>(&lut.stages.front())) {
        return Kernel(std::in_place_type<detail::CubeKernel>, detail::definitionOf(*cube, options.interpolation),
                      formats);
      }
    }
    return Kernel(std::in_place_type<detail::StagesKernel>, lut, formats, options.interpolation);
  }

  /// Calls the one of the functions that accepts the kernel.
  template <typename... Functions>
  decltype(auto) visit(Functions... functions) const {
    struct Overloaded : Functions... {
      using Functions::operator()...;
    };
    const Overloaded overloaded{functions...};
    // Unlike std::visit, this never throws.
    if (const auto* const cube = std::get_if<detail::CubeKernel>(&kernel)) return overloaded(*cube);
    if (const auto* const table = std::get_if<TableKernel>(&kernel)) return overloaded(*table);
    return overloaded(*std::get_if<detail::StagesKernel>(&kernel));
  }

  /// Absent for floating point.
  std::optional<ImageFormats> formats;
  Kernel kernel;
};

ImageLut::ImageLut(std::unique_ptr<const Prepared> prepared) noexcept : prepared_(std::move(prepared)) {}
ImageLut::ImageLut(ImageLut&&) noexcept = default;
ImageLut& ImageLut::operator=(ImageLut&&) noexcept = default;
ImageLut::~ImageLut() = default;

template <typename Lut>
Expected<ImageLut, ImageErrorCode> ImageLut::preparedFor(const Lut& lut, CodeValueFormat source,
                                                         CodeValueFormat destination, const ImageLutOptions& options) {
  if (const auto usable = checkFormat(source); !usable) return Unexpected(usable.error());
  if (const auto usable = checkFormat(destination); !usable) return Unexpected(usable.error());
  return ImageLut(std::make_unique<const Prepared>(lut, ImageFormats{source, destination, options.rounding}, options));
}

Expected<ImageLut, ImageErrorCode> ImageLut::forCodeValues(const ParsedLutFile& file, CodeValueFormat source,
                                                           CodeValueFormat destination,
                                                           const ImageLutOptions& options) {
  return preparedFor(file, source, destination, options);
}

Expected<ImageLut, ImageErrorCode> ImageLut::forCodeValues(const PublishedLut& lut, CodeValueFormat source,
                                                           CodeValueFormat destination,
                                                           const ImageLutOptions& options) {
  ImageLutOptions rounded = options;
  rounded.rounding = LutRounding::nearest;
  return preparedFor(lut, source, destination, rounded);
}

ImageLut ImageLut::forFloats(const ParsedLutFile& file, const ImageLutOptions& options) {
  return ImageLut(std::make_unique<const Prepared>(file, std::nullopt, options));
}

ImageLut ImageLut::forFloats(const PublishedLut& lut, const ImageLutOptions& options) {
  return ImageLut(std::make_unique<const Prepared>(lut, std::nullopt, options));
}

template <ImageSample Sample>
Expected<void, ImageErrorCode> ImageLut::applyTo(const ImageView<const Sample>& source,
                                                 const ImageView<Sample>& destination, unsigned threads) const {
  if (const auto usable = source.check(); !usable) return usable;
  if (const auto usable = destination.check(); !usable) return usable;
  if (source.width != destination.width || source.height != destination.height) {
    return Unexpected(ImageErrorCode::unequalSizes);
  }
  const std::optional<ImageFormats>& formats = prepared_->formats;
  if (formats.has_value() != ImageView<Sample>::hasCodeValues) return Unexpected(ImageErrorCode::otherFormat);
  if (formats && (source.format != formats->source || destination.format != formats->destination)) {
    return Unexpected(ImageErrorCode::otherFormat);
  }

  const auto applyRows = [&](const auto& apply) {
    inBands(source.height, threads, [&](std::size_t first, std::size_t count) {
      apply(detail::PixelRows<Sample>{source.rows(first, count), destination.rows(first, count)});
    });
  };
  prepared_->visit(
      [&](const detail::CubeKernel& cube) {
        const detail::CubeCells* const cells = cube.cellsFor(std::uint64_t{source.width} * source.height);
        applyRows([&](const detail::PixelRows<Sample>& rows) { detail::applyCube(cube, cells, rows); });
      },
      [&](const TableKernel& table) {
        applyRows([&](const detail::PixelRows<Sample>& rows) { applyTable(table, formats, rows); });
      },
      [&](const detail::StagesKernel& stages) {
        applyRows([&](const detail::PixelRows<Sample>& rows) { stages.apply(rows); });
      });
  return {};
}

Expected<void, ImageErrorCode> ImageLut::apply(const ImageView<const std::uint8_t>& source,
                                               const ImageView<std::uint8_t>& destination, unsigned threads) const {
  return applyTo(source, destination, threads);
}
Expected<void, ImageErrorCode> ImageLut::apply(const ImageView<const std::uint16_t>& source,
                                               const ImageView<std::uint16_t>& destination, unsigned threads) const {
  return applyTo(source, destination, threads);
}
Expected<void, ImageErrorCode> ImageLut::apply(const ImageView<const float>& source,
                                               const ImageView<float>& destination, unsigned threads) const {
  return applyTo(source, destination, threads);
}

std::array<std::uint16_t, 3> ImageLut::pixel(std::uint16_t red, std::uint16_t green,
                                             std::uint16_t blue) const noexcept {
  const std::optional<ImageFormats>& formats = prepared_->formats;
  if (!formats) preconditionFailed("ImageLut::pixel: code values given to a LUT prepared for floating point");
  const PixelCodes input{red, green, blue};
  return prepared_->visit([&](const detail::CubeKernel& cube) { return cube.definition.codeValues(input, *formats); },
                          [&](const TableKernel& table) { return table.definition.codeValues(input, *formats); },
                          [&](const detail::StagesKernel& stages) { return stages.codeValues(input); });
}

LutColor ImageLut::pixel(const LutColor& color) const noexcept {
  return prepared_->visit([&](const detail::CubeKernel& cube) { return cube.definition.color(color); },
                          [&](const TableKernel& table) { return table.definition.color(color); },
                          [&](const detail::StagesKernel& stages) { return stages.color(color); });
}

}  // namespace meridian::inline v0_2

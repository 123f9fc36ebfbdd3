#include "meridian/c/lut.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "meridian/c/handles.h"
#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_description.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "meridian/lut/published_lut.h"

namespace m = meridian;
using m::c::created;
using m::c::done;
using m::c::failed;

/// A LUT as the suite reads it, or without a file the published one.
struct MeridianLut {
  std::unique_ptr<const m::ParsedLutFile> file;
  m::PublishedLut published;
  m::LutDescription facts;
  std::vector<MeridianError> warnings;
};

struct MeridianImageLut {
  m::ImageLut value;
};

namespace {

using Applied = m::Expected<void, m::ImageErrorCode>;

/// Returns success if the numbers that stand for enumerators are such, and the image has that range.
Applied checkImage(const MeridianImage& image) noexcept {
  const bool isFloat = image.samples == MERIDIAN_SAMPLES_FLOAT;
  if (!isFloat && image.samples != MERIDIAN_SAMPLES_UINT8 && image.samples != MERIDIAN_SAMPLES_UINT16) {
    return m::Unexpected(m::ImageErrorCode::otherFormat);
  }
  if (image.range == MERIDIAN_RANGE_FULL || (image.range == MERIDIAN_RANGE_LIMITED && !isFloat)) return {};
  return m::Unexpected(m::ImageErrorCode::unusableRange);
}

/// Returns success if both images are usable so far and of one kind.
Applied checkImages(const MeridianImage& source, const MeridianImage& destination) noexcept {
  if (auto checked = checkImage(source); !checked) return checked;
  if (auto checked = checkImage(destination); !checked) return checked;
  if (source.samples != destination.samples) return m::Unexpected(m::ImageErrorCode::otherFormat);
  return {};
}

m::CodeValueFormat formatOf(const MeridianImage& image) noexcept {
  return {image.bit_depth,
          image.range == MERIDIAN_RANGE_LIMITED ? m::CodeValueRange::limited : m::CodeValueRange::full};
}

template <typename Sample>
m::ImageView<Sample> imageViewOf(const MeridianImage& image) noexcept {
  m::ImageView<Sample> view{.width = image.width, .height = image.height, .format = formatOf(image)};
  for (std::size_t channel = 0; channel < view.planes.size(); ++channel) {
    const MeridianPlane& plane = image.planes[channel];
    view.planes[channel] = {static_cast<Sample*>(plane.samples), plane.row_stride, plane.pixel_stride};
  }
  return view;
}

m::ImageLutOptions optionsOf(const MeridianLutOptions* options) noexcept {
  if (options == nullptr) return {};
  using enum m::LutInterpolation;
  using enum m::LutAxisOrder;
  using enum m::LutInputDomain;
  using enum m::LutRounding;
  return {.interpolation = options->tetrahedral ? tetrahedral : trilinear,
          .axisOrder = options->red_fastest ? redFastest : blueFastest,
          .domain = options->declared_domain ? declared : dataRange,
          .rounding = options->nearest ? nearest : truncate};
}

m::Expected<m::ImageLut, m::ImageErrorCode> prepared(const MeridianLut& lut, const MeridianImage& source,
                                                     const MeridianImage& destination,
                                                     const MeridianLutOptions* options) {
  if (const auto checked = checkImages(source, destination); !checked) return m::Unexpected(checked.error());
  const auto preparedFrom = [&](const auto& values, const m::ImageLutOptions& chosen) {
    if (source.samples != MERIDIAN_SAMPLES_FLOAT) {
      return m::ImageLut::forCodeValues(values, formatOf(source), formatOf(destination), chosen);
    }
    return m::Expected<m::ImageLut, m::ImageErrorCode>(m::ImageLut::forFloats(values, chosen));
  };
  const m::ImageLutOptions chosen = optionsOf(options);
  if (lut.file) return preparedFrom(*lut.file, chosen);
  return preparedFrom(lut.published, chosen);
}

Applied apply(const m::ImageLut& lut, const MeridianImage& source, const MeridianImage& destination, unsigned threads) {
  const auto applyTo = [&]<typename Sample>(std::type_identity<Sample>) {
    return lut.apply(imageViewOf<const Sample>(source), imageViewOf<Sample>(destination), threads);
  };
  if (auto checked = checkImages(source, destination); !checked) return checked;
  if (source.samples == MERIDIAN_SAMPLES_UINT8) return applyTo(std::type_identity<std::uint8_t>{});
  if (source.samples == MERIDIAN_SAMPLES_UINT16) return applyTo(std::type_identity<std::uint16_t>{});
  return applyTo(std::type_identity<float>{});
}

}  // namespace

MeridianLut* meridian_lut_open(MeridianText path, MeridianError** error) noexcept {
  return created(error, [&]() -> MeridianLut* {
    auto file = m::ParsedLutFactory::parsing(m::Url::fromFilePath(std::string(m::c::viewOf(path))));
    if (file) {
      const m::LutDescription facts = m::describe(**file);
      auto warnings = m::c::errorsOfAll(m::warningsOf(**file));
      return new MeridianLut{*std::move(file), {}, facts, std::move(warnings)};
    }
    std::ignore = failed(error, file.error());
    return nullptr;
  });
}

MeridianLut* meridian_lut_open_published(MeridianText path, MeridianError** error) noexcept {
  return created(error, [&]() -> MeridianLut* {
    auto lut = m::readPublishedLut(m::Url::fromFilePath(std::string(m::c::viewOf(path))));
    if (lut) {
      const m::LutDescription facts = m::describe(*lut);
      auto warnings = m::c::errorsOfAll(lut->warnings);
      return new MeridianLut{nullptr, *std::move(lut), facts, std::move(warnings)};
    }
    std::ignore = failed(error, lut.error());
    return nullptr;
  });
}

MeridianText meridian_lut_format(const MeridianLut* lut) noexcept {
  if (lut->file) return {nullptr, 0};
  return m::c::textOf(m::rawValue(lut->published.format));
}

size_t meridian_lut_warning_count(const MeridianLut* lut) noexcept { return lut->warnings.size(); }

const MeridianError* meridian_lut_warning_at(const MeridianLut* lut, size_t index) noexcept {
  return &lut->warnings[index];
}

void meridian_lut_destroy(MeridianLut* lut) noexcept { delete lut; }

MeridianLutFacts meridian_lut_facts(const MeridianLut* lut) noexcept {
  const m::LutDescription& facts = lut->facts;
  const m::LutColor& minimum = facts.declaredDomain.minimum;
  const m::LutColor& maximum = facts.declaredDomain.maximum;
  return {.is_cube = facts.dimensions == m::LutDimensions::cube,
          .has_code_values = facts.valueType == m::LutValueType::integer,
          .size = facts.size,
          .rows = facts.rows,
          .input_bit_depth = facts.inputBitDepth.value_or(0),
          .value_bit_depth = facts.valueBitDepth.value_or(0),
          .low_value = facts.lowValue,
          .high_value = facts.highValue,
          .domain_minimum = {minimum.red, minimum.green, minimum.blue},
          .domain_maximum = {maximum.red, maximum.green, maximum.blue},
          .declares_domain = facts.declaredDomain.isDeclared};
}

const double* meridian_lut_rows(const MeridianLut* lut) noexcept {
  static_assert(sizeof(m::LutColor) == 3 * sizeof(double));
  return lut->file ? &lut->file->orderedValues().colors().data()->red : nullptr;
}

bool meridian_lut_sample(const MeridianLut* lut, const uint64_t sample[3], int64_t input_bit_depth,
                         int64_t output_bit_depth, uint64_t result[3]) noexcept {
  if (!lut->file) {
    const auto isDepth = [](int64_t depth) { return depth >= 1 && depth <= 63; };
    if (!isDepth(input_bit_depth) || !isDepth(output_bit_depth)) return false;
    const auto codes =
        m::appliedToCodeValues(lut->published, {sample[0], sample[1], sample[2]}, input_bit_depth, output_bit_depth);
    std::ranges::copy(codes, result);
    return true;
  }
  const auto converted =
      lut->file->inputConverter().convertIfPossible(sample[0], sample[1], sample[2], input_bit_depth, output_bit_depth);
  if (!converted) return false;
  result[0] = converted->red;
  result[1] = converted->green;
  result[2] = converted->blue;
  return true;
}

MeridianImage meridian_image_packed(MeridianSamples samples, void* data, int channels, size_t width,
                                    size_t height) noexcept {
  const auto packed = [&]<typename Sample>(std::type_identity<Sample>) {
    const auto layout = channels == 3 ? m::ImageLayout::rgb : m::ImageLayout::rgba;
    auto* const first = channels == 3 || channels == 4 ? static_cast<Sample*>(data) : nullptr;
    const auto view = m::ImageView<Sample>::packed(layout, first, width, height);
    MeridianImage image{{}, width, height, samples, view.sampleBits, MERIDIAN_RANGE_FULL};
    for (std::size_t channel = 0; channel < view.planes.size(); ++channel) {
      const auto& plane = view.planes[channel];
      image.planes[channel] = {plane.samples, plane.rowStride, plane.pixelStride};
    }
    return image;
  };
  if (samples == MERIDIAN_SAMPLES_UINT8) return packed(std::type_identity<std::uint8_t>{});
  if (samples == MERIDIAN_SAMPLES_UINT16) return packed(std::type_identity<std::uint16_t>{});
  return packed(std::type_identity<float>{});
}

bool meridian_lut_apply(const MeridianLut* lut, const MeridianImage* source, const MeridianImage* destination,
                        const MeridianLutOptions* options, unsigned threads, MeridianError** error) noexcept {
  return done(error, [&] {
    const auto image_lut = prepared(*lut, *source, *destination, options);
    if (!image_lut) return failed(error, image_lut.error());
    const Applied applied = apply(*image_lut, *source, *destination, threads);
    return applied ? true : failed(error, applied.error());
  });
}

MeridianImageLut* meridian_image_lut_create(const MeridianLut* lut, const MeridianImage* source,
                                            const MeridianImage* destination, const MeridianLutOptions* options,
                                            MeridianError** error) noexcept {
  return created(error, [&]() -> MeridianImageLut* {
    auto image_lut = prepared(*lut, *source, *destination, options);
    if (image_lut) return new MeridianImageLut{*std::move(image_lut)};
    std::ignore = failed(error, image_lut.error());
    return nullptr;
  });
}

bool meridian_image_lut_apply(const MeridianImageLut* lut, const MeridianImage* source,
                              const MeridianImage* destination, unsigned threads, MeridianError** error) noexcept {
  return done(error, [&] {
    const Applied applied = apply(lut->value, *source, *destination, threads);
    return applied ? true : failed(error, applied.error());
  });
}

void meridian_image_lut_destroy(MeridianImageLut* lut) noexcept { delete lut; }

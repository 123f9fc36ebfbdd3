// Published LUTs on images, against their definition.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <span>

#include "meridian/lut/image_lut.h"
#include "meridian/lut/published_lut.h"
#include "tests/lut/many_luts.h"
#include "tests/lut/published_files.h"
#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

std::vector<std::pair<std::string, PublishedLut>> publishedLuts() {
  const test::TemporaryDirectory directory;
  std::vector<std::pair<std::string, PublishedLut>> luts;
  for (const test::PublishedFile& made : test::publishedFiles()) {
    auto lut = readPublishedLut(Url::fromFilePath(directory.write(made.name, made.text)));
    if (lut) luts.emplace_back(made.name, *std::move(lut));
  }
  EXPECT_EQ(luts.size(), test::publishedFiles().size());
  const LutRange range{.scale = {2, 1, 0.5}, .offset = {-0.5, 0, 0.1}, .highest = {1, 0.9, 1}};
  const LutMatrix matrix{{{{0.9, 0.2, -0.1}, {0.1, 0.8, 0.1}, {0, 0.3, 0.7}}}, {0, 0.01, 0}};
  luts.emplace_back("nothing", PublishedLut{});
  luts.emplace_back("matrix", PublishedLut{.stages = {range, matrix, range}});
  const LutFunction squares{[](std::span<float> red, std::span<float> green, std::span<float> blue) {
    for (std::size_t i = 0; i < red.size(); ++i) {
      red[i] *= red[i];
      blue[i] = (green[i] + blue[i]) / 2;
    }
  }};
  luts.emplace_back("function", PublishedLut{.stages = {squares}});
  luts.emplace_back("function amid stages", PublishedLut{.stages = {range, matrix, squares, range}});
  // Few steep stages, which would multiply the errors of single precision.
  const auto shaped = std::ranges::find(luts, "shaper.3dl", &std::pair<std::string, PublishedLut>::first);
  PublishedLut longest{.stages = {range, shaped->second.stages[0], matrix, shaped->second.stages[1], range, matrix}};
  luts.emplace_back("many stages", std::move(longest));
  // The inverse of the domain's extent is infinite.
  LutCurve tiny = std::get<LutCurve>(shaped->second.stages[0]);
  tiny.domain = {{0, 0, 0}, {1e-310, 1, 5e-324}, true};
  luts.emplace_back("tiny domain", PublishedLut{.stages = {tiny, matrix}});
  LutCubeStage declaring = std::get<LutCubeStage>(shaped->second.stages[1]);
  PublishedLut declarations;
  for (const auto interpolation : allCases<LutInterpolation>()) {
    declaring.interpolation = interpolation;
    luts.emplace_back(std::string(rawValue(interpolation)), PublishedLut{.stages = {declaring}});
    declarations.stages.emplace_back(declaring);
    declarations.stages.emplace_back(LutRange{.scale = {0.2, 0.2, 0.2}});
  }
  EXPECT_NE(applied(declarations.stages[0], {0.1, 0.2, 0.3}), applied(declarations.stages[2], {0.1, 0.2, 0.3}));
  luts.emplace_back("both interpolations", std::move(declarations));
  return luts;
}

/// The result of a code value before it is truncated, as the header defines it.
double definedResult(double found, const CodeValueFormat& destination) {
  return destination.black() + found * (destination.white() - destination.black()) + 0.5;
}

TEST(PublishedImages, CodeValuesAreThoseOfTheDefinition) {
  std::mt19937 random(77);
  const CodeValueFormat legal{10, CodeValueRange::limited};
  for (const auto& [name, lut] : publishedLuts()) {
    const bool mixes = std::ranges::any_of(lut.stages, [](const LutStage& stage) {
      return !std::holds_alternative<LutRange>(stage) && !std::holds_alternative<LutCurve>(stage);
    });
    const bool isOneCube = lut.stages.size() == 1 && std::holds_alternative<LutCubeStage>(lut.stages.front());
    const bool isExact = isOneCube || !mixes;
    for (const auto rounding : allCases<LutRounding>()) {
      for (const auto& [from, to] : {std::pair<CodeValueFormat, CodeValueFormat>{8, 8},
                                     {10, 16},
                                     {16, 10},
                                     {10, legal},
                                     {legal, 12},
                                     {16, 16}}) {
        SCOPED_TRACE(name + ' ' + std::to_string(from.bitDepth) + " to " + std::to_string(to.bitDepth));
        const ImageLutOptions options{.interpolation = LutInterpolation::tetrahedral, .rounding = rounding};
        // More than a block, and colours above those of the depth.
        constexpr std::size_t width = 2500;
        std::vector<std::uint16_t> source(width * 4);
        const unsigned most = from.bitDepth == 8 ? 300 : (1U << static_cast<unsigned>(from.bitDepth)) + 20;
        for (std::uint16_t& code : source) code = static_cast<std::uint16_t>(random() % most);
        const unsigned codes = 1U << static_cast<unsigned>(from.bitDepth);
        for (std::size_t i = 3; i < source.size(); i += 4) source[i] = static_cast<std::uint16_t>(source[i] % codes);
        std::vector<std::uint16_t> image = source;
        auto view = ImageView<std::uint16_t>::packed(ImageLayout::rgba, image.data(), width, 1, to);
        auto input = view;
        input.format = from;
        const auto prepared = ImageLut::forCodeValues(lut, from, to, options);
        ASSERT_TRUE(prepared && prepared->apply(input, view));  // in place
        for (std::size_t i = 0; i < source.size(); i += 4) {
          const auto normal = [&](std::uint16_t code) { return (code - from.black()) / (from.white() - from.black()); };
          const LutColor found =
              applied(lut, {normal(source[i]), normal(source[i + 1]), normal(source[i + 2])}, options.interpolation);
          // In code values; six digits of a LUT of several stages.
          const double tolerance = isExact ? 1e-9 : 2e-6 * to.white();
          std::size_t channel = 0;
          for (const double value : {found.red, found.green, found.blue}) {
            const double exact = definedResult(value, to);
            const double low = std::clamp(std::floor(exact - tolerance), static_cast<double>(to.lowest()),
                                          static_cast<double>(to.highest()));
            const double high = std::clamp(std::floor(exact + tolerance), static_cast<double>(to.lowest()),
                                           static_cast<double>(to.highest()));
            ASSERT_GE(image[i + channel], low) << exact;
            ASSERT_LE(image[i + channel], high) << exact;
            ++channel;
          }
          if (isExact) {
            const auto pixel = prepared->pixel(source[i], source[i + 1], source[i + 2]);
            ASSERT_TRUE(std::equal(pixel.begin(), pixel.end(), image.begin() + static_cast<std::ptrdiff_t>(i)));
          }
          ASSERT_EQ(image[i + 3], std::min<std::uint64_t>(*rescaledCodeValue(source[i + 3], from.bitDepth, to.bitDepth),
                                                          largestCodeValue(to.bitDepth)));
        }
      }
    }
  }
}

TEST(PublishedImages, FloatingPointIsNearTheDefinition) {
  std::mt19937 random(78);
  std::uniform_real_distribution<float> wide(-0.5F, 1.8F);
  constexpr std::size_t width = 1100;
  constexpr std::size_t height = 3;
  std::vector<float> source(width * height * 4);
  for (float& sample : source) sample = wide(random);
  source[4] = NAN;
  source[9] = INFINITY;
  for (const auto& each : publishedLuts()) {
    const std::string& name = each.first;
    const PublishedLut& lut = each.second;
    SCOPED_TRACE(name);
    test::onEveryInstructionSet([&] {
      std::vector<float> image = source;
      const auto view = ImageView<float>::packed(ImageLayout::rgba, image.data(), width, height);
      ASSERT_TRUE(applyLut(lut, view, view, {}, 2));
      for (std::size_t i = 0; i < source.size(); i += 4) {
        if (!std::isfinite(source[i] + source[i + 1]) && name == "matrix") continue;  // a sum of infinities
        const LutColor expected = applied(lut, {source[i], source[i + 1], source[i + 2]});
        const auto near = [](float actual, double wanted) {
          if (!std::isfinite(wanted)) return static_cast<double>(actual) == (std::isnan(wanted) ? 0 : wanted);
          return std::fabs(actual - wanted) <= 2e-5 * std::max(1.0, std::fabs(wanted));
        };
        ASSERT_TRUE(near(image[i], expected.red) && near(image[i + 1], expected.green) &&
                    near(image[i + 2], expected.blue))
            << i << ": " << image[i] << ' ' << image[i + 1] << ' ' << image[i + 2] << ", not " << expected.red << ' '
            << expected.green << ' ' << expected.blue;
        ASSERT_EQ(image[i + 3], source[i + 3]);
      }
    });
    if (HasFatalFailure()) return;
  }
}

TEST(PublishedImages, AnotherFormatIsAnError) {
  const PublishedLut lut;
  EXPECT_EQ(ImageLut::forCodeValues(lut, 17, 8).error(), ImageErrorCode::unusableBitDepth);
  std::array<float, 3> pixel{};
  const auto view = ImageView<float>::packed(ImageLayout::rgb, pixel.data(), 1, 1);
  EXPECT_EQ(ImageLut::forCodeValues(lut, 8, 8)->apply(view, view).error(), ImageErrorCode::otherFormat);
}

}  // namespace
}  // namespace meridian

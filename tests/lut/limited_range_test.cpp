#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "meridian/lut/image_lut.h"
#include "tests/lut/many_luts.h"

namespace meridian {
namespace {

constexpr auto full = CodeValueRange::full;
constexpr auto limited = CodeValueRange::limited;

using Codes = std::array<std::uint16_t, 3>;

std::unique_ptr<const ParsedLutFile> identity(const LutDeclaredDomain& domain = {}) {
  return test::cubeFile(test::cubeColors(17,
                                         [&domain](double r, double g, double b) {
                                           const auto at = [](double place, double low, double high) {
                                             return low + place * (high - low);
                                           };
                                           return LutColor{at(r, domain.minimum.red, domain.maximum.red),
                                                           at(g, domain.minimum.green, domain.maximum.green),
                                                           at(b, domain.minimum.blue, domain.maximum.blue)};
                                         }),
                        0, domain);
}

TEST(LimitedRange, BlackWhiteAndVideoDataAreThoseOfTheRecommendations) {
  // ITU-R BT.709-6 for 8 and 10 bits, BT.2100-2 for 10 and 12.
  struct Levels {
    int depth;
    double black, white;
    std::uint64_t lowest, highest;
  };
  for (const Levels& levels : {Levels{8, 16, 235, 1, 254}, {10, 64, 940, 4, 1019}, {12, 256, 3760, 16, 4079}}) {
    const CodeValueFormat format{levels.depth, limited};
    EXPECT_EQ(format.black(), levels.black);
    EXPECT_EQ(format.white(), levels.white);
    EXPECT_EQ(format.lowest(), levels.lowest);
    EXPECT_EQ(format.highest(), levels.highest);
  }
  EXPECT_EQ(CodeValueFormat(10).black(), 0);
  EXPECT_EQ(CodeValueFormat(10).white(), 1023);
  EXPECT_EQ(CodeValueFormat(10).highest(), 1023U);
}

TEST(LimitedRange, AnIdentityKeepsEveryCodeValueFromBlackToWhiteAndClampsTheOthers) {
  const auto file = identity();
  for (const int depth : {8, 9, 10, 12, 14, 16}) {
    const CodeValueFormat format{depth, limited};
    const auto lut = ImageLut::forCodeValues(*file, format, format);
    for (unsigned code = 0; code < 1U << static_cast<unsigned>(depth); ++code) {
      const auto value = static_cast<std::uint16_t>(code);
      const auto expected = static_cast<std::uint16_t>(std::clamp<double>(code, format.black(), format.white()));
      ASSERT_EQ(lut->pixel(value, value, value), (Codes{expected, expected, expected})) << depth;
    }
  }
}

TEST(LimitedRange, AWiderDomainKeepsWhatIsBelowBlackAndAboveWhite) {
  const auto file = identity({{-0.5, -0.5, -0.5}, {1.5, 1.5, 1.5}, true});
  const CodeValueFormat format{10, limited};
  const auto lut = ImageLut::forCodeValues(*file, format, format, {.domain = LutInputDomain::declared});
  for (std::uint16_t code = 0; code < 1024; ++code) {
    const auto expected = std::clamp<std::uint16_t>(code, 4, 1019);
    ASSERT_EQ(lut->pixel(code, code, code), (Codes{expected, expected, expected}));
  }
}

TEST(LimitedRange, RangesAreConvertedIntoEachOther) {
  const auto file = identity();
  const auto toLimited = ImageLut::forCodeValues(*file, 10, CodeValueFormat{10, limited});
  const auto toFull = ImageLut::forCodeValues(*file, CodeValueFormat{10, limited}, 8);
  EXPECT_EQ(toLimited->pixel(0, 512, 1023), (Codes{64, 502, 940}));  // 64 + 876 * 512 / 1023 is 502.4
  EXPECT_EQ(toFull->pixel(64, 502, 940), (Codes{0, 128, 255}));      // 255 * 438 / 876 is 127.5
  EXPECT_EQ(toFull->pixel(0, 63, 1023), (Codes{0, 0, 255}));
}

TEST(LimitedRange, EveryKindOfLutMapsTheScaleFromZeroToOneAsRoundingDoes) {
  std::mt19937 random(81);
  for (const test::NamedLut& named : test::manyLuts()) {
    SCOPED_TRACE(named.name);
    for (const ImageLutOptions& options : test::allOptions()) {
      const ImageLut floats = ImageLut::forFloats(*named.file, options);
      for (const auto& [from, to] : {std::pair{CodeValueFormat{10, limited}, CodeValueFormat{12, limited}},
                                     {{10, full}, {10, limited}},
                                     {{8, limited}, {16, full}},
                                     {{10, full}, {12, full}},
                                     {{16, full}, {16, full}}}) {
        // Limited range is always rounded; full range only if that is asked for.
        if ((from.isLimited() || to.isLimited()) == (options.rounding == LutRounding::nearest)) continue;
        const auto lut = ImageLut::forCodeValues(*named.file, from, to, options);
        for (int i = 0; i < 20; ++i) {
          const auto code = [&] {
            return static_cast<std::uint16_t>(random() % (1U << static_cast<unsigned>(from.bitDepth)));
          };
          const Codes input{code(), code(), code()};
          const auto decoded = [&](std::uint16_t value) {
            return (value - from.black()) / (from.white() - from.black());
          };
          const LutColor color = floats.pixel(LutColor{decoded(input[0]), decoded(input[1]), decoded(input[2])});
          const auto near = [&](double value, std::uint16_t actual) {
            const double exact = std::clamp(to.black() + value * (to.white() - to.black()),
                                            static_cast<double>(to.lowest()), static_cast<double>(to.highest()));
            return std::fabs(exact - actual) <= 0.5 + 1e-6;
          };
          const Codes output = lut->pixel(input[0], input[1], input[2]);
          ASSERT_TRUE(near(color.red, output[0]) && near(color.green, output[1]) && near(color.blue, output[2]));
        }
      }
    }
  }
}

TEST(LimitedRange, EveryPixelIsThatOfTheDefinitionOnEveryInstructionSet) {
  constexpr std::size_t width = 1023;
  std::mt19937 random(91);
  std::size_t turn = 0;
  const std::vector<ImageLutOptions> options = test::allOptions();
  for (const test::NamedLut& named : test::manyLuts()) {
    SCOPED_TRACE(named.name);
    for (const auto& [from, to] : {std::pair{CodeValueFormat{10, limited}, CodeValueFormat{10, limited}},
                                   {{8, limited}, {8, limited}},
                                   {{16, limited}, {16, limited}},
                                   {{12, full}, {10, limited}},
                                   {{10, limited}, {12, full}}}) {
      const auto lut = ImageLut::forCodeValues(*named.file, from, to, options[turn++ % options.size()]);
      std::vector<std::uint16_t> source(width * 3);
      for (std::size_t i = 0; i < source.size(); ++i) {
        const auto most = (1U << static_cast<unsigned>(from.bitDepth)) - 1;
        // Random ones, and every level near black and white.
        const auto step = static_cast<unsigned>(from.white()) / 64;
        source[i] = static_cast<std::uint16_t>(i % 2 == 0 ? random() & most : random() % 64 * step & most);
      }
      test::onEveryInstructionSet([&] {
        std::vector<std::uint16_t> result(source.size());
        ASSERT_TRUE(
            lut->apply(ImageView<const std::uint16_t>::packed(ImageLayout::planarRgb, source.data(), width, 1, from),
                       ImageView<std::uint16_t>::packed(ImageLayout::rgb, result.data(), width, 1, to)));
        for (std::size_t i = 0; i < width; ++i) {
          const Codes input{source[i], source[width + i], source[2 * width + i]};
          const Codes actual{result[3 * i], result[3 * i + 1], result[3 * i + 2]};
          ASSERT_EQ(actual, lut->pixel(input[0], input[1], input[2]))
              << "of " << input[0] << ' ' << input[1] << ' ' << input[2] << " option " << (turn - 1) % options.size();
        }
      });
      if (HasFatalFailure()) return;
    }
  }
}

TEST(LimitedRange, AlphaIsAlwaysFullRange) {
  const auto file = identity();
  std::vector<std::uint16_t> samples{0, 512, 1023, 1023, 64, 502, 940, 5};
  const auto view = ImageView<std::uint16_t>::packed(ImageLayout::rgba, samples.data(), 2, 1, {10, limited});
  ASSERT_TRUE(applyLut(*file, view, view));
  EXPECT_EQ(samples, (std::vector<std::uint16_t>{64, 512, 940, 1023, 64, 502, 940, 5}));
}

}  // namespace
}  // namespace meridian

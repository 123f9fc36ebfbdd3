#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "meridian/lut/bit_depth.h"
#include "tests/lut/lut_files.h"

namespace meridian {
namespace {

std::vector<LutColor> randomColors(int faceSize, double low, double high, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> value(low, high);
  return test::cubeColors(
      faceSize, [&](double, double, double) { return LutColor{value(random), value(random), value(random)}; });
}

/// Returns the weight of a lattice point for a position on its axis: 1 at the point, 0 from its neighbours on.
long double tent(long double position, int point) {
  return std::max(0.0L, 1 - std::fabs(position - static_cast<long double>(point)));
}

/// Returns the colour as a sum over all points, which shares nothing with the interpolation of the library.
LutColor asSumOverAllPoints(const ThreeDimensionalLutCube& cube, const LutColor& input) {
  const auto face = static_cast<int>(cube.faceSize());
  const auto position = [&](double value) {
    const long double limited = std::clamp(value, cube.lowValue(), cube.highValue());
    return limited / cube.highValue() * (face - 1);
  };
  long double sums[3] = {0, 0, 0};
  for (int r = 0; r < face; ++r) {
    for (int g = 0; g < face; ++g) {
      for (int b = 0; b < face; ++b) {
        const long double weight =
            tent(position(input.red), r) * tent(position(input.green), g) * tent(position(input.blue), b);
        if (weight == 0) continue;
        const LutColor& point =
            cube.lattice()[static_cast<std::size_t>(r)][static_cast<std::size_t>(g)][static_cast<std::size_t>(b)];
        sums[0] += weight * point.red;
        sums[1] += weight * point.green;
        sums[2] += weight * point.blue;
      }
    }
  }
  return {static_cast<double>(sums[0]), static_cast<double>(sums[1]), static_cast<double>(sums[2])};
}

void expectNear(const LutColor& actual, const LutColor& expected, double tolerance) {
  EXPECT_NEAR(actual.red, expected.red, tolerance);
  EXPECT_NEAR(actual.green, expected.green, tolerance);
  EXPECT_NEAR(actual.blue, expected.blue, tolerance);
}

TEST(Interpolators, TrilinearIsTheSumOfAllPointsByTheirTents) {
  std::mt19937 random(3);
  for (const auto& [low, high] : {std::pair{0.0, 1.0}, {0.25, 0.9}, {-0.5, 2.0}, {0.0, 1023.0}}) {
    for (const int face : {2, 3, 7}) {
      const auto cube = test::cubeOf(randomColors(face, low, high, 1));
      const TrilinearLutInterpolator interpolator(cube);
      std::uniform_real_distribution<double> value(low - 0.2 * high, high * 1.2);
      for (int i = 0; i < 200; ++i) {
        const LutColor input{value(random), value(random), value(random)};
        // An axis has no point below 0; the fraction then extrapolates the first cell.
        if (std::min({input.red, input.green, input.blue}) < 0) continue;
        expectNear(interpolator.sample(input.red, input.green, input.blue), asSumOverAllPoints(*cube, input),
                   1e-12 * high);
      }
    }
  }
}

TEST(Interpolators, PointsAndBoundsAreExact) {
  for (const int face : {2, 5, 17}) {
    auto colors = randomColors(face, 0, 3, 2);
    colors[0].red = 0;
    colors[1].green = 3;  // so that the range is exactly 0 to 3
    const auto cube = test::cubeOf(colors);
    const TrilinearLutInterpolator trilinear(cube);
    const TetrahedralLutInterpolator tetrahedral(cube);
    std::size_t place = 0;
    const LutColor last = colors.back();
    for (const ThreeDimensionalLutInterpolator* each :
         {static_cast<const ThreeDimensionalLutInterpolator*>(&trilinear),
          static_cast<const ThreeDimensionalLutInterpolator*>(&tetrahedral)}) {
      EXPECT_EQ(each->sample(3, 3, 3), last);
      EXPECT_EQ(each->sample(1e300, 3.5, INFINITY), last);
      EXPECT_EQ(each->sample(-1, -INFINITY, 0), colors[0]);
      EXPECT_TRUE(std::isnan(each->sample(NAN, 0, 0).red));
    }
    if (face != 17) continue;  // of which every point's input is exact
    for (int r = 0; r < face; ++r) {
      for (int g = 0; g < face; ++g) {
        for (int b = 0; b < face; ++b) {
          const auto at = [](int point) { return 3.0 * point / 16; };
          EXPECT_EQ(trilinear.sample(at(r), at(g), at(b)), colors[place]);
          EXPECT_EQ(tetrahedral.sample(at(r), at(g), at(b)), colors[place]);
          ++place;
        }
      }
    }
  }
}

TEST(Interpolators, AnInputIsDividedByTheHighestValueAlone) {
  // All values from 2 to 4: an input of 3 is at three quarters of the axis, not in its middle.
  const auto cube =
      test::cubeOf(test::cubeColors(5, [](double r, double, double) { return LutColor{2 + 2 * r, 2, 4}; }));
  EXPECT_EQ(TrilinearLutInterpolator(cube).sample(3, 3, 3), (LutColor{3.5, 2, 4}));
}

TEST(Interpolators, TetrahedralKeepsNeutralsAndMatchesTrilinearWhereAllIsLinear) {
  const auto linear = [](double r, double g, double b) {
    return LutColor{0.5 * r + 0.25 * g, g, 0.125 * r + 0.5 * b + 0.25};
  };
  const auto cube = test::cubeOf(test::cubeColors(9, linear));
  const double high = cube->highValue();
  std::mt19937 random(4);
  std::uniform_real_distribution<double> value(0, high);
  for (int i = 0; i < 300; ++i) {
    const LutColor input{value(random), value(random), value(random)};
    const LutColor expected = linear(input.red / high, input.green / high, input.blue / high);
    expectNear(TetrahedralLutInterpolator(cube).sample(input.red, input.green, input.blue), expected, 1e-12);
    expectNear(TrilinearLutInterpolator(cube).sample(input.red, input.green, input.blue), expected, 1e-12);
  }
  // A cube whose neutral points are neutral and whose other points are anything.
  auto colors = randomColors(5, 0, 1, 5);
  for (std::size_t i = 0; i < 5; ++i) {
    const double grey = 0.25 * static_cast<double>(i);
    colors[i * 31] = {grey, grey, grey};
  }
  const auto wild = test::cubeOf(colors);
  for (double grey = 0; grey <= 1; grey += 0.03125) {
    const double at = grey * wild->highValue();
    expectNear(TetrahedralLutInterpolator(wild).sample(at, at, at), {grey, grey, grey}, 1e-12);
  }
}

TEST(BitDepth, RescalingKeepsTheHighBits) {
  const std::uint64_t most = UINT64_MAX;
  const std::optional<std::uint64_t> none;
  const std::tuple<std::uint64_t, std::int64_t, std::int64_t, std::optional<std::uint64_t>> cases[] = {
      {1023, 10, 12, 4092}, {4095, 12, 10, 1023}, {5, 10, 10, 5},   {5, 0, 10, 5},
      {5, 10, -1, 5},       {most, 70, 6, 0},     {most, 64, 1, 1}, {1, 1, 64, 1ULL << 63},
      {2, 1, 64, none},     {0, 1, 1000, 0},      {1, 1, 65, none}};
  for (const auto& [value, from, to, expected] : cases) EXPECT_EQ(rescaledCodeValue(value, from, to), expected);
  EXPECT_EQ(largestCodeValue(63), most >> 1U);
  for (const int depth : {64, 65, 0, -1}) EXPECT_EQ(largestCodeValue(depth), 0U);
}

TEST(Converters, ACubeOfCodeValuesWorksAtItsOwnDepth) {
  // Halves red, keeps green, inverts blue, in ten bits.
  const auto file = test::cubeFile(
      test::cubeColors(17, [](double r, double g, double b) { return LutColor{r * 511.5, g * 1023, 1023 - b * 1023}; }),
      10);
  const RGBSampleConverter& converter = file->inputConverter();
  EXPECT_EQ(converter.convert(1023, 1023, 1023, 10), (RGBSample{511, 1023, 0}));
  EXPECT_EQ(converter.convert(4000, 4001, 4003, 12), converter.convert(4003, 4002, 4000, 12));  // two bits are lost
  EXPECT_EQ(converter.convert(2048, 4095, 0, 12), (RGBSample{256 * 4, 1023 * 4, 1023 * 4}));
  EXPECT_EQ(converter.convert(255, 0, 0, 8, 16), (RGBSample{510 * 64, 0, 1023 * 64}));
  EXPECT_EQ(converter.convert(1023, 1023, 0, 10, 8), (RGBSample{127, 255, 255}));
  EXPECT_EQ(converter.convert(UINT64_MAX, 5000, 0, 10), (RGBSample{511, 1023, 1023}));
  EXPECT_FALSE(converter.convertIfPossible(2, 0, 0, 10, 65));  // blue, 1023, does not fit
  EXPECT_DEATH(static_cast<void>(converter.convert(2, 0, 0, 10, 65)), "meridian: fatal: .*2, 0, 0 of depth 10");
}

TEST(Converters, AFloatingPointCubeWorksAtAnyDepth) {
  const auto identity = [](double r, double g, double b) { return LutColor{r, g, b}; };
  const auto file = test::cubeFile(test::cubeColors(17, identity));
  const RGBSampleConverter& converter = file->inputConverter();
  for (const int depth : {1, 8, 10, 16, 32, 52}) {
    const std::uint64_t most = largestCodeValue(depth);
    EXPECT_EQ(converter.convert(most, 0, most, depth), (RGBSample{most, 0, most})) << depth;
    EXPECT_EQ(converter.convert(most, most, 0, depth, 8), (RGBSample{255, 255, 0})) << depth;
  }
  EXPECT_EQ(converter.convert(128, 128, 128, 8, 10).green, 513U);  // 128 / 255 of 1023, truncated
  for (const int depth : {0, -1, 64, 70}) {
    EXPECT_EQ(converter.convert(1, 2, 3, depth), RGBSample{}) << depth;
    EXPECT_EQ(converter.convert(1, 2, 3, 8, depth), RGBSample{}) << depth;
  }
}

TEST(Converters, AResultThatIsNotACodeValueTerminatesTheProcess) {
  const auto negative =
      test::cubeFile(test::cubeColors(3, [](double r, double, double) { return LutColor{r - 0.5, 1, 1}; }));
  EXPECT_FALSE(negative->inputConverter().convertIfPossible(0, 0, 0, 8));
  EXPECT_TRUE(negative->inputConverter().convertIfPossible(255, 0, 0, 8));
  EXPECT_DEATH(static_cast<void>(negative->inputConverter().convert(0, 0, 0, 8)), "meridian: fatal: .*no code value");
  const auto black = test::cubeFile(std::vector<LutColor>(8));  // 0 divided by 0
  EXPECT_DEATH(static_cast<void>(black->inputConverter().convert(1, 1, 1, 8)), "meridian: fatal: .*no code value");
}

std::shared_ptr<const LutValueTriplets> table(std::size_t rows, double red, double green, double blue) {
  std::vector<LutColor> colors;
  for (std::size_t i = 0; i < rows; ++i) {
    const double place = static_cast<double>(i) / static_cast<double>(rows - 1);
    colors.push_back({std::floor(red * place), std::floor(green * place), std::floor(blue * place)});
  }
  return test::rowsOf(colors);
}

TEST(Converters, A1DLutOfCodeValuesIsLookedUpByChannel) {
  const OneDimensionsUnsignedIntegerConverter same(table(1024, 1023, 511, 0));
  EXPECT_EQ(same.lutBitDepth(), 10);
  EXPECT_EQ(same.valueBitDepth(), 10);
  EXPECT_EQ(same.totalEntries(), 1024U);
  EXPECT_EQ(same.maxInputColor(), 1023U);
  EXPECT_EQ(same.maxInputValue(), 1023);
  EXPECT_EQ(same.lowValue(), 0);
  EXPECT_EQ(same.highValue(), 1023);
  EXPECT_EQ(same.convert(1023, 1023, 1023, 10), (RGBSample{1023, 511, 0}));
  EXPECT_EQ(same.convert(4095, 2048, 7, 12), (RGBSample{1023 * 4, 255 * 4, 0}));
  EXPECT_EQ(same.convert(99999, UINT64_MAX, 7, 10), (RGBSample{1023, 511, 0}));
  // A LUT that darkens stays dark; one with values larger than its rows has their depth.
  EXPECT_EQ(OneDimensionsUnsignedIntegerConverter(table(256, 127, 127, 127)).convert(255, 0, 0, 8).red, 127U);
  const OneDimensionsUnsignedIntegerConverter deeper(table(1024, 4095, 4095, 4095));
  EXPECT_EQ(deeper.valueBitDepth(), 12);
  EXPECT_EQ(deeper.convert(1023, 512, 0, 10, 12).red, 4095U);
  EXPECT_EQ(deeper.convert(1023, 512, 0, 10).red, 1023U);
  // A double cannot hold this integer; the rows can.
  LutValueTriplets exact;
  const DecimalNumber large = *DecimalNumber::fromText("9007199254740993");
  for (int i = 0; i < 256; ++i) exact.append(LutValueTriplet{DecimalNumber(0.0), large, DecimalNumber(-1.0)});
  const OneDimensionsUnsignedIntegerConverter big(std::make_shared<const LutValueTriplets>(exact));
  EXPECT_FALSE(big.convertIfPossible(0, 0, 0, 8));  // blue is negative
  EXPECT_EQ(big.orderedEntries()[5].second.integerValue(), 9007199254740993);
  EXPECT_DEATH(OneDimensionsUnsignedIntegerConverter{table(300, 1, 1, 1)}, "meridian: fatal: .*power of two");
}

TEST(Converters, AFloatingPoint1DLutIsLinearBetweenItsRows) {
  std::vector<LutColor> colors(256);
  for (std::size_t i = 0; i < 256; ++i) {
    const double place = static_cast<double>(i) / 255;
    colors[i] = {place * place, 0.5 * place, 1 - place};
  }
  const OneDimensionFloatingPointConverter converter(test::rowsOf(colors), 0, 1);
  EXPECT_EQ(converter.lutBitDepth(), 8);
  EXPECT_EQ(converter.boundedInput(128, 1000, 0, 8), (LutColor{128.0 / 255, 1, 0}));
  for (const std::uint64_t code : {0U, 1U, 100U, 254U, 255U}) {
    const RGBSample sample = converter.convert(code, code, code, 8, 16);
    EXPECT_EQ(sample.red, static_cast<std::uint64_t>(colors[code].red * 65535)) << code;
    EXPECT_EQ(sample.green, static_cast<std::uint64_t>(colors[code].green * 65535)) << code;
  }
  // Half way between two rows.
  EXPECT_NEAR(converter.interpolated({100.5, 0, 0}).red, (colors[100].red + colors[101].red) / 2, 1e-15);
  EXPECT_EQ(converter.interpolated({NAN, INFINITY, -1}), (LutColor{0, 0.5, 1}));
  EXPECT_EQ(converter.convert(1, 2, 3, 64), RGBSample{});
}

}  // namespace
}  // namespace meridian

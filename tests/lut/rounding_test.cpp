#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "meridian/lut/image_lut.h"
#include "tests/lut/many_luts.h"

namespace meridian {
namespace {

constexpr ImageLutOptions nearest{.rounding = LutRounding::nearest};

/// Returns pixels with every code value of a depth in every channel, which differ from each other.
std::vector<std::uint16_t> everyCodeValue(int depth) {
  const std::size_t count = std::size_t{1} << static_cast<unsigned>(depth);
  std::vector<std::uint16_t> samples(count * 3);
  for (std::size_t i = 0; i < count; ++i) {
    samples[3 * i] = static_cast<std::uint16_t>(i);
    samples[3 * i + 1] = static_cast<std::uint16_t>(i * 7 % count);
    samples[3 * i + 2] = static_cast<std::uint16_t>(count - 1 - i);
  }
  return samples;
}

std::vector<std::uint16_t> applied(const ParsedLutFile& file, const std::vector<std::uint16_t>& source, int depth,
                                   const ImageLutOptions& options) {
  std::vector<std::uint16_t> result(source.size());
  const auto view = ImageView<std::uint16_t>::packed(ImageLayout::rgb, result.data(), source.size() / 3, 1, depth);
  EXPECT_TRUE(applyLut(
      file, ImageView<const std::uint16_t>::packed(ImageLayout::rgb, source.data(), source.size() / 3, 1, depth), view,
      options));
  return result;
}

/// Returns an identity cube: of code values of a depth, or of floating point with six decimals, as files have them. The
/// index of red runs slowest unless the order is redFastest.
std::unique_ptr<const ParsedLutFile> identityCube(int faceSize, int integerDepth, LutAxisOrder order) {
  const double unit = integerDepth > 0 ? std::ldexp(1.0, integerDepth) - 1 : 1;
  const double step = integerDepth > 0 ? 1 : 1e-6;
  const auto written = [&](double value) { return std::round(value * unit / step) * step; };
  return test::cubeFile(test::cubeColors(faceSize,
                                         [&](double slowest, double middle, double fastest) {
                                           if (order == LutAxisOrder::redFastest) std::swap(slowest, fastest);
                                           return LutColor{written(slowest), written(middle), written(fastest)};
                                         }),
                        integerDepth > 0 ? std::optional(integerDepth) : std::nullopt);
}

TEST(Rounding, AnIdentityChangesNoCodeValueAtAnyDepth) {
  for (const int depth : {8, 10, 12, 16}) {
    const auto source = everyCodeValue(depth);
    for (const int faceSize : {2, 3, 5, 9, 16, 17, 32, 33, 64, 65}) {
      for (const auto order : allCases<LutAxisOrder>()) {
        const auto cube = identityCube(faceSize, 0, order);
        for (const auto interpolation : allCases<LutInterpolation>()) {
          SCOPED_TRACE(testing::Message() << depth << " bits, " << faceSize << " points, " << rawValue(interpolation)
                                          << ", " << rawValue(order));
          const ImageLutOptions options{interpolation, order,
                                        faceSize % 2 == 0 ? LutInputDomain::declared : LutInputDomain::dataRange,
                                        LutRounding::nearest};
          ASSERT_EQ(applied(*cube, source, depth, options), source);
        }
      }
    }
  }
}

TEST(Rounding, AnIdentityOfCodeValuesChangesNothingAtItsOwnAndOtherDepths) {
  for (const int lutDepth : {8, 10, 12, 16}) {
    // Points whose code values are exact: 2^n - 1 is a multiple of their number less one.
    const auto cube = identityCube(lutDepth == 8    ? 18
                                   : lutDepth == 10 ? 34
                                   : lutDepth == 12 ? 36
                                                    : 52,
                                   lutDepth, LutAxisOrder::blueFastest);
    std::vector<LutColor> rows(std::size_t{1} << static_cast<unsigned>(lutDepth));
    for (std::size_t row = 0; row < rows.size(); ++row) {
      const auto code = static_cast<double>(row);
      rows[row] = {code, code, code};
    }
    const ParsedLutFactory::ParsedOneDimensionLutFile table(
        Url::fromFilePath("/made.lut"), {},
        std::make_unique<OneDimensionsUnsignedIntegerConverter>(test::rowsOf(rows)));
    for (const int depth : {1, 8, 10, 12, 16}) {
      SCOPED_TRACE(testing::Message() << lutDepth << " bits applied to " << depth);
      const auto source = everyCodeValue(depth);
      ASSERT_EQ(applied(*cube, source, depth, nearest), source);
      ASSERT_EQ(applied(table, source, depth, nearest), source);
    }
  }
}

TEST(Rounding, TruncationIsTheDefaultAndChangesCodeValuesOfAnIdentity) {
  const auto cube = identityCube(33, 0, LutAxisOrder::blueFastest);
  const auto source = everyCodeValue(10);
  EXPECT_EQ(applied(*cube, source, 10, {}), applied(*cube, source, 10, {.rounding = LutRounding::truncate}));
  EXPECT_NE(applied(*cube, source, 10, {}), source);
}

TEST(Rounding, FloatingPointIsTheSameWithBoth) {
  const auto cube = identityCube(5, 0, LutAxisOrder::blueFastest);
  const LutColor color{0.1, 0.2345678, 0.9};
  EXPECT_EQ(ImageLut::forFloats(*cube, nearest).pixel(color), ImageLut::forFloats(*cube).pixel(color));
}

TEST(ImageLutOptionsDeathTest, AValueThatIsNotACaseTerminatesTheProcess) {
  const auto cube = identityCube(2, 0, LutAxisOrder::blueFastest);
  for (const ImageLutOptions& options : {ImageLutOptions{.interpolation = static_cast<LutInterpolation>(2)},
                                         {.axisOrder = static_cast<LutAxisOrder>(7)},
                                         {.domain = static_cast<LutInputDomain>(255)},
                                         {.rounding = static_cast<LutRounding>(2)}}) {
    EXPECT_DEATH(static_cast<void>(ImageLut::forCodeValues(*cube, 8, 8, options)), "meridian: fatal: .*option");
    EXPECT_DEATH(static_cast<void>(ImageLut::forFloats(*cube, options)), "meridian: fatal: .*option");
  }
  const CodeValueFormat unknownRange{10, static_cast<CodeValueRange>(2)};
  EXPECT_EQ(ImageLut::forCodeValues(*cube, unknownRange, 10).error(), ImageErrorCode::unusableRange);
}

}  // namespace
}  // namespace meridian

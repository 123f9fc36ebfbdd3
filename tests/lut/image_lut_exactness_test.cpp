// The filter and its exact fallback return what the plain definition returns.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_description.h"
#include "tests/lut/many_luts.h"

namespace meridian {
namespace {

/// Returns pixels that are random, on lattice points and next to them, at the ends, flat, and beyond the depth.
template <typename Sample>
std::vector<Sample> codePixels(std::size_t count, int depth, std::uint32_t faceSize, unsigned seed) {
  std::mt19937 generator(seed);
  const auto random = [&generator] { return static_cast<std::uint32_t>(generator()); };
  const std::uint32_t most = (1U << static_cast<unsigned>(depth)) - 1;
  const std::uint32_t container = (1U << (sizeof(Sample) * 8)) - 1;
  std::vector<Sample> samples(count * 3);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    std::uint32_t value = random() & most;
    switch ((i / 24) % 6) {
      case 1:  // on and beside the cube's points
        value = (random() % faceSize * most / std::max(faceSize - 1, 1U) + random() % 3 + most) % (most + 1);
        break;
      case 2:
        value = random() % 2 * most;
        break;
      case 3:
        value = most / 3;
        break;
      case 4:
        value = random() & container;
        break;
      default:
        break;
    }
    samples[i] = static_cast<Sample>(value);
  }
  return samples;
}

template <typename Sample>
void expectDefinition(const ImageLut& lut, const std::vector<Sample>& source, const std::vector<Sample>& result) {
  for (std::size_t i = 0; i + 2 < source.size(); i += 3) {
    const auto expected = lut.pixel(source[i], source[i + 1], source[i + 2]);
    const std::array<std::uint16_t, 3> actual{result[i], result[i + 1], result[i + 2]};
    ASSERT_EQ(actual, expected) << "of " << source[i] << ' ' << source[i + 1] << ' ' << source[i + 2];
  }
}

TEST(ImageLutExactness, EveryPixelIsThatOfTheDefinitionOnEveryInstructionSet) {
  constexpr std::size_t width = 701;  // two blocks and a part
  std::vector<std::pair<int, int>> depths;
  for (int depth = 1; depth <= 16; ++depth) depths.emplace_back(depth, depth);
  depths.insert(depths.end(), {{10, 16}, {16, 10}, {8, 1}, {1, 16}});
  const std::vector<ImageLutOptions> options = test::allOptions();
  unsigned seed = 0;
  for (const test::NamedLut& named : test::manyLuts()) {
    SCOPED_TRACE(named.name);
    seed += 2;  // so that each depth gets other options with each LUT
    const auto faceSize = static_cast<std::uint32_t>(
        std::max(1L, std::lround(std::cbrt(static_cast<double>(named.file->orderedValues().size())))));
    for (const auto& [from, to] : depths) {
      // Each combination of LUT and depth with two of the options, so that all occur often.
      for (int repeat = 0; repeat < 2; ++repeat) {
        SCOPED_TRACE(testing::Message() << from << " to " << to << " bits, option " << seed % options.size());
        const auto lut = ImageLut::forCodeValues(*named.file, from, to, options[seed % options.size()]);
        const auto source = codePixels<std::uint16_t>(width, from, faceSize, seed++);
        test::onEveryInstructionSet([&] {
          std::vector<std::uint16_t> result(source.size());
          auto view = ImageView<std::uint16_t>::packed(ImageLayout::rgb, result.data(), width, 1, to);
          ASSERT_TRUE(lut->apply(
              ImageView<const std::uint16_t>::packed(ImageLayout::rgb, source.data(), width, 1, from), view));
          expectDefinition(*lut, source, result);
          if (from > 8 || to > 8) return;
          const auto bytes = codePixels<std::uint8_t>(width, from, faceSize, seed);
          std::vector<std::uint8_t> byteResult(bytes.size());
          ASSERT_TRUE(lut->apply(ImageView<const std::uint8_t>::packed(ImageLayout::rgb, bytes.data(), width, 1, from),
                                 ImageView<std::uint8_t>::packed(ImageLayout::rgb, byteResult.data(), width, 1, to)));
          expectDefinition(*lut, bytes, byteResult);
        });
        if (HasFatalFailure()) return;
      }
    }
  }
}

/// Returns code values with a result so near an integer, or a half if it is rounded, that single precision cannot tell
/// on which side it is.
std::vector<std::uint16_t> pixelsNextToIntegers(const ParsedLutFile& file, const ImageLutOptions& options, int from,
                                                int to) {
  constexpr std::size_t count = 3000;
  const ImageLut lut = ImageLut::forFloats(file, options);
  const double most = std::ldexp(1.0, from) - 1;
  const double unit = std::ldexp(1.0, to) - 1;
  std::mt19937 random(71);
  const double half = options.rounding == LutRounding::nearest ? 0.5 : 0;
  const auto isNear = [&](double value) {
    return std::fabs(value * unit + half - std::round(value * unit + half)) < 0.01;
  };
  std::vector<std::uint16_t> pixels;
  for (int tries = 0; pixels.size() < count * 3 && tries < 200'000; ++tries) {
    const auto code = [&] { return static_cast<std::uint16_t>(random() % (1U << static_cast<unsigned>(from))); };
    const std::array<std::uint16_t, 3> input{code(), code(), code()};
    const LutColor color = lut.pixel(LutColor{input[0] / most, input[1] / most, input[2] / most});
    if (!isNear(color.red) && !isNear(color.green) && !isNear(color.blue)) continue;
    pixels.insert(pixels.end(), input.begin(), input.end());
  }
  return pixels;
}

TEST(ImageLutExactness, ResultsNextToIntegersAreThoseOfTheDefinition) {
  const std::vector<ImageLutOptions> options = test::allOptions();
  std::size_t turn = 0;
  for (const test::NamedLut& named : test::manyLuts()) {
    const LutDescription description = describe(*named.file);
    const bool isInteger = description.valueType == LutValueType::integer;
    if (description.dimensions != LutDimensions::cube || (isInteger && description.valueBitDepth != 16)) continue;
    SCOPED_TRACE(named.name);
    for (const auto& [from, to] : {std::pair{16, 16}, {12, 16}, {13, 15}, {10, 14}}) {
      if (isInteger && to != 16) continue;
      const ImageLutOptions& chosen = options[turn++ % options.size()];
      const auto source = pixelsNextToIntegers(*named.file, chosen, from, to);
      if (source.empty()) continue;
      const auto lut = ImageLut::forCodeValues(*named.file, from, to, chosen);
      test::onEveryInstructionSet([&] {
        std::vector<std::uint16_t> result(source.size());
        const std::size_t width = source.size() / 3;
        ASSERT_TRUE(lut->apply(ImageView<const std::uint16_t>::packed(ImageLayout::rgb, source.data(), width, 1, from),
                               ImageView<std::uint16_t>::packed(ImageLayout::rgb, result.data(), width, 1, to)));
        expectDefinition(*lut, source, result);
      });
    }
  }
}

/// Compares one code value, repeated, with the definition.
void expectDefinition(const ParsedLutFile& file, const ImageLutOptions& options, int from, int to, std::uint16_t code,
                      std::size_t pixelsBefore = 0) {
  const auto lut = ImageLut::forCodeValues(file, from, to, options);
  if (pixelsBefore > 0) {
    const std::vector<std::uint16_t> many(3 * pixelsBefore);
    std::vector<std::uint16_t> results(many.size());
    ASSERT_TRUE(lut->apply(ImageView<const std::uint16_t>::packed(ImageLayout::rgb, many.data(), pixelsBefore, 1, from),
                           ImageView<std::uint16_t>::packed(ImageLayout::rgb, results.data(), pixelsBefore, 1, to)));
  }
  const std::vector<std::uint16_t> source(3 * 16, code);
  test::onEveryInstructionSet([&] {
    std::vector<std::uint16_t> result(source.size());
    ASSERT_TRUE(lut->apply(ImageView<const std::uint16_t>::packed(ImageLayout::rgb, source.data(), 16, 1, from),
                           ImageView<std::uint16_t>::packed(ImageLayout::rgb, result.data(), 16, 1, to)));
    expectDefinition(*lut, source, result);
  });
}

/// Returns cubes whose errors in single precision are as large as their bounds allow, or hidden by nothing.
std::vector<test::NamedLut> cubesThatTryBounds() {
  std::mt19937 random(17);
  std::uniform_real_distribution<double> unit(0, 1);
  const auto any = [&](double low, double high) { return low + (high - low) * unit(random); };
  std::vector<test::NamedLut> luts;
  const auto add = [&](const std::string& name, int face, const auto& function, std::optional<int> depth = {}) {
    luts.push_back({name + " " + std::to_string(face), test::cubeFile(test::cubeColors(face, function), depth)});
  };
  const auto grey = [](double value) { return LutColor{value, value, value}; };
  // Of 2 and 5 points the cells are used from the first pixel on, of 20 the lattice at first.
  for (const int face : {2, 5, 20}) {
    const auto noise = [&](double low, double high) {
      return [&any, low, high](double, double, double) {
        return LutColor{any(low, high), any(low, high), any(low, high)};
      };
    };
    add("steep noise", face, noise(0, 1));
    // From a corner to the next, all code values and more: up to the results that cells hold, and beyond.
    for (const auto& [low, high] : {std::pair{0.0, 1.0}, {-1.4, 2.4}, {-40.0, 2.0}}) {
      add("chequers", face, [&any, low, high](double, double, double) {
        return LutColor{any(0, 1) < 0.5 ? low : high, any(0, 1) < 0.5 ? low : high, any(0, 1) < 0.5 ? low : high};
      });
    }
    add("one steep cell", face, [&](double r, double g, double b) { return grey(r + g + b == 0 ? 1.0 : 0.3); });
    add("nearly identical", face,
        [&](double r, double g, double b) { return LutColor{r + any(-1e-9, 1e-9), g + any(-1e-6, 1e-6), b}; });
    add("whole codes", face, [&](double r, double g, double b) {
      return LutColor{std::round(r * 65535) / 65535, std::round((g + b) * 32767.5) / 65535, any(0, 1) < 0.5 ? 1.0 : r};
    });
    add("not quite full", face, noise(0.1, 0.987));
    add("12 bits", face, [&](double, double, double) { return grey(std::floor(any(0, 4095.999))); }, 12);
    add("20 bits", face, noise(0, 1048575), 20);
  }
  return luts;
}

TEST(ImageLutExactness, AllCodesOfEachAxisInCubesThatTryTheBoundsAreThoseOfTheDefinition) {
  // So many pixels that the cells of these cubes are used. One channel has all codes in turn, the others any.
  constexpr std::size_t width = std::size_t{3} * 65536;
  std::mt19937 random(19);
  std::vector<std::uint16_t> source(width * 3);
  for (std::size_t i = 0; i < source.size(); ++i) {
    const bool hasTurn = i % 3 == i / (std::size_t{3} * 65536);
    source[i] = static_cast<std::uint16_t>(hasTurn ? i / 3 % 65536 : random());
  }
  std::size_t turn = 0;
  for (const test::NamedLut& named : cubesThatTryBounds()) {
    const int to = turn % 4 == 1 ? 10 : 16;
    ImageLutOptions options;
    options.interpolation = turn % 5 == 4 ? LutInterpolation::tetrahedral : LutInterpolation::trilinear;
    options.domain = turn % 3 == 2 ? LutInputDomain::dataRange : LutInputDomain::declared;
    options.rounding = turn % 4 == 3 ? LutRounding::nearest : LutRounding::truncate;
    SCOPED_TRACE(testing::Message() << named.name << " to " << to << " bits, turn " << turn++);
    const auto lut = ImageLut::forCodeValues(*named.file, 16, to, options);
    std::vector<std::uint16_t> expected(source.size());
    for (std::size_t i = 0; i < source.size(); i += 3) {
      std::ranges::copy(lut->pixel(source[i], source[i + 1], source[i + 2]),
                        expected.begin() + static_cast<std::ptrdiff_t>(i));
    }
    test::onEveryInstructionSet([&] {
      std::vector<std::uint16_t> result(source.size());
      ASSERT_TRUE(lut->apply(ImageView<const std::uint16_t>::packed(ImageLayout::rgb, source.data(), width, 1),
                             ImageView<std::uint16_t>::packed(ImageLayout::rgb, result.data(), width, 1, to)));
      const auto different = std::ranges::mismatch(result, expected);
      const auto place = different.in1 - result.begin();
      ASSERT_EQ(different.in1, result.end())
          << "sample " << place << " is " << *different.in1 << ", not " << *different.in2;
    });
  }
}

TEST(ImageLutExactness, CellsFromFarBelowAllCodeValuesToFarAboveYieldThoseOfTheDefinition) {
  std::vector<std::uint16_t> source(std::size_t{65536} * 3);
  for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<std::uint16_t>(i / 3 * (i % 3 * 2 + 1));
  for (const auto& [low, high] : {std::pair{-1.400005, 2.4}, {2.4, -1.400005}, {-1.400005, 1.0}, {-1.9, 2.9}}) {
    const auto ramp = [low, high](double place) { return low + (high - low) * place; };
    for (const int face : {2, 5}) {
      SCOPED_TRACE(testing::Message() << "from " << low << " to " << high << ", " << face << " points");
      const auto file = test::cubeFile(
          test::cubeColors(face, [&](double r, double g, double b) { return LutColor{ramp(b), ramp(r), ramp(g)}; }));
      const auto lut = ImageLut::forCodeValues(*file, 16, 16, {.domain = LutInputDomain::declared});
      test::onEveryInstructionSet([&] {
        std::vector<std::uint16_t> result(source.size());
        ASSERT_TRUE(lut->apply(ImageView<const std::uint16_t>::packed(ImageLayout::rgb, source.data(), 65536, 1),
                               ImageView<std::uint16_t>::packed(ImageLayout::rgb, result.data(), 65536, 1)));
        expectDefinition(*lut, source, result);
      });
    }
  }
}

TEST(ImageLutExactness, TetrahedraThatLoseAsMuchAsTheyCanYieldTheDefinition) {
  // The values of points at which red, green and blue add up to 0, 1, 2 and 3, and codes at which all roundings of
  // instructions that do not fuse products with sums go the same way.
  struct Case {
    std::array<double, 4> values;
    std::array<std::uint16_t, 3> codes;
  };
  for (const auto& [values, codes] :
       {Case{{0.17059787742385987, 0.82944760347673241, 0.17059805624052271, 0.8294474239615669},
             {64404, 62334, 61568}},
        Case{{0.16821961580792943, 0.83182586509266276, 0.1682197946245923, 0.83182568557749736},
             {64386, 62841, 60297}},
        Case{{0.16732714184363556, 0.83269866922404301, 0.1673273206602984, 0.8326984897088775},
             {64918, 63102, 60551}}}) {
    const auto file = test::cubeFile(test::cubeColors(2, [&values](double r, double g, double b) {
      const double value = values.at(static_cast<std::size_t>(r + g + b));
      return LutColor{value, value, value};
    }));
    std::vector<std::uint16_t> source;
    for (int i = 0; i < 64; ++i) source.insert(source.end(), codes.begin(), codes.end());
    const auto lut = ImageLut::forCodeValues(
        *file, 16, 16, {.interpolation = LutInterpolation::tetrahedral, .domain = LutInputDomain::declared});
    test::onEveryInstructionSet([&] {
      std::vector<std::uint16_t> result(source.size());
      ASSERT_TRUE(lut->apply(ImageView<const std::uint16_t>::packed(ImageLayout::rgb, source.data(), 64, 1),
                             ImageView<std::uint16_t>::packed(ImageLayout::rgb, result.data(), 64, 1)));
      expectDefinition(*lut, source, result);
    });
  }
}

TEST(ImageLutExactness, FlatRegionsBeginAndEndWhereTheDefinitionSaysSo) {
  // A code value on a lattice point whose place the definition's rounding puts just before the point, where a flat
  // region begins, or just after it, where one ends.
  int found = 0;
  for (const int depth : {8, 10, 12, 16}) {
    const int most = (1 << depth) - 1;
    for (int face = 3; face < 60; ++face) {
      bool hasBegin = false;
      bool hasEnd = false;
      for (int code = 0; code <= most; ++code) {
        if (code * (face - 1) % most != 0) continue;
        const int point = code * (face - 1) / most;
        const double place = static_cast<double>(code) / most * (face - 1);
        if (place == point || (place < point && hasBegin) || (place > point && hasEnd)) continue;
        const bool begins = place < point;
        (begins ? hasBegin : hasEnd) = true;
        ++found;
        SCOPED_TRACE(testing::Message() << depth << " bits, " << face << " points, code " << code);
        for (const auto& [other, flat] : {std::pair{0.5, 1.0}, {1.0, 0x1p-12}}) {
          const auto file = test::cubeFile(test::cubeColors(face, [&](double r, double g, double b) {
            const double nearest = std::round((begins ? std::min({r, g, b}) : std::max({r, g, b})) * (face - 1));
            const double value = (begins ? nearest >= point : nearest <= point) ? flat : other;
            return LutColor{value, value, 1};
          }));
          for (const auto interpolation : allCases<LutInterpolation>()) {
            for (const auto rounding : allCases<LutRounding>()) {
              // With cells where there can be any, after so many pixels that they are used.
              const bool hasCells = face <= 41 && interpolation == LutInterpolation::trilinear;
              const auto pixels = hasCells ? static_cast<std::size_t>(100 * face * face * face) : 0;
              const ImageLutOptions options{.interpolation = interpolation,
                                            .domain = hasCells ? LutInputDomain::declared : LutInputDomain::dataRange,
                                            .rounding = rounding};
              expectDefinition(*file, options, depth, depth, static_cast<std::uint16_t>(code), pixels);
              expectDefinition(*file, options, depth, 16, static_cast<std::uint16_t>(code));
            }
          }
        }
      }
    }
  }
  EXPECT_GT(found, 3);
}

TEST(ImageLutExactness, ACellWithOneDifferentCornerIsNotFlat) {
  // All points are 1 but the middle one, which is each of the eight corners in one of the cells around it. It differs
  // by so little that single precision truncates many results to white, and the definition to one code value less.
  auto colors = test::cubeColors(3, [](double, double, double) { return LutColor{1, 1, 1}; });
  const double middle = 1 - 0x1p-40;
  colors[13] = {middle, middle, middle};
  const auto file = test::cubeFile(colors);
  std::mt19937 random(73);
  std::vector<std::uint16_t> source(3 * 4096);
  for (std::uint16_t& sample : source) sample = static_cast<std::uint16_t>(random());
  for (const auto interpolation : allCases<LutInterpolation>()) {
    const auto lut =
        ImageLut::forCodeValues(*file, 16, 16, {.interpolation = interpolation, .domain = LutInputDomain::declared});
    test::onEveryInstructionSet([&] {
      std::vector<std::uint16_t> result(source.size());
      ASSERT_TRUE(lut->apply(ImageView<const std::uint16_t>::packed(ImageLayout::rgb, source.data(), 4096, 1),
                             ImageView<std::uint16_t>::packed(ImageLayout::rgb, result.data(), 4096, 1)));
      expectDefinition(*lut, source, result);
    });
  }
}

TEST(ImageLutExactness, AnAxisEndsExactlyWhereItsHighestValueIs) {
  // The highest value is exact in single precision and yet long, its result just above an integer, its slope steep.
  constexpr int face = 40;
  for (int wanted = 3900; wanted < 4000; wanted += 3) {
    auto end = static_cast<float>(wanted * 255.0 / 4095);
    while (static_cast<double>(end) / 255 * 4095 < wanted) end = std::nextafter(end, 1000.0F);
    const double high = static_cast<double>(end) / 255;
    SCOPED_TRACE(testing::Message() << "highest value " << wanted);
    const auto file = test::cubeFile(test::cubeColors(face, [&](double r, double g, double b) {
      const double value = std::min({r, g, b}) == 1 ? high : 0;
      return LutColor{value, value, value};
    }));
    expectDefinition(*file, {}, 8, 12, 255);
    ASSERT_FALSE(HasFatalFailure());
  }
}

}  // namespace
}  // namespace meridian

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "meridian/lut/image_lut.h"
#include "tests/lut/lut_files.h"

namespace meridian {
namespace {

using Layout = ImageLayout;

/// Calls the function once for each set of instructions that this machine has.
template <typename Function>
void onEveryInstructionSet(const Function& function) {
  hwy::SetSupportedTargetsForTest(0);
  std::vector<std::int64_t> targets = hwy::SupportedAndGeneratedTargets();
  targets.push_back(HWY_STATIC_TARGET);
  for (const std::int64_t target : targets) {
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    SCOPED_TRACE(hwy::TargetName(target));
    function();
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

struct NamedTable {
  std::string name;
  std::unique_ptr<const ParsedLutFile> file;
};

/// Cubes of every kind, and tables: smooth, random, clipped, flat, negative, tiny, deep, and odd.
std::vector<NamedTable> manyTables() {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> unit(0, 1);
  const auto noise = [&](double low, double high) {
    return [&random, &unit, low, high](double, double, double) {
      const auto value = [&] { return low + (high - low) * unit(random); };
      return LutColor{value(), value(), value()};
    };
  };
  const auto identity = [](double r, double g, double b) { return LutColor{r, g, b}; };
  const auto look = [](double r, double g, double b) {
    const auto curve = [](double x) { return std::clamp(1.3 * x * x * (3 - 2 * x) - 0.1, 0.0, 1.0); };
    return LutColor{curve(0.9 * r + 0.1 * g), curve(g), curve(0.8 * b + 0.2 * r)};
  };
  const auto scaled = [](const auto& function, double scale, bool rounded) {
    return [function, scale, rounded](double r, double g, double b) {
      const LutColor color = function(r, g, b);
      const auto value = [&](double x) { return rounded ? std::round(x * scale) : x * scale; };
      return LutColor{value(color.red), value(color.green), value(color.blue)};
    };
  };
  const auto constant = [](double value) {
    return [value](double, double, double) { return LutColor{value, value, value}; };
  };
  const auto row = [](double value) { return std::vector<LutColor>(8, LutColor{value, value, value}); };
  std::vector<NamedTable> tables;
  const auto add = [&](std::string name, std::unique_ptr<const ParsedLutFile> file) {
    tables.push_back({std::move(name), std::move(file)});
  };
  add("identity 17", test::cubeFile(test::cubeColors(17, identity)));
  add("identity 33", test::cubeFile(test::cubeColors(33, identity)));
  add("look 33", test::cubeFile(test::cubeColors(33, look)));
  add("noise 5", test::cubeFile(test::cubeColors(5, noise(0, 1))));
  add("noise 65", test::cubeFile(test::cubeColors(65, noise(0, 1))));
  add("noise above 0", test::cubeFile(test::cubeColors(6, noise(0.3, 0.987654321))));
  add("noise below 0", test::cubeFile(test::cubeColors(6, noise(-0.4, 1.7))));
  add("all negative", test::cubeFile(test::cubeColors(3, noise(-2, -1))));
  add("two points", test::cubeFile(test::cubeColors(2, noise(0, 1))));
  add("one point", test::cubeFile({{0.25, 0.5, 0.75}}));
  add("white", test::cubeFile(test::cubeColors(9, constant(1))));
  add("grey", test::cubeFile(test::cubeColors(9, constant(0.7))));
  add("black", test::cubeFile(row(0)));
  add("tiny values", test::cubeFile(test::cubeColors(4, noise(0, 1e-300))));
  add("huge values", test::cubeFile(test::cubeColors(4, noise(0, 1e30))));
  for (const int depth : {1, 5, 8, 10, 12, 16, 20, 40, 63}) {
    const double most = std::ldexp(1.0, depth) - 1;
    add("integers " + std::to_string(depth), test::cubeFile(test::cubeColors(9, scaled(look, most, true)), depth));
    add("integer noise " + std::to_string(depth), test::cubeFile(test::cubeColors(4, noise(0, most)), depth));
  }
  add("integers up to a power of two", test::cubeFile(test::cubeColors(9, scaled(identity, 1024, true)), 10));
  add("flat integers", test::cubeFile(test::cubeColors(5, constant(1023)), 10));
  LutDeclaredDomain domain{{-0.25, 0, 0.1}, {1.5, 0.5, 1.0}, true};
  add("with a domain", test::cubeFile(test::cubeColors(17, look), 0, domain));
  domain = {{0, 16, 64}, {1023, 900, 940}, true};
  add("integers with a domain", test::cubeFile(test::cubeColors(9, scaled(look, 1023, true)), 10, domain));

  const Url url = Url::fromFilePath("/made.lut");
  std::vector<LutColor> curve;
  for (int i = 0; i < 1024; ++i) curve.push_back({std::sqrt(i / 1023.0), i / 1023.0 - 0.01, 1 - i / 1023.0});
  const auto oneD = [&](std::unique_ptr<const OneDimensionConverter> converter, const LutDeclaredDomain& declared) {
    return std::make_unique<ParsedLutFactory::ParsedOneDimensionLutFile>(url, declared, std::move(converter));
  };
  add("curve", oneD(std::make_unique<OneDimensionFloatingPointConverter>(test::rowsOf(curve), -0.01, 1), {}));
  add("curve with a domain", oneD(std::make_unique<OneDimensionFloatingPointConverter>(test::rowsOf(curve), -0.01, 1),
                                  {{0.1, 0, -1}, {0.9, 1, 2}, true}));
  for (LutColor& color : curve) color = {std::floor(color.red * 4095), std::floor(color.green * 4095), 4095};
  add("integer curve", oneD(std::make_unique<OneDimensionsUnsignedIntegerConverter>(test::rowsOf(curve)), {}));
  add("integer curve with a domain", oneD(std::make_unique<OneDimensionsUnsignedIntegerConverter>(test::rowsOf(curve)),
                                          {{64, 64, 64}, {940, 940, 940}, true}));
  return tables;
}

/// Pixels that are random, on lattice points and next to them, at the ends, flat, and beyond the depth.
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

std::vector<ImageLutOptions> allOptions() {
  std::vector<ImageLutOptions> options;
  for (const auto interpolation : allCases<LutInterpolation>()) {
    for (const auto order : allCases<LutAxisOrder>()) {
      for (const auto domain : allCases<LutInputDomain>()) options.push_back({interpolation, order, domain});
    }
  }
  return options;
}

TEST(ImageLut, EveryPixelIsThatOfTheDefinitionOnEveryInstructionSet) {
  constexpr std::size_t width = 701;  // two blocks and a part
  std::vector<std::pair<int, int>> depths;
  for (int depth = 1; depth <= 16; ++depth) depths.emplace_back(depth, depth);
  depths.insert(depths.end(), {{10, 16}, {16, 10}, {8, 1}, {1, 16}});
  const std::vector<ImageLutOptions> options = allOptions();
  unsigned seed = 0;
  for (const NamedTable& table : manyTables()) {
    SCOPED_TRACE(table.name);
    const auto faceSize = static_cast<std::uint32_t>(
        std::max(1L, std::lround(std::cbrt(static_cast<double>(table.file->orderedValues().size())))));
    for (const auto& [from, to] : depths) {
      // Each combination of table and depth with two of the eight options, so that all come about often.
      for (int repeat = 0; repeat < 2; ++repeat) {
        SCOPED_TRACE(testing::Message() << from << " to " << to << " bits, option " << seed % options.size());
        const auto lut = ImageLut::forCodeValues(*table.file, from, to, options[seed % options.size()]);
        const auto source = codePixels<std::uint16_t>(width, from, faceSize, seed++);
        onEveryInstructionSet([&] {
          std::vector<std::uint16_t> result(source.size());
          auto view = ImageView<std::uint16_t>::packed(Layout::rgb, result.data(), width, 1, to);
          ASSERT_FALSE(
              lut->apply(ImageView<const std::uint16_t>::packed(Layout::rgb, source.data(), width, 1, from), view));
          expectDefinition(*lut, source, result);
          if (from > 8 || to > 8) return;
          const auto bytes = codePixels<std::uint8_t>(width, from, faceSize, seed);
          std::vector<std::uint8_t> byteResult(bytes.size());
          ASSERT_FALSE(lut->apply(ImageView<const std::uint8_t>::packed(Layout::rgb, bytes.data(), width, 1, from),
                                  ImageView<std::uint8_t>::packed(Layout::rgb, byteResult.data(), width, 1, to)));
          expectDefinition(*lut, bytes, byteResult);
        });
        if (HasFatalFailure()) return;
      }
    }
  }
}

/// Code values with a result so near an integer that single precision cannot tell on which side it lies.
std::vector<std::uint16_t> pixelsNextToIntegers(const ParsedLutFile& file, const ImageLutOptions& options, int from,
                                                int to) {
  constexpr std::size_t count = 3000;
  const ImageLut lut = ImageLut::forFloats(file, options);
  const double most = std::ldexp(1.0, from) - 1;
  const double unit = std::ldexp(1.0, to) - 1;
  std::mt19937 random(71);
  const auto isNear = [&](double value) { return std::fabs(value * unit - std::round(value * unit)) < 0.01; };
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

TEST(ImageLut, ResultsNextToIntegersAreThoseOfTheDefinition) {
  const std::vector<ImageLutOptions> options = allOptions();
  std::size_t turn = 0;
  for (const NamedTable& table : manyTables()) {
    const auto* const integers = dynamic_cast<const UnsignedIntegerLutFile*>(table.file.get());
    if (table.file->dimensions() != LutDimensions::cube || (integers != nullptr && integers->bitDepth() != 16))
      continue;
    SCOPED_TRACE(table.name);
    for (const auto& [from, to] : {std::pair{16, 16}, {12, 16}, {13, 15}, {10, 14}}) {
      if (integers != nullptr && to != 16) continue;
      const ImageLutOptions& chosen = options[turn++ % options.size()];
      const auto source = pixelsNextToIntegers(*table.file, chosen, from, to);
      if (source.empty()) continue;
      const auto lut = ImageLut::forCodeValues(*table.file, from, to, chosen);
      onEveryInstructionSet([&] {
        std::vector<std::uint16_t> result(source.size());
        const std::size_t width = source.size() / 3;
        ASSERT_FALSE(lut->apply(ImageView<const std::uint16_t>::packed(Layout::rgb, source.data(), width, 1, from),
                                ImageView<std::uint16_t>::packed(Layout::rgb, result.data(), width, 1, to)));
        expectDefinition(*lut, source, result);
      });
    }
  }
}

/// One pixel by both ways.
void expectDefinition(const ParsedLutFile& file, const ImageLutOptions& options, int from, int to, std::uint16_t code) {
  const auto lut = ImageLut::forCodeValues(file, from, to, options);
  const std::vector<std::uint16_t> source(3 * 16, code);
  onEveryInstructionSet([&] {
    std::vector<std::uint16_t> result(source.size());
    ASSERT_FALSE(lut->apply(ImageView<const std::uint16_t>::packed(Layout::rgb, source.data(), 16, 1, from),
                            ImageView<std::uint16_t>::packed(Layout::rgb, result.data(), 16, 1, to)));
    expectDefinition(*lut, source, result);
  });
}

TEST(ImageLut, FlatRegionsBeginWhereTheDefinitionSaysSo) {
  // A code value that lies on a lattice point, and whose place the definition's rounding puts just before it.
  int found = 0;
  for (const int depth : {8, 10, 12, 16}) {
    const int most = (1 << depth) - 1;
    for (int face = 3; face < 60; ++face) {
      for (int code = 0; code <= most; ++code) {
        if (code * (face - 1) % most != 0) continue;
        const int point = code * (face - 1) / most;
        const double place = static_cast<double>(code) / most * (face - 1);
        if (place >= point) continue;
        ++found;
        SCOPED_TRACE(testing::Message() << depth << " bits, " << face << " points, code " << code);
        for (const auto& [before, flat] : {std::pair{0.5, 1.0}, {1.0, 0x1p-12}}) {
          const auto file = test::cubeFile(test::cubeColors(face, [&](double r, double g, double b) {
            const double first = std::round(std::min({r, g, b}) * (face - 1));
            const double value = first >= point ? flat : before;
            return LutColor{value, value, 1};
          }));
          for (const auto interpolation : allCases<LutInterpolation>()) {
            expectDefinition(*file, {.interpolation = interpolation}, depth, depth, static_cast<std::uint16_t>(code));
            expectDefinition(*file, {.interpolation = interpolation}, depth, 16, static_cast<std::uint16_t>(code));
          }
        }
        break;  // one code for each cube
      }
    }
  }
  EXPECT_GT(found, 3);
}

TEST(ImageLut, AnAxisEndsExactlyWhereItsHighestValueIs) {
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

TEST(ImageLut, TheDefinitionIsTheConverterWhereThatHasAResult) {
  std::mt19937 random(21);
  for (const NamedTable& table : manyTables()) {
    SCOPED_TRACE(table.name);
    for (const auto& [from, to] : {std::pair{8, 8}, {10, 12}, {16, 16}, {16, 8}}) {
      const auto lut = ImageLut::forCodeValues(*table.file, from, to);
      const std::uint64_t most = (1U << static_cast<unsigned>(to)) - 1;
      for (int i = 0; i < 300; ++i) {
        const auto code = [&] { return static_cast<std::uint16_t>(random() % (1U << static_cast<unsigned>(from))); };
        const std::array<std::uint16_t, 3> input{code(), code(), code()};
        const auto expected = table.file->inputConverter().convertIfPossible(input[0], input[1], input[2], from, to);
        if (!expected) continue;
        const auto actual = lut->pixel(input[0], input[1], input[2]);
        EXPECT_EQ(actual[0], std::min(expected->red, most));
        EXPECT_EQ(actual[1], std::min(expected->green, most));
        EXPECT_EQ(actual[2], std::min(expected->blue, most));
      }
    }
  }
}

TEST(ImageLut, FloatingPointStaysNearTheDefinition) {
  std::mt19937 random(31);
  std::uniform_real_distribution<float> wide(-0.3F, 1.4F);
  constexpr std::size_t width = 700;
  std::vector<float> source(width * 3);
  for (float& sample : source) sample = wide(random);
  source[0] = NAN;
  source[4] = INFINITY;
  source[8] = -INFINITY;
  source[12] = 3e38F;
  source[16] = 1e-40F;
  for (const NamedTable& table : manyTables()) {
    SCOPED_TRACE(table.name);
    for (const ImageLutOptions& options : allOptions()) {
      const auto lut = ImageLut::forFloats(*table.file, options);
      const RGBSampleConverter& converter = table.file->inputConverter();
      const auto& range = dynamic_cast<const LutRGBSampleConverter&>(converter);
      onEveryInstructionSet([&] {
        std::vector<float> result(source.size());
        ASSERT_FALSE(lut.apply(ImageView<const float>::packed(Layout::rgb, source.data(), width, 1),
                               ImageView<float>::packed(Layout::rgb, result.data(), width, 1)));
        for (std::size_t i = 0; i < source.size(); i += 3) {
          const LutColor expected = lut.pixel(LutColor{source[i], source[i + 1], source[i + 2]});
          // Six digits of the largest value, on the scale of the results, and more where the cube is all noise.
          const auto* const integers = dynamic_cast<const UnsignedIntegerLutFile*>(table.file.get());
          const double unit = integers != nullptr ? std::ldexp(1.0, static_cast<int>(integers->bitDepth())) - 1 : 1;
          const double most = std::max(std::fabs(range.lowValue()), std::fabs(range.highValue())) / unit;
          const double tolerance =
              (table.name.find("noise") == std::string::npos ? 2e-6 : 5e-5) * std::max(most, 1e-30);
          const auto near = [&](float actual, double wanted) {
            return static_cast<double>(actual) == wanted || std::fabs(actual - wanted) <= tolerance;
          };
          ASSERT_TRUE(near(result[i], expected.red) && near(result[i + 1], expected.green) &&
                      near(result[i + 2], expected.blue))
              << source[i] << ' ' << source[i + 1] << ' ' << source[i + 2] << " gives " << result[i] << ' '
              << result[i + 1] << ' ' << result[i + 2] << ", not " << expected.red << ' ' << expected.green << ' '
              << expected.blue;
        }
      });
      if (HasFatalFailure()) return;
    }
  }
}

TEST(ImageLut, RedFastestIsTheTransposedCube) {
  std::mt19937 random(41);
  std::uniform_real_distribution<double> unit(0, 1);
  const auto colors =
      test::cubeColors(5, [&](double, double, double) { return LutColor{unit(random), unit(random), unit(random)}; });
  std::vector<LutColor> transposed(colors.size());
  for (std::size_t r = 0; r < 5; ++r) {
    for (std::size_t g = 0; g < 5; ++g) {
      for (std::size_t b = 0; b < 5; ++b) transposed[r + 5 * g + 25 * b] = colors[25 * r + 5 * g + b];
    }
  }
  const auto plain = ImageLut::forCodeValues(*test::cubeFile(colors), 10, 10);
  const auto published =
      ImageLut::forCodeValues(*test::cubeFile(transposed), 10, 10, {.axisOrder = LutAxisOrder::redFastest});
  for (int i = 0; i < 500; ++i) {
    const auto code = [&] { return static_cast<std::uint16_t>(random() % 1024); };
    const std::array<std::uint16_t, 3> input{code(), code(), code()};
    EXPECT_EQ(plain->pixel(input[0], input[1], input[2]), published->pixel(input[0], input[1], input[2]));
  }
}

TEST(ImageLut, TheDeclaredDomainIsWhatTheFileSaysOrAllValues) {
  // Doubles what it is asked, up to a highest value of 0.5.
  const auto dark = test::cubeColors(3, [](double r, double g, double b) { return LutColor{r / 2, g / 2, b / 2}; });
  const ImageLutOptions declared{.domain = LutInputDomain::declared};
  const auto at = [](const ParsedLutFile& file, const ImageLutOptions& options) {
    return ImageLut::forFloats(file, options).pixel(LutColor{0.25, 0.5, 1});
  };
  EXPECT_EQ(at(*test::cubeFile(dark), {}), (LutColor{0.25, 0.5, 0.5}));          // 0.5 is the axes' end
  EXPECT_EQ(at(*test::cubeFile(dark), declared), (LutColor{0.125, 0.25, 0.5}));  // 1 is
  const LutDeclaredDomain quarter{{0, 0, 0}, {0.25, 2, 1}, true};
  EXPECT_EQ(at(*test::cubeFile(dark, 0, quarter), declared), (LutColor{0.5, 0.125, 0.5}));
}

}  // namespace
}  // namespace meridian

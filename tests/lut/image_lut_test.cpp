#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_description.h"
#include "tests/lut/many_luts.h"

namespace meridian {
namespace {

TEST(ImageLut, TheDefinitionIsTheConverterWhereThatHasAResult) {
  std::mt19937 random(21);
  for (const test::NamedLut& named : test::manyLuts()) {
    SCOPED_TRACE(named.name);
    for (const auto& [from, to] : {std::pair{8, 8}, {10, 12}, {16, 16}, {16, 8}}) {
      const auto lut = ImageLut::forCodeValues(*named.file, from, to);
      const std::uint64_t most = (1U << static_cast<unsigned>(to)) - 1;
      for (int i = 0; i < 300; ++i) {
        const auto code = [&] { return static_cast<std::uint16_t>(random() % (1U << static_cast<unsigned>(from))); };
        const std::array<std::uint16_t, 3> input{code(), code(), code()};
        const auto expected = named.file->inputConverter().convertIfPossible(input[0], input[1], input[2], from, to);
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
  std::vector<test::NamedLut> luts = test::manyLuts();
  luts.push_back({"nearly the largest floats", test::cubeFile(test::cubeColors(4, [](double r, double g, double b) {
                    const double each = std::lround((r + g + b) * 3) % 2 == 0 ? 0 : 1.5e38;
                    return LutColor{each, each, each};
                  }))});
  for (const test::NamedLut& named : luts) {
    SCOPED_TRACE(named.name);
    for (const ImageLutOptions& options : test::allOptions()) {
      const auto lut = ImageLut::forFloats(*named.file, options);
      const LutDescription description = describe(*named.file);
      const bool isIntegerCube = description.valueBitDepth && description.dimensions == LutDimensions::cube;
      const double unit = isIntegerCube ? std::ldexp(1.0, static_cast<int>(*description.valueBitDepth)) - 1 : 1;
      test::onEveryInstructionSet([&] {
        std::vector<float> result(source.size());
        ASSERT_TRUE(lut.apply(ImageView<const float>::packed(ImageLayout::rgb, source.data(), width, 1),
                              ImageView<float>::packed(ImageLayout::rgb, result.data(), width, 1)));
        for (std::size_t i = 0; i < source.size(); i += 3) {
          const LutColor expected = lut.pixel(LutColor{source[i], source[i + 1], source[i + 2]});
          // Six digits of the largest value, on the scale of the results, and more where the cube is all noise.
          const double most = std::max(std::fabs(description.lowValue), std::fabs(description.highValue)) / unit;
          const double tolerance =
              (named.name.find("noise") == std::string::npos ? 2e-6 : 5e-5) * std::max(most, 1e-30);
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

TEST(ImageLut, FloatingPointIsRightWhereSinglePrecisionIsNotEnough) {
  const auto withNan =
      test::cubeColors(2, [](double r, double g, double b) { return LutColor{r + g + b > 2.5 ? NAN : r, g, b}; });
  std::mt19937 random(37);
  std::uniform_real_distribution<double> unit(0, 1);
  const auto noise =
      test::cubeColors(8, [&](double, double, double) { return LutColor{unit(random), unit(random), unit(random)}; });
  const auto shared = [](const std::vector<LutColor>& colors) {
    return std::make_shared<const std::vector<LutColor>>(colors);
  };
  const LutDeclaredDomain farOff{{1000, 1000, 1000}, {1000.001, 1000.001, 1000.001}, true};
  for (const LutCubeStage& stage : {LutCubeStage{2, shared(withNan)}, LutCubeStage{8, shared(noise), farOff}}) {
    const PublishedLut lut{.stages = {stage}};
    const double low = stage.domain.minimum.red;
    std::vector<float> source(96);
    for (std::size_t i = 0; i < source.size(); ++i) {
      source[i] = static_cast<float>(low + (stage.domain.maximum.red - low) * static_cast<double>(i) / 95);
    }
    const ImageLut prepared = ImageLut::forFloats(lut);
    test::onEveryInstructionSet([&] {
      std::vector<float> result(source.size());
      ASSERT_TRUE(prepared.apply(ImageView<const float>::packed(ImageLayout::rgb, source.data(), 32, 1),
                                 ImageView<float>::packed(ImageLayout::rgb, result.data(), 32, 1)));
      for (std::size_t i = 0; i < source.size(); i += 3) {
        const LutColor expected = prepared.pixel(LutColor{source[i], source[i + 1], source[i + 2]});
        EXPECT_NEAR(result[i], expected.red, 1e-5) << source[i];
        EXPECT_NEAR(result[i + 1], expected.green, 1e-5) << source[i];
        EXPECT_NEAR(result[i + 2], expected.blue, 1e-5) << source[i];
      }
    });
  }
}

TEST(ImageLut, AColorHasOneFloatingPointResultHoweverManyPixelsAreConverted) {
  std::mt19937 random(43);
  std::uniform_real_distribution<double> unit(0, 1);
  const auto colors =
      test::cubeColors(5, [&](double, double, double) { return LutColor{unit(random), unit(random), unit(random)}; });
  constexpr std::size_t pixels = 20000;  // enough for the cells of a cube
  std::vector<float> source(pixels * 3);
  for (float& sample : source) sample = static_cast<float>(unit(random));
  test::onEveryInstructionSet([&] {
    const ImageLut lut = ImageLut::forFloats(*test::cubeFile(colors));
    std::vector<float> single(source.size());
    for (std::size_t i = 0; i < source.size(); i += 3) {
      ASSERT_TRUE(lut.apply(ImageView<const float>::packed(ImageLayout::rgb, source.data() + i, 1, 1),
                            ImageView<float>::packed(ImageLayout::rgb, single.data() + i, 1, 1)));
    }
    std::vector<float> together(source.size());
    ASSERT_TRUE(lut.apply(ImageView<const float>::packed(ImageLayout::rgb, source.data(), pixels, 1),
                          ImageView<float>::packed(ImageLayout::rgb, together.data(), pixels, 1)));
    EXPECT_TRUE(single == together);
  });
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
  // Halves its input, up to a highest value of 0.5.
  const auto dark = test::cubeColors(3, [](double r, double g, double b) { return LutColor{r / 2, g / 2, b / 2}; });
  const ImageLutOptions declared{.domain = LutInputDomain::declared};
  const auto at = [](const ParsedLutFile& file, const ImageLutOptions& options) {
    return ImageLut::forFloats(file, options).pixel(LutColor{0.25, 0.5, 1});
  };
  EXPECT_EQ(at(*test::cubeFile(dark), {}), (LutColor{0.25, 0.5, 0.5}));          // the axes end at 0.5
  EXPECT_EQ(at(*test::cubeFile(dark), declared), (LutColor{0.125, 0.25, 0.5}));  // at 1
  const LutDeclaredDomain quarter{{0, 0, 0}, {0.25, 2, 1}, true};
  EXPECT_EQ(at(*test::cubeFile(dark, {}, quarter), declared), (LutColor{0.5, 0.125, 0.5}));
}

}  // namespace
}  // namespace meridian

#include "meridian/lut/lut_description.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "meridian/lut/bit_depth.h"
#include "tests/lut/many_luts.h"

namespace meridian {
namespace {

LutColor scaled(double r, double g, double b, double scale) {
  return {std::round(r * scale), std::round(g * scale), std::round(b * scale)};
}

TEST(LutDescription, SaysWhatEachKindOfFileHolds) {
  const LutDeclaredDomain domain{{0, 0, 0}, {2, 2, 2}, true};
  const auto identity = test::cubeColors(17, [](double r, double g, double b) { return LutColor{r, g, b}; });
  const LutDescription floats{.dimensions = LutDimensions::cube,
                              .valueType = LutValueType::floatingPoint,
                              .size = 17,
                              .rows = 4913,
                              .lowValue = 0,
                              .highValue = 1,
                              .declaredDomain = domain};
  EXPECT_EQ(describe(*test::cubeFile(identity, {}, domain)), floats);

  auto codes = test::cubeColors(5, [](double r, double g, double b) { return scaled(r, g, b, 1023); });
  codes.resize(120);  // of 125: the cube fills what is missing
  const LutDescription integers{.dimensions = LutDimensions::cube,
                                .valueType = LutValueType::integer,
                                .size = 5,
                                .rows = 120,
                                .inputBitDepth = 10,
                                .valueBitDepth = 10,
                                .lowValue = 0,
                                .highValue = 1023};
  EXPECT_EQ(describe(*test::cubeFile(codes, 10)), integers);

  std::vector<LutColor> curve;
  for (int row = 0; row < 1024; ++row) curve.push_back(scaled(row / 1023.0, 1, 0.5, 4095));
  const Url url = Url::fromFilePath("/made.lut");
  const ParsedLutFactory::ParsedOneDimensionLutFile table(
      url, {}, std::make_unique<OneDimensionsUnsignedIntegerConverter>(test::rowsOf(curve)));
  const LutDescription integerTable{.dimensions = LutDimensions::oneD,
                                    .valueType = LutValueType::integer,
                                    .size = 1024,
                                    .rows = 1024,
                                    .inputBitDepth = 10,
                                    .valueBitDepth = 12,
                                    .lowValue = 0,
                                    .highValue = 4095};
  EXPECT_EQ(describe(table), integerTable);

  const ParsedLutFactory::ParsedOneDimensionLutFile floatTable(
      url, domain, std::make_unique<OneDimensionFloatingPointConverter>(test::rowsOf(curve), -0.5, 1.5));
  const LutDescription expected{.dimensions = LutDimensions::oneD,
                                .valueType = LutValueType::floatingPoint,
                                .size = 1024,
                                .rows = 1024,
                                .lowValue = -0.5,
                                .highValue = 1.5,
                                .declaredDomain = domain};
  EXPECT_EQ(describe(floatTable), expected);
}

TEST(LutDescription, WhatCanBeConvertedHasAResultForEverySample) {
  std::mt19937_64 random(111);
  for (const test::NamedLut& named : test::manyLuts()) {
    const LutDescription description = describe(*named.file);
    for (const int from : {1, 8, 16, 40, 63}) {
      for (const int to : {1, 10, 34, 63, 64, 70}) {
        SCOPED_TRACE(testing::Message() << named.name << ", " << from << " to " << to << " bits");
        bool hasAllResults = true;
        for (int i = 0; i < 60; ++i) {
          const std::uint64_t most = largestCodeValue(from);
          const auto code = [&] { return i == 0 ? 0 : i == 1 ? most : random() & most; };
          const std::uint64_t red = code();
          const std::uint64_t green = code();
          hasAllResults =
              named.file->inputConverter().convertIfPossible(red, green, code(), from, to).has_value() && hasAllResults;
        }
        if (canConvertAll(description, to)) {
          EXPECT_TRUE(hasAllResults);
        } else if (to < 64 && from > 1) {
          EXPECT_FALSE(hasAllResults);
        }
      }
    }
  }
}

}  // namespace
}  // namespace meridian

#include <gtest/gtest.h>

#include "tests/lut/lut_files.h"

namespace meridian {
namespace {

TEST(LutCube, RowsFillTheLatticeBlueFirst) {
  const auto colors = test::cubeColors(3, [](double r, double g, double b) { return LutColor{r, g, b}; });
  const LutCube cube(test::rowsOf(colors), 0, 1);
  ASSERT_EQ(cube.faceSize(), 3);
  for (std::size_t r = 0; r < 3; ++r) {
    for (std::size_t g = 0; g < 3; ++g) {
      for (std::size_t b = 0; b < 3; ++b) {
        const LutColor expected{static_cast<double>(r) / 2, static_cast<double>(g) / 2, static_cast<double>(b) / 2};
        EXPECT_EQ(cube.lattice()[r][g][b], expected);
      }
    }
  }
}

TEST(LutCube, MissingPointsGetTheLowestValueAndSurplusRowsAreNotRead) {
  std::vector<LutColor> colors(25, LutColor{0.5, 0.25, 0.75});
  const auto few = test::cubeOf(colors);  // of 27 points
  EXPECT_EQ(few->faceSize(), 3);
  EXPECT_EQ(few->lattice()[2][2][0], colors[24]);
  EXPECT_EQ(few->lattice()[2][2][2], (LutColor{0.25, 0.25, 0.25}));
  EXPECT_EQ(few->lowValue(), 0.25);
  EXPECT_EQ(few->highValue(), 0.75);
  colors.resize(30, LutColor{9, 9, 9});
  EXPECT_EQ(test::cubeOf(colors)->highValue(), 9);
  colors.resize(27);
  colors.insert(colors.end(), 3, LutColor{20, 20, 20});
  EXPECT_EQ(test::cubeOf(colors)->faceSize(), 3);
  EXPECT_EQ(test::cubeOf(colors)->highValue(), 9);
  const LutCube empty(test::rowsOf({}));
  EXPECT_EQ(empty.faceSize(), 0);
  EXPECT_EQ(empty.lowValue(), 0);
  EXPECT_EQ(empty.highValue(), 0);
}

}  // namespace
}  // namespace meridian

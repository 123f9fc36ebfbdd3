// The tables of the engine that need no media.
#include <gtest/gtest.h>

#include "meridian/engine/color_spaces.h"

namespace meridian {
namespace {

TEST(ColorSpaceTest, IsFoundByItsCodePointsAndByEqualOnes) {
  for (const ColorSpaceRow& row : colorSpaceRows) {
    EXPECT_EQ(colorSpaceCodes(row.value), row.codes);
    EXPECT_EQ(colorSpaceOf(row.codes), row.value);
  }
  EXPECT_EQ(colorSpaceRows.size(), SAVTranscodeArgumentColorSpaceValue::allCases().size());
  EXPECT_EQ(colorSpaceOf({1, 6, 1}), SAVRec709ColorSpace);
  EXPECT_EQ(colorSpaceOf({9, 15, 9}), SAVRec2020ColorSpace);
  EXPECT_EQ(colorSpaceOf({5, 6, 5}), SAVEbu3213ColorSpace);
  EXPECT_EQ(colorSpaceOf({1, 13, 0}), SAVSrgbColorSpace);
  for (const ColorSpaceCodes& codes : {ColorSpaceCodes{}, {1, 1, 2}, {9, 16, 9}, {1, 1, 0}, {0, 0, 0}}) {
    EXPECT_EQ(colorSpaceOf(codes), std::nullopt);
  }
  EXPECT_EQ(colorSpaceCodes(SAVTranscodeArgumentColorSpaceValue("srgb")), std::nullopt);
}

}  // namespace
}  // namespace meridian

#include "meridian/media/video_dimension.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <unordered_set>

namespace meridian {
namespace {

TEST(VideoDimension, HasTextsAndSizes) {
  struct Case {
    VideoDimension dimension;
    std::string description, pickerDescription, tag;
    Size size, previewSize;
  };
  const Case cases[]{
      {VideoDimension::scaled(0.9), "Custom: 90.0%", "Custom Scale", "scaled", {0.9, 0.9}, {1920, 1080}},
      {VideoDimension::scaled(0), "Custom Scale", "Custom Scale", "scaled", {0, 0}, {1920, 1080}},
      {VideoDimension::custom(400, 400),
       "Custom: 400.0 x 400.0",
       "Custom Dimensions",
       "custom",
       {400, 400},
       {400, 400}},
      {VideoDimension::custom(0, 1080), "Custom Dimensions", "Custom Dimensions", "custom", {0, 1080}, {0, 1080}},
      {VideoDimension::match, "Match", "Match", "Match", {0, 0}, {1920, 1080}},
      {VideoDimension::fourK,
       "4K UHD (3840 x 2160)",
       "4K UHD (3840 x 2160)",
       "4K UHD (3840 x 2160)",
       {3840, 2160},
       {3840, 2160}}};
  for (const auto& [dimension, description, pickerDescription, tag, size, previewSize] : cases) {
    EXPECT_EQ(dimension.description(), description);
    EXPECT_EQ(dimension.pickerDescription(), pickerDescription);
    EXPECT_EQ(dimension.tag(), tag);
    EXPECT_EQ(dimension.size(), size) << description;
    EXPECT_EQ(dimension.previewSize(), previewSize) << description;
  }
}

TEST(VideoDimension, ListsAndFilters) {
  for (const VideoDimension& each : VideoDimension::scaleOptions()) EXPECT_TRUE(each.isScaleOption());
  for (const VideoDimension& each : VideoDimension::exactDimensionsOptions()) EXPECT_FALSE(each.isScaleOption());
  const VideoDimension list[]{
      VideoDimension::custom(400, 400), VideoDimension::scaled(0.3), VideoDimension::fourK,
      VideoDimension::scaled(0.9),      VideoDimension::match,       VideoDimension::custom(4, 4)};
  EXPECT_EQ(VideoDimension::filterScaleOptions(list),
            (std::vector{VideoDimension::scaled(0.9), VideoDimension::match}));
  EXPECT_EQ(VideoDimension::filterExactDimensionsOptions(list),
            (std::vector{VideoDimension::custom(400, 400), VideoDimension::fourK}));

  EXPECT_EQ(VideoDimension::allAllowedOptions(ConversionCodecType::dnxhd),
            (std::vector{VideoDimension::match, VideoDimension::sevenTwentyP, VideoDimension::tenEightyP}));
  const auto all = VideoDimension::allAllowedOptions(ConversionCodecType::proRes4444XQ);
  EXPECT_EQ(all.size(), 14U);
  EXPECT_EQ(std::unordered_set<VideoDimension>(all.begin(), all.end()).size(), all.size());
}

TEST(VideoDimension, ReadsStoredNumbersExactly) {
  for (const VideoDimension& each : VideoDimension::allCases()) {
    EXPECT_EQ(VideoDimension::fromStored(each.sizing(), each.size()), each) << each.description();
  }
  constexpr auto match = VideoSizingKind::match;
  constexpr auto scale = VideoSizingKind::scale;
  constexpr auto pixels = VideoSizingKind::pixels;
  constexpr double infinity = std::numeric_limits<double>::infinity();
  struct Case {
    VideoSizingKind sizing;
    Size size;
    std::optional<VideoDimension> dimension;
  };
  const Case cases[]{
      {pixels, {0.5, 0.5}, VideoDimension::custom(0.5, 0.5)},
      {pixels, {std::nextafter(1920.0, 0), 1080}, VideoDimension::custom(std::nextafter(1920.0, 0), 1080)},
      {pixels, {1080, 1920}, VideoDimension::custom(1080, 1920)},
      {scale, {0.3, 0.3}, VideoDimension::scaled(0.3)},
      {scale, {2, 2}, VideoDimension::scaled(2)},
      {pixels, {0, 0}, {}},
      {pixels, {1920, 0}, {}},
      {pixels, {-1920, -1080}, {}},
      {pixels, {infinity, 1080}, {}},
      {pixels, {std::nan(""), 1080}, {}},
      {scale, {0, 0}, {}},
      {scale, {0.5, 0.25}, {}},
      {scale, {-1, -1}, {}},
      {match, {1920, 1080}, {}},
      {match, {0.5, 0.5}, {}}};
  for (const auto& [sizing, size, dimension] : cases) {
    EXPECT_EQ(VideoDimension::fromStored(sizing, size), dimension) << size.width << " x " << size.height;
  }
}

}  // namespace
}  // namespace meridian

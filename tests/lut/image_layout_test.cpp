#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <thread>

#include "meridian/lut/image_lut.h"
#include "tests/lut/lut_files.h"

namespace meridian {
namespace {

using Layout = ImageLayout;

struct Image {
  std::size_t width;
  std::size_t height;
  Layout source;
  Layout destination;
  std::ptrdiff_t extra;  // samples between rows
  bool upwards;
};

/// The samples of an image in a layout with gaps, filled with a value that has to stay in the gaps.
template <typename Sample>
struct Samples {
  Samples(const Image& image, Layout layout, int bitDepth) {
    const std::size_t perPixel = ImageView<Sample>::samplesPerPixel(layout);
    const std::size_t stride = image.width * perPixel + static_cast<std::size_t>(image.extra);
    const std::size_t plane = stride * image.height + 5;
    memory.assign(plane * 3, static_cast<Sample>(77));
    view = {layout,
            {memory.data(), nullptr, nullptr},
            image.width,
            image.height,
            static_cast<std::ptrdiff_t>(stride * sizeof(Sample)),
            bitDepth};
    if (layout == Layout::planar) view.planes = {memory.data(), memory.data() + plane, memory.data() + 2 * plane};
    if (image.upwards) {
      for (Sample*& first : view.planes) {
        if (first != nullptr) first += stride * (image.height - 1);
      }
      view.rowStride = -view.rowStride;
    }
  }

  Sample& at(std::size_t row, std::size_t column, std::size_t channel) {
    const std::ptrdiff_t from = view.rowDistance() * static_cast<std::ptrdiff_t>(row);
    if (view.layout == Layout::planar) return view.planes[channel][from + static_cast<std::ptrdiff_t>(column)];
    const std::size_t perPixel = view.samplesPerPixel(view.layout);
    return view.planes[0][from + static_cast<std::ptrdiff_t>(column * perPixel + channel)];
  }

  std::vector<Sample> memory;
  ImageView<Sample> view;
};

template <typename Sample>
void checkImage(const ParsedLutFile& file, const Image& image, int from, int to) {
  Samples<Sample> source(image, image.source, from);
  Samples<Sample> destination(image, image.destination, to);
  Samples<Sample> expected(image, image.destination, to);
  std::mt19937 random(51);
  const auto sample = [&] {
    if constexpr (std::is_same_v<Sample, float>) return static_cast<float>(random() % 4096) / 4095;
    return static_cast<Sample>(random() % (1U << static_cast<unsigned>(from)));
  };
  std::optional<ImageLut> lut;
  if constexpr (std::is_same_v<Sample, float>) {
    lut = ImageLut::forFloats(file);
  } else {
    lut = ImageLut::forCodeValues(file, from, to);
  }
  for (std::size_t row = 0; row < image.height; ++row) {
    for (std::size_t column = 0; column < image.width; ++column) {
      std::array<Sample, 4> input{};
      for (std::size_t channel = 0; channel < (image.source == Layout::rgba ? 4U : 3U); ++channel) {
        input[channel] = sample();
        source.at(row, column, channel) = input[channel];
      }
      // What one pixel on its own becomes.
      std::array<Sample, 4> output{};
      const auto one = ImageView<const Sample>::packed(image.source == Layout::rgba ? Layout::rgba : Layout::rgb,
                                                       input.data(), 1, 1, from);
      const auto into = ImageView<Sample>::packed(image.destination == Layout::rgba ? Layout::rgba : Layout::rgb,
                                                  output.data(), 1, 1, to);
      ASSERT_FALSE(lut->apply(one, into));
      for (std::size_t channel = 0; channel < (image.destination == Layout::rgba ? 4U : 3U); ++channel) {
        expected.at(row, column, channel) = output[channel];
      }
      if (image.destination != Layout::rgba) continue;
      if constexpr (std::is_same_v<Sample, float>) {
        ASSERT_EQ(output[3], image.source == Layout::rgba ? input[3] : 1);
      } else {
        const unsigned opaque = (1U << static_cast<unsigned>(to)) - 1;
        const unsigned alpha = to > from ? static_cast<unsigned>(input[3]) << (to - from) : input[3] >> (from - to);
        ASSERT_EQ(output[3], image.source == Layout::rgba ? alpha : opaque);
      }
    }
  }
  const std::vector<Sample> before = source.memory;
  for (const unsigned threads : {1U, 2U, 5U, 0U}) {
    std::ranges::fill(destination.memory, static_cast<Sample>(77));
    ASSERT_FALSE(lut->apply(source.view, destination.view, threads));
    EXPECT_EQ(destination.memory, expected.memory);
    EXPECT_EQ(source.memory, before);
  }
  if (image.source != image.destination || from != to) return;
  // In place, and with the rows shared among threads of the caller.
  {
    std::jthread upper([&] { ASSERT_FALSE(lut->apply(source.view.rows(0, 3), source.view.rows(0, 3))); });
    ASSERT_FALSE(lut->apply(source.view.rows(3, SIZE_MAX), source.view.rows(3, SIZE_MAX)));
  }
  EXPECT_EQ(source.memory, expected.memory);
}

TEST(ImageLayouts, LayoutsStridesAndThreadsChangeNoPixel) {
  std::mt19937 random(61);
  std::uniform_real_distribution<double> unit(0, 1);
  const auto cube = test::cubeFile(test::cubeColors(9, [&](double r, double g, double b) {
    return LutColor{std::min(1.0, r + 0.3 * unit(random)), g * b, unit(random)};
  }));
  std::vector<LutColor> curve;
  for (int i = 0; i < 256; ++i) curve.push_back({unit(random), unit(random), unit(random)});
  const ParsedLutFactory::ParsedOneDimensionLutFile table(
      Url::fromFilePath("/made.lut"), {},
      std::make_unique<OneDimensionFloatingPointConverter>(test::rowsOf(curve), 0, 1));
  for (const ParsedLutFile* file : {cube.get(), static_cast<const ParsedLutFile*>(&table)}) {
    for (const Layout from : {Layout::rgb, Layout::rgba, Layout::planar}) {
      for (const Layout to : {Layout::rgb, Layout::rgba, Layout::planar}) {
        for (const Image& image :
             {Image{1, 1, from, to, 0, false}, Image{7, 5, from, to, 0, true}, Image{300, 4, from, to, 3, false},
              Image{64, 9, from, to, 1, true}, Image{256, 2, from, to, 0, false}}) {
          checkImage<std::uint8_t>(*file, image, 8, 8);
          checkImage<std::uint16_t>(*file, image, 16, 16);
          checkImage<std::uint16_t>(*file, image, 10, 12);
          checkImage<float>(*file, image, 32, 32);
          ASSERT_FALSE(HasFailure());
        }
      }
    }
  }
}

TEST(ImageLayouts, UnusableImagesAreRefusedUntouched) {
  const auto cube = test::cubeFile(test::cubeColors(3, [](double, double, double) { return LutColor{1, 1, 1}; }));
  std::vector<std::uint16_t> samples(60, 5);
  using View = ImageView<std::uint16_t>;
  const View good = View::packed(Layout::rgb, samples.data(), 5, 4, 10);
  const auto with = [&](const auto& change) {
    View view = good;
    change(view);
    return view;
  };
  const std::pair<View, ImageErrorCode> cases[] = {
      {with([](View& view) { view.planes[0] = nullptr; }), ImageErrorCode::noSamples},
      {with([](View& view) { view.layout = Layout::planar; }), ImageErrorCode::noSamples},
      {with([](View& view) { view.rowStride = 28; }), ImageErrorCode::unusableStride},
      {with([](View& view) { view.rowStride = 31; }), ImageErrorCode::unusableStride},
      {with([](View& view) { view.rowStride = 0; }), ImageErrorCode::unusableStride},
      {with([](View& view) { view.width = 4; }), ImageErrorCode::unequalSizes},
      {with([](View& view) { view.height = 3; }), ImageErrorCode::unequalSizes},
      {with([](View& view) { view.bitDepth = 0; }), ImageErrorCode::unusableBitDepth},
      {with([](View& view) { view.bitDepth = 17; }), ImageErrorCode::unusableBitDepth},
      {with([](View& view) { view.bitDepth = 12; }), ImageErrorCode::otherBitDepth},
  };
  const auto lut = ImageLut::forCodeValues(*cube, 10, 10);
  for (const auto& [view, fault] : cases) {
    EXPECT_EQ(lut->apply(good, view), fault) << rawValue(fault);
    EXPECT_EQ(lut->apply(view, good), fault) << rawValue(fault);
  }
  EXPECT_THAT(samples, testing::Each(5));
  EXPECT_EQ(applyLut(*cube, with([](View& view) { view.bitDepth = 0; }), good), ImageErrorCode::unusableBitDepth);
  for (const int depth : {0, -1, 17, 64}) EXPECT_FALSE(ImageLut::forCodeValues(*cube, depth, 8));
  std::vector<float> floats(60);
  EXPECT_EQ(lut->apply(ImageView<const float>::packed(Layout::rgb, floats.data(), 5, 4),
                       ImageView<float>::packed(Layout::rgb, floats.data(), 5, 4)),
            ImageErrorCode::otherBitDepth);
  // Nothing to do is done.
  EXPECT_FALSE(lut->apply(View::packed(Layout::rgb, nullptr, 0, 4, 10), View::packed(Layout::rgb, nullptr, 0, 4, 10)));
  EXPECT_FALSE(applyLut(*cube, good, good));
  EXPECT_THAT(samples, testing::Each(1023));
}

}  // namespace
}  // namespace meridian

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <thread>

#include "meridian/lut/picture_lut.h"
#include "tests/lut/lut_files.h"

namespace meridian {
namespace {

using Layout = PictureLayout;

struct Picture {
  std::size_t width;
  std::size_t height;
  Layout source;
  Layout destination;
  std::ptrdiff_t extra;  // samples between rows
  bool upwards;
};

/// The samples of a picture in a layout with gaps, filled with a value that has to stay in the gaps.
template <typename Sample>
struct Samples {
  Samples(const Picture& picture, Layout layout, int bitDepth) {
    const std::size_t perPixel = PictureView<Sample>::samplesPerPixel(layout);
    const std::size_t stride = picture.width * perPixel + static_cast<std::size_t>(picture.extra);
    const std::size_t plane = stride * picture.height + 5;
    memory.assign(plane * 3, static_cast<Sample>(77));
    view = {layout,
            {memory.data(), nullptr, nullptr},
            picture.width,
            picture.height,
            static_cast<std::ptrdiff_t>(stride * sizeof(Sample)),
            bitDepth};
    if (layout == Layout::planar) view.planes = {memory.data(), memory.data() + plane, memory.data() + 2 * plane};
    if (picture.upwards) {
      for (Sample*& first : view.planes) {
        if (first != nullptr) first += stride * (picture.height - 1);
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
  PictureView<Sample> view;
};

template <typename Sample>
void checkPicture(const ParsedLutFile& file, const Picture& picture, int from, int to) {
  Samples<Sample> source(picture, picture.source, from);
  Samples<Sample> destination(picture, picture.destination, to);
  Samples<Sample> expected(picture, picture.destination, to);
  std::mt19937 random(51);
  const auto sample = [&] {
    if constexpr (std::is_same_v<Sample, float>) return static_cast<float>(random() % 4096) / 4095;
    return static_cast<Sample>(random() % (1U << static_cast<unsigned>(from)));
  };
  std::optional<PictureLut> lut;
  if constexpr (std::is_same_v<Sample, float>) {
    lut = PictureLut::forFloats(file);
  } else {
    lut = PictureLut::forCodeValues(file, from, to);
  }
  for (std::size_t row = 0; row < picture.height; ++row) {
    for (std::size_t column = 0; column < picture.width; ++column) {
      std::array<Sample, 4> input{};
      for (std::size_t channel = 0; channel < (picture.source == Layout::rgba ? 4U : 3U); ++channel) {
        input[channel] = sample();
        source.at(row, column, channel) = input[channel];
      }
      // What one pixel on its own becomes.
      std::array<Sample, 4> output{};
      const auto one = PictureView<const Sample>::packed(picture.source == Layout::rgba ? Layout::rgba : Layout::rgb,
                                                         input.data(), 1, 1, from);
      const auto into = PictureView<Sample>::packed(picture.destination == Layout::rgba ? Layout::rgba : Layout::rgb,
                                                    output.data(), 1, 1, to);
      ASSERT_FALSE(lut->apply(one, into));
      for (std::size_t channel = 0; channel < (picture.destination == Layout::rgba ? 4U : 3U); ++channel) {
        expected.at(row, column, channel) = output[channel];
      }
      if (picture.destination != Layout::rgba) continue;
      if constexpr (std::is_same_v<Sample, float>) {
        ASSERT_EQ(output[3], picture.source == Layout::rgba ? input[3] : 1);
      } else {
        const unsigned opaque = (1U << static_cast<unsigned>(to)) - 1;
        const unsigned alpha = to > from ? static_cast<unsigned>(input[3]) << (to - from) : input[3] >> (from - to);
        ASSERT_EQ(output[3], picture.source == Layout::rgba ? alpha : opaque);
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
  if (picture.source != picture.destination || from != to) return;
  // In place, and with the rows shared among threads of the caller.
  {
    std::jthread upper([&] { ASSERT_FALSE(lut->apply(source.view.rows(0, 3), source.view.rows(0, 3))); });
    ASSERT_FALSE(lut->apply(source.view.rows(3, SIZE_MAX), source.view.rows(3, SIZE_MAX)));
  }
  EXPECT_EQ(source.memory, expected.memory);
}

TEST(PictureLayouts, LayoutsStridesAndThreadsChangeNoPixel) {
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
        for (const Picture& picture :
             {Picture{1, 1, from, to, 0, false}, Picture{7, 5, from, to, 0, true}, Picture{300, 4, from, to, 3, false},
              Picture{64, 9, from, to, 1, true}, Picture{256, 2, from, to, 0, false}}) {
          checkPicture<std::uint8_t>(*file, picture, 8, 8);
          checkPicture<std::uint16_t>(*file, picture, 16, 16);
          checkPicture<std::uint16_t>(*file, picture, 10, 12);
          checkPicture<float>(*file, picture, 32, 32);
          ASSERT_FALSE(HasFailure());
        }
      }
    }
  }
}

TEST(PictureLayouts, UnusablePicturesAreRefusedUntouched) {
  const auto cube = test::cubeFile(test::cubeColors(3, [](double, double, double) { return LutColor{1, 1, 1}; }));
  std::vector<std::uint16_t> samples(60, 5);
  using View = PictureView<std::uint16_t>;
  const View good = View::packed(Layout::rgb, samples.data(), 5, 4, 10);
  const auto with = [&](const auto& change) {
    View view = good;
    change(view);
    return view;
  };
  const std::pair<View, PictureFault> cases[] = {
      {with([](View& view) { view.planes[0] = nullptr; }), PictureFault::noSamples},
      {with([](View& view) { view.layout = Layout::planar; }), PictureFault::noSamples},
      {with([](View& view) { view.rowStride = 28; }), PictureFault::unusableStride},
      {with([](View& view) { view.rowStride = 31; }), PictureFault::unusableStride},
      {with([](View& view) { view.rowStride = 0; }), PictureFault::unusableStride},
      {with([](View& view) { view.width = 4; }), PictureFault::unequalSizes},
      {with([](View& view) { view.height = 3; }), PictureFault::unequalSizes},
      {with([](View& view) { view.bitDepth = 0; }), PictureFault::unusableBitDepth},
      {with([](View& view) { view.bitDepth = 17; }), PictureFault::unusableBitDepth},
      {with([](View& view) { view.bitDepth = 12; }), PictureFault::otherBitDepth},
  };
  const auto lut = PictureLut::forCodeValues(*cube, 10, 10);
  for (const auto& [view, fault] : cases) {
    EXPECT_EQ(lut->apply(good, view), fault) << rawValue(fault);
    EXPECT_EQ(lut->apply(view, good), fault) << rawValue(fault);
  }
  EXPECT_THAT(samples, testing::Each(5));
  EXPECT_EQ(applyLut(*cube, with([](View& view) { view.bitDepth = 0; }), good), PictureFault::unusableBitDepth);
  for (const int depth : {0, -1, 17, 64}) EXPECT_FALSE(PictureLut::forCodeValues(*cube, depth, 8));
  std::vector<float> floats(60);
  EXPECT_EQ(lut->apply(PictureView<const float>::packed(Layout::rgb, floats.data(), 5, 4),
                       PictureView<float>::packed(Layout::rgb, floats.data(), 5, 4)),
            PictureFault::otherBitDepth);
  // Nothing to do is done.
  EXPECT_FALSE(lut->apply(View::packed(Layout::rgb, nullptr, 0, 4, 10), View::packed(Layout::rgb, nullptr, 0, 4, 10)));
  EXPECT_FALSE(applyLut(*cube, good, good));
  EXPECT_THAT(samples, testing::Each(1023));
}

}  // namespace
}  // namespace meridian

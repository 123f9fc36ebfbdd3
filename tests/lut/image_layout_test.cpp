#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <thread>

#include "meridian/lut/image_lut.h"
#include "tests/lut/lut_files.h"
#include "tests/lut/many_luts.h"

namespace meridian {
namespace {

/// How the samples of a test image are arranged: the channels in memory order, together or each in a plane.
struct Arrangement {
  std::string channels;  // of "R", "G", "B", "A" and "x", which is unused
  bool isPlanar = false;

  [[nodiscard]] bool hasAlpha() const { return channels.find('A') != std::string::npos; }
};

struct Image {
  std::size_t width;
  std::size_t height;
  Arrangement source;
  Arrangement destination;
  std::ptrdiff_t extra;  // samples between rows; one more for each plane after the first
  bool upwards;
};

/// The samples of an image with gaps, filled with a value that has to stay in the gaps.
template <typename Sample>
struct Samples {
  Samples(const Image& image, const Arrangement& arrangement, int bitDepth) {
    const std::size_t perPixel = arrangement.isPlanar ? 1 : arrangement.channels.size();
    view = {.width = image.width, .height = image.height, .format = bitDepth};
    memory.assign((image.width * perPixel + static_cast<std::size_t>(image.extra) + 9) * image.height * 5,
                  static_cast<Sample>(77));
    Sample* next = memory.data() + 2;
    for (std::size_t place = 0; place < arrangement.channels.size(); ++place) {
      const std::size_t channel = std::string_view("RGBA").find(arrangement.channels[place]);
      if (channel == std::string_view::npos) continue;
      const std::size_t stride =
          image.width * perPixel + static_cast<std::size_t>(image.extra) + (arrangement.isPlanar ? place : 0);
      ImagePlane<Sample>& plane = view.planes[channel];
      plane = {.samples = arrangement.isPlanar ? next : next + place,
               .rowStride = static_cast<std::ptrdiff_t>(stride * sizeof(Sample)),
               .pixelStride = static_cast<std::ptrdiff_t>(perPixel * sizeof(Sample))};
      if (arrangement.isPlanar) next += stride * image.height;
      if (image.upwards) {
        plane.samples += stride * (image.height - 1);
        plane.rowStride = -plane.rowStride;
      }
    }
  }

  Sample& at(std::size_t row, std::size_t column, std::size_t channel) { return *view.planes[channel].at(row, column); }

  std::vector<Sample> memory;
  ImageView<Sample> view;
};

/// Returns what one pixel on its own becomes.
template <typename Sample>
std::array<Sample, 4> converted(const ImageLut& lut, const std::array<Sample, 4>& input, const Image& image, int from,
                                int to) {
  std::array<Sample, 4> output{};
  const auto layoutOf = [](const Arrangement& each) { return each.hasAlpha() ? ImageLayout::rgba : ImageLayout::rgb; };
  const auto one = ImageView<const Sample>::packed(layoutOf(image.source), input.data(), 1, 1, from);
  const auto into = ImageView<Sample>::packed(layoutOf(image.destination), output.data(), 1, 1, to);
  EXPECT_TRUE(lut.apply(one, into));
  if (!image.destination.hasAlpha()) return output;
  if constexpr (std::is_same_v<Sample, float>) {
    EXPECT_EQ(output[3], image.source.hasAlpha() ? input[3] : 1);
  } else {
    const unsigned opaque = (1U << static_cast<unsigned>(to)) - 1;
    const auto given = static_cast<unsigned>(input[3]);
    const unsigned alpha = to > from ? given << (to - from) : given >> (from - to);
    EXPECT_EQ(output[3], image.source.hasAlpha() ? alpha : opaque);
  }
  return output;
}

template <typename Sample>
ImageLut preparedLut(const ParsedLutFile& file, int from, int to) {
  if constexpr (std::is_same_v<Sample, float>) {
    return ImageLut::forFloats(file);
  } else {
    return *ImageLut::forCodeValues(file, from, to);
  }
}

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
  const ImageLut lut = preparedLut<Sample>(file, from, to);
  for (std::size_t row = 0; row < image.height; ++row) {
    for (std::size_t column = 0; column < image.width; ++column) {
      std::array<Sample, 4> input{};
      for (std::size_t channel = 0; channel < (image.source.hasAlpha() ? 4U : 3U); ++channel) {
        input[channel] = sample();
        source.at(row, column, channel) = input[channel];
      }
      const auto output = converted(lut, input, image, from, to);
      for (std::size_t channel = 0; channel < (image.destination.hasAlpha() ? 4U : 3U); ++channel) {
        expected.at(row, column, channel) = output[channel];
      }
    }
  }
  const std::vector<Sample> before = source.memory;
  for (const unsigned threads : {1U, 2U, 5U, 0U}) {
    std::ranges::fill(destination.memory, static_cast<Sample>(77));
    ASSERT_TRUE(lut.apply(source.view, destination.view, threads));
    EXPECT_EQ(destination.memory, expected.memory);
    EXPECT_EQ(source.memory, before);
  }
  const bool isAlike = image.source.channels == image.destination.channels &&
                       image.source.isPlanar == image.destination.isPlanar && from == to;
  if (!isAlike) return;
  // In place, with the rows shared among threads of the caller.
  {
    std::jthread upper([&] { ASSERT_TRUE(lut.apply(source.view.rows(0, 3), source.view.rows(0, 3))); });
    ASSERT_TRUE(lut.apply(source.view.rows(3, SIZE_MAX), source.view.rows(3, SIZE_MAX)));
  }
  EXPECT_EQ(source.memory.size(), expected.memory.size());
  for (std::size_t i = 0; i < source.memory.size(); ++i) ASSERT_EQ(source.memory[i], expected.memory[i]);
}

/// A cube and a 1D LUT that are random.
std::vector<std::unique_ptr<const ParsedLutFile>> randomLuts() {
  std::mt19937 random(61);
  std::uniform_real_distribution<double> unit(0, 1);
  std::vector<std::unique_ptr<const ParsedLutFile>> files;
  files.push_back(test::cubeFile(test::cubeColors(9, [&](double r, double g, double b) {
    return LutColor{std::min(1.0, r + 0.3 * unit(random)), g * b, unit(random)};
  })));
  std::vector<LutColor> curve;
  for (int i = 0; i < 256; ++i) curve.push_back({unit(random), unit(random), unit(random)});
  files.push_back(std::make_unique<ParsedLutFactory::ParsedOneDimensionLutFile>(
      Url::fromFilePath("/made.lut"), LutDeclaredDomain{},
      std::make_unique<OneDimensionFloatingPointConverter>(test::rowsOf(curve), 0, 1)));
  return files;
}

void checkAllSamples(const ParsedLutFile& file, const Image& image) {
  checkImage<std::uint8_t>(file, image, 8, 8);
  checkImage<std::uint16_t>(file, image, 16, 16);
  checkImage<std::uint16_t>(file, image, 10, 12);
  test::onEveryInstructionSet([&] { checkImage<float>(file, image, 32, 32); });
}

TEST(ImageLayouts, LayoutsStridesAndThreadsDoNotAffectAnyPixel) {
  const std::vector<Arrangement> arrangements{{"RGB"}, {"RGBA"}, {"RGB", true}, {"GBRA", true}};
  for (const auto& file : randomLuts()) {
    for (const Arrangement& from : arrangements) {
      for (const Arrangement& to : arrangements) {
        for (const Image& image :
             {Image{1, 1, from, to, 0, false}, Image{7, 5, from, to, 0, true}, Image{300, 4, from, to, 3, true}}) {
          checkAllSamples(*file, image);
          ASSERT_FALSE(HasFailure()) << from.channels << " to " << to.channels;
        }
      }
    }
  }
}

TEST(ImageLayouts, ChannelsMayBeInAnyOrderAndUnusedSamplesAreNotWritten) {
  const std::vector<Arrangement> arrangements{{"BGR"}, {"BGRA"}, {"ARGB"}, {"RGBx"}, {"xxBGRA"}};
  const auto files = randomLuts();
  for (const Arrangement& from : arrangements) {
    for (const Arrangement& to : arrangements) {
      checkAllSamples(*files[0], {150, 3, from, to, 2, false});
      ASSERT_FALSE(HasFailure()) << from.channels << " to " << to.channels;
    }
  }
}

TEST(ImageLayouts, AnUnusableImageIsAnErrorAndNothingIsWritten) {
  const auto cube = test::cubeFile(test::cubeColors(3, [](double, double, double) { return LutColor{1, 1, 1}; }));
  std::vector<std::uint16_t> samples(60, 5);
  using View = ImageView<std::uint16_t>;
  const View good = View::packed(ImageLayout::rgb, samples.data(), 5, 4, 10);
  const auto with = [&](const auto& change) {
    View view = good;
    change(view);
    return view;
  };
  const std::pair<View, ImageErrorCode> cases[] = {
      {with([](View& view) { view.red().samples = nullptr; }), ImageErrorCode::noSamples},
      {with([](View& view) { view.blue().samples = nullptr; }), ImageErrorCode::noSamples},
      {with([](View& view) { view.red().rowStride = 28; }), ImageErrorCode::unusableStride},
      {with([](View& view) { view.green().rowStride = 31; }), ImageErrorCode::unusableStride},
      {with([](View& view) { view.blue().rowStride = 0; }), ImageErrorCode::unusableStride},
      {with([](View& view) { view.green().pixelStride = 5; }), ImageErrorCode::unusableStride},
      {with([](View& view) { view.green().pixelStride = 0; }), ImageErrorCode::unusableStride},
      {with([](View& view) { view.green().pixelStride = -6; }), ImageErrorCode::unusableStride},
      {with([](View& view) { view.alpha() = {.samples = view.red().samples, .rowStride = 4}; }),
       ImageErrorCode::unusableStride},
      {with([](View& view) { view.width = 4; }), ImageErrorCode::unequalSizes},
      {with([](View& view) { view.height = 3; }), ImageErrorCode::unequalSizes},
      {with([](View& view) { view.width = SIZE_MAX; }), ImageErrorCode::unusableStride},
      {with([](View& view) {
         view.width = SIZE_MAX;
         view.height = 1;
       }),
       ImageErrorCode::unusableStride},
      {with([](View& view) { view.red().rowStride = PTRDIFF_MIN; }), ImageErrorCode::unusableStride},
      {with([](View& view) { view.height = SIZE_MAX; }), ImageErrorCode::unusableStride},
      {View::packed(ImageLayout::rgb, samples.data(), SIZE_MAX, 1, 10), ImageErrorCode::noSamples},
      {View::packed(ImageLayout::planarRgb, samples.data(), std::size_t{1} << 33, std::size_t{1} << 33, 10),
       ImageErrorCode::noSamples},
      {with([](View& view) { view.format = 0; }), ImageErrorCode::unusableBitDepth},
      {with([](View& view) { view.format = 17; }), ImageErrorCode::unusableBitDepth},
      {with([](View& view) { view.format = {7, CodeValueRange::limited}; }), ImageErrorCode::unusableRange},
      {with([](View& view) { view.format = 12; }), ImageErrorCode::otherFormat},
      {with([](View& view) { view.format = {10, CodeValueRange::limited}; }), ImageErrorCode::otherFormat},
  };
  const auto lut = ImageLut::forCodeValues(*cube, 10, 10);
  const auto codeOf = [](const Expected<void, ImageErrorCode>& applied) {
    return applied ? std::nullopt : std::optional(applied.error());
  };
  for (const auto& [view, error] : cases) {
    EXPECT_EQ(codeOf(lut->apply(good, view)), error) << rawValue(error);
    EXPECT_EQ(codeOf(lut->apply(view, good)), error) << rawValue(error);
  }
  EXPECT_THAT(samples, testing::Each(5));
  EXPECT_EQ(codeOf(applyLut(*cube, with([](View& view) { view.format = 0; }), good)), ImageErrorCode::unusableBitDepth);
  for (const int depth : {0, -1, 17, 64}) {
    EXPECT_EQ(ImageLut::forCodeValues(*cube, depth, 8).error(), ImageErrorCode::unusableBitDepth);
    EXPECT_EQ(ImageLut::forCodeValues(*cube, 8, depth).error(), ImageErrorCode::unusableBitDepth);
  }
  const CodeValueFormat tooFewBits{7, CodeValueRange::limited};
  EXPECT_EQ(ImageLut::forCodeValues(*cube, tooFewBits, 8).error(), ImageErrorCode::unusableRange);
  std::vector<float> floats(60);
  auto image = ImageView<float>::packed(ImageLayout::rgb, floats.data(), 5, 4);
  EXPECT_EQ(codeOf(lut->apply(image, image)), ImageErrorCode::otherFormat);
  image.format.range = CodeValueRange::limited;
  EXPECT_EQ(codeOf(applyLut(*cube, image, image)), ImageErrorCode::unusableRange);
  // An empty image needs no samples.
  EXPECT_TRUE(
      lut->apply(View::packed(ImageLayout::rgb, nullptr, 0, 4, 10), View::packed(ImageLayout::rgb, nullptr, 0, 4, 10)));
  EXPECT_TRUE(applyLut(*cube, good, good));
  EXPECT_THAT(samples, testing::Each(1023));
}

}  // namespace
}  // namespace meridian

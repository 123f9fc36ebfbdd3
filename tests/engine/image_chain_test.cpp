// The steps that images take, on images with known code values.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numeric>
#include <vector>

#include "meridian/engine/color_spaces.h"
#include "meridian/engine/libav/color_matrices.h"
#include "meridian/engine/libav/frame_conversion.h"
#include "meridian/engine/libav/image_placement.h"
#include "meridian/engine/libav/overlay.h"
#include "meridian/engine/libav/text_mask.h"
#include "meridian/engine/libav/video_chain.h"
#include "meridian/media/frame_number.h"
#include "tests/support/temporary_directory.h"

namespace meridian::libav {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

ImageForm formOf(const char* pixelFormat, int depth, ChromaSubsampling chroma, int matrix,
                 ColorRange range = ColorRange::limited) {
  ImageForm form;
  form.width = 64;
  form.height = 48;
  form.pixelFormat = pixelFormat;
  form.bitDepth = depth;
  form.chroma = chroma;
  form.color = {1, 1, matrix};
  form.range = range;
  form.frameRate = VideoFrameRate::pal25p;
  return form;
}

/// Returns the code value of a sample.
int sampleAt(const AVFrame& image, std::size_t plane, int x, int y, int depth) {
  const std::uint8_t* const row = image.data[plane] + static_cast<std::ptrdiff_t>(image.linesize[plane]) * y;
  return depth == 8 ? row[x] : reinterpret_cast<const std::uint16_t*>(row)[x];
}

void setSample(AVFrame& image, std::size_t plane, int x, int y, int depth, int value) {
  std::uint8_t* const row = image.data[plane] + static_cast<std::ptrdiff_t>(image.linesize[plane]) * y;
  if (depth == 8) {
    row[x] = static_cast<std::uint8_t>(value);
  } else {
    reinterpret_cast<std::uint16_t*>(row)[x] = static_cast<std::uint16_t>(value);
  }
}

int chromaSide(int side, bool isHalved) { return isHalved ? (side + 1) / 2 : side; }

/// Returns an image of one colour.
FramePointer plainImage(const ImageForm& form, const std::array<int, 3>& values) {
  FramePointer image = newImage(form);
  const bool halfWidth = form.chroma == ChromaSubsampling::yuv420 || form.chroma == ChromaSubsampling::yuv422;
  const bool halfHeight = form.chroma == ChromaSubsampling::yuv420;
  for (std::size_t plane = 0; plane < 3; ++plane) {
    const int width = plane == 0 ? form.width : chromaSide(form.width, halfWidth);
    const int height = plane == 0 ? form.height : chromaSide(form.height, halfHeight);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) setSample(*image, plane, x, y, form.bitDepth, values[plane]);
    }
  }
  return image;
}

/// The plain definition: R'G'B' from 0 to 1 as code values of Y'CbCr (ITU-T H.273, 8.3).
std::array<double, 3> codesOf(const std::array<double, 3>& rgb, const ImageForm& form) {
  const LumaWeights weights = *lumaWeights(form.color.matrix);
  const auto [red, green, blue] = rgb;
  const double luma = weights.red * red + (1 - weights.red - weights.blue) * green + weights.blue * blue;
  const double unit = std::exp2(form.bitDepth - 8);
  const bool isFull = form.range == ColorRange::full;
  const double scale = isFull ? std::exp2(form.bitDepth) - 1 : 219 * unit;
  const double chroma = isFull ? scale : 224 * unit;
  return {(isFull ? 0 : 16 * unit) + luma * scale, 128 * unit + (blue - luma) / (2 * (1 - weights.blue)) * chroma,
          128 * unit + (red - luma) / (2 * (1 - weights.red)) * chroma};
}

std::array<int, 3> rounded(const std::array<double, 3>& values) {
  return {static_cast<int>(std::lround(values[0])), static_cast<int>(std::lround(values[1])),
          static_cast<int>(std::lround(values[2]))};
}

constexpr std::array<std::array<double, 3>, 6> colors{
    {{0, 0, 0}, {1, 1, 1}, {0.75, 0.1, 0.1}, {0.1, 0.75, 0.2}, {0.15, 0.1, 0.8}, {0.5, 0.5, 0.5}}};

TEST(FrameConversion, NamesMatricesThatItDoesNotHave) {
  const auto failed = FrameConverter::open(formOf("yuv420p", 8, ChromaSubsampling::yuv420, 8),
                                           formOf("yuv420p", 8, ChromaSubsampling::yuv420, 1));
  ASSERT_FALSE(failed);
  EXPECT_THAT(failed.error(), testing::HasSubstr("ycgco"));
}

TEST(FrameConversion, StatesOtherCodePointsForTheSameColors) {
  const ImageForm given = formOf("yuv422p10le", 10, ChromaSubsampling::yuv422, 5);
  ImageForm wanted = given;
  wanted.color = {6, 1, 6};
  const FramePointer image = plainImage(given, {500, 300, 700});
  const FramePointer converted = (*FrameConverter::open(given, wanted))->converted(*image);
  EXPECT_EQ(converted->data[0], image->data[0]);
  EXPECT_EQ(converted->colorspace, AVCOL_SPC_SMPTE170M);
  EXPECT_EQ(converted->color_trc, AVCOL_TRC_BT709);
}

TEST(FrameConversion, KeepsFieldsApart) {
  ImageForm given = formOf("yuv422p", 8, ChromaSubsampling::yuv422, 1);
  given.isInterlaced = true;
  ImageForm wanted = given;
  wanted.pixelFormat = "yuv420p";
  wanted.chroma = ChromaSubsampling::yuv420;
  FramePointer image = plainImage(given, {100, 0, 0});
  for (int y = 0; y < given.height; ++y) {
    for (int x = 0; x < given.width / 2; ++x) {
      setSample(*image, 1, x, y, 8, y % 2 == 0 ? 60 : 200);
      setSample(*image, 2, x, y, 8, y % 2 == 0 ? 200 : 60);
    }
  }
  const FramePointer converted = (*FrameConverter::open(given, wanted))->converted(*image);
  for (int y = 0; y < given.height / 2; ++y) {
    EXPECT_EQ(sampleAt(*converted, 1, 4, y, 8), y % 2 == 0 ? 60 : 200);
    EXPECT_EQ(sampleAt(*converted, 2, 4, y, 8), y % 2 == 0 ? 200 : 60);
  }
}

/// Runs a plan's steps over images, and returns the result.
std::vector<FramePointer> chained(const TranscodePlan& plan, std::vector<FramePointer> images) {
  std::vector<FramePointer> results;
  auto chain = VideoChain::open(plan, 1);
  EXPECT_TRUE(chain) << chain.error().message();
  if (!chain) return results;
  const auto sink = [&results](FramePointer image) -> std::optional<TranscodeRunError> {
    results.push_back(std::move(image));
    return std::nullopt;
  };
  const Ticks duration = timeLine.den / 25;
  Ticks time = 0;
  for (FramePointer& image : images) {
    EXPECT_FALSE((*chain)->take({std::move(image), time, duration, 0}, sink));
    time += duration;
  }
  EXPECT_FALSE((*chain)->finish(time, sink));
  return results;
}

TranscodePlan planOf(const ImageForm& source, std::vector<PlannedStep> steps) {
  TranscodePlan plan;
  plan.sources.push_back({0, {{"-in_0_0", "/clip.mov", std::nullopt, std::nullopt}}, true, false});
  PlannedVideo& video = plan.video.emplace();
  video.source = source;
  video.steps = std::move(steps);
  video.encoder.emplace();
  return plan;
}

TEST(VideoChain, KeepsColorsThroughEveryMatrixRangeAndDepth) {
  struct Format {
    const char* name;
    int depth;
    ChromaSubsampling chroma;
  };
  const Format formats[]{{"yuv420p", 8, ChromaSubsampling::yuv420},
                         {"yuv422p10le", 10, ChromaSubsampling::yuv422},
                         {"yuv444p12le", 12, ChromaSubsampling::yuv444}};
  for (const Format& source : formats) {
    for (const Format& destination : formats) {
      for (const auto& [from, to] : {std::pair{1, 1}, {6, 1}, {1, 5}, {9, 1}, {1, 9}}) {
        for (const ColorRange range : {ColorRange::limited, ColorRange::full}) {
          const ImageForm given = formOf(source.name, source.depth, source.chroma, from);
          const ImageForm wanted = formOf(destination.name, destination.depth, destination.chroma, to, range);
          for (const auto& color : colors) {
            std::vector<FramePointer> images;
            images.push_back(plainImage(given, rounded(codesOf(color, given))));
            const auto converted = chained(planOf(given, {{FormatStep(), wanted}}), std::move(images));
            ASSERT_EQ(converted.size(), 1U);
            const auto expected = codesOf(color, wanted);
            // Two roundings, of which the coarser one counts.
            const double step = std::exp2(destination.depth - std::min(source.depth, destination.depth));
            for (std::size_t plane = 0; plane < 3; ++plane) {
              EXPECT_NEAR(sampleAt(*converted[0], plane, 8, 8, destination.depth), expected[plane], 1.6 * step + 1)
                  << source.name << " to " << destination.name << ", " << from << " to " << to << ", plane " << plane
                  << ", colour " << color[0] << ' ' << color[1] << ' ' << color[2];
            }
          }
        }
      }
    }
  }
}

/// Returns an image whose luma tells the place of each pixel.
FramePointer numberedImage(const ImageForm& form) {
  FramePointer image = plainImage(form, {0, 128, 128});
  for (int y = 0; y < form.height; ++y) {
    for (int x = 0; x < form.width; ++x) setSample(*image, 0, x, y, form.bitDepth, x + 3 * y);
  }
  return image;
}

TEST(VideoChain, TurnsMirrorsAndCutsWithoutChangingASample) {
  const ImageForm form = formOf("yuv444p10le", 10, ChromaSubsampling::yuv444, 1);
  for (const bool isMirrored : {false, true}) {
    for (const int degrees : {0, 90, 180, 270}) {
      ImageForm turned = form;
      if (degrees % 180 != 0) std::swap(turned.width, turned.height);
      std::vector<FramePointer> images;
      images.push_back(numberedImage(form));
      const auto results = chained(planOf(form, {{RotateStep{degrees, isMirrored}, turned}}), std::move(images));
      ASSERT_EQ(results.size(), 1U);
      ASSERT_EQ(results[0]->width, turned.width);
      for (const auto& [x, y] : {std::pair{0, 0}, {5, 7}, {turned.width - 1, turned.height - 1}, {20, 3}}) {
        std::pair from{x, y};
        if (degrees == 90) from = {y, form.height - 1 - x};
        if (degrees == 180) from = {form.width - 1 - x, form.height - 1 - y};
        if (degrees == 270) from = {form.width - 1 - y, x};
        // Mirrored before it is turned.
        if (isMirrored) from.first = form.width - 1 - from.first;
        EXPECT_EQ(sampleAt(*results[0], 0, x, y, 10), from.first + 3 * from.second) << degrees << isMirrored;
      }
    }
  }
  ImageForm cut = form;
  cut.width = 32;
  cut.height = 20;
  for (const auto& [x, y] : {std::pair{0, 0}, {16, 14}, {32, 28}}) {
    std::vector<FramePointer> images;
    images.push_back(numberedImage(form));
    const auto results = chained(planOf(form, {{CropStep{x, y}, cut}}), std::move(images));
    EXPECT_EQ(sampleAt(*results.at(0), 0, 0, 0, 10), x + 3 * y);
    EXPECT_EQ(sampleAt(*results.at(0), 0, 31, 19, 10), x + 31 + 3 * (y + 19));
  }
}

TEST(VideoChain, AddsBarsOfTheRangesOwnBlack) {
  for (const ColorRange range : {ColorRange::limited, ColorRange::full}) {
    const ImageForm form = formOf("yuv420p10le", 10, ChromaSubsampling::yuv420, 1, range);
    ImageForm padded = form;
    padded.width = 96;
    padded.height = 64;
    std::vector<FramePointer> images;
    images.push_back(plainImage(form, {700, 600, 400}));
    const auto results = chained(planOf(form, {{PadStep{16, 8}, padded}}), std::move(images));
    const AVFrame& image = *results.at(0);
    const int black = range == ColorRange::full ? 0 : 64;
    for (const auto& [x, y, isImage] :
         {std::tuple{0, 0, false}, {15, 20, false}, {16, 8, true}, {79, 55, true}, {80, 20, false}, {40, 56, false}}) {
      EXPECT_EQ(sampleAt(image, 0, x, y, 10), isImage ? 700 : black);
      EXPECT_EQ(sampleAt(image, 1, x / 2, y / 2, 10), isImage ? 600 : 512);
      EXPECT_EQ(sampleAt(image, 2, x / 2, y / 2, 10), isImage ? 400 : 512);
    }
  }
}

TEST(VideoChain, AppliesALutToColorsOfTheVideosMatrix) {
  const test::TemporaryDirectory directory;
  // Exchanges red and green, and halves blue.
  const std::string path =
      directory.write("look.cube", "LUT_3D_SIZE 2\n0 0 0\n0 1 0\n1 0 0\n1 1 0\n0 0 0.5\n0 1 0.5\n1 0 0.5\n1 1 0.5\n");
  for (const int matrix : {1, 6, 9}) {
    const ImageForm form = formOf("yuv422p10le", 10, ChromaSubsampling::yuv422, matrix);
    ImageForm rgb = formOf("gbrp10le", 10, ChromaSubsampling::rgb, ColorSpaceCodes::rgbMatrix, ColorRange::full);
    LutStep lut;
    lut.path = path;
    for (const auto& color : colors) {
      std::vector<FramePointer> images;
      images.push_back(plainImage(form, rounded(codesOf(color, form))));
      const auto results =
          chained(planOf(form, {{FormatStep(), rgb}, {lut, rgb}, {FormatStep(), form}}), std::move(images));
      const auto expected = codesOf({color[1], color[0], color[2] / 2}, form);
      for (std::size_t plane = 0; plane < 3; ++plane) {
        EXPECT_NEAR(sampleAt(*results.at(0), plane, 8, 8, 10), expected[plane], 2.5) << matrix << ' ' << plane;
      }
      EXPECT_EQ(results.at(0)->colorspace, matrix);
    }
  }
}

TEST(ImagePlacement, ShowsImagesFromTheNearestPlaceOn) {
  struct Case {
    std::vector<double> times;
    double end;
    std::vector<int> shown;
    int dropped;
    int repeated;
  };
  const Case cases[]{
      {{0, 1, 2, 3}, 4, {0, 1, 2, 3}, 0, 0},  {{0, 0.4, 1.1, 2}, 3, {0, 2, 3}, 1, 0},
      {{0, 0.6, 0.9, 2}, 3, {0, 2, 3}, 1, 0}, {{0, 3}, 5, {0, 0, 0, 1, 1}, 0, 3},
      {{1, 2}, 3, {0, 0, 1}, 0, 1},           {{-1, 0, 1}, 2, {1, 2}, 1, 0},
      {{0, 0, 0, 1}, 2, {0, 3}, 2, 0},        {{0}, 0.2, {0}, 0, 0},
  };
  for (const Case& each : cases) {
    ImagePlacement placement({25, 1});
    std::vector<int> shown;
    const auto sink = [&shown](const SourceImage& image, std::int64_t /*place*/) -> std::optional<TranscodeRunError> {
      shown.push_back(static_cast<int>(image.part));
      return std::nullopt;
    };
    const auto ticks = [](double places) { return static_cast<Ticks>(places * timeLine.den / 25); };
    for (std::size_t place = 0; place < each.times.size(); ++place) {
      EXPECT_FALSE(placement.take({nullptr, ticks(each.times[place]), 0, place}, sink));
    }
    EXPECT_FALSE(placement.finish(ticks(each.end), sink));
    EXPECT_THAT(shown, ElementsAreArray(each.shown));
    EXPECT_EQ(placement.dropped().count, each.dropped);
    EXPECT_EQ(placement.repeated().count, each.repeated);
  }
}

TEST(Overlay, BlendsAtTheDepthOfTheImage) {
  for (const auto& [name, depth] : {std::pair{"yuv420p", 8}, {"yuv420p10le", 10}}) {
    const ImageForm form = formOf(name, depth, ChromaSubsampling::yuv420, 1);
    const OverlayPixel pixel{0.9, 0.3, 0.2, 0.25};
    const std::vector<OverlayPixel> pixels(8 * 6, pixel);
    const Overlay overlay = Overlay::ofPixels({8, 6}, pixels, form);
    const int unit = 1 << (depth - 8);
    // A value that 8 bits do not have stays where nothing covers it.
    const std::array<int, 3> background{100 * unit + (depth > 8 ? 1 : 0), 90 * unit, 150 * unit};
    for (const auto& anchor : SAVTranscodeArgumentOverlayAnchorValue::allCases()) {
      FramePointer image = plainImage(form, background);
      const OverlayPlace place = placeOf(anchor, overlay.size(), form, 2);
      overlay.blend(*image, place.x, place.y);
      const auto codes = codesOf({pixel.red, pixel.green, pixel.blue}, form);
      for (std::size_t plane = 0; plane < 3; ++plane) {
        const int shift = plane == 0 ? 0 : 1;
        EXPECT_NEAR(sampleAt(*image, plane, (place.x + 3) >> shift, (place.y + 3) >> shift, depth),
                    background[plane] * 0.75 + codes[plane] * 0.25, 0.51);
        EXPECT_EQ(sampleAt(*image, plane, ((place.x + 20) % 60) >> shift, ((place.y + 20) % 44) >> shift, depth),
                  background[plane]);
      }
    }
    EXPECT_EQ(placeOf(SAVAnchorTopLeft, {8, 6}, form, 2).x, 2);
    EXPECT_EQ(placeOf(SAVAnchorBottomRight, {8, 6}, form, 2).x, 64 - 8 - 2);
    EXPECT_EQ(placeOf(SAVAnchorBottomRight, {8, 6}, form, 2).y, 48 - 6 - 2);
    EXPECT_EQ(placeOf(SAVAnchorCenter, {8, 6}, form, 2).y, 20);
  }
}

TEST(TextMask, ReadsBackEachLabelOfTheMinutesAtWhichDropFrameSkips) {
  const auto glyphs = GlyphSheet::open(24);
  if (!glyphs) GTEST_SKIP() << glyphs.error();
  const TextMask sheet = glyphs->textOf(GlyphSheet::characters);
  const int border = glyphs->border();
  const int advance = glyphs->advance();
  const auto glyphAt = [&](const TextMask& mask, std::size_t place) {
    std::vector<std::uint8_t> glyph;
    for (int y = 0; y < mask.height; ++y) {
      const auto row = mask.coverage.begin() + static_cast<std::ptrdiff_t>(y) * mask.width + border +
                       static_cast<std::ptrdiff_t>(place) * advance;
      glyph.insert(glyph.end(), row, row + advance);
    }
    return glyph;
  };
  std::vector<std::vector<std::uint8_t>> known;
  for (std::size_t place = 0; place < GlyphSheet::characters.size(); ++place) known.push_back(glyphAt(sheet, place));
  for (std::size_t one = 0; one < known.size(); ++one) {
    for (std::size_t other = 0; other < one; ++other) EXPECT_NE(known[one], known[other]);
  }
  for (const VideoFrameRate& rate : {VideoFrameRate::ntsc30p, VideoFrameRate::ntsc60p}) {
    for (const int minute : {1, 9, 10, 11}) {
      const auto mark = frameNumber({0, minute, 0, minute % 10 == 0 ? 0 : 4, true}, rate);
      ASSERT_TRUE(mark);
      for (std::int64_t frame = *mark - 6; frame < *mark + 6; ++frame) {
        const std::string label = timecodeOfFrame(frame, rate, true)->timecodeString();
        const TextMask mask = glyphs->textOf(label);
        std::string read;
        for (std::size_t place = 0; place < label.size(); ++place) {
          const auto found = std::ranges::find(known, glyphAt(mask, place));
          if (found != known.end()) read += GlyphSheet::characters[static_cast<std::size_t>(found - known.begin())];
        }
        EXPECT_EQ(read, label);
      }
    }
  }
}

TEST(TextMask, DrawsAnyCharacters) {
  const auto plain = maskOfText("Reel 12", 20, 400);
  if (!plain) GTEST_SKIP() << plain.error();
  const auto odd = maskOfText("100%{pts} 'quoted' \\n :=,;[x] \u00e4\u00f6", 20, 600);
  ASSERT_TRUE(odd) << odd.error();
  EXPECT_GT(odd->width, plain->width * 2);
  const auto lines = maskOfText("one\ntwo", 20, 400);
  ASSERT_TRUE(lines);
  EXPECT_GT(lines->height, plain->height * 3 / 2);
  EXPECT_EQ(maskOfText("   ", 20, 400)->width, 0);
  // What is not UTF-8 is seen, and what comes after it as well.
  EXPECT_GT(maskOfText("Reel 12\xff!", 20, 400)->width, maskOfText("Reel 12!", 20, 400)->width);
}

TEST(TextMask, DrawsFromRightToLeft) {
  // Beh and alef: the second of them is the tall one.
  const std::string text = "\u0628\u0627";
  const auto mask = maskOfText(text, 40, 400);
  if (!mask) GTEST_SKIP() << mask.error();
  if (!missingCharacters(text).empty()) GTEST_SKIP() << "no font has Arabic letters";
  std::array<std::int64_t, 2> upper{};
  for (int y = 0; y < mask->height / 3; ++y) {
    for (int x = 0; x < mask->width; ++x) {
      const auto place =
          static_cast<std::size_t>(y) * static_cast<std::size_t>(mask->width) + static_cast<std::size_t>(x);
      upper.at(x < mask->width / 2 ? 0 : 1) += mask->coverage[place];
    }
  }
  EXPECT_GT(upper[0], 0);
  EXPECT_EQ(upper[1], 0);
}

}  // namespace
}  // namespace meridian::libav

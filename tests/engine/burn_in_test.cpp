// Burnt-in timecode, texts and watermarks, read back from the images of real outputs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "meridian/engine/libav/overlay.h"
#include "meridian/engine/libav/text_mask.h"
#include "meridian/engine/survey_transcode.h"
#include "meridian/engine/transcode.h"
#include "meridian/media/frame_number.h"
#include "tests/engine/made_media.h"
#include "tests/support/process.h"
#include "tests/support/temporary_directory.h"

namespace meridian::test {
namespace {

using libav::GlyphSheet;
using libav::TextMask;

constexpr int width = 320;
constexpr int height = 180;
/// Points at 1080 lines, so 20 pixels here.
constexpr int points = 120;
constexpr double fontSize = points * height / 1080.0;

/// Images of 10 bits, one after the other.
using Images = std::vector<std::vector<std::uint16_t>>;

class BurnIns : public testing::Test {
 protected:
  void SetUp() override {
    if (!isInstalled("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
    auto opened = GlyphSheet::open(fontSize);
    if (!opened) GTEST_SKIP() << opened.error();
    glyphs_.emplace(*std::move(opened));
  }

  [[nodiscard]] std::string path(const std::string& name) const { return (directory_.path() / name).string(); }

  void make(const std::string& name, const std::string& source, const std::string& options) const {
    std::vector<std::string> words{"ffmpeg", "-v", "error", "-nostdin", "-y", "-f", "lavfi", "-i", source};
    std::istringstream stream(options);
    for (std::string word; stream >> word;) words.push_back(word);
    words.push_back(path(name));
    const Outcome made = run(words);
    ASSERT_EQ(made.status, 0) << made.errors;
  }

  /// Transcodes, and returns the luma of the images of the output.
  [[nodiscard]] Images transcoded(const std::string& text) {
    std::istringstream stream(text + " -overwrite -out " + path("out.mov"));
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word.starts_with('@') ? path(word.substr(1)) : word);
    const std::vector<std::string_view> views(words.begin(), words.end());
    const auto planned = planTranscode(explain(views));
    if (!planned) {
      ADD_FAILURE() << text << ": " << planned.error().front().message();
      return {};
    }
    form_ = planned->video->output();
    const auto result = transcode(*planned, {});
    if (!result) {
      ADD_FAILURE() << text << ": " << result.error().message();
      return {};
    }
    const Outcome raw = run({"ffmpeg", "-v", "error", "-nostdin", "-i", path("out.mov"), "-pix_fmt", "yuv444p10le",
                             "-vf", "extractplanes=y", "-pix_fmt", "gray10le", "-f", "rawvideo", "-"});
    EXPECT_EQ(raw.status, 0) << raw.errors;
    Images images;
    constexpr std::size_t size = std::size_t{2} * width * height;
    for (std::size_t first = 0; first + size <= raw.output.size(); first += size) {
      auto& image = images.emplace_back();
      for (std::size_t byte = first; byte < first + size; byte += 2) {
        const auto at = [&](std::size_t place) { return static_cast<unsigned char>(raw.output[place]); };
        image.push_back(static_cast<std::uint16_t>(at(byte) + 256U * at(byte + 1)));
      }
    }
    return images;
  }

  /// Reads the label at an anchor: for each of its places the glyph that is most like what is there.
  [[nodiscard]] std::string labelIn(const std::vector<std::uint16_t>& image,
                                    const SAVTranscodeArgumentOverlayAnchorValue& anchor) const {
    constexpr std::size_t length = 11;
    const TextMask any = glyphs_->textOf("00:00:00:00");
    const ImageSize size{any.width, any.height};
    const auto corner = libav::placeOf(anchor, size, form_, static_cast<int>(std::lround(height * 0.025)));
    std::string label;
    for (std::size_t place = 0; place < length; ++place) {
      double least = std::numeric_limits<double>::max();
      double second = least;
      char best = '?';
      for (const char character : GlyphSheet::characters) {
        const TextMask glyph = glyphs_->textOf(std::string(1, character));
        const double difference =
            differenceOf(image, corner.x + static_cast<int>(place) * glyphs_->advance(), corner.y, glyph);
        if (difference < least) {
          second = least;
          least = difference;
          best = character;
        } else {
          second = std::min(second, difference);
        }
      }
      // A glyph that is hardly more like the image than another one is not read.
      label += least * 1.5 < second ? best : '?';
    }
    return label;
  }

 private:
  [[nodiscard]] double differenceOf(const std::vector<std::uint16_t>& image, int left, int top,
                                    const TextMask& glyph) const {
    const int border = glyphs_->border();
    double sum = 0;
    for (int y = 0; y < glyph.height; ++y) {
      for (int x = border; x < border + glyphs_->advance(); ++x) {
        const double coverage = glyph.coverage[static_cast<std::size_t>(y * glyph.width + x)] / 255.0;
        const double found = (image[static_cast<std::size_t>((top + y) * width + left + x)] - 64) / 876.0;
        sum += (found - coverage) * (found - coverage);
      }
    }
    return sum;
  }

  TemporaryDirectory directory_;
  std::optional<GlyphSheet> glyphs_;
  /// Of the output.
  ImageForm form_;
};

TEST_F(BurnIns, LabelEachFrameAroundEachMinute) {
  for (const auto& [rate, name] :
       {std::pair(VideoFrameRate::ntsc30p, "30000/1001"), std::pair(VideoFrameRate::ntsc60p, "60000/1001")}) {
    constexpr int frames = 12;
    make("in.mov", std::string("color=gray:s=320x180:r=") + name,
         "-frames:v " + std::to_string(frames) + " -c:v prores_ks -profile:v 0");
    for (int minute = 1; minute <= 11; ++minute) {
      const std::int64_t dropped = minute % 10 == 0 ? 0 : rate == VideoFrameRate::ntsc60p ? 4 : 2;
      const auto mark = frameNumber({0, minute, 0, dropped, true}, rate);
      ASSERT_TRUE(mark);
      const std::int64_t first = *mark - frames / 2;
      const std::string start = timecodeOfFrame(first, rate, true)->timecodeString();
      SCOPED_TRACE(start);
      const Images images = transcoded("-in_0_0 @in.mov -vcodec prores422hq -tc_custom " + start +
                                       " -tc_burn -tc_burn_size " + std::to_string(points));
      ASSERT_EQ(images.size(), static_cast<std::size_t>(frames));
      for (std::size_t frame = 0; frame < images.size(); ++frame) {
        EXPECT_EQ(labelIn(images[frame], SAVAnchorBottomCenter),
                  timecodeOfFrame(first + static_cast<std::int64_t>(frame), rate, true)->timecodeString());
      }
    }
  }
}

TEST_F(BurnIns, LabelEachPartWithItsOwnTimecode) {
  const std::vector<std::string> starts{"01:00:00:00", "01:00:00:10", "05:00:00:00"};
  std::string inputs;
  for (std::size_t part = 0; part < starts.size(); ++part) {
    const std::string name = "part" + std::to_string(part) + ".mov";
    make(name, "color=gray:s=320x180:r=25", "-frames:v 10 -c:v prores_ks -profile:v 0 -timecode " + starts[part]);
    inputs += "-in_0_" + std::to_string(part) + " @" + name + " ";
  }
  const Images images =
      transcoded(inputs + "-vcodec prores422hq -tc_match -tc_burn -tc_burn_size " + std::to_string(points));
  ASSERT_EQ(images.size(), 30U);
  for (std::size_t frame = 0; frame < images.size(); ++frame) {
    const std::string label =
        starts[frame / 10].substr(0, 9) + std::to_string(frame < 20 ? frame + 100 : frame + 80).substr(1);
    EXPECT_EQ(labelIn(images[frame], SAVAnchorBottomCenter), label);
  }
}

TEST_F(BurnIns, AreAtEachAnchorInEachDepth) {
  make("in.mov", "color=gray:s=320x180:r=25:d=0.08", "-c:v prores_ks -profile:v 0");
  for (const std::string codec : {"h264 -vbd 8", "h264 -vbd 10", "prores422hq", "prores4444"}) {
    for (const auto& [text, anchor] :
         std::map<std::string, SAVTranscodeArgumentOverlayAnchorValue>{{"tl", SAVAnchorTopLeft},
                                                                       {"tc", SAVAnchorTopCenter},
                                                                       {"tr", SAVAnchorTopRight},
                                                                       {"cl", SAVAnchorCenterLeft},
                                                                       {"c", SAVAnchorCenter},
                                                                       {"cr", SAVAnchorCenterRight},
                                                                       {"bl", SAVAnchorBottomLeft},
                                                                       {"bc", SAVAnchorBottomCenter},
                                                                       {"br", SAVAnchorBottomRight}}) {
      SCOPED_TRACE(codec + " " + text);
      const Images images =
          transcoded("-in_0_0 @in.mov -vcodec " + codec + " -tc_custom 12:34:56:07 -tc_burn -tc_burn_anchor " + text +
                     " -tc_burn_size " + std::to_string(points));
      ASSERT_EQ(images.size(), 2U);
      EXPECT_EQ(labelIn(images[0], anchor), "12:34:56:07");
      EXPECT_EQ(labelIn(images[1], anchor), "12:34:56:08");
    }
  }
}

TEST_F(BurnIns, ShowWhereTheImageIsTransparent) {
  make("clear.mov", "color=black@0:s=320x180:r=25:d=0.04,format=yuva444p10le", "-c:v prores_ks -profile:v 4");
  make("mark.png", "color=red:s=64x32:d=0.04,format=rgba,colorchannelmixer=aa=0.5", "-frames:v 1");
  static_cast<void>(transcoded("-in_0_0 @clear.mov -vcodec prores4444 -wmf_path @mark.png -wmf_anchor tl -tc_burn"));
  const Outcome raw =
      run({"ffmpeg", "-v", "error", "-nostdin", "-i", path("out.mov"), "-pix_fmt", "rgba", "-f", "rawvideo", "-"});
  ASSERT_EQ(raw.output.size(), std::size_t{4} * width * height);
  const auto pixel = [&raw](int x, int y) {
    std::vector<int> parts;
    for (std::size_t part = 0; part < 4; ++part) {
      parts.push_back(static_cast<unsigned char>(raw.output[4 * static_cast<std::size_t>(y * width + x) + part]));
    }
    return parts;
  };
  using testing::AllOf;
  using testing::Ge;
  using testing::Le;
  const auto red = testing::ElementsAre(Ge(250), Le(6), Le(6), AllOf(Ge(126), Le(129)));
  EXPECT_THAT(pixel(30, 20), red);
  EXPECT_EQ(pixel(200, 90).back(), 0);
  // The box of the label hides what is below it.
  EXPECT_EQ(pixel(width / 2, height - 10).back(), 255);
}

TEST_F(BurnIns, BlendWatermarksAtTheDepthOfTheImage) {
  // A ramp that has every code value of 10 bits, and a white mark that is half transparent.
  make("ramp.mov", "nullsrc=s=320x180:r=25:d=0.04,format=yuv422p10le,geq=lum='64+X*2.7+Y/60':cb=512:cr=512",
       "-c:v prores_ks -profile:v 3");
  make("mark.png", "color=white:s=64x32:d=0.04,format=rgba,colorchannelmixer=aa=0.5", "-frames:v 1");
  const Images plain = transcoded("-in_0_0 @ramp.mov -vcodec prores422hq");
  const Images marked = transcoded("-in_0_0 @ramp.mov -vcodec prores422hq -wmf_path @mark.png -wmf_anchor tl");
  ASSERT_EQ(plain.size(), 1U);
  ASSERT_EQ(marked.size(), 1U);
  const int margin = static_cast<int>(std::lround(height * 0.025));
  std::size_t odd = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto place = static_cast<std::size_t>(y * width + x);
      const bool isNear = x < margin + 64 + 16 && y < margin + 32 + 16;
      if (!isNear) {
        EXPECT_EQ(marked[0][place], plain[0][place]);
      }
      if (plain[0][place] % 4 != 0) ++odd;
      const bool isInside = x > margin + 6 && x < margin + 58 && y > margin + 6 && y < margin + 26;
      if (isInside) {
        EXPECT_NEAR(marked[0][place], (plain[0][place] + 940) / 2.0, 6);
      }
    }
  }
  // Through 8 bits, all would be multiples of four.
  EXPECT_GT(odd, static_cast<std::size_t>(width * height / 2));
}

}  // namespace
}  // namespace meridian::test

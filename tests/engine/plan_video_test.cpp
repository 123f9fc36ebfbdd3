#include <gmock/gmock.h>

#include "meridian/base/joined.h"
#include "meridian/engine/transcode_plan_text.h"
#include "tests/engine/planned_words.h"

namespace meridian {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

MediaDescription changedVideo(auto change) {
  MediaDescription clip = hdClip();
  change(clip.video.front());
  return clip;
}

std::string sizeText(int width, int height) { return std::to_string(width) + "x" + std::to_string(height); }

/// Returns the steps and what they give: "scale 960x540, format yuv420p".
std::string stepsOf(const PlannedVideo& video) {
  std::vector<std::string> texts;
  for (const PlannedStep& each : video.steps) {
    std::string text(nameOf(each.step));
    if (std::holds_alternative<ScaleStep>(each.step) || std::holds_alternative<RotateStep>(each.step)) {
      text += " " + sizeText(each.result.width, each.result.height);
    } else if (const auto* crop = std::get_if<CropStep>(&each.step)) {
      text += " " + sizeText(each.result.width, each.result.height) + "+" + std::to_string(crop->x) + "+" +
              std::to_string(crop->y);
    } else if (const auto* pad = std::get_if<PadStep>(&each.step)) {
      text += " " + sizeText(each.result.width, each.result.height) + "+" + std::to_string(pad->x) + "+" +
              std::to_string(pad->y);
    } else if (std::holds_alternative<FormatStep>(each.step)) {
      text += " " + each.result.pixelFormat;
    } else if (std::holds_alternative<ColorStep>(each.step)) {
      text += " " + nameOf(each.result.color);
    } else if (std::holds_alternative<RateStep>(each.step)) {
      text += " " + each.result.frameRate.formattedString();
    }
    texts.push_back(std::move(text));
  }
  return joined(texts, ", ");
}

struct StepsCase {
  std::string words;
  std::string steps;
  MediaDescription clip = hdClip();
};

TEST(PlanVideo, TakesTheImageThroughStepsInOrder) {
  const auto rotated = [](int degrees) { return changedVideo([degrees](auto& video) { video.rotation = degrees; }); };
  const auto wide = changedVideo([](auto& video) {
    video.width = 720;
    video.height = 576;
    video.pixelAspectRatio = {64, 45};
  });
  const auto interlaced = changedVideo([](auto& video) { video.fieldOrder = FieldOrder::topFirst; });
  const auto log = changedVideo([](auto& video) {
    video.primaries = video.matrix = {9, "bt2020"};
    video.transfer = {14, "bt2020-10"};
  });
  const std::vector<StepsCase> cases{
      {"-vcodec prores422hq", ""},
      {"-vcodec prores4444", "format yuv444p10le"},
      {"-vcodec h264", "format yuv420p10le"},
      {"-vcodec h264 -vbd 8", "format yuv420p"},
      {"-vcodec mjpeg", "format yuvj422p"},
      {"-vcodec h265 -vprofile main10", "format yuv420p10le", changedVideo([](auto& video) { video.bitDepth = 12; })},
      {"-vcodec prores422", "", changedVideo([](auto& video) { video.range = ColorRange::unknown; })},
      {"-vcodec prores422 -dims 961x541 -aspect_scaling stretch", "scale 961x541"},
      {"-vcodec mjpeg -vbd 8", "format yuvj422p", withSize(hdClip(), 65, 65)},
      // Sizes.
      {"-vcodec prores422 -dims 0x0", ""},
      {"-vcodec prores422 -dims 1x1", ""},
      {"-vcodec prores422 -dims 0.5x0.5", "scale 960x540"},
      {"-vcodec prores422 -dims 960x540", "scale 960x540"},
      {"-vcodec prores422 -dims 960x960", "scale 960x540"},
      {"-vcodec prores422 -dims 961x960", "scale 960x540"},
      {"-vcodec prores422 -dims 4000x4000", ""},
      {"-vcodec prores422 -dims 960x960 -aspect_scaling stretch", "scale 960x960"},
      {"-vcodec prores422 -dims 960x960 -aspect_scaling letterbox", "scale 960x540, pad 960x960+0+210"},
      {"-vcodec prores422 -dims 2000x1080 -aspect_scaling letterbox", "pad 2000x1080+40+0"},
      {"-vcodec prores422 -dims 540x540 -aspect_scaling crop", "scale 960x540, crop 540x540+210+0"},
      {"-vcodec prores422 -dims 540x540 -aspect_scaling crop -crop_anchor tl", "scale 960x540, crop 540x540+0+0"},
      {"-vcodec prores422 -dims 540x540 -aspect_scaling crop -crop_anchor cr", "scale 960x540, crop 540x540+420+0"},
      {"-vcodec prores422 -dims 960x200 -aspect_scaling crop -crop_anchor bc", "scale 960x540, crop 960x200+0+340"},
      {"-vcodec prores422 -dims 960x540", "scale 960x540", wide},
      {"-vcodec prores422 -dims 1024x576", "scale 1024x576", wide},
      {"-vcodec prores422", "", wide},
      // Rotation, fields, rates.
      {"-vcodec prores422", "rotate 1080x1920", rotated(90)},
      {"-vcodec prores422 -dims 540x960", "rotate 1080x1920, scale 540x960", rotated(270)},
      {"-vcodec prores422", "rotate 1920x1080", rotated(180)},
      {"-vcodec prores422", "", rotated(1)},
      {"-vcodec prores422", "rotate 1080x1920", rotated(89)},
      {"-vcodec prores422", "", interlaced},
      {"-vcodec prores422 -dims 960x540", "deinterlace, scale 960x540", interlaced},
      {"-vcodec h264 -vbd 8", "deinterlace, format yuv420p", interlaced},
      {"-vcodec prores422 -vr 50 -dims 960x540 -tc_burn", "scale 960x540, rate 50 FPS, timecode"},
      {"-vcodec prores422 -vr 12.5 -dims 960x540", "rate 12.50 FPS, scale 960x540"},
      {"-vcodec prores422 -vr 0.5", "rate 12.50 FPS"},
      {"-vcodec prores422 -vr 0", ""},
      // Bars or a crop at the sides alone leave the fields where they are.
      {"-vcodec prores422 -dims 2000x1080 -aspect_scaling letterbox", "pad 2000x1080+40+0", interlaced},
      {"-vcodec prores422 -dims 1920x1090 -aspect_scaling letterbox", "deinterlace, pad 1920x1090+0+5", interlaced},
      {"-vcodec prores422 -vr 25", "", changedVideo([](auto& video) { video.frameRate.reset(); })},
      {"-vcodec prores422 -vr 25", ""},
      {"-vcodec prores422 -vr 23.967", "rate 23.98 FPS"},
      // Looks and colours: a LUT after scaling down and before scaling up, bars after it, marks last.
      {"-vcodec h264 -clut a.cube -dims 960x540 -tc_burn -wmt_burn -wmt_text x -wmf_path l.png",
       "scale 960x540, format gbrp10le, lut, format yuv420p10le, timecode, text, watermark"},
      {"-vcodec prores422 -clut a.cube -dims 3840x2160 -aspect_scaling stretch",
       "format gbrp10le, lut, scale 3840x2160, format yuv422p10le"},
      {"-vcodec prores422 -clut a.cube -dims 960x960 -aspect_scaling letterbox",
       "scale 960x540, format gbrp10le, lut, pad 960x960+0+210, format yuv422p10le"},
      {"-vcodec prores422 -c_space rec_709", ""},
      {"-vcodec prores422 -c_space rec_2020", "color rec_2020"},
      {"-vcodec prores422 -c_space srgb", "color sRGB"},
      {"-vcodec prores422 -c_space rec_709", "color rec_709", log},
      {"-vcodec prores422 -c_space rec_709 -clut a.cube", "format gbrp10le, lut, format yuv422p10le", log},
  };
  for (const auto& [words, steps, clip] : cases) {
    SCOPED_TRACE(words);
    const TranscodePlan plan = successful(planned(words, {clip}));
    ASSERT_TRUE(plan.video);
    EXPECT_EQ(stepsOf(*plan.video), steps);
  }
}

TEST(PlanVideo, KeepsOrStatesColours) {
  const auto colorOf = [](std::string_view words, MediaDescription clip) {
    return nameOf(successful(planned(words, {std::move(clip)})).video->output().color);
  };
  const auto untagged = [](int height) {
    return changedVideo([height](auto& video) {
      video.height = height;
      video.primaries = video.transfer = video.matrix = {};
    });
  };
  const auto rgb = changedVideo([](auto& video) {
    video.chroma = ChromaSubsampling::rgb;
    video.primaries = video.transfer = {};
    video.matrix = {0, "gbr"};
  });
  EXPECT_EQ(colorOf("-vcodec h264 -clut a.cube", hdClip()), "rec_709");
  EXPECT_EQ(colorOf("-vcodec h264 -c_space rec_2020 -clut a.cube", hdClip()), "rec_2020");
  EXPECT_THAT(describe(successful(planned("-vcodec h264 -c_space rec_2020 -clut a.cube"))),
              HasSubstr("rec_2020 (stated, not converted)"));
  EXPECT_EQ(colorOf("-vcodec h264", untagged(720)), "rec_709");
  EXPECT_EQ(colorOf("-vcodec h264 -dims 320x180", untagged(1080)), "rec_709");
  EXPECT_EQ(colorOf("-vcodec h264", untagged(576)), "ebu_3213");
  EXPECT_EQ(colorOf("-vcodec h264", untagged(480)), "smpte_c");
  EXPECT_EQ(colorOf("-vcodec h264", rgb), "sRGB");
}

struct EncoderCase {
  std::string words;
  std::string encoder;
  std::string options;
  std::string format = "yuv422p10le";
};

TEST(PlanVideo, ChoosesEncoderAndOptions) {
  const std::vector<EncoderCase> cases{
      {"-vcodec h264", "libx264", "crf=20", "yuv420p10le"},
      {"-vcodec h264 -vbr 3 -vbd 8", "libx264", "b=3000000 maxrate=4500000 bufsize=6000000", "yuv420p"},
      {"-vcodec h264 -vbr 1100", "libx264", "b=1100000000 maxrate=1650000000 bufsize=2147483647", "yuv420p10le"},
      {"-vcodec h264 -vbr 2000", "libx264", "b=2000000000 maxrate=2147483647 bufsize=2147483647", "yuv420p10le"},
      {"-vcodec h264 -vbr 0.1 -key_frames 50 -vprofile high10@4.1", "libx264",
       "b=100000 maxrate=150000 bufsize=200000 profile=high10 g=50 level=4.1", "yuv420p10le"},
      {"-vcodec h264 -vprofile main", "libx264", "crf=20 profile=main", "yuv420p"},
      {"-vcodec h264 -vprofile high422", "libx264", "crf=20 profile=high422"},
      {"-vcodec h264 -vprofile high444 -vbd 8", "libx264", "crf=20 profile=high444", "yuv444p"},
      {"-vcodec h265 -vbd 12", "libx265", "crf=22 x265-params=log-level=error", "yuv420p12le"},
      {"-vcodec h265 -vprofile main10@5.1 -key_frames 25", "libx265",
       "crf=22 profile=main10 g=25 x265-params=log-level=error:keyint=25:level-idc=5.1", "yuv420p10le"},
      {"-vcodec h265 -vprofile main422-10", "libx265", "crf=22 profile=main422-10 x265-params=log-level=error"},
      {"-vcodec mjpeg", "mjpeg", "", "yuvj422p"},
      {"-vcodec h264 -vbd 8 -vbr copy", "libx264", "b=8000000 maxrate=12000000 bufsize=16000000", "yuv420p"},
      {"-out /o.mxf -vcodec dnxhd -vbd 8 -vbr copy", "dnxhd", "b=36000000 profile=dnxhd", "yuv422p"},
      {"-vcodec mp4 -vbr 2 -vprofile asp", "mpeg4", "b=2000000 profile=15", "yuv420p"},
      {"-out /o.mxf -vcodec dnxhd", "dnxhd", "b=185000000 profile=dnxhd"},
      {"-out /o.mxf -vcodec dnxhd -vr 24", "dnxhd", "b=175000000 profile=dnxhd"},
      {"-out /o.mxf -vcodec dnxhd -vbd 8", "dnxhd", "b=120000000 profile=dnxhd", "yuv422p"},
      {"-out /o.mxf -vcodec dnxhd -vbd 8 -vbr 36 -vr 59.94", "dnxhd", "b=36000000 profile=dnxhd", "yuv422p"},
      {"-out /o.mxf -vcodec dnxhd -vprofile dnxhr_hqx -dims 960x540", "dnxhd", "profile=dnxhr_hqx"},
      {"-out /o.mxf -vcodec dnxhd -vprofile dnxhr_sq", "dnxhd", "profile=dnxhr_sq", "yuv422p"},
      {"-out /o.mxf -vcodec dnxhd -vprofile dnxhr_444", "dnxhd", "profile=dnxhr_444", "yuv444p10le"},
      {"-vcodec prores422proxy", "prores_aw", "profile=0 vendor=apl0"},
      {"-vcodec prores422lt", "prores_ks", "profile=1 vendor=apl0"},
      {"-vcodec prores422", "prores_ks", "profile=2 vendor=apl0"},
      {"-vcodec prores422hq", "prores_ks", "profile=3 vendor=apl0"},
      {"-vcodec prores4444", "prores_ks", "profile=4 vendor=apl0", "yuv444p10le"},
      {"-vcodec prores4444xq", "prores_ks", "profile=5 vendor=apl0", "yuv444p10le"},
  };
  for (const auto& [words, name, options, format] : cases) {
    SCOPED_TRACE(words);
    const TranscodePlan plan = successful(planned(words, {changedVideo([](auto& video) { video.bitRate = 8000000; })}));
    ASSERT_TRUE(plan.video && plan.video->encoder);
    const PlannedVideoEncoder& encoder = *plan.video->encoder;
    std::vector<std::string> texts;
    for (const PlannedOption& option : encoder.options) texts.push_back(option.name + "=" + option.value);
    EXPECT_EQ(encoder.name, name);
    EXPECT_EQ(encoder.quantizer.has_value(), (name == "mjpeg" || name == "mpeg4") && !encoder.bitRate);
    EXPECT_EQ(joined(texts, " "), options);
    EXPECT_EQ(rawValue(encoder.pixelFormat), format);
    EXPECT_EQ(plan.video->output().pixelFormat, format);
  }
}

TEST(PlanVideo, KeepsFieldsAndAlphaWhereTheCodecHasThem) {
  MediaDescription clip = changedVideo([](auto& video) {
    video.fieldOrder = FieldOrder::topFirst;
    video.hasAlpha = true;
    video.pixelFormat = "yuva444p12le";
    video.bitDepth = 12;
  });
  const TranscodePlan plan = successful(planned("-vcodec prores4444", {clip}));
  EXPECT_TRUE(plan.video->encoder->keepsFields);
  EXPECT_TRUE(plan.video->output().isInterlaced);
  EXPECT_EQ(plan.video->encoder->pixelFormat, PixelFormat::yuva444p10);
  const TranscodePlan looked = successful(planned("-vcodec prores4444 -clut a.cube", {clip}));
  EXPECT_EQ(stepsOf(*looked.video), "format gbrap12le, lut, format yuva444p10le");
  clip.video.front().hasAlpha = false;
  const TranscodePlan dnxhd = successful(planned("-out /o.mxf -vcodec dnxhd -vbd 10", {clip}));
  EXPECT_TRUE(dnxhd.video->encoder->keepsFields);
  EXPECT_EQ(dnxhd.video->encoder->bitRate, 185);
  EXPECT_FALSE(
      successful(planned("-out /o.mxf -vcodec dnxhd -vprofile dnxhr_hqx", {clip})).video->encoder->keepsFields);
}

TEST(PlanVideo, EncodesFieldsOfProxiesByAnEncoderThatHasThem) {
  const auto interlaced = [](int width, int height) {
    return withSize(changedVideo([](auto& video) { video.fieldOrder = FieldOrder::topFirst; }), width, height);
  };
  const auto encoderOf = [](const MediaDescription& clip) {
    return successful(planned("-vcodec prores422proxy", {clip})).video->encoder->name;
  };
  EXPECT_EQ(encoderOf(interlaced(720, 576)), "prores_aw");
  EXPECT_EQ(encoderOf(interlaced(1280, 720)), "prores_ks");
  EXPECT_EQ(encoderOf(withSize(hdClip(), 1280, 720)), "prores_aw");
}

TEST(PlanVideo, GivesMotionJpegTheMatrixOfJpegFiles) {
  const ImageForm image = successful(planned("-vcodec mjpeg")).video->output();
  EXPECT_EQ(image.color, (ColorSpaceCodes{1, 1, 5}));
  EXPECT_EQ(image.range, ColorRange::full);
}

TEST(PlanVideo, CountsFramesAndJoinsParts) {
  const auto framesOf = [](std::string_view words, const std::vector<MediaDescription>& media) {
    return successful(planned(words, media)).video->frameCount;
  };
  EXPECT_EQ(framesOf("-vcodec h264", {hdClip()}), 250);
  EXPECT_EQ(framesOf("-vcodec h264 -vr 24", {hdClip()}), 240);
  EXPECT_EQ(framesOf("-vcodec h264 -in_0_1 b.mov -in_0_2 c.mov", {hdClip(), hdClip(), hdClip()}), 750);
  EXPECT_EQ(framesOf("-vcodec h264", {changedVideo([](auto& video) { video.frameCount.reset(); })}), std::nullopt);
  // A variable rate becomes constant, so that the time counts; also without a rate the frames stay what they are.
  const auto variable = changedVideo([](auto& video) {
    video.isVariable = true;
    video.frameRate = VideoFrameRate::p60;
    video.frameCount = 90;
    video.duration = MediaRational{119, 60};
  });
  EXPECT_EQ(framesOf("-vcodec h264", {variable}), 119);
  EXPECT_EQ(framesOf("-vcodec h264 -vr 25", {changedVideo([](auto& video) { video.frameRate.reset(); })}), 250);
  EXPECT_EQ(successful(planned("-vcodec h264 -vr 0.5", {atRate(hdClip(), VideoFrameRate::p24)})).video->output(),
            successful(planned("-vcodec h264 -vr 12", {atRate(hdClip(), VideoFrameRate::p24)})).video->output());
  // The frames of an image sequence get their rate from "-vr" alone.
  const TranscodePlan sequence = successful(
      plannedAlone("-in_0_0 a.1.dpx -in_0_1 a.2.DPX -out a.mov -vr 24 -an -vcodec h264", {hdClip(), hdClip()}));
  EXPECT_TRUE(sequence.sources.front().isImageSequence);
  EXPECT_EQ(sequence.video->output().frameRate, VideoFrameRate::p24);
  EXPECT_EQ(sequence.video->frameCount, 500);
  MediaDescription exr = hdClip();
  exr.formatName = "exr_pipe";
  EXPECT_TRUE(successful(planned("-vcodec h264 -vr 24 -an", {exr})).sources.front().isImageSequence);
  MediaDescription animation = hdClip();
  animation.formatName = "gif";
  const std::string words = "-in_0_0 a.gif -out a.mov -an -vcodec h264";
  EXPECT_FALSE(successful(plannedAlone(words, {animation})).sources.front().isImageSequence);
}

TEST(PlanVideo, CopiesWithoutACodecAndUsesAGpuThatOpens) {
  const TranscodePlan copy = successful(planned("-vr 25 -dims 1920x1080 -vbd 10 -c_space rec_709"));
  EXPECT_TRUE(copy.video->isCopied());
  EXPECT_THAT(copy.video->steps, IsEmpty());
  EXPECT_THAT(copy.warnings, IsEmpty());
  TranscodeSurroundings found;
  found.openDevices = {"vaapi"};
  const TranscodePlan gpu =
      successful(planned("-vcodec h264 -vbd 8 -vbr 5 -gpu_encoding -gpu_decoding", {hdClip()}, found));
  EXPECT_TRUE(gpu.video->decodesOnGpu);
  EXPECT_EQ(gpu.video->encoder->name, "h264_vaapi");
  // Where the device fails at last, the CPU encodes as it would have.
  EXPECT_EQ(gpu.video->encoderWithoutGpu, successful(planned("-vcodec h264 -vbd 8 -vbr 5")).video->encoder);
  EXPECT_THAT(gpu.warnings, IsEmpty());
}

TEST(PlanVideo, MeasuresBurnInsByTheHeight) {
  const auto lastStep = [](std::string_view words, const TranscodeSurroundings& found = {}) {
    return successful(planned(words, {hdClip()}, found)).video->steps.back().step;
  };
  const auto style = std::get<TimecodeBurnStep>(lastStep("-vcodec prores422 -dims 960x540 -tc_burn")).style;
  EXPECT_EQ(style, (TextStyle{SAVAnchorBottomCenter, 540 * 0.04, 14, {255, 255, 255}, {0, 0, 0}}));
  const auto text = std::get<TextBurnStep>(lastStep(
      "-vcodec prores422 -dims 960x540 -wmt_burn -wmt_text a~b -wmt_size 36 -wmt_anchor tl -wmt_font_rgb 1,2,3"));
  EXPECT_EQ(text, (TextBurnStep{"a b", {SAVAnchorTopLeft, 18, 14, {1, 2, 3}, {0, 0, 0}}}));
  TranscodeSurroundings found;
  found.watermark = FoundWatermark{"/Looks/A.png", {100, 50}};
  EXPECT_EQ(std::get<WatermarkStep>(lastStep("-vcodec prores422 -wmf_path a.png -wmf_scale 0.1", found)).scale, 0.1);
  const auto mark = std::get<WatermarkStep>(lastStep("-vcodec prores422 -wmf_path a.png -wmf_scale 0.5", found));
  EXPECT_EQ(mark.size, (ImageSize{50, 25}));
  EXPECT_EQ(mark.path, "/Looks/A.png");
  EXPECT_EQ(mark.anchor, SAVAnchorBottomRight);
}

}  // namespace
}  // namespace meridian

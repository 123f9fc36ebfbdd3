#include <gmock/gmock.h>

#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/cli/transcode_detail_modifier.h"
#include "tests/cli/plain_detail_holder.h"
#include "tests/cli/random_words.h"

namespace meridian {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Words = std::vector<std::string>;

TEST(TranscodeDetailModifier, ReadsAndWritesEachMemberInOrder) {
  const auto expected = [](const Words& members) {
    Words log;
    for (const std::string& member : members) {
      log.push_back("read " + member);
      log.push_back("write " + member);
    }
    return log;
  };
  Words log;
  PlainDetailHolder model;
  PlainDetailHolder target;
  model.log = &log;
  target.log = &log;
  EXPECT_EQ(&TranscodeDetailModifier::updatedVideo(target, model), &target);
  EXPECT_EQ(log, expected({"videoFormat", "videoFrameRate", "videoDimensions", "videoBitRate", "videoBitDepth",
                           "prepareForWeb", "gpuDecode", "gpuEncode", "keyFrames", "lutFile", "aspectScaling",
                           "videoCropAnchor", "colorSpace", "videoProfile"}));
  log.clear();
  TranscodeDetailModifier::updatedAudio(target, model);
  Words audio = expected({"omitAudio", "audioFormat", "audioQuality", "sampleRate", "audioBitRate",
                          "audioBitsPerChannel", "audioOutputIsDiscrete"});
  for (const char* const step : {"read channelLayout", "read outputChannels", "write outputChannels",
                                 "write channelLayout", "read channelLayoutTag", "write channelLayoutTag",
                                 "read audioOutputIsDiscrete", "write audioOutputIsDiscrete"}) {
    audio.emplace_back(step);
  }
  EXPECT_EQ(log, audio);
  log.clear();
  TranscodeDetailModifier::updatedTimecode(target, model);
  EXPECT_EQ(log, expected({"includeTimecode", "timecodeSource", "timecode", "timecodeFrameRate", "timecodeIsDropFrame",
                           "addTimecodeTrack", "addTimecodeBurn", "timecodeBurnAnchor", "timecodeBurnFontSize",
                           "timecodeBurnFontColor", "timecodeBurnBoxColor"}));
}

PlainDetailHolder snapshotOf(const TranscodeCliArguments& arguments) {
  PlainDetailHolder holder;
  TranscodeDetailModifier::updatedVideo(holder, arguments);
  TranscodeDetailModifier::updatedAudio(holder, arguments);
  TranscodeDetailModifier::updatedTimecode(holder, arguments);
  return holder;
}

void update(TranscodeCliArguments& target, const auto& model) {
  target.updateFromVideoDetail(model);
  target.updateFromAudioDetail(model);
  target.updateFromTimecodeDetail(model);
}

/// Returns a store with random flags of the vocabulary and values that are valid, nearly valid, or not valid.
TranscodeCliArguments randomStore(RandomWords& random) {
  const Words odd{"",        "stereo", "2",       "1280 x 720", "1280X720", "-5",   "+5",     "25",  "1e3",
                  "nan",     "inf",    "h264",    "H264",       "sRGB",     "tl",   "match",  "max", "01:02:03;04",
                  "1:2:3:4", "#f80",   "1, 2; 3", "\xff",       "aac",      "true", "1.0x2.5"};
  TranscodeCliArguments arguments(random.vector());
  for (int edit = 0; edit < 12; ++edit) {
    arguments.setArgumentFlagValue(random.oneOf(flagDescriptions).text, random.oneOf(odd));
  }
  return arguments;
}

TEST(TranscodeDetails, HoldersAgreeAfterAnUpdate) {
  RandomWords random(21);
  for (int round = 0; round < 3000; ++round) {
    const TranscodeCliArguments model = randomStore(random);
    SCOPED_TRACE(model.cliString());
    PlainDetailHolder held = snapshotOf(model);
    // NaN is equal to nothing, itself included.
    if (!(held == held)) continue;

    TranscodeCliArguments target = randomStore(random);
    update(target, model);
    ASSERT_TRUE(snapshotOf(target) == held);
    // Through another holder as well, and from itself.
    TranscodeCliArguments other = randomStore(random);
    update(other, held);
    ASSERT_TRUE(snapshotOf(other) == held);
    update(other, other);
    ASSERT_TRUE(snapshotOf(other) == held);
    // The target has one form of each setting, so copying it again gives the same command line.
    TranscodeCliArguments again;
    update(again, other);
    TranscodeCliArguments last;
    update(last, again);
    ASSERT_EQ(last.flagValueLookup(), again.flagValueLookup());
  }
  TranscodeCliArguments full({"-vcodec", "h264", "-gpu_encoding", "-web", "-dims", "1x2", "-an", "-tc_track"});
  update(full, PlainDetailHolder());
  EXPECT_THAT(full.commandLine(), IsEmpty());
}

TEST(TranscodeDetails, ParseByTheirKindsAndKeepInvalidTexts) {
  TranscodeCliArguments arguments({"-gpu_decoding", "false", "-dims", "1280X720", "-vr", "29.97", "-vcodec", "vp9",
                                   "-vbd", "+10", "-key_frames", "1.5", "-c_space", "sRGB", "-clut", "/L/a.CUBE"});
  EXPECT_TRUE(arguments.gpuDecode());
  EXPECT_EQ(arguments.videoDimensions(), (Size{1280, 720}));
  EXPECT_EQ(*arguments.dimensionsSizeValue(), (Size{1280, 720}));
  EXPECT_EQ(arguments.videoFrameRate(), 29.97F);
  EXPECT_EQ(arguments.videoFormat(), std::nullopt);
  EXPECT_EQ(arguments.argumentFlagValue("-vcodec"), "vp9");
  EXPECT_EQ(arguments.videoBitDepth(), 10);
  EXPECT_EQ(arguments.keyFrames(), std::nullopt);
  EXPECT_EQ(arguments.colorSpace(), std::nullopt);
  EXPECT_EQ(arguments.lutFile(), Url::fromFilePath("/L/a.CUBE"));
  for (const std::string text : {"1280 x 720", "1280", "1280x", "x720", "1x2x3", " 1x2", "0x10x5", ""}) {
    arguments.setArgumentFlagValue("-dims", text);
    EXPECT_EQ(arguments.videoDimensions(), std::nullopt) << text;
    EXPECT_EQ(arguments.dimensionsSizeValue(), nullptr) << text;
  }
  arguments = {};
  arguments.setVideoDimensions(Size{1920, 1080.25});
  arguments.setVideoFrameRate(100000);
  arguments.setVideoBitRate(23.976F);
  arguments.setKeyFrames(-10);
  arguments.setColorSpace(SAVSrgbColorSpace);
  arguments.setGpuEncode(true);
  arguments.setAudioQuality(TranscodeAudioQuality::high);
  EXPECT_THAT(arguments.commandLine(),
              ElementsAre("-dims", "1920.000000x1080.250000", "-vr", "100000.0", "-vbr", "23.976", "-key_frames", "-10",
                          "-c_space", "sRGB", "-gpu_encoding", "", "-aqual", "high"));
  EXPECT_EQ(arguments.colorSpace(), SAVSrgbColorSpace);
  EXPECT_EQ(avAudioQuality(*arguments.audioQuality()), 96);
}

TEST(TranscodeDetails, AudioIsCopiedByDefaultAndChannelsShareAFlag) {
  struct Case {
    Words words;
    bool copy;
  };
  for (const auto& [words, copy] : {Case{{}, true},
                                    {{"-acodec", "aac"}, false},
                                    {{"-acodec", "lpcm"}, false},
                                    {{"-acodec", "apple_lossless"}, false},
                                    {{"-acodec", "aac_he"}, true},
                                    {{"-acodec", "mp3"}, true},
                                    {{"-acodec", "aac", "-acopy"}, true}}) {
    EXPECT_EQ(TranscodeCliArguments(words).copyAudio(), copy) << words.size();
  }
  TranscodeCliArguments arguments({"-acl", "stereo"});
  arguments.setCopyAudio(false);
  EXPECT_TRUE(arguments.copyAudio());
  arguments.setOutputChannels(2);
  EXPECT_EQ(arguments.channelLayout(), std::nullopt);
  arguments.setChannelLayout(std::nullopt);
  EXPECT_FALSE(arguments.hasArgumentFlag("-acl"));
  arguments.setChannelLayout(SAVStereoAudioLayout);
  arguments.setOutputChannels(std::nullopt);
  EXPECT_FALSE(arguments.hasArgumentFlag("-acl"));
  arguments.setIncludeAudio(false);
  EXPECT_TRUE(arguments.omitAudio() && !arguments.includeAudio() && arguments.includeVideo());
}

TEST(TranscodeDetails, TimecodeHasOneSource) {
  TranscodeCliArguments arguments({"-tc_match", "-tc_creation", "-tc_custom", "abc"});
  EXPECT_EQ(arguments.timecodeSource(), TimecodeSource::creationDate);
  arguments.setTimecode(TimecodeComponents{1, 2, 3, 4, true});
  EXPECT_THAT(arguments.commandLine(), ElementsAre("-tc_custom", "01:02:03;04"));
  arguments.setTimecodeSource(TimecodeSource::custom);
  EXPECT_EQ(arguments.timecode(), (TimecodeComponents{1, 2, 3, 4, true}));
  arguments.setTimecodeSource(TimecodeSource::match);
  EXPECT_THAT(arguments.commandLine(), ElementsAre("-tc_match", ""));
  arguments.setTimecodeSource(TimecodeSource::custom);
  EXPECT_THAT(arguments.commandLine(), ElementsAre("-tc_custom", "00:00:00:00"));
  arguments.setTimecodeSource(std::nullopt);
  EXPECT_THAT(arguments.commandLine(), IsEmpty());
  arguments.setIncludeTimecode(true);
  arguments.setTimecodeBurnFontColor(RgbColor{255, 128, 0});
  EXPECT_THAT(arguments.commandLine(), ElementsAre("-tc_track", "", "-tc_burn_font_rgb", "255,128,0"));
  arguments.setAddTimecodeBurn(true);
  arguments.setIncludeTimecode(false);
  EXPECT_FALSE(arguments.addTimecodeTrack() || arguments.addTimecodeBurn());
}

TEST(TranscodeDetails, IgnoredTracksAreReportedOnceInOrder) {
  TranscodeCliArguments arguments(
      {"-ac_omit_10", "-ac_omit_2", "-ac_omit_02", "-ac_omit", "-ac_omit_-1", "-ac_omit_x"});
  const auto tracks = [&arguments] {
    std::vector<std::int64_t> found;
    arguments.enumerateIgnoredAudioFileTracks([&found](std::int64_t track) { found.push_back(track); });
    return found;
  };
  EXPECT_THAT(tracks(), ElementsAre(2, 10));
  arguments.setIgnoredAudioFileTracks(std::vector<std::int64_t>{3, 0, 3, -1});
  EXPECT_THAT(arguments.commandLine(), ElementsAre("-ac_omit_3", "", "-ac_omit_0", ""));
  EXPECT_THAT(tracks(), ElementsAre(0, 3));
  EXPECT_EQ(TranscodeCliArguments(arguments.commandLine()).stored(), arguments.stored());
  arguments.setIgnoredAudioFileTracks({});
  EXPECT_THAT(arguments.commandLine(), IsEmpty());
}

TEST(TranscodeDetails, AnalysisIsRequiredForScalingsThatDependOnTheSource) {
  struct Case {
    Words words;
    bool required;
  };
  for (const auto& [words, required] : {Case{{}, false},
                                        {{"-dims", "1x2"}, false},
                                        {{"-dims", "1x2", "-aspect_scaling", "match"}, false},
                                        {{"-dims", "1x2", "-aspect_scaling", "crop"}, true},
                                        {{"-dims", "1x2", "-aspect_scaling", "crop", "-vn"}, false},
                                        {{"-dims", "abc", "-aspect_scaling", "foo"}, true},
                                        {{"-aspect_scaling", "letterbox"}, false}}) {
    EXPECT_EQ(TranscodeCliArguments(words).sourceFileAnalysisRequired(), required) << words.size();
  }
}

TEST(TranscodeDetails, EachSetterWritesItsOwnFlag) {
  TranscodeCliArguments arguments;
  arguments.setOmitVideo(true);
  arguments.setVideoCropAnchor(VideoCropAnchor::bottomCenter);
  arguments.setVideoProfile("main");
  arguments.setLutFile(Url::fromFilePath("/L.cube"));
  arguments.setPrepareForWeb(true);
  arguments.setGpuDecode(true);
  arguments.setAspectScaling(SAVCropAspect);
  arguments.setAudioFormat(SAVLpcmAudioFormatValue);
  arguments.setSampleRate(1);
  arguments.setAudioBitRate(2);
  arguments.setAudioBitsPerChannel(3);
  arguments.setAudioOutputIsDiscrete(true);
  arguments.setChannelLayoutTag(4);
  arguments.setChannelLayoutDescriptions("d");
  arguments.setChannelLayoutBitmap(5);
  arguments.setTimecodeFrameRate(24);
  arguments.setTimecodeIsDropFrame(true);
  arguments.setAddTimecodeBurn(true);
  arguments.setTimecodeBurnAnchor(SAVAnchorTopLeft);
  arguments.setTimecodeBurnFontSize(6);
  arguments.setTimecodeBurnFontColor(RgbColor{7, 7, 7});
  arguments.setTimecodeBurnBoxColor(RgbColor{8, 8, 8});
  arguments.setWatermarkFile(Url::fromFilePath("/W.png"));
  arguments.setWatermarkFileAnchor(SAVAnchorCenter);
  arguments.setWatermarkFileScale(0.5F);
  arguments.setAddWatermarkText(true);
  arguments.setWatermarkText("w");
  arguments.setWatermarkTextFontSize(9);
  arguments.setWatermarkTextAnchor(SAVAnchorTopRight);
  arguments.setWatermarkTextFontColor(RgbColor{10, 10, 10});
  arguments.setWatermarkTextBoxColor(RgbColor{11, 11, 11});
  arguments.setLookColorSpace("cs");
  arguments.setLookWhitePoint("wp");
  arguments.setLookCurve("c");
  arguments.setLookInvalidResolution("r");
  arguments.setRequested(SAVCliCodecsFlag, true);
  const Words expected{"-vn",
                       "",
                       "-crop_anchor",
                       "bc",
                       "-vprofile",
                       "main",
                       "-clut",
                       "/L.cube",
                       "-web",
                       "",
                       "-gpu_decoding",
                       "",
                       "-aspect_scaling",
                       "crop",
                       "-acodec",
                       "lpcm",
                       "-asr",
                       "1",
                       "-abr",
                       "2",
                       "-abpc",
                       "3",
                       "-adiscrete",
                       "",
                       "-acl_tag",
                       "4",
                       "-acl_descs",
                       "d",
                       "-acl_bitmap",
                       "5",
                       "-tc_rate",
                       "24.0",
                       "-tc_drop",
                       "",
                       "-tc_burn",
                       "",
                       "-tc_burn_anchor",
                       "tl",
                       "-tc_burn_size",
                       "6",
                       "-tc_burn_font_rgb",
                       "7,7,7",
                       "-tc_burn_box_rgb",
                       "8,8,8",
                       "-wmf_path",
                       "/W.png",
                       "-wmf_anchor",
                       "c",
                       "-wmf_scale",
                       "0.5",
                       "-wmt_burn",
                       "",
                       "-wmt_text",
                       "w",
                       "-wmt_size",
                       "9",
                       "-wmt_anchor",
                       "tr",
                       "-wmt_font_rgb",
                       "10,10,10",
                       "-wmt_box_rgb",
                       "11,11,11",
                       "-arri_cs",
                       "cs",
                       "-arri_wp",
                       "wp",
                       "-arri_curve",
                       "c",
                       "-arri_inv_res",
                       "r",
                       "-codecs",
                       ""};
  EXPECT_EQ(arguments.commandLine(), expected);
  EXPECT_EQ(arguments.watermarkTextFontColor(), (RgbColor{10, 10, 10}));
  EXPECT_EQ(arguments.timecodeBurnBoxColor(), (RgbColor{8, 8, 8}));
  EXPECT_EQ(arguments.watermarkFileScale(), 0.5F);
  EXPECT_EQ(arguments.lookCurve(), "c");
  EXPECT_TRUE(arguments.isRequested(SAVCliCodecsFlag) && arguments.addWatermarkText());
}

TEST(RgbColor, ParsesLenientlyAndHasOneForm) {
  struct Case {
    std::string_view text;
    std::optional<RgbColor> color;
  };
  const RgbColor orange{255, 128, 0};
  const Case cases[]{{"255,128,0", orange},
                     {" 255 , 128 ; 0 ", orange},
                     {"255 128 0", orange},
                     {"#ff8000", orange},
                     {"FF8000", orange},
                     {"#f80", RgbColor{255, 136, 0}},
                     {"000128", RgbColor{0, 1, 40}},
                     {"256,0,0", {}},
                     {"1,2", {}},
                     {"1,2,3,4", {}},
                     {"1,,3", {}},
                     {"#ff80", {}},
                     {"f80", {}},
                     {"#gg0000", {}},
                     {"", {}},
                     {"-1,0,0", {}},
                     {"1,2,3,", {}},
                     {"red", {}}};
  for (const auto& [text, color] : cases) {
    EXPECT_EQ(RgbColor::fromText(text), color) << text;
    if (color) {
      EXPECT_EQ(RgbColor::fromText(color->text()), color) << text;
    }
  }
}

}  // namespace
}  // namespace meridian

#include <gmock/gmock.h>

#include <set>

#include "meridian/cli/transcode_flags.h"
#include "tests/engine/planned_words.h"

namespace meridian {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

/// Words that can be planned, and the one warning about them: its flag, code, and a part of its message.
struct WarningCase {
  std::string words;
  std::string warning;
  std::string message;
  std::vector<MediaDescription> media = {hdClip()};
  TranscodeSurroundings found = {};
};

const std::vector<WarningCase>& warningCases() {
  using Clip = MediaDescription;
  using Video = VideoStreamDescription;
  using Audio = AudioStreamDescription;
  const MediaDescription unplaced = changedClip([](Clip&, Video&, Audio& track) {
    track.channelCount = 6;
    track.channels.clear();
  });
  const MediaDescription dpx = changedClip([](Clip& clip, Video&, Audio&) { clip.formatName = "dpx_pipe"; });
  TranscodeSurroundings withLogo;
  withLogo.watermark = FoundWatermark{"logo.png", {300, 200}};
  static const std::vector<WarningCase> rows{
      {"-cluts a.cube", "-cluts acceptedByContainment", "-clut"},
      {"-web yes", "-web valueAfterSwitch", "\"yes\""},
      {"-acodec aac pcm", "pcm strayWord", ""},
      {"-in_0_0 b.mov", "-in_0_0 repeated", "instead of \"/card/a.mov\""},
      {"-out /out/b.mov -out /out/a.mov", "-out repeated", "instead of \"/out/b.mov\""},
      // Settings without effect, and why.
      {"-vcodec prores422 -vbr 100", "-vbr withoutEffect", "its own bit rate"},
      {"-vcodec prores422 -key_frames 25", "-key_frames withoutEffect", "every frame is a key frame"},
      {"-out /out/a.mxf -vcodec dnxhd -vprofile dnxhr_sq -vbr 5", "-vbr withoutEffect", "profile"},
      {"-vcodec h264 -crop_anchor tl -dims 960x540", "-crop_anchor withoutEffect", "nothing is cropped"},
      {"-vcodec h264 -aspect_scaling crop", "-aspect_scaling withoutEffect", "no -dims"},
      {"-vcodec h264 -aspect_scaling crop -dims 0.5x0.5", "-aspect_scaling withoutEffect", "factor"},
      {"-vcodec h264 -crop_anchor tl", "-crop_anchor withoutEffect", "no -dims"},
      {"-vcodec h264 -aspect_scaling crop -dims 0x0", "-aspect_scaling withoutEffect", "does not set a size"},
      {"-vn -clut a.cube", "-clut withoutEffect", "no video"},
      {"-vn -tc_match", "-tc_match withoutEffect", "no video"},
      {"-out /out/a.mjpeg -an -vcodec mjpeg -vbd 8 -tc_match", "-tc_match withoutEffect", "keeps no timecode"},
      {"-vcodec h264 -vbr copy", "-vbr withoutEffect", "does not state its bit rate"},
      {"-acodec aac -abr copy", "-abr withoutEffect", "does not state its bit rate"},
      {"-vprofile high", "-vprofile withoutEffect", "the video is copied"},
      {"-vbr 5", "-vbr withoutEffect", "the video is copied"},
      {"-vn -vcodec h264", "-vcodec withoutEffect", "no video"},
      {"-asr 44100", "-asr withoutEffect", "the audio is copied"},
      {"-acopy -acodec aac", "-acodec withoutEffect", "-acopy"},
      {"-adiscrete", "-adiscrete withoutEffect", "the audio is copied"},
      {"-an -abr 128000", "-abr withoutEffect", "no audio"},
      {"-an -ac_omit_0", "-ac_omit_0 withoutEffect", "no audio"},
      {"-acodec lpcm -abr 128000", "-abr withoutEffect", "samples decide"},
      {"-acodec apple_lossless -aqual max", "-aqual withoutEffect", "loses nothing"},
      {"-acodec aac -abr 128000 -aqual max", "-aqual withoutEffect", "-abr"},
      {"-acodec aac -abpc 24", "-abpc withoutEffect", "does not keep samples"},
      {"-out /out/a.mxf -vcodec dnxhd -acodec lpcm -web", "-web withoutEffect", "no index"},
      {"-tc_drop", "-tc_drop withoutEffect", "-tc_track or -tc_burn"},
      {"-vn -tc_track", "-tc_track withoutEffect", "no video"},
      {"-out /out/a.mjpeg -an -vcodec mjpeg -vbd 8 -tc_track", "-tc_track withoutEffect", "keeps no timecode"},
      {"-tc_track -tc_match -tc_custom 01:00:00:00", "-tc_match withoutEffect", "another source"},
      {"-tc_track -tc_burn_size 20", "-tc_burn_size withoutEffect", "no -tc_burn"},
      {"-vcodec h264 -wmt_text x", "-wmt_text withoutEffect", "no -wmt_burn"},
      {"-vcodec h264 -wmf_scale 2", "-wmf_scale withoutEffect", "no -wmf_path"},
      // The sources.
      {"", "-in_0_0 noticedInSource", "ends before the last of its data", {changedClip([](Clip& clip, Video&, Audio&) {
         clip.warnings.push_back({MediaWarningCode::endsBeforeItsData, "/card/a.mov", "20 bytes"});
       })}},
      {"-out /out/a.mxf -vcodec dnxhd -acodec lpcm",
       "-out tagsLeftOut",
       "the maker, the reel",
       {changedClip([](Clip& clip, Video&, Audio&) {
         clip.maker = "ARRI";
         clip.reelName = "A001";
       })}},
      {"", "-in_0_0 partOfSourceLeftOut", "has 2", {changedClip([](Clip& clip, Video& video, Audio&) {
         clip.video.push_back(video);
       })}},
      {"", "-in_0_0 streamsLeftOut", "has 2 of data, 1 of subtitle", {changedClip([](Clip& clip, Video&, Audio&) {
         clip.others.resize(4);
         clip.others[0].kind = clip.others[2].kind = OtherStreamKind::data;
         clip.others[1].kind = OtherStreamKind::timecode;
         clip.others[3].kind = OtherStreamKind::subtitle;
       })}},
      {"-vcodec h264", "-in_0_0 variableRate", "25 fps", {changedClip([](Clip&, Video& video, Audio&) {
         video.isVariable = true;
       })}},
      {"-vcodec h264", "-in_0_0 deinterlaced", "", {changedClip([](Clip&, Video& video, Audio&) {
         video.fieldOrder = FieldOrder::topFirst;
       })}},
      {"-vcodec h264", "-in_0_0 depthReduced", "12 become 8", {changedClip([](Clip&, Video& video, Audio&) {
         video.bitDepth = 12;
       })}},
      {"-vcodec h264", "-in_0_0 alphaLeftOut", "prores4444", {changedClip([](Clip&, Video& video, Audio&) {
         video.hasAlpha = true;
       })}},
      {"-vcodec h264 -clut a.cube",
       "-in_0_0 colorAssumed",
       "rec_709 is assumed",
       {changedClip([](Clip&, Video& video, Audio&) { video.primaries = video.transfer = video.matrix = {}; })}},
      {"-vcodec h264 -c_space rec_2020",
       "-in_0_0 colorAssumed",
       "1-16-1 is assumed",
       {changedClip([](Clip&, Video& video, Audio&) {
         video.matrix = {};
         video.transfer = {16, "smpte2084"};
       })}},
      {"-vcodec h264 -clut a.cube", "-clut lutColorUnstated", "-c_space", {changedClip([](Clip&, Video& video, Audio&) {
         video.primaries = video.matrix = {9, "bt2020"};
         video.transfer = {14, "bt2020-10"};
       })}},
      {"-vcodec h264 -vr 25 -an",
       "-in_0_0 linearLight",
       "-c_space rec_709",
       {changedClip([](Clip&, Video& video, Audio&) {
         video.codecName = "exr";
         video.chroma = ChromaSubsampling::rgb;
         video.primaries = video.transfer = video.matrix = {};
       })}},
      {"-in_0_1 a.0009.dpx -in_0_2 a.0011.dpx -in_0_3 a.0013.dpx -vcodec h264 -vr 25 -an",
       "-in_0_2 numbersMissing",
       "\"a.0011.dpx\" follows \"a.0009.dpx\"",
       {dpx, dpx, dpx, dpx}},
      {"-in_1_0 b.wav -in_1_1 c.wav",
       "-in_1_0 soundOutlastsImages",
       "20.000 s, and the images 10.000 s",
       {hdClip(), soundClip(), soundClip()}},
      {"-ac_omit_4", "-ac_omit_4 noSuchTrack", "there are 1"},
      // The rest.
      {"-file_format wav -out /out/a.wav", "-file_format videoLeftOut", "-vn"},
      {"-vcodec h264 -dims 3840x2160", "-dims notEnlarged", "1920 x 1080 stays"},
      {"-vcodec h264 -dims 3840x2160", "-dims notEnlarged", "856 x 480 stays", {withSize(hdClip(), 856, 481)}},
      {"-vcodec h264 -gpu_decoding", "-gpu_decoding gpuNotUsed", "CPU"},
      {"-vcodec h264 -vbd 8 -gpu_encoding", "-gpu_encoding gpuNotUsed", "no GPU that encodes can be used here"},
      {"-vcodec h264 -gpu_encoding", "-gpu_encoding gpuNotUsed", "set -vbd 8"},
      {"-vcodec h264 -vbd 8 -vprofile high10 -gpu_encoding", "-gpu_encoding gpuNotUsed",
       "no GPU encodes the profile high10"},
      {"-vcodec prores422 -gpu_encoding", "-gpu_encoding gpuNotUsed", "no GPU encodes prores422"},
      {"-vcodec prores422",
       "-in_0_0 rotationRounded",
       "45 degrees become 90",
       {changedClip([](Clip&, Video& video, Audio&) { video.rotation = 45; })}},
      {"-acodec apple_lossless",
       "-in_0_0 depthReduced",
       "32 of its audio become 24",
       {changedClip([](Clip&, Video&, Audio& track) { track.bitsPerChannel = 32; })}},
      {"-acodec aac", "-in_0_0 layoutAssumed", "L R C LFE Ls Rs is assumed; state them with -acl_descs", {unplaced}},
      {"-acodec aac -acl 6", "-in_0_0 layoutAssumed", "with -acl_descs instead of -acl", {unplaced}},
      // The number of channels of -acl_descs would contradict -acl.
      {"-acodec aac -acl stereo", "-in_0_0 layoutAssumed", "Rs is assumed\n", {unplaced}},
      {"-acodec lpcm -acl_descs [2~1", "-acl_descs channelsReordered", "stored as L R"},
      {"-acodec lpcm -adiscrete -acl 4", "-acl channelsAdded", "4 where there are 2"},
      {"-acodec lpcm -adiscrete -in_1_0 b.wav",
       "-adiscrete sampleRatesDiffer",
       "the track has 48000",
       {changedClip([](Clip&, Video&, Audio& track) { track.sampleRate = 44100; }), soundClip()}},
      {"-vcodec h264 -vr 24 -tc_track",
       "-in_0_0 dropFrameLost",
       "01:00:58;28 becomes 01:00:58:22",
       {changedClip([](Clip& clip, Video& video, Audio&) {
         video.frameRate = clip.timecode->rate = VideoFrameRate::ntsc30p;
         clip.timecode->start = {1, 0, 58, 28, true};
       })}},
      {"-acodec aac_he", "-acodec copiedInstead", "\"aac_he\""},
      {"-acodec mp3", "-acodec copiedInstead", "lpcm, aac or apple_lossless"},
      {"-vn -out /out/a.wav",
       "-out repacked",
       "pcm_s24be of track 0 becomes pcm_s24le",
       {changedClip([](Clip&, Video&, Audio& track) { track.codecName = "pcm_s24be"; })}},
      {"-vcodec h264 -dims 32x18 -tc_burn", "-tc_burn textTooSmall", "0.7 pixels high"},
      {"-vcodec h264 -wmf_path logo.png -wmf_scale 0.01",
       "-wmf_scale watermarkTooSmall",
       "3 x 2",
       {hdClip()},
       withLogo},
      {"-tc_track -tc_match", "-tc_match timecodeAssumed", "00:00:00:00", {changedClip([](Clip& clip, Video&, Audio&) {
         clip.timecode.reset();
       })}},
      {"-out /out/a.mxf -acodec lpcm -vcodec dnxhd",
       "-out timecodeAssumed",
       "00:00:00:00",
       {changedClip([](Clip& clip, Video&, Audio&) { clip.timecode.reset(); })}},
      {"-tc_track -tc_creation",
       "-tc_creation timecodeFromCreation",
       "2026-11-22T10:20:30+0100, as written",
       {changedClip([](Clip& clip, Video&, Audio&) { clip.creationDate = "2026-11-22T10:20:30+0100"; })}},
      {"-vcodec h264 -tc_track -vr 29.97 -tc_drop",
       "-in_0_0 timecodeMoved",
       "01:01:00;00 becomes 01:01:00;02",
       {changedClip([](Clip& clip, Video&, Audio&) { clip.timecode->start = {1, 1, 0, 0, false}; })}},
      {"-in_0_1 b.mov -tc_track",
       "-in_0_1 timecodeBreaks",
       "05:00:00:00",
       {hdClip(), changedClip([](Clip& clip, Video&, Audio&) { clip.timecode->start = {5, 0, 0, 0, false}; })}},
      {"-vcodec h264 -wmf_path Logo.png", "-wmf_path lowerCased", "\"Logo.png\" is used as \"logo.png\""},
  };
  return rows;
}

TEST(PlanWarnings, EachNameTheirFlagAndReason) {
  for (const WarningCase& each : warningCases()) {
    SCOPED_TRACE(each.words);
    const TranscodePlan plan = successful(planned(each.words, each.media, each.found));
    EXPECT_THAT(codesOf(plan.warnings), ElementsAre(each.warning));
    if (!plan.warnings.empty()) {
      EXPECT_THAT(plan.warnings.front().message() + "\n", HasSubstr(each.message));
    }
  }
}

TEST(PlanWarnings, HaveAVectorForEachCode) {
  std::set<std::string> found;
  for (const WarningCase& each : warningCases()) found.insert(each.warning.substr(each.warning.find(' ') + 1));
  for (const TranscodePlanWarningCode code : allCases<TranscodePlanWarningCode>()) {
    EXPECT_TRUE(found.contains(std::string(rawValue(code)))) << rawValue(code);
  }
}

TEST(PlanWarnings, AreNotGivenForSettingsThatCount) {
  MediaDescription clip = hdClip();
  clip.audio.resize(2, clip.audio.front());
  // Each flag of the vocabulary but the camera looks, which cannot be applied, has an effect in one of these.
  const std::vector<std::string> vectors{
      "-preset solvane_cloud -overwrite -progress_file /p -progress_prefix p: -work_dir /w -isTranscoder",
      "-vcodec h264 -vr 24 -dims 640x480 -aspect_scaling crop -crop_anchor tl -vbr 3 -vbd 8 -c_space sRGB -key_frames "
      "24 -vprofile high@4.1 -gpu_decoding -gpu_encoding -clut a.cube -web -file_format mp4 -acodec aac -aqual high",
      "-vcodec prores422 -tc_track -tc_burn -tc_burn_anchor tl -tc_burn_size 20 -tc_burn_font_rgb 1,2,3 "
      "-tc_burn_box_rgb 4,5,6 -tc_custom 01:00:00:00 -tc_rate 25 -wmf_anchor tl -wmf_path logo.png -wmf_scale 0.5 "
      "-wmt_burn -wmt_text x -wmt_size 20 -wmt_anchor tl -wmt_font_rgb 1,2,3 -wmt_box_rgb 1,2,3",
      "-vcodec h264 -vr 29.97 -tc_track -tc_match -tc_drop -an",
      "-tc_track -tc_creation -acodec lpcm -abpc 16 -asr 44100 -acl stereo -acl_tag 6619138 -acl_descs [1~2 "
      "-acl_bitmap 3 -ac_omit_1",
      "-acodec aac -abr 128000 -adiscrete -ac_omit_1",
      "-vn -acopy -out /out/a.mov",
      "-vcodec copy -vr copy -dims copy -vbd copy -c_space copy -acodec copy",
  };
  std::set<std::string, std::less<>> effective;
  TranscodeSurroundings found;
  found.output.exists = true;
  found.openDevices = {"vaapi"};
  for (const std::string& words : vectors) {
    SCOPED_TRACE(words);
    found.output.exists = words.find("-overwrite") != std::string::npos;
    const TranscodePlan plan = successful(planned(words, {clip}, found));
    std::set<std::string, std::less<>> ineffective;
    for (const TranscodePlanWarning& warning : plan.warnings) {
      if (warning.code == TranscodePlanWarningCode::withoutEffect) ineffective.insert(warning.place);
    }
    EXPECT_THAT(ineffective, IsEmpty());
    for (const ExplainedSetting& setting : explain(wordsOf(words)).settings) effective.insert(setting.flag);
  }
  for (const FlagDescription& flag : flagDescriptions) {
    if (flag.group == FlagGroup::command || flag.group == FlagGroup::cameraLook || flag.text == "-preset" ||
        flag.text == "-in" || flag.text == "-ac_omit") {
      continue;
    }
    EXPECT_TRUE(effective.contains(flag.text) || flag.text == "-out") << flag.text;
  }
}

}  // namespace
}  // namespace meridian

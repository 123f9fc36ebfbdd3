#include "meridian/engine/transcode_plan_text.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "meridian/engine/transcode_listing.h"
#include "meridian/serialization/transcode_plan_json.h"
#include "tests/engine/planned_words.h"

namespace meridian {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(PlanText, TellsThePlanToAPerson) {
  MediaDescription clip = hdClip();
  clip.maker = "RED";
  clip.video.front().primaries = clip.video.front().transfer = clip.video.front().matrix = {};
  TranscodeSurroundings found;
  found.output.exists = true;
  const TranscodePlan plan =
      successful(planned("-vcodec h264 -vbd 8 -vbr 3 -dims 960x960 -aspect_scaling letterbox -vr 29.97 -clut a.cube "
                         "-tc_track -tc_burn -acodec aac -asr 44100 -web -overwrite -work_dir /w -progress_prefix p: "
                         "-crop_anchor c",
                         {clip}, found));
  EXPECT_EQ(describe(plan), R"(Sources
  -in_0_0  "/card/a.mov", the image, 250 frames, 10 s
Video
  decode    prores, 1920 x 1080, yuv422p10le, rec_709 (assumed), limited range, 25 fps
  scale     bicubic to 960 x 540
  format    to gbrp10le, rec_709 as R'G'B', full range
  lut       "a.cube", tetrahedral, red fastest, declared domain
  pad       black bars, image at 0, 210 to 960 x 960
  rate      drop or repeat frames to 29.970 fps (30000/1001)
  format    to yuv420p, rec_709, limited range
  timecode  at the bottom centre, 38 pixels high, 255,255,255 on 0,0,0
  encode    h264 with libx264, yuv420p, 960 x 960, 29.970 fps (30000/1001), rec_709, 300 frames, 3 Mb/s
  options   b=3000000, maxrate=4500000, bufsize=6000000
Audio
  track 0  from track 0: encode with aac, 44100 samples a second from 48000, L R, 128000 bits a second
Timecode
  start   01:00:00:00, as the source
  counts  29.970 fps (30000/1001)
  stored  in the file, and burnt in
Output
  file        "/out/a.mov", replaces the existing file
  container   QuickTime
  options     movflags=+faststart+use_metadata_tags, write_tmcd=1
  tags        com.apple.quicktime.make=RED
  unfinished  in "/w"
  progress    to standard output, each line after "p:"
Warnings
  "-in_0_0": does not state its colour space: rec_709 is assumed
  "-crop_anchor": has no effect: nothing is cropped
)");
}

TEST(PlanText, TellsWhatIsMixedAndWhatTheSourceLacks) {
  MediaDescription clip = hdClip();
  clip.timecode.reset();
  const TranscodePlan plan = successful(planned("-acodec lpcm -acl mono -tc_track", {clip}));
  EXPECT_THAT(describe(plan), AllOf(HasSubstr("48000 samples a second, C mixed from L R\n"),
                                    HasSubstr("start   00:00:00:00, the source has none\n")));
  EXPECT_EQ(nlohmann::ordered_json(plan)["timecode"]["isAssumed"], true);
  const TranscodePlan sound = successful(planned("-vn"));
  EXPECT_THAT(describe(sound), Not(HasSubstr("the image")));
  // Surround channels at the sides become those at the back.
  clip.audio.front().channelCount = 6;
  clip.audio.front().channels = {{1, "FL"}, {2, "FR"}, {3, "FC"}, {4, "LFE"}, {10, "SL"}, {11, "SR"}};
  clip.video.front().isVariable = true;
  EXPECT_THAT(describe(successful(planned("-acodec apple_lossless", {clip}))),
              AllOf(HasSubstr("L R C LFE Ls Rs"), Not(HasSubstr("mixed")), HasSubstr("25 fps, variable\n")));
  EXPECT_THAT(describe(successful(planned("-vcodec h264 -dims 32x18 -tc_burn"))),
              HasSubstr("at the bottom centre, 0.7 pixels high"));
}

TEST(PlanText, ShortensALongListOfParts) {
  std::string words = "-vcodec h264 -vr 25";
  for (int place = 1; place < 100; ++place) words += " -in_0_" + std::to_string(place) + " b.dpx";
  const std::string text = describe(successful(planned(words, std::vector<MediaDescription>(100, hdClip()))));
  EXPECT_THAT(text, AllOf(HasSubstr("...       98 more"), HasSubstr("in all    25000 frames"), HasSubstr("-in_0_99")));
  EXPECT_THAT(text, Not(HasSubstr("-in_0_50")));
}

TEST(PlanText, IsSafeForATerminal) {
  MediaDescription clip = hdClip();
  clip.video.front().codecName = "pro\x1b[31m";
  clip.maker = "R\x1b[31mED";
  clip.audio.front().language = "e\nn";
  const std::vector<Expected<MediaDescription, MediaError>> media{clip};
  const auto plan = planTranscode(explain({"-in_0_0", "a\x1b[2J.mov", "-out", "/b\x1b.mov", "-vcodec", "h264",
                                           "-wmt_burn", "-wmt_text", "\x1b]0;", "-cluts\x1b", "x"}),
                                  media, fullInventory(), {});
  ASSERT_TRUE(plan);
  EXPECT_THAT(describe(*plan), AllOf(Not(HasSubstr("\x1b")), HasSubstr("\\x1b")));
}

TEST(PlanJson, HoldsTheWholePlan) {
  const nlohmann::ordered_json json = successful(
      planned("-vcodec prores422 -dims 540x540 -aspect_scaling crop -clut a.cube -tc_burn -acodec lpcm -adiscrete "
              "-tc_custom 00:00:01:02 -wmt_burn -wmt_text x -wmf_path b.png -c_space rec_2020 -key_frames 2"));
  EXPECT_EQ(json["sources"][0]["parts"][0]["path"], "/card/a.mov");
  EXPECT_EQ(json["sources"][0]["parts"][0]["duration"].dump(), R"({"numerator":10,"denominator":1})");
  const auto& steps = json["video"]["steps"];
  std::vector<std::string> names;
  for (const auto& step : steps) names.push_back(step["step"]);
  EXPECT_THAT(names,
              ::testing::ElementsAre("scale", "crop", "format", "lut", "format", "timecode", "text", "watermark"));
  EXPECT_EQ(steps[1]["x"], 210);
  EXPECT_EQ(steps[1]["anchor"], "c");
  EXPECT_EQ(steps[3]["interpolation"], "tetrahedral");
  EXPECT_EQ(steps[4]["result"]["color"]["matrix"], 9);
  EXPECT_EQ(steps[4]["result"]["frameRate"], (nlohmann::ordered_json{{"pal25p", nlohmann::ordered_json::object()}}));
  EXPECT_EQ(json["video"]["encoder"]["options"]["profile"], "2");
  EXPECT_EQ(json["video"]["encoder"]["bitRate"], nullptr);
  EXPECT_EQ(json["video"]["frameCount"], 250);
  EXPECT_EQ(json["audio"][0]["layoutTag"], nullptr);
  EXPECT_EQ(json["audio"][0]["origins"][0]["track"], 0);
  EXPECT_EQ(json["timecode"]["text"], "00:00:01:02");
  EXPECT_EQ(json["timecode"]["source"], "custom");
  EXPECT_EQ(json["output"]["container"], "mov");
  EXPECT_EQ(json["warnings"][0]["code"], "withoutEffect");
  EXPECT_EQ(json["warnings"][0]["place"], "-key_frames");
  const nlohmann::ordered_json error = planned("-foo").error().front();
  EXPECT_EQ(error["code"], "unknownFlag");
  EXPECT_EQ(error["remedy"], "check the spelling");
  EXPECT_EQ(error["message"], R"("-foo": is not a flag of the transcoder; check the spelling)");
  const nlohmann::ordered_json sound = successful(planned("-vn"));
  EXPECT_EQ(sound["video"], nullptr);
  EXPECT_EQ(sound["audio"][0]["copiedCodec"], "pcm_s24le");
}

std::optional<std::string> listed(std::string_view words, const EncoderInventory& inventory = fullInventory()) {
  return listingOf(explain(wordsOf(words)), inventory, {});
}

TEST(Listing, IsPrintedForEachCommand) {
  EXPECT_EQ(listed("-aspect_scalings"), "match\nstretch\nletterbox\ncrop\n");
  EXPECT_EQ(listed("-crop_anchors"), "tl\ntc\ntr\ncl\nc\ncr\nbl\nbc\nbr\n");
  EXPECT_EQ(listed("-tc_burn_anchors"), listed("-crop_anchors"));
  EXPECT_EQ(listed("-color_spaces"), "rec_2020\nrec_709\nsRGB\nsmpte_c\nebu_3213\n");
  EXPECT_EQ(listed("-audio_channel_layouts"), "mono\nstereo\nquad\npent\nhex\noct\n");
  EXPECT_EQ(listed("-gpu_platforms"), "no GPU can be used here\n");
  EXPECT_EQ(listingOf(explain({"-gpu_platforms"}), fullInventory(), std::vector<std::string>{"vaapi"}), "vaapi\n");
  EXPECT_THAT(*listed("-formats"), AllOf(HasSubstr("qt     QuickTime  .mov .mp4"), HasSubstr(".mxf")));
  EXPECT_THAT(*listed("-presets"), AllOf(HasSubstr("solvane_cloud (cloud):\n  -file_format     qt"),
                                         HasSubstr("solvane_4444xq (ProRes 4444 XQ):")));
  EXPECT_THAT(*listed("-version"), AllOf(HasSubstr("Meridian "), HasSubstr("FFmpeg 5.1")));
  EXPECT_THAT(*listed("-acknowledge"),
              AllOf(HasSubstr("GPL version 2 or later, with x264 and x265\n"), HasSubstr("GPL version 3 or later; ")));
  const std::string help = *listed("-h");
  for (const FlagDescription& flag : flagDescriptions) {
    if (flag.isCase || flag.group != FlagGroup::command) {
      EXPECT_THAT(help, HasSubstr(flag.text));
    }
  }
  EXPECT_THAT(help, Not(HasSubstr("-wmf_burn_anchors")));
  EXPECT_EQ(listed("-color_spaces -presets"), *listed("-color_spaces") + "\n" + *listed("-presets"));
  EXPECT_EQ(listed("-in_0_0 a.mov -out b.mov"), std::nullopt);
}

TEST(Listing, SaysWhichEncodersAreMissing) {
  EXPECT_THAT(*listed("-codecs"), AllOf(HasSubstr("h264            libx264"), HasSubstr("prores422proxy  prores_aw"),
                                        HasSubstr("pcm_s24le"), Not(HasSubstr("libx264: not in this FFmpeg"))));
  EncoderInventory bare;
  bare.encoders.emplace_back().name = "prores_ks";
  EXPECT_THAT(*listed("-codecs", bare),
              AllOf(HasSubstr("libx264: not in this FFmpeg"), HasSubstr("prores422proxy  prores_ks")));
}

}  // namespace
}  // namespace meridian

#include <gmock/gmock.h>

#include <set>

#include "tests/engine/planned_words.h"

namespace meridian {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using Media = std::vector<MediaDescription>;

TranscodeSurroundings surroundings(auto change) {
  TranscodeSurroundings found;
  change(found);
  return found;
}

/// The clip with this many channels in its track, of which no place is stated.
MediaDescription unplaced(int channels) {
  return changedClip([channels](MediaDescription&, VideoStreamDescription&, AudioStreamDescription& track) {
    track.channelCount = channels;
    track.channels.clear();
  });
}

/// Words that cannot be planned, and the one error that says why: its flag, code, and a part of its message.
struct ErrorCase {
  std::string words;
  std::string error;
  std::string message;
  Media media = {hdClip()};
  TranscodeSurroundings found = {};
};

const std::vector<ErrorCase>& errorCases() {
  using Clip = MediaDescription;
  using Video = VideoStreamDescription;
  using Audio = AudioStreamDescription;
  static const std::vector<ErrorCase> rows{
      // What the words say.
      {"-foo 1", "-foo unknownFlag", "check the spelling"},
      {"-vcoedc h264", "-vcoedc unknownFlag", "did you mean -vcodec?"},
      {"-wmf_burn_anchors", "-wmf_burn_anchors unknownFlag", ""},
      {"-preset fast", "-preset unreadableValue", "\"fast\" is not a preset; use solvane_cloud or"},
      {"-presetx 9", "-presetx unreadableValue", ""},
      {"-vn -ac_omit_0", "-ac_omit_0 nothingLeft", "no other audio"},
      {"-vcodec h264 -dims 1280~x~720", "-dims unreadableValue", "\"1280 x 720\"; did you mean 1280x720?"},
      {"-vcodec h265x", "-vcodec unreadableValue", "did you mean h265?"},
      {"-vr fast", "-vr unreadableValue", "23.976"},
      {"-file_format mov", "-file_format unreadableValue", "expected a file format: qt, mp4, wav"},
      {"-vcodec h264 -vbr", "-vbr lacksValue", "no value can begin"},
      {"-vcodec h264 -aspect_scaling zoom", "-aspect_scaling unreadableValue", "match, stretch"},
      {"-vcodec h264 -crop_anchor middle", "-crop_anchor unreadableValue", ""},
      {"-vcodec h264 -c_space rec709", "-c_space unreadableValue", "did you mean rec_709?"},
      {"-tc_burn_anchor middle", "-tc_burn_anchor unreadableValue", ""},
      {"-tc_custom 1:2:3", "-tc_custom unreadableValue", ""},
      {"-aqual best", "-aqual unreadableValue", "min, low"},
      {"-in b.mov", "-in unnumberedFlag", "-in_0_0"},
      {"-ac_omit 1", "-ac_omit unnumberedFlag", "-ac_omit_0"},
      {"-vcodec h264 -arri_cs rec709", "-arri_cs lookNotSupported", "-clut"},
      {"-vcodec h264 -arri_wp d65", "-arri_wp lookNotSupported", ""},
      {"-vcodec h264 -arri_curve pq", "-arri_curve lookNotSupported", ""},
      {"-vcodec h264 -arri_inv_res first", "-arri_inv_res lookNotSupported", ""},
      {"-vcodec h264 -arri_curve gamma", "-arri_curve unreadableValue", "bt1886, dci, pq, hlg, logc3, logc4, linear"},
      // Sources.
      {"-ac_omit_0", "-ac_omit_0 nothingLeft", "no other audio", {soundClip()}},
      {"-vn -an", "-vn nothingLeft", "together with -an"},
      {"-an", "-an nothingLeft", "the source has no video", {soundClip()}},
      {"-vcodec h264",
       "-in_0_0 notDecodable",
       "which is redcode of RED",
       {changedClip([](Clip& clip, Video& video, Audio&) {
         video.codecName = "redcode";
         video.isDecodable = false;
         clip.corporation = MediaCorporation::red;
       })}},
      {"-in_0_1 b.mov",
       "-in_0_1 partsDiffer",
       "size 1280 x 720 where -in_0_0 has 1920 x 1080",
       {hdClip(), withSize(hdClip(), 1280, 720)}},
      {"-in_0_1 b.mov",
       "-in_0_1 partsDiffer",
       "frame rate 24 fps where -in_0_0 has 25 fps",
       {hdClip(), atRate(hdClip(), VideoFrameRate::p24)}},
      {"-in_0_1 b.mov",
       "-in_0_1 partsDiffer",
       "audio tracks 0 where -in_0_0 has 1",
       {hdClip(), changedClip([](Clip& clip, Video&, Audio&) { clip.audio.clear(); })}},
      {"-in_0_1 b.mov",
       "-in_0_1 partsDiffer",
       "sample rate 44100",
       {hdClip(), changedClip([](Clip&, Video&, Audio& track) { track.sampleRate = 44100; })}},
      {"-in_0_1 b.mov",
       "-in_0_1 partsDiffer",
       "video codec h264",
       {hdClip(), changedClip([](Clip&, Video& video, Audio&) { video.codecName = "h264"; })}},
      {"-in_0_1 b.wav", "-in_0_1 partsDiffer", "size none", {hdClip(), soundClip()}},
      {"-in_0_1 b.mov",
       "-in_0_1 partsDiffer",
       "rotation 90 degrees where -in_0_0 has 0 degrees",
       {hdClip(), changedClip([](Clip&, Video& video, Audio&) { video.rotation = 90; })}},
      {"-in_0_1 b.mov",
       "-in_0_1 partsDiffer",
       "pixel aspect ratio 64/45",
       {hdClip(), changedClip([](Clip&, Video& video, Audio&) { video.pixelAspectRatio = {64, 45}; })}},
      {"-in_0_1 b.mov",
       "-in_0_1 partsDiffer",
       "scan top field first",
       {hdClip(), changedClip([](Clip&, Video& video, Audio&) { video.fieldOrder = FieldOrder::topFirst; })}},
      {"-in_0_1 b.mov", "-in_0_1 partsDiffer", "colour 1-1-9", {hdClip(), changedClip([](Clip&, Video& video, Audio&) {
                                                                  video.matrix = {9, "bt2020nc"};
                                                                })}},
      {"-in_0_1 b.mov",
       "-in_0_1 partsDiffer",
       "frame rate 30000/1001 fps where -in_0_0 has 2997/100 fps",
       {changedClip([](Clip&, Video& video, Audio&) { video.exactFrameRate = MediaRational{2997, 100}; }),
        changedClip([](Clip&, Video& video, Audio&) { video.exactFrameRate = MediaRational{30000, 1001}; })}},
      {"-in_0_1 b.mov",
       "-in_0_1 partsDiffer",
       "channel layout downmix",
       {hdClip(), changedClip([](Clip&, Video&, Audio& track) { track.layoutName = "downmix"; })}},
      {"-in_1_0 b.mov", "-in_1_0 secondImage", "and -in_0_0 has one", {hdClip(), hdClip()}},
      {"-in_0_0 /card/a.0001.dpx -vcodec h264", "-in_0_0 rateNeeded", "-vr"},
      {"-vcodec h264", "-in_0_0 rateNeeded", "", {changedClip([](Clip&, Video& video, Audio&) {
         video.frameRate.reset();
       })}},
      // The output.
      {"-out /out/", "-out outputIsDirectory", "name of a file"},
      {"", "-out outputIsDirectory", "", {hdClip()}, surroundings([](auto& found) {
         found.output.isDirectory = true;
       })},
      {"-overwrite", "-out outputIsSpecial", "", {hdClip()}, surroundings([](auto& found) {
         found.output.exists = found.output.isSpecial = true;
       })},
      {"", "-out outputExists", "-overwrite", {hdClip()}, surroundings([](auto& found) {
         found.output.exists = true;
       })},
      {"-overwrite", "-out outputIsSource", "\"/card/a.mov\"", {hdClip()}, surroundings([](auto& found) {
         found.output.exists = true;
         found.output.sameSource = "/card/a.mov";
       })},
      {"", "-out directoryMissing", "", {hdClip()}, surroundings([](auto& found) {
         found.output.directoryExists = false;
       })},
      {"", "-out directoryNotWritable", "", {hdClip()}, surroundings([](auto& found) {
         found.output.directoryIsWritable = false;
       })},
      {"", "-out nameTooLong", "", {hdClip()}, surroundings([](auto& found) { found.output.nameIsTooLong = true; })},
      {"-work_dir /scratch",
       "-work_dir workDirectoryNotUsable",
       "\"/scratch\"",
       {hdClip()},
       surroundings([](auto& found) { found.output.workDirectoryIsUsable = false; })},
      {"-progress_file /no/p", "-progress_file progressFileNotMade", "", {hdClip()}, surroundings([](auto& found) {
         found.output.progressFileIsWritable = false;
       })},
      {"-progress_file /card/a.mov", "-progress_file progressFileInUse", "writes: \"/card/a.mov\"; choose"},
      {"-progress_file /out/a.mov", "-progress_file progressFileInUse", ""},
      {"-vcodec h264 -clut a.cube -progress_file a.cube", "-progress_file progressFileInUse", ""},
      {"-progress_file /p",
       "-progress_file progressFileInUse",
       "which is \"/card/a.mov\"",
       {hdClip()},
       surroundings([](auto& found) { found.output.sameAsProgressFile = "/card/a.mov"; })},
      {"-overwrite -vcodec h264 -clut /out/a.mov", "-out outputIsSource", ""},
      {"-out /out/a", "-out unknownContainer", "end the name in one of .mov, .mp4, .wav, .mxf, .mjpeg, or set"},
      {"-out /out/a -vcodec h264", "-out unknownContainer", "end the name in one of .mov, .mp4, or set"},
      {"-out /out/a.avi", "-out wrongExtension", "use .mov, .mp4, .wav, .mxf, .mjpeg"},
      {"-out /out/a.mxf -file_format qt", "-out wrongExtension", "with -file_format qt use .mov, .mp4"},
      {"-out /out/a.mp4 -vcodec h265 -an", "-out wrongExtension", "with -vcodec h265 use .mov"},
      {"-file_format mp4 -vcodec dnxhd -an", "-out wrongExtension",
       "no extension fits -file_format mp4 and -vcodec dnxhd"},
      {"-file_format mp4 -vcodec prores422 -an", "-vcodec notInContainer", "in MP4"},
      {"-file_format mp4 -out /out/a.mp4 -vcodec h265 -an", "-out wrongExtension", "change -file_format or -vcodec"},
      {"-out /out/a.wav -vcodec h264", "-vcodec notInContainer", "in Wave"},
      {"-out /out/a.mp4 -an", "-out containerCannotHold", "prores in MP4"},
      {"-out /out/a.mp4 -vcodec h264", "-out containerCannotHold", "pcm_s24le of track 0 in MP4"},
      {"-out /out/a.mp4 -vcodec h264 -acodec lpcm", "-acodec notInContainer", "in MP4"},
      {"-out /out/a.wav -acodec apple_lossless", "-acodec notInContainer", "in Wave"},
      {"-out /out/a.mxf -vcodec dnxhd -an",
       "-in_0_0 pixelsNotSquare",
       "4/3 in MXF",
       {changedClip([](Clip&, Video& video, Audio&) { video.pixelAspectRatio = {4, 3}; })}},
      {"-out /out/a.mxf -vcodec dnxhd -acodec aac", "-acodec notInContainer", "in MXF"},
      {"-out /out/a.mjpeg -vcodec mjpeg", "-out containerCannotHold", "add -an"},
      {"-out /out/a.wav", "-out tooManyTracks", "join them with -acodec lpcm -adiscrete", {soundClip()}},
      // What this FFmpeg can do, see below.
      // The image.
      {"-in_0_0 /card/a.0001.dpx -vr 24", "-in_0_0 imagesNotCopied", "-vcodec"},
      {"-dims 960x540", "-dims needsVideoCodec", "-vcodec"},
      {"-vr 24", "-vr needsVideoCodec", ""},
      {"-vr 25", "-vr needsVideoCodec", "", {changedClip([](Clip&, Video& video, Audio&) {
         video.isVariable = true;
       })}},
      {"-dims 1920x1080", "-dims needsVideoCodec", "", {changedClip([](Clip&, Video& video, Audio&) {
         video.rotation = 90;
       })}},
      {"-dims 1920x1080", "-dims needsVideoCodec", "", {changedClip([](Clip&, Video& video, Audio&) {
         video.pixelAspectRatio = {64, 45};
       })}},
      {"-vbd 8", "-vbd needsVideoCodec", ""},
      {"-c_space rec_2020", "-c_space needsVideoCodec", ""},
      {"-vcodec copy -clut a.cube", "-clut needsVideoCodec", ""},
      {"-tc_burn", "-tc_burn needsVideoCodec", ""},
      {"-wmt_burn -wmt_text x", "-wmt_burn needsVideoCodec", ""},
      {"-wmf_path logo.png", "-wmf_path needsVideoCodec", ""},
      {"-vcodec h264 -dims 8x8", "-dims sizeOutOfRange", "16 to 16384"},
      {"-vcodec h264 -dims 20000x100", "-dims sizeOutOfRange", ""},
      {"-vcodec h264 -dims 960.5x540", "-dims sizeOutOfRange", ""},
      {"-vcodec h264", "-in_0_0 sizeOutOfRange", "the image is 8 x 8", {withSize(hdClip(), 8, 8)}},
      {"-vcodec h264 -dims 24x24", "-dims sizeOutOfRange", "the image is 24 x 14; the image is fitted into -dims"},
      {"-vcodec mp4 -dims 8192x64 -aspect_scaling stretch", "-dims sizeOutOfRange", "16 to 8191"},
      {"-vcodec mp4", "-in_0_0 sizeOutOfRange", "8192 x 64", {withSize(hdClip(), 8192, 64)}},
      {"-vcodec h264 -dims infxnan", "-dims sizeOutOfRange", ""},
      {"-vcodec h264 -dims 961x540 -aspect_scaling stretch", "-dims oddSize", "did you mean 960x540?"},
      {"-vcodec h264", "-in_0_0 oddSize", "853 x 480; set -dims 854x480", {withSize(hdClip(), 853, 480)}},
      {"-vcodec h264 -dims copy", "-in_0_0 oddSize", "", {withSize(hdClip(), 853, 480)}},
      {"-vcodec h264 -dims 0x0", "-in_0_0 oddSize", "", {withSize(hdClip(), 853, 480)}},
      {"-vcodec h264 -dims 1x1", "-in_0_0 oddSize", "", {withSize(hdClip(), 852, 479)}},
      {"-vcodec prores422proxy -dims 961x541 -aspect_scaling stretch", "-dims oddSize", "did you mean 960x540?"},
      {"-vcodec h264 -dims 1080x1920 -aspect_scaling crop",
       "-dims sizeOutOfRange",
       "would be scaled to 1966080 x 1920 first",
       {withSize(hdClip(), 16384, 16)}},
      {"-vcodec h264 -dims 64x1080 -aspect_scaling crop -crop_anchor tr",
       "-dims sizeOutOfRange",
       "",
       {changedClip([](Clip&, Video& video, Audio&) { video.pixelAspectRatio = {1000000, 1}; })}},
      {"-out /out/a.mxf -vcodec dnxhd -dims 960x540", "-dims sizeNotAvailable", "1920 x 1080 or 1280 x 720"},
      {"-out /out/a.mxf -vcodec dnxhd",
       "-in_0_0 sizeNotAvailable",
       "DNxHD has no 2048 x 1080",
       {withSize(hdClip(), 2048, 1080)}},
      {"-out /out/a.mxf -vcodec dnxhd -vprofile dnxhr_lb -dims 254x120 -aspect_scaling stretch",
       "-dims sizeNotAvailable", "256 x 120"},
      {"-vcodec h264 -vr 601", "-vr rateOutOfRange", "600"},
      {"-vr 601", "-vr rateOutOfRange", ""},
      {"-c_space rec709", "-c_space unreadableValue", ""},
      {"-out /out/a.mxf -vcodec dnxhd -vprofile dnxhr_sq -vr 12.5 -an", "-vr rateOutOfRange", "MXF holds 24, 25, 30"},
      {"-out /out/a.mxf -tc_track",
       "-in_0_0 rateOutOfRange",
       "in MXF",
       {atRate(hdClip(), VideoFrameRate::custom({25, 2}))}},
      {"-vcodec mp4 -vr 119.88", "-vr rateOutOfRange", "mp4 cannot count 119.880 fps (120000/1001)"},
      {"-vcodec h264 -vr 0.5", "-in_0_0 rateNeeded", "to halve", {changedClip([](Clip&, Video& video, Audio&) {
         video.frameRate.reset();
       })}},
      {"-vcodec h264", "-in_0_0 rateNeeded", "no rate in common", {changedClip([](Clip&, Video& video, Audio&) {
         video.frameRate = VideoFrameRate::custom({90000, 1});
         video.isVariable = true;
       })}},
      {"-vcodec h264",
       "-in_0_0 rateOutOfRange",
       "1000 fps is above 600",
       {atRate(hdClip(), VideoFrameRate::custom({1000, 1}))}},
      {"-vcodec h264 -vr inf", "-vr rateOutOfRange", ""},
      {"-vcodec h264 -vr 1e-9", "-vr rateOutOfRange", ""},
      {"-vcodec h264 -vbr 0", "-vbr bitRateOutOfRange", ""},
      {"-vcodec h264 -vbr 5000", "-vbr bitRateOutOfRange", "did you mean 5?"},
      {"-vcodec h264 -vbr 5000000", "-vbr bitRateOutOfRange", "did you mean 5?"},
      {"-vcodec h264 -vbr nan", "-vbr bitRateOutOfRange", ""},
      {"-out /out/a.mxf -vcodec dnxhd -vbd 8 -vbr 100", "-vbr bitRateNotAvailable", "use 90 or 115 megabits a second"},
      {"-out /out/a.mxf -vcodec dnxhd -vbr 100", "-vbr bitRateNotAvailable", "use 175 megabits a second"},
      {"-out /out/a.mxf -vcodec dnxhd -vbr 36", "-vbr bitRateNotAvailable", "use 175 megabits a second, or -vbd 8"},
      {"-vcodec h264 -vbr 1e-9", "-vbr bitRateOutOfRange", "at least 0.001"},
      {"-vcodec prores4444 -vbd 12", "-vbd bitDepthNotAvailable", "prores4444 has 10"},
      {"-vcodec prores422 -vbd 8", "-vbd bitDepthNotAvailable", ""},
      {"-vcodec h264 -vbd 12", "-vbd bitDepthNotAvailable", "h264 has 8, 10"},
      {"-vcodec h264 -vprofile main -vbd 10", "-vbd bitDepthNotAvailable", "h264 main has 8"},
      {"-vcodec mp4 -vbd 10", "-vbd bitDepthNotAvailable", "mp4 has 8"},
      {"-vcodec h264 -vprofile best", "-vprofile profileNotAvailable", "baseline, main, high, high10"},
      {"-vcodec h264 -vprofile high@9", "-vprofile profileNotAvailable", "4.1"},
      {"-vcodec h265 -vprofile main@4 -vr 59.94", "-vprofile profileNotAvailable",
       "1920 x 1080 at 59.940 fps (60000/1001) needs level 4.1 or higher"},
      {"-vcodec h265 -vprofile main@1 -dims 320x180", "-vprofile profileNotAvailable", "needs level 2 or"},
      {"-vcodec h265 -vprofile main@2 -dims 1024x16 -aspect_scaling stretch", "-vprofile profileNotAvailable",
       "needs level 2.1"},
      {"-vcodec h265 -vprofile main@6.2 -dims 16384x8192 -aspect_scaling stretch", "-vprofile profileNotAvailable",
       "no level holds"},
      {"-vcodec mp4 -vprofile asp@3", "-vprofile profileNotAvailable", "no levels"},
      {"-vcodec prores422 -vprofile hq", "-vprofile profileNotAvailable", "prores422 has no profiles"},
      {"-vcodec h264 -key_frames 0", "-key_frames keyFramesOutOfRange", ""},
      {"-vcodec h264 -c_space rec_709",
       "-c_space colorNotConvertible",
       "primaries 1 (bt709), transfer 12 (bt1361e) and matrix 1 (bt709)",
       {changedClip([](Clip&, Video& video, Audio&) { video.transfer = {12, "bt1361e"}; })}},
      {"-vcodec h264 -c_space rec_709 -clut a.cube",
       "-clut colorNotConvertible",
       "matrix 14 (ictcp)",
       {changedClip([](Clip&, Video& video, Audio&) { video.matrix = {14, "ictcp"}; })}},
      {"-vcodec h264 -clut a.cube",
       "-clut lutNotUsable",
       "which is not a LUT file",
       {hdClip()},
       surroundings([](auto& found) { found.lutError = "is not a LUT file"; })},
      // Burn-ins.
      {"-vcodec h264 -tc_burn", "-tc_burn noFont", "DejaVu", {hdClip()}, surroundings([](auto& found) {
         found.hasFont = false;
       })},
      {"-vcodec h264 -tc_burn -tc_burn_size 3", "-tc_burn_size fontSizeOutOfRange", ""},
      {"-vcodec h264 -wmt_burn -wmt_text x -wmt_size 401", "-wmt_size fontSizeOutOfRange", ""},
      {"-vcodec h264 -wmt_burn", "-wmt_burn textMissing", "-wmt_text"},
      {"-vcodec h264 -wmf_path logo.png",
       "-wmf_path watermarkNotRead",
       "which is not an image",
       {hdClip()},
       surroundings([](auto& found) { found.watermark = Unexpected(std::string("is not an image")); })},
      {"-vcodec h264 -wmf_path logo.png -wmf_scale 0", "-wmf_scale scaleOutOfRange", ""},
      {"-file_format mp4 -out /out/a -an -vcodec h265", "-vcodec notInContainer", "in MP4"},
      {"-tc_track -tc_custom 99999:00:00:00", "-tc_custom noSuchLabel",
       "\"99999:00:00:00\", which is beyond the last frame that a file can label"},
      {"-acodec aac -asr 9223372036854775807", "-asr sampleRateNotAvailable", "768000"},
      {"-vcodec h264 -wmf_path logo.png -wmf_scale nan", "-wmf_scale scaleOutOfRange", ""},
      {"-vcodec h264 -wmf_path logo.png -wmf_scale 20",
       "-wmf_scale watermarkTooLarge",
       "1920 x 1080",
       {hdClip()},
       surroundings([](auto& found) { found.watermark = FoundWatermark{"logo.png", {100, 50}}; })},
      {"-vcodec h264 -dims 64x36 -wmf_path logo.png",
       "-wmf_path watermarkTooLarge",
       "64 x 36",
       {hdClip()},
       surroundings([](auto& found) { found.watermark = FoundWatermark{"logo.png", {100, 50}}; })},
      // Sound.
      {"-acodec lpcm -asr 3999", "-asr sampleRateNotAvailable", "4000 to 768000"},
      {"-acodec aac -asr 12345", "-asr sampleRateNotAvailable", "96000, 88200"},
      {"-acodec aac",
       "-in_0_0 sampleRateNotAvailable",
       "with 192000 samples a second",
       {changedClip([](Clip&, Video&, Audio& track) { track.sampleRate = 192000; })}},
      {"-out /out/a.mxf -vcodec dnxhd -acodec lpcm -asr 44100", "-asr sampleRateNotAvailable", "48000"},
      {"-acodec lpcm -abpc 20", "-abpc sampleDepthNotAvailable", "use 8, 16, 24, 32 bits"},
      {"-out /out/a.mxf -vcodec dnxhd -acodec lpcm -abpc 32", "-abpc sampleDepthNotAvailable", "use 16, 24 bits"},
      {"-acodec apple_lossless -abpc 32", "-abpc sampleDepthNotAvailable", "16 and 24"},
      {"-acodec aac -abr 128", "-abr bitRateOutOfRange", "did you mean 128000?"},
      {"-acodec aac -abr 600000", "-abr bitRateOutOfRange", "use at most 576000"},
      {"-acodec lpcm -acl 65", "-acl channelsOutOfRange", ""},
      {"-acodec aac -acl 17", "-acl channelsOutOfRange", "aac has at most 16"},
      {"-acodec lpcm -adiscrete -acl 1", "-acl channelsOutOfRange", "2 discrete channels"},
      {"-acodec apple_lossless -acl quad", "-acl layoutNotAvailable", "L R Ls Rs"},
      {"-acodec apple_lossless -acl hex", "-acl layoutNotAvailable", ""},
      {"-acodec apple_lossless -acl oct", "-acl layoutNotAvailable", ""},
      {"-acodec lpcm -acl 10", "-acl layoutNotAvailable", "the places of 10 channels are not known"},
      {"-acodec lpcm -acl stereo", "-acl layoutNotAvailable", "places of 12 channels", {unplaced(12)}},
      {"-acodec lpcm -acl_descs [1~3", "-acl_descs layoutNotAvailable", "L R cannot be mixed to L C"},
      {"-acodec lpcm -acl_descs [1~1", "-acl_descs layoutNotAvailable", "two channels at one place"},
      {"-acodec aac", "-in_0_0 layoutNotAvailable", "aac has no layout of 10 channels", {unplaced(10)}},
      {"-acodec aac -acl_descs [1~2~3~12", "-acl_descs layoutNotAvailable", "aac has no L R C Ts"},
      {"-acodec aac -adiscrete -acl 4", "-acl layoutNotAvailable", "no discrete channels"},
      {"-acodec aac",
       "-in_0_0 notDecodable",
       "track 0, which is dolby_e",
       {changedClip([](Clip&, Video&, Audio& track) {
         track.codecName = "dolby_e";
         track.isDecodable = false;
       })}},
      {"-vn -acodec lpcm -out /out/a.mxf", "-out containerCannotHold", "audio without video in MXF"},
      {"-acodec lpcm -acl_tag 7", "-acl_tag unknownLayout", ""},
      {"-acodec lpcm -acl_bitmap 262144", "-acl_bitmap unknownLayout", "bit 17"},
      {"-acodec lpcm -acl_descs [1~2~999", "-acl_descs unknownLayout", "\"999\" is not a channel label"},
      {"-acodec lpcm -acl stereo -acl_tag 6553601", "-acl contradictoryLayout", "-acl_tag"},
      {"-acodec lpcm -acl 6 -acl_bitmap 3", "-acl contradictoryLayout", ""},
      {"-acodec lpcm -adiscrete -acl stereo", "-acl contradictoryLayout", "-adiscrete"},
      // Timecode.
      {"-tc_track -tc_custom 00:00:00:30", "-tc_custom noSuchLabel", "has more frames than a second"},
      {"-tc_track -tc_custom 10:00:00;00", "-tc_custom noSuchLabel", "which at 25 fps is drop frame"},
      {"-tc_track -tc_custom 00:01:00;00",
       "-tc_custom noSuchLabel",
       "skips",
       {atRate(hdClip(), VideoFrameRate::ntsc30p)}},
      {"-tc_track -tc_drop", "-tc_drop notADropFrameRate", "25 fps"},
      {"-tc_track -tc_rate 24", "-tc_rate timecodeRateNotAvailable", "25 fps"},
      {"-tc_track -tc_rate 0", "-tc_rate timecodeRateNotAvailable", "0.5 to 600"},
      {"-vcodec h264 -tc_burn -tc_rate 100000", "-tc_rate timecodeRateNotAvailable", "0.5 to 600"},
      {"-vcodec h264 -vr 0.4 -tc_track", "-tc_track timecodeRateNotAvailable", "0.400 fps (2/5)"},
      {"-vcodec h264 -vr 256 -tc_track", "-tc_track timecodeRateNotAvailable", "at most 255 frames"},
  };
  return rows;
}

TEST(PlanErrors, EachNameTheirFlagAndRemedy) {
  for (ErrorCase each : errorCases()) {
    if (each.error == "-out tooManyTracks") each.media.front().audio.push_back(each.media.front().audio.front());
    const Plan plan = planned(each.words, each.media, each.found);
    SCOPED_TRACE(each.words);
    EXPECT_THAT(errorsOf(plan), ElementsAre(each.error));
    if (plan) continue;
    EXPECT_THAT(plan.error().front().message(), HasSubstr(each.message));
    EXPECT_THAT(plan.error().front().remedy(), ::testing::Not(::testing::IsEmpty()));
  }
}

TEST(PlanErrors, BeginBeyondTheLimit) {
  for (const std::string_view words :
       {"-vcodec h264 -vr 255 -tc_track", "-vcodec h264 -vr 600 -tc_burn",
        "-vcodec mp4 -dims 8191x64 -aspect_scaling stretch", "-vcodec h265 -vprofile main@4.1 -vr 60",
        "-vcodec h265 -vprofile main@4 -vr 30", "-vcodec h265 -vprofile main@2 -dims 976x16 -aspect_scaling stretch"}) {
    EXPECT_THAT(errorsOf(planned(words)), IsEmpty()) << words;
  }
  const MediaDescription turned = changedClip(
      [](MediaDescription&, VideoStreamDescription& video, AudioStreamDescription&) { video.rotation = 90; });
  EXPECT_THAT(errorsOf(planned("-dims 1080x1920", {turned})), IsEmpty());
}

TEST(PlanErrors, NameThePresetThatSetTheFlag) {
  const Plan plan = planned("-preset solvane_cloud -vcodec dnxhd -out /out/a.mov");
  ASSERT_THAT(errorsOf(plan), Contains("-dims sizeNotAvailable"));
  EXPECT_THAT(plan.error().back().message(), HasSubstr("\"960x540\", set by -preset solvane_cloud, DNxHD has no"));
}

TEST(PlanErrors, NameWhatIsMissing) {
  EXPECT_THAT(errorsOf(plannedAlone("-out a.mov", {})), ElementsAre("-in noInput"));
  EXPECT_THAT(errorsOf(plannedAlone("-in a.mov -out b.mov", {})), ElementsAre("-in unnumberedFlag"));
  EXPECT_THAT(errorsOf(plannedAlone("-in_0_0 a.mov")), ElementsAre("-out noOutput"));
  EncoderInventory bare;
  EXPECT_THAT(
      errorsOf(planned("-vcodec h264 -acodec aac -c_space rec_2020 -tc_burn -wmf_path l.png", {hdClip()}, {}, bare)),
      ElementsAre("-out muxerMissing", "-c_space filterMissing", "-tc_burn filterMissing", "-wmf_path filterMissing",
                  "-vcodec encoderMissing", "-acodec encoderMissing"));
  EXPECT_THAT(errorsOf(planned("-acodec lpcm", {soundClip()}, {}, bare)),
              ElementsAre("-out muxerMissing", "-acodec encoderMissing"));
  EncoderInventory eightBits = fullInventory();
  for (EncoderDescription& each : eightBits.encoders) each.pixelFormats = {"yuv420p"};
  const Plan deep = planned("-vcodec h264", {hdClip()}, {}, eightBits);
  ASSERT_THAT(errorsOf(deep), ElementsAre("-vcodec encoderMissing"));
  EXPECT_THAT(deep.error().front().message(), HasSubstr("libx264 with yuv420p10le"));
  const std::vector<Expected<MediaDescription, MediaError>> unread{
      Unexpected(MediaError{MediaErrorCode::damaged, "/card/a.mov", "moov atom not found"})};
  const Plan plan = planTranscode(explain({"-in_0_0", "/card/a.mov", "-out", "b.mov"}), unread, fullInventory(), {});
  ASSERT_THAT(errorsOf(plan), ElementsAre("-in_0_0 inputNotRead"));
  EXPECT_EQ(plan.error().front().message(),
            R"("-in_0_0": cannot be read: "/card/a.mov", which is damaged or incomplete: moov atom not found; )"
            "copy it again from the card");
  EXPECT_THAT(errorsOf(planTranscode(explain({"-in_0_0", "", "-out", "b.mov"}), unread, fullInventory(), {})),
              ElementsAre("-in_0_0 lacksValue"));
  const std::vector<Expected<MediaDescription, MediaError>> raw{
      Unexpected(MediaError{MediaErrorCode::unknownFormat, "/card/a.BRAW"})};
  const Plan rawPlan = planTranscode(explain({"-in_0_0", "/card/a.BRAW", "-out", "b.mov"}), raw, fullInventory(), {});
  ASSERT_THAT(errorsOf(rawPlan), ElementsAre("-in_0_0 notDecodable"));
  EXPECT_THAT(rawPlan.error().front().message(), HasSubstr("camera raw of Blackmagic"));
}

TEST(PlanErrors, ReportAStoreWhoseRenderedInputsAreOthers) {
  TranscodeCliArguments arguments;
  arguments.setInputFiles(std::vector<std::string>{"-in_9_9", "/card/a.mov"});
  const std::vector<Expected<MediaDescription, MediaError>> media{hdClip(), hdClip()};
  const Plan plan = planTranscode(arguments, media, fullInventory(), {});
  ASSERT_THAT(errorsOf(plan), ElementsAre("-in_0_0 unreadableValue"));
  EXPECT_THAT(plan.error().front().message(), HasSubstr("\"-in_9_9\" as a flag"));
}

TEST(PlanErrors, AreFoundAtOnce) {
  EXPECT_THAT(
      errorsOf(planned("-foo -vcodec h264 -dims 8x8 -vbd 12 -vbr 5000 -vprofile x -key_frames 0 -acodec aac "
                       "-abr 128 -asr 1 -tc_track -tc_drop -tc_rate 24 -arri_cs p3 -out /out/a.avi")),
      IsSupersetOf({"-foo unknownFlag", "-dims sizeOutOfRange", "-vbd bitDepthNotAvailable", "-vbr bitRateOutOfRange",
                    "-vprofile profileNotAvailable", "-key_frames keyFramesOutOfRange", "-abr bitRateOutOfRange",
                    "-asr sampleRateNotAvailable", "-tc_drop notADropFrameRate", "-tc_rate timecodeRateNotAvailable",
                    "-arri_cs lookNotSupported", "-out wrongExtension"}));
  // What cannot be read hides nothing of what can.
  EXPECT_THAT(errorsOf(planned("-vcodec h26 -dims 8x8 -tc_burn -tc_burn_size 1")),
              IsSupersetOf({"-vcodec unreadableValue", "-dims sizeOutOfRange", "-tc_burn_size fontSizeOutOfRange"}));
}

TEST(PlanErrors, HaveAVectorForEachCode) {
  std::set<std::string> found{"noInput", "inputNotRead", "noOutput", "encoderMissing", "filterMissing", "muxerMissing"};
  for (const ErrorCase& each : errorCases()) found.insert(each.error.substr(each.error.find(' ') + 1));
  for (const TranscodePlanErrorCode code : allCases<TranscodePlanErrorCode>()) {
    EXPECT_TRUE(found.contains(std::string(rawValue(code)))) << rawValue(code);
  }
}

}  // namespace
}  // namespace meridian

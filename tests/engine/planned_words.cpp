#include "tests/engine/planned_words.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "meridian/engine/audio_encoders.h"
#include "meridian/engine/video_encoders.h"

namespace meridian {
namespace {

AudioStreamDescription stereoTrack() {
  AudioStreamDescription track;
  track.index = 1;
  track.codecName = "pcm_s24le";
  track.isDecodable = true;
  track.sampleRate = 48000;
  track.bitsPerChannel = 24;
  track.sampleFormat = "s32";
  track.channelCount = 2;
  track.channels = {{1, "FL"}, {2, "FR"}};
  track.channelLayoutTag = 101U << 16U | 2U;
  return track;
}

}  // namespace

MediaDescription hdClip() {
  MediaDescription clip = soundClip();
  VideoStreamDescription video;
  video.codecName = "prores";
  video.profile = "HQ";
  video.isDecodable = true;
  video.width = video.displayWidth = 1920;
  video.height = video.displayHeight = 1080;
  video.frameRate = VideoFrameRate::pal25p;
  video.frameCount = 250;
  video.fieldOrder = FieldOrder::progressive;
  video.pixelFormat = "yuv422p10le";
  video.bitDepth = 10;
  video.chroma = ChromaSubsampling::yuv422;
  video.range = ColorRange::limited;
  video.primaries = video.transfer = video.matrix = {1, "bt709"};
  video.colorSpace = SAVRec709ColorSpace;
  clip.video.push_back(std::move(video));
  clip.timecode = TimecodeDescription{{1, 0, 0, 0, false}, {}, VideoFrameRate::pal25p, MediaTimecodeSource::tmcd};
  return clip;
}

MediaDescription soundClip() {
  MediaDescription clip;
  clip.path = "/card/a.mov";
  clip.duration = MediaRational{10, 1};
  clip.audio.push_back(stereoTrack());
  return clip;
}

MediaDescription atRate(MediaDescription clip, const VideoFrameRate& rate) {
  clip.video.front().frameRate = rate;
  clip.timecode->rate = rate;
  return clip;
}

MediaDescription withSize(MediaDescription clip, int width, int height) {
  clip.video.front().width = width;
  clip.video.front().height = height;
  return clip;
}

const EncoderInventory& fullInventory() {
  static const EncoderInventory inventory = [] {
    EncoderInventory full;
    const auto add = [&full](std::string_view name) {
      if (!name.empty()) full.encoders.emplace_back().name = name;
    };
    for (const VideoEncoderRow& row : videoEncoderRows)
      for (const VideoEncoder& encoder : row.encoders) add(encoder.name);
    for (const LpcmEncoderRow& row : lpcmEncoderRows) add(row.encoder);
    for (const AudioEncoderRow& row : audioEncoderRows) add(row.encoder);
    for (const RepackedPcmRow& row : repackedPcmRows) {
      if (full.encoders.end() == std::ranges::find(full.encoders, row.encoder, &EncoderDescription::name))
        add(row.encoder);
    }
    add("h264_vaapi");
    std::ranges::sort(full.encoders, {}, &EncoderDescription::name);
    full.filters = {"bwdif", "drawtext", "overlay", "zscale"};
    for (const OutputContainer container : allCases<OutputContainer>()) full.muxers.emplace_back(rawValue(container));
    std::ranges::sort(full.muxers);
    full.version = "5.1";
    full.license = "GPL version 2 or later";
    return full;
  }();
  return inventory;
}

std::vector<std::string> wordsOf(std::string_view text) {
  std::vector<std::string> words;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    if (end > 0) words.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  for (std::string& word : words) std::ranges::replace(word, '~', ' ');
  return words;
}

Plan planned(std::string_view words, const std::vector<MediaDescription>& media,
             const TranscodeSurroundings& surroundings, const EncoderInventory& inventory) {
  const std::string output = words.find("-out ") == std::string_view::npos ? "-out /out/a.mov " : "";
  return plannedAlone("-in_0_0 /card/a.mov " + output + std::string(words), media, surroundings, inventory);
}

Plan plannedAlone(std::string_view words, const std::vector<MediaDescription>& media,
                  const TranscodeSurroundings& surroundings, const EncoderInventory& inventory) {
  const std::vector<Expected<MediaDescription, MediaError>> described(media.begin(), media.end());
  return planTranscode(explain(wordsOf(words)), described, inventory, surroundings);
}

TranscodePlan successful(Plan plan) {
  if (plan) return std::move(*plan);
  for (const TranscodePlanError& error : plan.error()) ADD_FAILURE() << error.message();
  return {};
}

std::vector<std::string> errorsOf(const Plan& plan) {
  return plan ? std::vector<std::string>() : codesOf(plan.error());
}

}  // namespace meridian

// A holder of settings with plain members, which can log every read and write.
#pragma once

#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "meridian/cli/transcode_audio_detail.h"
#include "meridian/cli/transcode_timecode_detail.h"
#include "meridian/cli/transcode_video_detail.h"

namespace meridian {

#define MERIDIAN_PLAIN_MEMBER(Type, name, Setter)        \
 public:                                                 \
  [[nodiscard]] Type name() const override {             \
    if (log != nullptr) log->push_back("read " #name);   \
    return name##_;                                      \
  }                                                      \
  void Setter(MERIDIAN_PARAMETER(Type) value) override { \
    if (log != nullptr) log->push_back("write " #name);  \
    name##_ = value;                                     \
  }                                                      \
                                                         \
 private:                                                \
  Type name##_{};
#define MERIDIAN_PARAMETER(...) detail::Parameter<__VA_ARGS__>

namespace detail {

/// The type of a setter's parameter in the interfaces: some are references.
template <typename Type>
struct ParameterOf {
  using type = Type;
};
template <typename Type>
  requires(std::is_same_v<Type, std::optional<Size>> || std::is_same_v<Type, std::optional<Url>> ||
           std::is_same_v<Type, std::optional<TimecodeComponents>>)
struct ParameterOf<Type> {
  using type = const Type&;
};
template <typename Type>
using Parameter = typename ParameterOf<Type>::type;

}  // namespace detail

class PlainDetailHolder final : public MutableTranscodeVideoDetail,
                                public MutableTranscodeAudioDetail,
                                public MutableTranscodeTimecodeDetail {
 public:
  /// The log of reads and writes, by the members' names; null for none.
  std::vector<std::string>* log = nullptr;

  MERIDIAN_PLAIN_MEMBER(std::optional<SAVTranscodeArgumentVideoCodecValue>, videoFormat, setVideoFormat)
  MERIDIAN_PLAIN_MEMBER(std::optional<float>, videoFrameRate, setVideoFrameRate)
  MERIDIAN_PLAIN_MEMBER(std::optional<Size>, videoDimensions, setVideoDimensions)
  MERIDIAN_PLAIN_MEMBER(std::optional<float>, videoBitRate, setVideoBitRate)
  MERIDIAN_PLAIN_MEMBER(std::optional<std::int64_t>, videoBitDepth, setVideoBitDepth)
  MERIDIAN_PLAIN_MEMBER(bool, prepareForWeb, setPrepareForWeb)
  MERIDIAN_PLAIN_MEMBER(bool, gpuDecode, setGpuDecode)
  MERIDIAN_PLAIN_MEMBER(bool, gpuEncode, setGpuEncode)
  MERIDIAN_PLAIN_MEMBER(std::optional<std::int64_t>, keyFrames, setKeyFrames)
  MERIDIAN_PLAIN_MEMBER(std::optional<Url>, lutFile, setLutFile)
  MERIDIAN_PLAIN_MEMBER(std::optional<SAVTranscodeArgumentAspectRatioValue>, aspectScaling, setAspectScaling)
  MERIDIAN_PLAIN_MEMBER(std::optional<VideoCropAnchor>, videoCropAnchor, setVideoCropAnchor)
  MERIDIAN_PLAIN_MEMBER(std::optional<SAVTranscodeArgumentColorSpaceValue>, colorSpace, setColorSpace)

 public:
  [[nodiscard]] std::optional<std::string_view> videoProfile() const override {
    if (log != nullptr) log->push_back("read videoProfile");
    return videoProfile_;
  }
  void setVideoProfile(std::optional<std::string_view> value) override {
    if (log != nullptr) log->push_back("write videoProfile");
    videoProfile_ = value;
  }

 private:
  /// A copy, because the text must outlive the holder that it came from.
  std::optional<std::string> videoProfile_;

  MERIDIAN_PLAIN_MEMBER(bool, omitAudio, setOmitAudio)
  MERIDIAN_PLAIN_MEMBER(std::optional<SAVTranscodeArgumentAudioFormatValue>, audioFormat, setAudioFormat)
  MERIDIAN_PLAIN_MEMBER(std::optional<TranscodeAudioQuality>, audioQuality, setAudioQuality)
  MERIDIAN_PLAIN_MEMBER(std::optional<std::int64_t>, sampleRate, setSampleRate)
  MERIDIAN_PLAIN_MEMBER(std::optional<std::int64_t>, audioBitRate, setAudioBitRate)
  MERIDIAN_PLAIN_MEMBER(std::optional<std::int64_t>, audioBitsPerChannel, setAudioBitsPerChannel)
  MERIDIAN_PLAIN_MEMBER(bool, audioOutputIsDiscrete, setAudioOutputIsDiscrete)
  MERIDIAN_PLAIN_MEMBER(std::optional<SAVTranscodeArgumentAudioChannelLayoutValue>, channelLayout, setChannelLayout)
  MERIDIAN_PLAIN_MEMBER(std::optional<std::int64_t>, channelLayoutTag, setChannelLayoutTag)
  MERIDIAN_PLAIN_MEMBER(std::optional<std::int64_t>, outputChannels, setOutputChannels)

  MERIDIAN_PLAIN_MEMBER(bool, includeTimecode, setIncludeTimecode)
  MERIDIAN_PLAIN_MEMBER(std::optional<TimecodeSource>, timecodeSource, setTimecodeSource)
  MERIDIAN_PLAIN_MEMBER(std::optional<TimecodeComponents>, timecode, setTimecode)
  MERIDIAN_PLAIN_MEMBER(std::optional<float>, timecodeFrameRate, setTimecodeFrameRate)
  MERIDIAN_PLAIN_MEMBER(bool, timecodeIsDropFrame, setTimecodeIsDropFrame)
  MERIDIAN_PLAIN_MEMBER(bool, addTimecodeTrack, setAddTimecodeTrack)
  MERIDIAN_PLAIN_MEMBER(bool, addTimecodeBurn, setAddTimecodeBurn)
  MERIDIAN_PLAIN_MEMBER(std::optional<SAVTranscodeArgumentOverlayAnchorValue>, timecodeBurnAnchor,
                        setTimecodeBurnAnchor)
  MERIDIAN_PLAIN_MEMBER(std::optional<std::int64_t>, timecodeBurnFontSize, setTimecodeBurnFontSize)
  MERIDIAN_PLAIN_MEMBER(std::optional<RgbColor>, timecodeBurnFontColor, setTimecodeBurnFontColor)
  MERIDIAN_PLAIN_MEMBER(std::optional<RgbColor>, timecodeBurnBoxColor, setTimecodeBurnBoxColor)

 public:
  friend bool operator==(const PlainDetailHolder& left, const PlainDetailHolder& right) {
    const auto members = [](const PlainDetailHolder& holder) {
      return std::tie(holder.videoFormat_, holder.videoFrameRate_, holder.videoDimensions_, holder.videoBitRate_,
                      holder.videoBitDepth_, holder.prepareForWeb_, holder.gpuDecode_, holder.gpuEncode_,
                      holder.keyFrames_, holder.lutFile_, holder.aspectScaling_, holder.videoCropAnchor_,
                      holder.colorSpace_, holder.videoProfile_, holder.omitAudio_, holder.audioFormat_,
                      holder.audioQuality_, holder.sampleRate_, holder.audioBitRate_, holder.audioBitsPerChannel_,
                      holder.audioOutputIsDiscrete_, holder.channelLayout_, holder.channelLayoutTag_,
                      holder.outputChannels_, holder.includeTimecode_, holder.timecodeSource_, holder.timecode_,
                      holder.timecodeFrameRate_, holder.timecodeIsDropFrame_, holder.addTimecodeTrack_,
                      holder.addTimecodeBurn_, holder.timecodeBurnAnchor_, holder.timecodeBurnFontSize_,
                      holder.timecodeBurnFontColor_, holder.timecodeBurnBoxColor_);
    };
    return members(left) == members(right);
  }
};

#undef MERIDIAN_PLAIN_MEMBER
#undef MERIDIAN_PARAMETER

}  // namespace meridian

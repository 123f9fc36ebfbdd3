#include "meridian/cli/transcode_detail_modifier.h"

#include <optional>

namespace meridian::inline v0_2 {

TranscodeVideoDetail::~TranscodeVideoDetail() = default;
MutableTranscodeVideoDetail::~MutableTranscodeVideoDetail() = default;
TranscodeAudioDetail::~TranscodeAudioDetail() = default;
MutableTranscodeAudioDetail::~MutableTranscodeAudioDetail() = default;
TranscodeTimecodeDetail::~TranscodeTimecodeDetail() = default;
MutableTranscodeTimecodeDetail::~MutableTranscodeTimecodeDetail() = default;

MutableTranscodeVideoDetail& TranscodeDetailModifier::updatedVideo(MutableTranscodeVideoDetail& detail,
                                                                   const TranscodeVideoDetail& toMatch) {
  detail.setVideoFormat(toMatch.videoFormat());
  detail.setVideoFrameRate(toMatch.videoFrameRate());
  detail.setVideoDimensions(toMatch.videoDimensions());
  detail.setVideoBitRate(toMatch.videoBitRate());
  detail.setVideoBitDepth(toMatch.videoBitDepth());
  detail.setPrepareForWeb(toMatch.prepareForWeb());
  detail.setGpuDecode(toMatch.gpuDecode());
  detail.setGpuEncode(toMatch.gpuEncode());
  detail.setKeyFrames(toMatch.keyFrames());
  detail.setLutFile(toMatch.lutFile());
  detail.setAspectScaling(toMatch.aspectScaling());
  detail.setVideoCropAnchor(toMatch.videoCropAnchor());
  detail.setColorSpace(toMatch.colorSpace());
  detail.setVideoProfile(toMatch.videoProfile());
  return detail;
}

MutableTranscodeAudioDetail& TranscodeDetailModifier::updatedAudio(MutableTranscodeAudioDetail& detail,
                                                                   const TranscodeAudioDetail& toMatch) {
  detail.setOmitAudio(toMatch.omitAudio());
  detail.setAudioFormat(toMatch.audioFormat());
  detail.setAudioQuality(toMatch.audioQuality());
  detail.setSampleRate(toMatch.sampleRate());
  detail.setAudioBitRate(toMatch.audioBitRate());
  detail.setAudioBitsPerChannel(toMatch.audioBitsPerChannel());
  detail.setAudioOutputIsDiscrete(toMatch.audioOutputIsDiscrete());
  const auto channelLayout = toMatch.channelLayout();
  const auto outputChannels = toMatch.outputChannels();
  if (!outputChannels) detail.setOutputChannels(std::nullopt);
  detail.setChannelLayout(channelLayout);
  detail.setChannelLayoutTag(toMatch.channelLayoutTag());
  if (outputChannels) detail.setOutputChannels(outputChannels);
  // A second time, and last: see the header.
  detail.setAudioOutputIsDiscrete(toMatch.audioOutputIsDiscrete());
  return detail;
}

MutableTranscodeTimecodeDetail& TranscodeDetailModifier::updatedTimecode(MutableTranscodeTimecodeDetail& detail,
                                                                         const TranscodeTimecodeDetail& toMatch) {
  detail.setIncludeTimecode(toMatch.includeTimecode());
  detail.setTimecodeSource(toMatch.timecodeSource());
  detail.setTimecode(toMatch.timecode());
  detail.setTimecodeFrameRate(toMatch.timecodeFrameRate());
  detail.setTimecodeIsDropFrame(toMatch.timecodeIsDropFrame());
  detail.setAddTimecodeTrack(toMatch.addTimecodeTrack());
  detail.setAddTimecodeBurn(toMatch.addTimecodeBurn());
  detail.setTimecodeBurnAnchor(toMatch.timecodeBurnAnchor());
  detail.setTimecodeBurnFontSize(toMatch.timecodeBurnFontSize());
  detail.setTimecodeBurnFontColor(toMatch.timecodeBurnFontColor());
  detail.setTimecodeBurnBoxColor(toMatch.timecodeBurnBoxColor());
  return detail;
}

}  // namespace meridian::inline v0_2

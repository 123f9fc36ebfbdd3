// Transcodes planned from words, for sources and an FFmpeg that the tests make up.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "meridian/engine/transcode_plan.h"

namespace meridian {

using Plan = Expected<TranscodePlan, std::vector<TranscodePlanError>>;

/// A clip of 1920 x 1080, 25 frames per second, 10-bit ProRes 422 HQ in Rec. 709, of 250 frames with the timecode
/// 01:00:00:00, and one stereo track of 24-bit PCM at 48 kHz.
MediaDescription hdClip();
/// The same without images.
MediaDescription soundClip();

/// Returns the clip after a change of it, its images and its sound.
template <typename Change>
MediaDescription changedClip(Change change) {
  MediaDescription clip = hdClip();
  change(clip, clip.video.front(), clip.audio.front());
  return clip;
}

/// Gives the clip this rate, also for its timecode.
MediaDescription atRate(MediaDescription clip, const VideoFrameRate& rate);
MediaDescription withSize(MediaDescription clip, int width, int height);

/// An FFmpeg with every encoder and filter that plans use.
const EncoderInventory& fullInventory();

/// Splits a text at its blanks; "~" stands for a blank in a word.
std::vector<std::string> wordsOf(std::string_view text);

/// Plans the words after "-in_0_0 /card/a.mov", and after "-out /out/a.mov" where they do not name an output.
Plan planned(std::string_view words, const std::vector<MediaDescription>& media = {hdClip()},
             const TranscodeSurroundings& surroundings = {}, const EncoderInventory& inventory = fullInventory());

/// Plans the words alone.
Plan plannedAlone(std::string_view words, const std::vector<MediaDescription>& media = {hdClip()},
                  const TranscodeSurroundings& surroundings = {}, const EncoderInventory& inventory = fullInventory());

/// Returns the plan; reports the errors of one that fails, and returns an empty one.
TranscodePlan successful(Plan plan);

/// Returns the flag and the code of each error or warning: "-vbd bitDepthNotAvailable".
template <typename List>
std::vector<std::string> codesOf(const List& list) {
  std::vector<std::string> codes;
  for (const auto& each : list) codes.push_back(each.place + " " + std::string(rawValue(each.code)));
  return codes;
}
std::vector<std::string> errorsOf(const Plan& plan);

}  // namespace meridian

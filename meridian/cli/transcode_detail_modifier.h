// Brings the settings of one holder into line with those of another, group by group.
#pragma once

#include "meridian/cli/transcode_audio_detail.h"
#include "meridian/cli/transcode_timecode_detail.h"
#include "meridian/cli/transcode_video_detail.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Copies a group of settings from a model onto a target: every member of the model is read once and assigned to the
/// target, in the order of the interface, absent values and false included; nothing is compared, skipped or merged. The
/// target is changed in place and returned. Target and model may be the same.
class MERIDIAN_API TranscodeDetailModifier {
 public:
  TranscodeDetailModifier() = delete;

  static MutableTranscodeVideoDetail& updatedVideo(MutableTranscodeVideoDetail& detail,
                                                   const TranscodeVideoDetail& toMatch);

  /// Ends by reading `audioOutputIsDiscrete` once more and assigning it a second time, on purpose: it has to hold
  /// whatever a target makes of it while its channel layout changes.
  static MutableTranscodeAudioDetail& updatedAudio(MutableTranscodeAudioDetail& detail,
                                                   const TranscodeAudioDetail& toMatch);

  static MutableTranscodeTimecodeDetail& updatedTimecode(MutableTranscodeTimecodeDetail& detail,
                                                         const TranscodeTimecodeDetail& toMatch);
};

}  // namespace meridian::inline v0_2

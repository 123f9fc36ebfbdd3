/// \file
/// Copies the settings of one holder to another, group by group.
///
///     TranscodeDetailModifier::updatedVideo(editor, arguments);  // editor now has the video settings of arguments
#pragma once

#include "meridian/cli/transcode_audio_detail.h"
#include "meridian/cli/transcode_timecode_detail.h"
#include "meridian/cli/transcode_video_detail.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Copies a group of settings from a model to a target: reads every member of the model once and assigns it to the
/// target, in the order of the interface (exceptions: see `updatedAudio`). Absent values and false are assigned too.
/// Nothing is compared, skipped or merged. The target is changed in place and returned. Target and model may be the
/// same.
class MERIDIAN_API TranscodeDetailModifier {
 public:
  TranscodeDetailModifier() = delete;

  static MutableTranscodeVideoDetail& updatedVideo(MutableTranscodeVideoDetail& detail,
                                                   const TranscodeVideoDetail& toMatch);

  /// Assigns an absent `outputChannels` before `channelLayout`, after reading both: a target that stores the two under
  /// one flag, as `TranscodeCliArguments` does, then keeps the one that is present. Deliberately assigns
  /// `audioOutputIsDiscrete` a second time at the end: it has to survive whatever a target does to it when its channel
  /// layout changes.
  static MutableTranscodeAudioDetail& updatedAudio(MutableTranscodeAudioDetail& detail,
                                                   const TranscodeAudioDetail& toMatch);

  static MutableTranscodeTimecodeDetail& updatedTimecode(MutableTranscodeTimecodeDetail& detail,
                                                         const TranscodeTimecodeDetail& toMatch);
};

}  // namespace meridian::inline v0_2

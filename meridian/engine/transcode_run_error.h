/// \file
/// Why a transcode that was planned fails, and what was noticed in one that is carried out. For example:
///
///     const auto result = transcode(*plan);
///     if (!result) std::cerr << result.error().message() << '\n';
///     // "/card/a.mov": is damaged: at 12.480 s: ac-tex damaged at 22 17; copy it again from the card, or accept what
///     // is left of it
#pragma once

#include <array>
#include <cstdint>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"

namespace meridian::inline v0_2 {

/// Why a transcode fails.
enum class TranscodeRunErrorCode : std::uint8_t {
  // Sources.
  sourceNotRead,
  sourceChanged,
  sourceDamaged,
  sourceShort,
  imagesDiffer,
  lutNotUsed,
  watermarkNotUsed,
  // The work.
  notDecoded,
  notCopyable,
  soundNotCopyable,
  imageNotConverted,
  soundNotConverted,
  notEncoded,
  // The output.
  outputExists,
  outputIsSource,
  outputNotWritten,
  outputIncomplete,
  progressNotWritten,
  // The process.
  interrupted,
  outOfMemory,
};

template <>
struct EnumerationTable<TranscodeRunErrorCode> {
  using enum TranscodeRunErrorCode;
  static constexpr auto rows = std::to_array<ErrorRow<TranscodeRunErrorCode>>({
      {sourceNotRead, "sourceNotRead", "cannot be read", "check the volume that it is on"},
      {sourceChanged, "sourceChanged", "is not what it was when the transcode was planned",
       "wait until it is complete, and plan again"},
      {sourceDamaged, "sourceDamaged", "is damaged", "copy it again from the card, or accept what is left of it"},
      {sourceShort, "sourceShort", "ends before it should",
       "copy it again from the card, or accept what is left of it"},
      {imagesDiffer, "imagesDiffer", "has another size than its sequence",
       "take it out, or transcode the images of each size separately"},
      {lutNotUsed, "lutNotUsed", "is a LUT that cannot be used", "choose another LUT"},
      {watermarkNotUsed, "watermarkNotUsed", "is a watermark that cannot be used", "choose another image"},
      {notDecoded, "notDecoded", "cannot be decoded"},
      {notCopyable, "notCopyable", "has video that cannot be copied", "encode it with -vcodec"},
      {soundNotCopyable, "soundNotCopyable", "has sound that cannot be copied", "encode it with -acodec"},
      {imageNotConverted, "imageNotConverted", "has images that cannot be converted"},
      {soundNotConverted, "soundNotConverted", "has sound that cannot be converted"},
      {notEncoded, "notEncoded", "cannot be encoded", "choose other settings of the codec"},
      {outputExists, "outputExists", "is there already", "choose another name, or add -overwrite"},
      {outputIsSource, "outputIsSource", "is a source of the transcode under another name", "choose another name"},
      {outputNotWritten, "outputNotWritten", "cannot be written", "check the space on its volume and the permissions"},
      {outputIncomplete, "outputIncomplete", "is not what was planned, and was not kept"},
      {progressNotWritten, "progressNotWritten", "cannot be written, so that progress cannot be told",
       "check the path of -progress_file"},
      {interrupted, "interrupted", "was interrupted, and nothing was kept"},
      {outOfMemory, "outOfMemory", "needs more memory than there is", "close other programs"},
  });
};

/// Names the path of a source, the output or another file in `place`. `detail` gives the time in the source, what
/// FFmpeg said, or what is missing.
using TranscodeRunError = Error<TranscodeRunErrorCode>;

/// What was noticed in a transcode that was carried out.
enum class TranscodeRunWarningCode : std::uint8_t {
  damageAccepted,
  shortSourceAccepted,
  framesRepeated,
  framesDropped,
  soundFilled,
  soundCut,
  leadCut,
  gpuNotUsed,
  textCut,
  charactersMissing,
};

template <>
struct EnumerationTable<TranscodeRunWarningCode> {
  using enum TranscodeRunWarningCode;
  static constexpr auto rows = std::to_array<ErrorRow<TranscodeRunWarningCode>>({
      {damageAccepted, "damageAccepted", "is damaged"},
      {shortSourceAccepted, "shortSourceAccepted", "ends before it should"},
      {framesRepeated, "framesRepeated", "lacks frames, in whose place others are repeated"},
      {framesDropped, "framesDropped", "has frames at the same time, of which some are dropped"},
      {soundFilled, "soundFilled", "lacks sound, in whose place there is silence"},
      {soundCut, "soundCut", "has sound that goes on after its video and is cut before the next part"},
      {leadCut, "leadCut", "has sound before its first image, which is cut"},
      {gpuNotUsed, "gpuNotUsed", "cannot be used, and the CPU does the work"},
      {textCut, "textCut", "burns in a text that is wider than the image and is cut"},
      {charactersMissing, "charactersMissing", "has characters that no font has, and boxes stand for them"},
  });
};

/// Names the path of a source or a flag in `place`; `detail` gives the time in the source or a count.
using TranscodeRunWarning = Warning<TranscodeRunWarningCode>;

}  // namespace meridian::inline v0_2

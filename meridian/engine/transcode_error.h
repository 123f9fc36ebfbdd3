/// \file
/// Why a transcode cannot be planned, and what was noticed while planning one that can. For example:
///
///     for (const TranscodePlanError& error : plan.error()) std::cerr << error.message() << '\n';
///     // "-vbd": is not a bit depth of the codec: "12"; prores4444 has 10
///     // "-out": is there already: "/out/a.mov"; choose another name, or add -overwrite
#pragma once

#include <array>
#include <cstdint>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"
#include "meridian/cli/advised.h"

namespace meridian::inline v0_2 {

/// Why a transcode cannot be planned.
enum class TranscodePlanErrorCode : std::uint8_t {
  // What the words say.
  unknownFlag,
  unreadableValue,
  unnumberedFlag,
  lookNotSupported,
  // Sources.
  noInput,
  inputNotRead,
  notDecodable,
  partsDiffer,
  secondPicture,
  rateNeeded,
  nothingLeft,
  // The output.
  noOutput,
  outputIsDirectory,
  outputExists,
  outputIsSource,
  directoryMissing,
  directoryNotWritable,
  workDirectoryNotUsable,
  progressFileNotMade,
  unknownContainer,
  wrongExtension,
  notInContainer,
  tooManyTracks,
  // What this FFmpeg can do.
  encoderMissing,
  filterMissing,
  // The image.
  needsVideoCodec,
  sizeOutOfRange,
  oddSize,
  sizeNotAvailable,
  rateOutOfRange,
  bitRateOutOfRange,
  bitRateNotAvailable,
  bitDepthNotAvailable,
  profileNotAvailable,
  keyFramesOutOfRange,
  lutNotUsable,
  // Burn-ins.
  noFont,
  fontSizeOutOfRange,
  textMissing,
  watermarkNotRead,
  scaleOutOfRange,
  watermarkTooLarge,
  // Sound.
  sampleRateNotAvailable,
  sampleDepthNotAvailable,
  channelsOutOfRange,
  layoutNotAvailable,
  unknownLayout,
  contradictoryLayout,
  // Timecode.
  noSuchLabel,
  notADropFrameRate,
  timecodeRateNotAvailable,
};

template <>
struct EnumerationTable<TranscodePlanErrorCode> {
  using enum TranscodePlanErrorCode;
  static constexpr auto rows = std::to_array<ErrorRow<TranscodePlanErrorCode>>({
      {unknownFlag, "unknownFlag", "is not a flag of the transcoder", "check the spelling"},
      {unreadableValue, "unreadableValue", "has a value that cannot be read", "correct the value"},
      {unnumberedFlag, "unnumberedFlag", "has no number",
       "number inputs by group and place, such as -in_0_0, and tracks from 0, such as -ac_omit_0"},
      {lookNotSupported, "lookNotSupported", "asks for a camera look, which cannot be applied",
       "remove the flag, and apply the look as a LUT with -clut"},
      {noInput, "noInput", "is missing", "name the source with -in_0_0"},
      {inputNotRead, "inputNotRead", "cannot be read", "check the file"},
      {notDecodable, "notDecodable", "cannot be decoded",
       "make a file of another codec with the maker's own program first"},
      {partsDiffer, "partsDiffer", "does not continue the part before it", "transcode the parts separately"},
      {secondPicture, "secondPicture", "is in a second group with an image", "transcode the groups separately"},
      {rateNeeded, "rateNeeded", "has no frame rate of its own", "set the rate with -vr"},
      {nothingLeft, "nothingLeft", "leaves neither video nor audio", "leave something in"},
      {noOutput, "noOutput", "is missing", "name the output with -out"},
      {outputIsDirectory, "outputIsDirectory", "is a directory", "add the name of a file"},
      {outputExists, "outputExists", "is there already", "choose another name, or add -overwrite"},
      {outputIsSource, "outputIsSource", "is the same file as a source", "choose another name"},
      {directoryMissing, "directoryMissing", "is in a directory that does not exist", "create the directory first"},
      {directoryNotWritable, "directoryNotWritable", "is in a directory that cannot be written to",
       "choose another directory, or check its permissions"},
      {workDirectoryNotUsable, "workDirectoryNotUsable", "is not a directory that can be written to",
       "choose another directory, or remove -work_dir"},
      {progressFileNotMade, "progressFileNotMade", "cannot be written", "choose another path, or check its directory"},
      {unknownContainer, "unknownContainer", "does not say which container to write",
       "end the name in .mov, .mp4, .wav, .mxf or .mjpeg, or set -file_format"},
      {wrongExtension, "wrongExtension", "has an extension that does not fit", "change the extension"},
      {notInContainer, "notInContainer", "cannot be stored in the container", "choose another codec or container"},
      {tooManyTracks, "tooManyTracks", "has more audio tracks than the container can hold",
       "leave tracks out with -ac_omit_N, or join them with -adiscrete"},
      {encoderMissing, "encoderMissing", "needs an encoder that this FFmpeg does not have",
       "install an FFmpeg with this encoder, or choose another codec"},
      {filterMissing, "filterMissing", "needs a filter that this FFmpeg does not have",
       "install an FFmpeg with this filter"},
      {needsVideoCodec, "needsVideoCodec", "changes the image, but the video is copied", "choose a codec with -vcodec"},
      {sizeOutOfRange, "sizeOutOfRange", "is not a size that can be encoded", "use whole numbers from 16 to 16384"},
      {oddSize, "oddSize", "has an odd width or height, which the codec cannot encode", "use even numbers"},
      {sizeNotAvailable, "sizeNotAvailable", "is not a size of the codec", "choose another size"},
      {rateOutOfRange, "rateOutOfRange", "is not a frame rate that can be encoded",
       "use more than 0 and at most 600 frames per second"},
      {bitRateOutOfRange, "bitRateOutOfRange", "is not a bit rate that can be encoded", "correct the bit rate"},
      {bitRateNotAvailable, "bitRateNotAvailable", "is not a bit rate of the codec at this size",
       "choose one of its bit rates"},
      {bitDepthNotAvailable, "bitDepthNotAvailable", "is not a bit depth of the codec", "choose one of its depths"},
      {profileNotAvailable, "profileNotAvailable", "is not a profile that fits", "choose another profile"},
      {keyFramesOutOfRange, "keyFramesOutOfRange", "is not an interval between key frames", "use 1 or more"},
      {lutNotUsable, "lutNotUsable", "names a LUT that cannot be used", "check the LUT file"},
      {noFont, "noFont", "needs a font, and none is found", "install a font, such as DejaVu Sans Mono"},
      {fontSizeOutOfRange, "fontSizeOutOfRange", "is not a font size", "use 4 to 400 points"},
      {textMissing, "textMissing", "has no text to burn in", "set the text with -wmt_text"},
      {watermarkNotRead, "watermarkNotRead", "names an image that cannot be read", "check the file"},
      {scaleOutOfRange, "scaleOutOfRange", "is not a scale", "use more than 0; 1 is the image's own size"},
      {watermarkTooLarge, "watermarkTooLarge", "makes the watermark larger than the frame",
       "use a smaller -wmf_scale or image"},
      {sampleRateNotAvailable, "sampleRateNotAvailable", "is not a sample rate that can be stored",
       "choose another sample rate with -asr"},
      {sampleDepthNotAvailable, "sampleDepthNotAvailable", "is not a depth of the audio codec",
       "choose one of its depths"},
      {channelsOutOfRange, "channelsOutOfRange", "is not a number of channels that can be stored",
       "choose another number with -acl"},
      {layoutNotAvailable, "layoutNotAvailable", "is not a channel layout of the audio codec",
       "choose another layout, or -acodec lpcm"},
      {unknownLayout, "unknownLayout", "is not a channel layout that is known", "set the layout with -acl"},
      {contradictoryLayout, "contradictoryLayout", "contradicts another flag", "remove one of the two"},
      {noSuchLabel, "noSuchLabel", "is not the timecode of a frame", "choose another timecode"},
      {notADropFrameRate, "notADropFrameRate", "asks for drop frame at a rate that does not have it",
       "remove it, or use 29.97 or 59.94 frames per second"},
      {timecodeRateNotAvailable, "timecodeRateNotAvailable", "is not the rate of the timecode track",
       "remove -tc_rate, or burn the timecode in without a track"},
  });
};

/// Says why a transcode cannot be planned. The place is a flag of the argument vector, or the flag that is missing
/// ("-out"); the detail quotes the value as written.
using TranscodePlanError = Advised<Error<TranscodePlanErrorCode>>;

/// What was noticed in a transcode that can be carried out.
enum class TranscodePlanWarningCode : std::uint8_t {
  acceptedByContainment,
  valueAfterSwitch,
  strayWord,
  withoutEffect,
  noticedInSource,
  videoLeftOut,
  partOfSourceLeftOut,
  variableRate,
  deinterlaced,
  notEnlarged,
  depthReduced,
  alphaLeftOut,
  colorAssumed,
  lutColorUnstated,
  gpuNotUsed,
  copiedInstead,
  repacked,
  noSuchTrack,
  timecodeAssumed,
  timecodeFromCreation,
  timecodeMoved,
  timecodeBreaks,
  lowerCased,
};

template <>
struct EnumerationTable<TranscodePlanWarningCode> {
  using enum TranscodePlanWarningCode;
  static constexpr auto rows = std::to_array<ErrorRow<TranscodePlanWarningCode>>({
      {acceptedByContainment, "acceptedByContainment",
       "is not a flag of the transcoder, and was accepted only because it contains one", "check the spelling"},
      {valueAfterSwitch, "valueAfterSwitch", "accepts no value but consumed the following word",
       "remove the word, or move it after the flag it belongs to"},
      {strayWord, "strayWord", "belongs to no flag", "remove it"},
      {withoutEffect, "withoutEffect", "has no effect"},
      {noticedInSource, "noticedInSource", "is a source with a problem", "check the source"},
      {videoLeftOut, "videoLeftOut", "leaves the video out", "add -vn to say that it is meant"},
      {partOfSourceLeftOut, "partOfSourceLeftOut", "has more than one stream of images, of which one is taken"},
      {variableRate, "variableRate", "has frames of different lengths, and becomes constant"},
      {deinterlaced, "deinterlaced", "is interlaced, and becomes progressive"},
      {notEnlarged, "notEnlarged", "is larger than the source, which is not enlarged",
       "use -aspect_scaling stretch, letterbox or crop to enlarge it"},
      {depthReduced, "depthReduced", "has more bits than the output", "set -vbd to choose the depth"},
      {alphaLeftOut, "alphaLeftOut", "has an alpha channel, which is left out",
       "use prores4444 or prores4444xq to keep it"},
      {colorAssumed, "colorAssumed", "does not state its colour space"},
      {lutColorUnstated, "lutColorUnstated", "may change the colour space, and the output is tagged as the source",
       "state the colour space of the LUT's output with -c_space"},
      {gpuNotUsed, "gpuNotUsed", "finds no GPU that can be used, and the CPU does the work"},
      {copiedInstead, "copiedInstead", "names a codec that cannot be encoded, and the audio is copied",
       "use lpcm, aac or apple_lossless, or -acopy to say that it is meant"},
      {repacked, "repacked", "has samples in an order that the container cannot hold, and is stored anew without loss"},
      {noSuchTrack, "noSuchTrack", "leaves out a track that the source does not have"},
      {timecodeAssumed, "timecodeAssumed", "finds no timecode in the source"},
      {timecodeFromCreation, "timecodeFromCreation", "takes the time of creation"},
      {timecodeMoved, "timecodeMoved",
       "does not label a frame of the output, and is moved to the next label that does"},
      {timecodeBreaks, "timecodeBreaks", "has a timecode that does not continue that of the part before it"},
      {lowerCased, "lowerCased", "was lower-cased in reading"},
  });
};

/// Says what was noticed. The place is a flag or a word of the argument vector.
using TranscodePlanWarning = Advised<Warning<TranscodePlanWarningCode>>;

}  // namespace meridian::inline v0_2

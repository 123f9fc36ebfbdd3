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
  lacksValue,
  unnumberedFlag,
  lookNotSupported,
  // Sources.
  noInput,
  inputNotRead,
  notDecodable,
  partsDiffer,
  secondImage,
  rateNeeded,
  nothingLeft,
  // The output.
  noOutput,
  outputIsDirectory,
  outputIsSpecial,
  outputExists,
  outputIsSource,
  directoryMissing,
  directoryNotWritable,
  nameTooLong,
  workDirectoryNotUsable,
  progressFileNotMade,
  progressFileInUse,
  unknownContainer,
  wrongExtension,
  notInContainer,
  pixelsNotSquare,
  containerCannotHold,
  tooManyTracks,
  // What this FFmpeg can do.
  encoderMissing,
  filterMissing,
  muxerMissing,
  // The image.
  imagesNotCopied,
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
  colorNotConvertible,
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
      {lacksValue, "lacksValue", "needs a value but has none", "write its value right after it"},
      {unnumberedFlag, "unnumberedFlag", "has no number",
       "number inputs by group and place, such as -in_0_0, and tracks from 0, such as -ac_omit_0"},
      {lookNotSupported, "lookNotSupported", "asks for a camera look, which cannot be applied",
       "remove the flag, and apply the look as a LUT with -clut"},
      {noInput, "noInput", "is missing", "name the source with -in_0_0"},
      {inputNotRead, "inputNotRead", "cannot be read", "check the file"},
      {notDecodable, "notDecodable", "cannot be decoded",
       "make a file of another codec with the maker's own program first"},
      {partsDiffer, "partsDiffer", "does not continue the part before it", "transcode the parts separately"},
      {secondImage, "secondImage", "is in a second group with an image", "transcode the groups separately"},
      {rateNeeded, "rateNeeded", "has no frame rate of its own", "set the rate with -vr"},
      {nothingLeft, "nothingLeft", "leaves neither video nor audio", "leave something in"},
      {noOutput, "noOutput", "is missing", "name the output with -out"},
      {outputIsDirectory, "outputIsDirectory", "is a directory", "add the name of a file"},
      {outputIsSpecial, "outputIsSpecial", "is a device, a FIFO or a socket", "choose another name"},
      {outputExists, "outputExists", "is there already", "choose another name, or add -overwrite"},
      {outputIsSource, "outputIsSource", "is a file that the transcode reads", "choose another name"},
      {directoryMissing, "directoryMissing", "is in a directory that does not exist", "create the directory first"},
      {directoryNotWritable, "directoryNotWritable", "is in a directory that cannot be written to",
       "choose another directory, or check its permissions"},
      {nameTooLong, "nameTooLong", "has a name that is longer than the volume allows", "choose a shorter name"},
      {workDirectoryNotUsable, "workDirectoryNotUsable", "is not a directory that can be written to",
       "choose another directory, or remove -work_dir"},
      {progressFileNotMade, "progressFileNotMade", "cannot be written", "choose another path, or check its directory"},
      {progressFileInUse, "progressFileInUse", "is a file that the transcode reads or writes", "choose another path"},
      {unknownContainer, "unknownContainer", "does not say which container to write",
       "end the name in the extension of a container, or set -file_format"},
      {wrongExtension, "wrongExtension", "has an extension that does not fit", "change the extension"},
      {notInContainer, "notInContainer", "cannot be stored in the container", "choose another codec or container"},
      {pixelsNotSquare, "pixelsNotSquare", "has pixels that are not square, which the container cannot state",
       "set a size with -dims, or choose another container"},
      {containerCannotHold, "containerCannotHold", "names a container that cannot hold a stream",
       "choose another container"},
      {tooManyTracks, "tooManyTracks", "names a container that cannot hold so many audio tracks",
       "leave tracks out with -ac_omit_N, or join them with -adiscrete"},
      {encoderMissing, "encoderMissing", "needs an encoder that this FFmpeg does not have",
       "install an FFmpeg with this encoder, or choose another codec"},
      {filterMissing, "filterMissing", "needs a filter that this FFmpeg does not have",
       "install an FFmpeg with this filter"},
      {muxerMissing, "muxerMissing", "names a container that this FFmpeg cannot write",
       "install an FFmpeg with this muxer, or choose another container"},
      {imagesNotCopied, "imagesNotCopied", "is a sequence of images, which cannot be copied as video",
       "choose a codec with -vcodec"},
      {needsVideoCodec, "needsVideoCodec", "changes the image, but the video is copied", "choose a codec with -vcodec"},
      {sizeOutOfRange, "sizeOutOfRange", "has a size that cannot be encoded", "choose another size"},
      {oddSize, "oddSize", "has an odd width or height, which the codec cannot encode", "use even numbers"},
      {sizeNotAvailable, "sizeNotAvailable", "has a size that the codec does not have", "choose another size"},
      {rateOutOfRange, "rateOutOfRange", "has a frame rate that cannot be used", "choose another rate with -vr"},
      {bitRateOutOfRange, "bitRateOutOfRange", "is not a bit rate that can be encoded", "correct the bit rate"},
      {bitRateNotAvailable, "bitRateNotAvailable", "is not a bit rate of the codec at this size",
       "choose one of its bit rates"},
      {bitDepthNotAvailable, "bitDepthNotAvailable", "is not a bit depth of the codec", "choose one of its depths"},
      {profileNotAvailable, "profileNotAvailable", "is not a profile that fits", "choose another profile"},
      {keyFramesOutOfRange, "keyFramesOutOfRange", "is not an interval between key frames", "use 1 or more"},
      {colorNotConvertible, "colorNotConvertible", "asks for a conversion of colours that FFmpeg cannot convert",
       "leave the flag out, or convert the source with another program first"},
      {lutNotUsable, "lutNotUsable", "names a LUT that cannot be used", "check the LUT file"},
      {noFont, "noFont", "needs a font, and none is found", "install a font, such as DejaVu Sans Mono"},
      {fontSizeOutOfRange, "fontSizeOutOfRange", "is not a font size", "use 4 to 400 points"},
      {textMissing, "textMissing", "has no text to burn in", "set the text with -wmt_text"},
      {watermarkNotRead, "watermarkNotRead", "names an image that cannot be read", "check the file"},
      {scaleOutOfRange, "scaleOutOfRange", "is not a scale", "use more than 0; 1 is the image's own size"},
      {watermarkTooLarge, "watermarkTooLarge", "makes the watermark larger than the frame",
       "use a smaller -wmf_scale or image"},
      {sampleRateNotAvailable, "sampleRateNotAvailable", "has a sample rate that cannot be stored",
       "choose another sample rate with -asr"},
      {sampleDepthNotAvailable, "sampleDepthNotAvailable", "is not a depth of the audio codec",
       "choose one of its depths"},
      {channelsOutOfRange, "channelsOutOfRange", "has a number of channels that cannot be stored",
       "choose another number with -acl"},
      {layoutNotAvailable, "layoutNotAvailable", "has a channel layout that cannot be stored",
       "choose another layout, or -acodec lpcm"},
      {unknownLayout, "unknownLayout", "is not a channel layout that is known", "set the layout with -acl"},
      {contradictoryLayout, "contradictoryLayout", "contradicts another flag", "remove one of the two"},
      {noSuchLabel, "noSuchLabel", "is not the timecode of a frame", "choose another timecode"},
      {notADropFrameRate, "notADropFrameRate", "asks for drop frame at a rate that does not have it",
       "remove it, or use 29.97 or 59.94 frames per second"},
      {timecodeRateNotAvailable, "timecodeRateNotAvailable", "has a rate at which timecode cannot count",
       "choose another rate with -vr, or leave the timecode out"},
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
  repeated,
  withoutEffect,
  noticedInSource,
  videoLeftOut,
  partOfSourceLeftOut,
  streamsLeftOut,
  tagsLeftOut,
  variableRate,
  deinterlaced,
  rotationRounded,
  notEnlarged,
  depthReduced,
  alphaLeftOut,
  colorAssumed,
  lutColorUnstated,
  gpuNotUsed,
  copiedInstead,
  repacked,
  noSuchTrack,
  sampleRatesDiffer,
  layoutAssumed,
  channelsReordered,
  channelsAdded,
  textTooSmall,
  watermarkTooSmall,
  timecodeAssumed,
  timecodeFromCreation,
  timecodeMoved,
  timecodeBreaks,
  dropFrameLost,
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
      {repeated, "repeated", "is repeated, and the last value wins", "write each flag once"},
      {withoutEffect, "withoutEffect", "has no effect"},
      {noticedInSource, "noticedInSource", "is a source with a problem", "check the source"},
      {videoLeftOut, "videoLeftOut", "leaves the video out", "add -vn to say that it is meant"},
      {partOfSourceLeftOut, "partOfSourceLeftOut", "has more than one stream of images, of which one is used"},
      {streamsLeftOut, "streamsLeftOut", "has streams beside images, sound and timecode, which are left out"},
      {tagsLeftOut, "tagsLeftOut", "names a container that does not keep what the source states of itself"},
      {variableRate, "variableRate", "has a variable frame rate, which becomes constant"},
      {deinterlaced, "deinterlaced", "is interlaced, and becomes progressive"},
      {rotationRounded, "rotationRounded", "is turned by an angle that is not a quarter turn"},
      {notEnlarged, "notEnlarged", "is larger than the source, which is not enlarged",
       "use -aspect_scaling stretch, letterbox or crop to enlarge it"},
      {depthReduced, "depthReduced", "has more bits than the output"},
      {alphaLeftOut, "alphaLeftOut", "has an alpha channel, which is left out",
       "use prores4444 or prores4444xq to keep it"},
      {colorAssumed, "colorAssumed", "does not state its colour space"},
      {lutColorUnstated, "lutColorUnstated", "may change the colour space, and the output is tagged as the source",
       "state the colour space of the LUT's output with -c_space"},
      {gpuNotUsed, "gpuNotUsed", "cannot be done, and the CPU does the work"},
      {copiedInstead, "copiedInstead", "names a codec that cannot be encoded, and the audio is copied",
       "use lpcm, aac or apple_lossless, or -acopy to say that it is meant"},
      {repacked, "repacked",
       "names a container that cannot hold the order of the samples, which are re-packed without loss"},
      {noSuchTrack, "noSuchTrack", "leaves out a track that the source does not have"},
      {sampleRatesDiffer, "sampleRatesDiffer", "joins tracks of different sample rates", "set the rate with -asr"},
      {layoutAssumed, "layoutAssumed", "does not state the places of its channels"},
      {channelsReordered, "channelsReordered", "asks for an order of channels that the file cannot state"},
      {channelsAdded, "channelsAdded", "adds channels without sound"},
      {textTooSmall, "textTooSmall", "burns in a text that is too small to read", "set a greater size of the font"},
      {watermarkTooSmall, "watermarkTooSmall", "burns in an image that is too small to see",
       "use a greater -wmf_scale or image"},
      {timecodeAssumed, "timecodeAssumed", "finds no timecode in the source"},
      {timecodeFromCreation, "timecodeFromCreation", "uses the time of creation"},
      {timecodeMoved, "timecodeMoved",
       "does not label a frame of the output, and is moved to the next label that does"},
      {timecodeBreaks, "timecodeBreaks", "has a timecode that does not continue that of the part before it"},
      {dropFrameLost, "dropFrameLost", "has drop-frame timecode, and the output's rate has no drop frame"},
      {lowerCased, "lowerCased", "was lower-cased in reading"},
  });
};

/// Says what was noticed. The place is a flag or a word of the argument vector.
using TranscodePlanWarning = Advised<Warning<TranscodePlanWarningCode>>;

}  // namespace meridian::inline v0_2

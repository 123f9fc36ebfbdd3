/// \file
/// Why a media file is not described, and what was noticed in one that is. For example:
///
///     const auto clip = describeMedia(Url::fromFilePath("/card/half.mov"));
///     if (!clip) std::cerr << clip.error().message();
///     // "/card/half.mov": is damaged or incomplete: moov atom not found; copy it again from the card
#pragma once

#include <array>
#include <cstdint>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"

namespace meridian::inline v0_2 {

/// Why an item is not described.
enum class MediaErrorCode : std::uint8_t {
  notAFileUrl,
  notOpened,
  notRegularFile,
  notRead,
  empty,
  unknownFormat,
  damaged,
  noStreams,
  limitReached,
  noImageSequence,
  outOfMemory,
};

template <>
struct EnumerationTable<MediaErrorCode> {
  static constexpr auto rows = std::to_array<ErrorRow<MediaErrorCode>>({
      {MediaErrorCode::notAFileUrl, "notAFileUrl", "is not the URL of a file", "copy the file to a volume first"},
      {MediaErrorCode::notOpened, "notOpened", "cannot be opened", "check the spelling and that you may read it"},
      {MediaErrorCode::notRegularFile, "notRegularFile", "is not a regular file",
       "name a media file, or a directory of numbered images"},
      {MediaErrorCode::notRead, "notRead", "cannot be read", "check the volume that it is on"},
      {MediaErrorCode::empty, "empty", "is empty", "copy it again from the card"},
      {MediaErrorCode::unknownFormat, "unknownFormat", "is not in a media format that can be read",
       "check that it is a media file"},
      {MediaErrorCode::damaged, "damaged", "is damaged or incomplete", "copy it again from the card"},
      {MediaErrorCode::noStreams, "noStreams", "has neither video nor audio", "check that it is a media file"},
      {MediaErrorCode::limitReached, "limitReached", "needs too many reads, or too much memory or time, to describe",
       "check that it is not damaged and that its volume is not too slow"},
      {MediaErrorCode::noImageSequence, "noImageSequence", "is a directory without numbered images",
       "name a media file, or a directory whose files are images with numbers in their names"},
      {MediaErrorCode::outOfMemory, "outOfMemory", "needs more memory than there is", "close other programs"},
  });
};

/// Names the path in `place`. `detail` gives what the format's reader said, where it said something; for
/// notRegularFile what the item is: "a FIFO", "a device" or "a socket"; for limitReached the limit. `systemError` is
/// set for notOpened and notRead, where the system gave a reason.
using MediaError = Error<MediaErrorCode>;

/// What was noticed in a file that is described.
enum class MediaWarningCode : std::uint8_t {
  endsBeforeItsData,
  dropFrameAtOtherRate,
  timecodeNotRead,
  missingImages,
  repeatedImages,
};

template <>
struct EnumerationTable<MediaWarningCode> {
  static constexpr auto rows = std::to_array<ErrorRow<MediaWarningCode>>({
      {MediaWarningCode::endsBeforeItsData, "endsBeforeItsData", "ends before the last of its data",
       "copy it again from the card"},
      {MediaWarningCode::dropFrameAtOtherRate, "dropFrameAtOtherRate",
       "has a drop-frame timecode at a rate without drop frame, which is read as non-drop",
       "check the timecode of the camera"},
      {MediaWarningCode::timecodeNotRead, "timecodeNotRead", "has a timecode that labels no frame",
       "ignore it or set one"},
      {MediaWarningCode::missingImages, "missingImages", "lacks images within its numbers",
       "copy the directory again from the card"},
      {MediaWarningCode::repeatedImages, "repeatedImages", "has several images of one number",
       "remove those that do not belong to it"},
  });
};

/// Names the path in `place`. `detail` gives the bytes or numbers that are missing, how many images are repeated, or
/// the timecode as written.
using MediaWarning = Warning<MediaWarningCode>;

}  // namespace meridian::inline v0_2

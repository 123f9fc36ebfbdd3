/// \file
/// Names of the external FFmpeg tool in the suite's metadata. For example:
///
///     FFmpegDescriptionConstants::setUtilityName("Transcoder");
///     FFmpegDescriptionConstants::utilityName()  // "Transcoder"
#pragma once

#include <string>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Texts that an application may replace for the whole process. Thread-safe.
class MERIDIAN_API FFmpegDescriptionConstants {
 public:
  FFmpegDescriptionConstants() = delete;

  /// Return or set the tool's display name; initially "FFmpeg Utility".
  [[nodiscard]] static std::string utilityName();
  static void setUtilityName(std::string name);

  /// Return or set the mask's name; initially "Video".
  [[nodiscard]] static std::string maskName();
  static void setMaskName(std::string name);

  /// Return or set the metadata key of the encoder in the tool's output; initially "encoder".
  [[nodiscard]] static std::string encoderMetadataKey();
  static void setEncoderMetadataKey(std::string key);

  /// Return or set the metadata key of the handler's name in the tool's output; initially "handler name".
  [[nodiscard]] static std::string handlerNameMetadataKey();
  static void setHandlerNameMetadataKey(std::string key);
};

}  // namespace meridian::inline v0_2

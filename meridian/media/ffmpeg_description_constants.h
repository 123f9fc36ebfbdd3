// How the external FFmpeg tool is named in the suite's metadata.
#pragma once

#include <string>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Texts that an application may replace for the whole process. All may be read and set from any thread.
class MERIDIAN_API FFmpegDescriptionConstants {
 public:
  FFmpegDescriptionConstants() = delete;

  /// The tool's display name; at first "FFmpeg Utility".
  [[nodiscard]] static std::string utilityName();
  static void setUtilityName(std::string name);

  /// The name of the mask; at first "Video".
  [[nodiscard]] static std::string maskName();
  static void setMaskName(std::string name);

  /// The metadata key of the encoder in the tool's output; at first "encoder".
  [[nodiscard]] static std::string encoderMetadataKey();
  static void setEncoderMetadataKey(std::string key);

  /// The metadata key of the handler's name in the tool's output; at first "handler name".
  [[nodiscard]] static std::string handlerNameMetadataKey();
  static void setHandlerNameMetadataKey(std::string key);
};

}  // namespace meridian::inline v0_2

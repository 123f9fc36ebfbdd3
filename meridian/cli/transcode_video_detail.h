/// \file
/// The video settings of a transcode as interfaces, to read or to set. A holder implements one and can then be copied
/// to and from a command line:
///
///     arguments.updateFromVideoDetail(editor);  // editor is a TranscodeVideoDetail
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "meridian/cli/transcode_detail_values.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/export.h"
#include "meridian/media/size.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// Reads the video settings of a transcode.
class MERIDIAN_API TranscodeVideoDetail {
 public:
  virtual ~TranscodeVideoDetail();

  /// Returns the codec.
  [[nodiscard]] virtual std::optional<SAVTranscodeArgumentVideoCodecValue> videoFormat() const = 0;
  /// Returns the frame rate in frames per second.
  [[nodiscard]] virtual std::optional<float> videoFrameRate() const = 0;
  /// Returns the width and height in pixels.
  [[nodiscard]] virtual std::optional<Size> videoDimensions() const = 0;
  /// Returns the average bit rate in megabits per second.
  [[nodiscard]] virtual std::optional<float> videoBitRate() const = 0;
  /// Returns the bit depth in bits per sample.
  [[nodiscard]] virtual std::optional<std::int64_t> videoBitDepth() const = 0;
  /// Returns whether playback can start before the whole file is loaded.
  [[nodiscard]] virtual bool prepareForWeb() const = 0;
  /// Return whether the GPU decodes, and whether it encodes.
  [[nodiscard]] virtual bool gpuDecode() const = 0;
  [[nodiscard]] virtual bool gpuEncode() const = 0;
  /// Returns the interval between key frames, in frames.
  [[nodiscard]] virtual std::optional<std::int64_t> keyFrames() const = 0;
  /// Returns the LUT to apply.
  [[nodiscard]] virtual std::optional<Url> lutFile() const = 0;
  /// Returns how an image fits a frame of another aspect ratio.
  [[nodiscard]] virtual std::optional<SAVTranscodeArgumentAspectRatioValue> aspectScaling() const = 0;
  /// Returns which part of the image a crop keeps.
  [[nodiscard]] virtual std::optional<VideoCropAnchor> videoCropAnchor() const = 0;
  /// Returns the colour space to convert to.
  [[nodiscard]] virtual std::optional<SAVTranscodeArgumentColorSpaceValue> colorSpace() const = 0;
  /// Returns the profile of the codec. The text is valid until the holder is changed.
  [[nodiscard]] virtual std::optional<std::string_view> videoProfile() const = 0;

 protected:
  TranscodeVideoDetail() = default;
  TranscodeVideoDetail(const TranscodeVideoDetail&) = default;
  TranscodeVideoDetail& operator=(const TranscodeVideoDetail&) = default;
  TranscodeVideoDetail(TranscodeVideoDetail&&) = default;
  TranscodeVideoDetail& operator=(TranscodeVideoDetail&&) = default;
};

/// Reads and sets them. An absent value, or false, removes the setting.
class MERIDIAN_API MutableTranscodeVideoDetail : public TranscodeVideoDetail {
 public:
  ~MutableTranscodeVideoDetail() override;

  virtual void setVideoFormat(std::optional<SAVTranscodeArgumentVideoCodecValue> codec) = 0;
  virtual void setVideoFrameRate(std::optional<float> framesPerSecond) = 0;
  virtual void setVideoDimensions(const std::optional<Size>& size) = 0;
  virtual void setVideoBitRate(std::optional<float> bitRate) = 0;
  virtual void setVideoBitDepth(std::optional<std::int64_t> bitDepth) = 0;
  virtual void setPrepareForWeb(bool prepare) = 0;
  virtual void setGpuDecode(bool decode) = 0;
  virtual void setGpuEncode(bool encode) = 0;
  virtual void setKeyFrames(std::optional<std::int64_t> interval) = 0;
  virtual void setLutFile(const std::optional<Url>& file) = 0;
  virtual void setAspectScaling(std::optional<SAVTranscodeArgumentAspectRatioValue> scaling) = 0;
  virtual void setVideoCropAnchor(std::optional<VideoCropAnchor> anchor) = 0;
  virtual void setColorSpace(std::optional<SAVTranscodeArgumentColorSpaceValue> space) = 0;
  virtual void setVideoProfile(std::optional<std::string_view> profile) = 0;

 protected:
  MutableTranscodeVideoDetail() = default;
  MutableTranscodeVideoDetail(const MutableTranscodeVideoDetail&) = default;
  MutableTranscodeVideoDetail& operator=(const MutableTranscodeVideoDetail&) = default;
  MutableTranscodeVideoDetail(MutableTranscodeVideoDetail&&) = default;
  MutableTranscodeVideoDetail& operator=(MutableTranscodeVideoDetail&&) = default;
};

}  // namespace meridian::inline v0_2

// The video settings of a transcode as an interface: read, or read and set.
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

/// The video settings of a transcode, wherever they are held.
class MERIDIAN_API TranscodeVideoDetail {
 public:
  virtual ~TranscodeVideoDetail();

  /// The codec.
  [[nodiscard]] virtual std::optional<SAVTranscodeArgumentVideoCodecValue> videoFormat() const = 0;
  /// Frames per second.
  [[nodiscard]] virtual std::optional<float> videoFrameRate() const = 0;
  /// In pixels.
  [[nodiscard]] virtual std::optional<Size> videoDimensions() const = 0;
  [[nodiscard]] virtual std::optional<float> videoBitRate() const = 0;
  [[nodiscard]] virtual std::optional<std::int64_t> videoBitDepth() const = 0;
  /// Whether playback may begin before all is loaded.
  [[nodiscard]] virtual bool prepareForWeb() const = 0;
  [[nodiscard]] virtual bool gpuDecode() const = 0;
  [[nodiscard]] virtual bool gpuEncode() const = 0;
  /// The interval between key frames, in frames.
  [[nodiscard]] virtual std::optional<std::int64_t> keyFrames() const = 0;
  /// The colour look-up table to apply.
  [[nodiscard]] virtual std::optional<Url> lutFile() const = 0;
  /// How an image fits a frame of another shape.
  [[nodiscard]] virtual std::optional<SAVTranscodeArgumentAspectRatioValue> aspectScaling() const = 0;
  [[nodiscard]] virtual std::optional<VideoCropAnchor> videoCropAnchor() const = 0;
  [[nodiscard]] virtual std::optional<SAVTranscodeArgumentColorSpaceValue> colorSpace() const = 0;
  /// The codec's profile. The text lives until the holder is changed.
  [[nodiscard]] virtual std::optional<std::string_view> videoProfile() const = 0;

 protected:
  TranscodeVideoDetail() = default;
  TranscodeVideoDetail(const TranscodeVideoDetail&) = default;
  TranscodeVideoDetail& operator=(const TranscodeVideoDetail&) = default;
  TranscodeVideoDetail(TranscodeVideoDetail&&) = default;
  TranscodeVideoDetail& operator=(TranscodeVideoDetail&&) = default;
};

/// The same settings, each to be set as well. An absent value, or false, takes the setting away.
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

/// \file
/// The audio settings of a transcode as interfaces, to read or to set. A holder implements one and can then be copied
/// to and from a command line:
///
///     arguments.updateFromAudioDetail(editor);  // editor is a TranscodeAudioDetail
#pragma once

#include <cstdint>
#include <optional>

#include "meridian/cli/transcode_detail_values.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Reads the audio settings of a transcode.
class MERIDIAN_API TranscodeAudioDetail {
 public:
  virtual ~TranscodeAudioDetail();

  /// Returns whether audio is left out.
  [[nodiscard]] virtual bool omitAudio() const = 0;
  /// Returns the codec.
  [[nodiscard]] virtual std::optional<SAVTranscodeArgumentAudioFormatValue> audioFormat() const = 0;
  /// Returns the quality of the encoder.
  [[nodiscard]] virtual std::optional<TranscodeAudioQuality> audioQuality() const = 0;
  /// Returns the sample rate in samples per second.
  [[nodiscard]] virtual std::optional<std::int64_t> sampleRate() const = 0;
  /// Returns the bit rate in bits per second.
  [[nodiscard]] virtual std::optional<std::int64_t> audioBitRate() const = 0;
  /// Returns the bit depth in bits per sample of a channel.
  [[nodiscard]] virtual std::optional<std::int64_t> audioBitsPerChannel() const = 0;
  /// Returns whether the channels are discrete rather than a layout.
  [[nodiscard]] virtual bool audioOutputIsDiscrete() const = 0;
  /// Returns the channel layout. Deliberately shares its flag with `outputChannels`: setting one replaces the other.
  [[nodiscard]] virtual std::optional<SAVTranscodeArgumentAudioChannelLayoutValue> channelLayout() const = 0;
  /// Returns the platform's tag of the layout.
  [[nodiscard]] virtual std::optional<std::int64_t> channelLayoutTag() const = 0;
  /// Returns the number of channels; see `channelLayout`.
  [[nodiscard]] virtual std::optional<std::int64_t> outputChannels() const = 0;

 protected:
  TranscodeAudioDetail() = default;
  TranscodeAudioDetail(const TranscodeAudioDetail&) = default;
  TranscodeAudioDetail& operator=(const TranscodeAudioDetail&) = default;
  TranscodeAudioDetail(TranscodeAudioDetail&&) = default;
  TranscodeAudioDetail& operator=(TranscodeAudioDetail&&) = default;
};

/// Reads and sets them. An absent value, or false, removes the setting.
class MERIDIAN_API MutableTranscodeAudioDetail : public TranscodeAudioDetail {
 public:
  ~MutableTranscodeAudioDetail() override;

  virtual void setOmitAudio(bool omit) = 0;
  virtual void setAudioFormat(std::optional<SAVTranscodeArgumentAudioFormatValue> format) = 0;
  virtual void setAudioQuality(std::optional<TranscodeAudioQuality> quality) = 0;
  virtual void setSampleRate(std::optional<std::int64_t> samplesPerSecond) = 0;
  virtual void setAudioBitRate(std::optional<std::int64_t> bitRate) = 0;
  virtual void setAudioBitsPerChannel(std::optional<std::int64_t> bits) = 0;
  virtual void setAudioOutputIsDiscrete(bool isDiscrete) = 0;
  virtual void setChannelLayout(std::optional<SAVTranscodeArgumentAudioChannelLayoutValue> layout) = 0;
  virtual void setChannelLayoutTag(std::optional<std::int64_t> tag) = 0;
  virtual void setOutputChannels(std::optional<std::int64_t> channels) = 0;

 protected:
  MutableTranscodeAudioDetail() = default;
  MutableTranscodeAudioDetail(const MutableTranscodeAudioDetail&) = default;
  MutableTranscodeAudioDetail& operator=(const MutableTranscodeAudioDetail&) = default;
  MutableTranscodeAudioDetail(MutableTranscodeAudioDetail&&) = default;
  MutableTranscodeAudioDetail& operator=(MutableTranscodeAudioDetail&&) = default;
};

}  // namespace meridian::inline v0_2

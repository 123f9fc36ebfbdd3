// The timecode settings of a transcode as an interface: read, or read and set.
#pragma once

#include <cstdint>
#include <optional>

#include "meridian/cli/transcode_detail_values.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/export.h"
#include "meridian/media/rgb_color.h"
#include "meridian/media/timecode_components.h"

namespace meridian::inline v0_2 {

/// The timecode settings of a transcode, wherever they are held. They belong together: a timecode is given for a custom
/// source and for no other, and timecode is included when there is a track or a burn-in. A holder that says otherwise
/// cannot be copied whole onto a command line, which then has the source custom with the timecode that it was given.
class MERIDIAN_API TranscodeTimecodeDetail {
 public:
  virtual ~TranscodeTimecodeDetail();

  /// Whether the output has timecode: a track, burnt in, or both.
  [[nodiscard]] virtual bool includeTimecode() const = 0;
  [[nodiscard]] virtual std::optional<TimecodeSource> timecodeSource() const = 0;
  /// The timecode of the first frame, for a custom source.
  [[nodiscard]] virtual std::optional<TimecodeComponents> timecode() const = 0;
  /// Frames per second.
  [[nodiscard]] virtual std::optional<float> timecodeFrameRate() const = 0;
  [[nodiscard]] virtual bool timecodeIsDropFrame() const = 0;
  [[nodiscard]] virtual bool addTimecodeTrack() const = 0;
  [[nodiscard]] virtual bool addTimecodeBurn() const = 0;
  [[nodiscard]] virtual std::optional<SAVTranscodeArgumentOverlayAnchorValue> timecodeBurnAnchor() const = 0;
  [[nodiscard]] virtual std::optional<std::int64_t> timecodeBurnFontSize() const = 0;
  [[nodiscard]] virtual std::optional<RgbColor> timecodeBurnFontColor() const = 0;
  [[nodiscard]] virtual std::optional<RgbColor> timecodeBurnBoxColor() const = 0;

 protected:
  TranscodeTimecodeDetail() = default;
  TranscodeTimecodeDetail(const TranscodeTimecodeDetail&) = default;
  TranscodeTimecodeDetail& operator=(const TranscodeTimecodeDetail&) = default;
  TranscodeTimecodeDetail(TranscodeTimecodeDetail&&) = default;
  TranscodeTimecodeDetail& operator=(TranscodeTimecodeDetail&&) = default;
};

/// The same settings, each to be set as well. An absent value, or false, takes the setting away.
class MERIDIAN_API MutableTranscodeTimecodeDetail : public TranscodeTimecodeDetail {
 public:
  ~MutableTranscodeTimecodeDetail() override;

  virtual void setIncludeTimecode(bool include) = 0;
  virtual void setTimecodeSource(std::optional<TimecodeSource> source) = 0;
  virtual void setTimecode(const std::optional<TimecodeComponents>& timecode) = 0;
  virtual void setTimecodeFrameRate(std::optional<float> framesPerSecond) = 0;
  virtual void setTimecodeIsDropFrame(bool isDropFrame) = 0;
  virtual void setAddTimecodeTrack(bool add) = 0;
  virtual void setAddTimecodeBurn(bool add) = 0;
  virtual void setTimecodeBurnAnchor(std::optional<SAVTranscodeArgumentOverlayAnchorValue> anchor) = 0;
  virtual void setTimecodeBurnFontSize(std::optional<std::int64_t> size) = 0;
  virtual void setTimecodeBurnFontColor(std::optional<RgbColor> color) = 0;
  virtual void setTimecodeBurnBoxColor(std::optional<RgbColor> color) = 0;

 protected:
  MutableTranscodeTimecodeDetail() = default;
  MutableTranscodeTimecodeDetail(const MutableTranscodeTimecodeDetail&) = default;
  MutableTranscodeTimecodeDetail& operator=(const MutableTranscodeTimecodeDetail&) = default;
  MutableTranscodeTimecodeDetail(MutableTranscodeTimecodeDetail&&) = default;
  MutableTranscodeTimecodeDetail& operator=(MutableTranscodeTimecodeDetail&&) = default;
};

}  // namespace meridian::inline v0_2

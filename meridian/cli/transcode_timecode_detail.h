/// \file
/// The timecode settings of a transcode as interfaces, to read or to set. A holder implements one and can then be
/// copied to and from a command line:
///
///     arguments.updateFromTimecodeDetail(editor);  // editor is a TranscodeTimecodeDetail
#pragma once

#include <cstdint>
#include <optional>

#include "meridian/cli/transcode_detail_values.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/export.h"
#include "meridian/media/rgb_color.h"
#include "meridian/media/timecode_components.h"

namespace meridian::inline v0_2 {

/// Reads the timecode settings of a transcode. They depend on each other: only a custom source has a timecode, and
/// timecode is included if there is a track or a burn-in. A holder with a timecode and another source is copied to a
/// command line as custom with that timecode.
class MERIDIAN_API TranscodeTimecodeDetail {
 public:
  virtual ~TranscodeTimecodeDetail();

  /// Returns whether the output has timecode: a track, burnt in, or both.
  [[nodiscard]] virtual bool includeTimecode() const = 0;
  /// Returns where the timecode comes from.
  [[nodiscard]] virtual std::optional<TimecodeSource> timecodeSource() const = 0;
  /// Returns the timecode of the first frame, for a custom source.
  [[nodiscard]] virtual std::optional<TimecodeComponents> timecode() const = 0;
  /// Returns the rate at which timecode counts, in frames per second.
  [[nodiscard]] virtual std::optional<float> timecodeFrameRate() const = 0;
  /// Returns whether the timecode is drop frame.
  [[nodiscard]] virtual bool timecodeIsDropFrame() const = 0;
  /// Return whether there is a timecode track, and whether the timecode is burnt in.
  [[nodiscard]] virtual bool addTimecodeTrack() const = 0;
  [[nodiscard]] virtual bool addTimecodeBurn() const = 0;
  /// Returns where the timecode is burnt in.
  [[nodiscard]] virtual std::optional<SAVTranscodeArgumentOverlayAnchorValue> timecodeBurnAnchor() const = 0;
  /// Returns the font size of the burnt-in timecode in points.
  [[nodiscard]] virtual std::optional<std::int64_t> timecodeBurnFontSize() const = 0;
  /// Return the colours of the burnt-in timecode and of the box behind it.
  [[nodiscard]] virtual std::optional<RgbColor> timecodeBurnFontColor() const = 0;
  [[nodiscard]] virtual std::optional<RgbColor> timecodeBurnBoxColor() const = 0;

 protected:
  TranscodeTimecodeDetail() = default;
  TranscodeTimecodeDetail(const TranscodeTimecodeDetail&) = default;
  TranscodeTimecodeDetail& operator=(const TranscodeTimecodeDetail&) = default;
  TranscodeTimecodeDetail(TranscodeTimecodeDetail&&) = default;
  TranscodeTimecodeDetail& operator=(TranscodeTimecodeDetail&&) = default;
};

/// Reads and sets them. An absent value, or false, removes the setting.
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

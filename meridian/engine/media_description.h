/// \file
/// What is in a media file, as a plain value: container, streams, rates, timecode and tags. For example:
///
///     const MediaDescription clip = describeMedia(Url::fromFilePath("/card/A001.mov")).value();
///     clip.container                      // SLVMediaFileContainerQuickTimeMovie, "QuickTime"
///     clip.video.front().frameRate        // VideoFrameRate::ntsc30p
///     clip.timecode->start                // 01:00:58;28
///
/// An absent value is one that the file does not state and that cannot be derived from what it states; nothing is
/// guessed. Texts of the vocabulary (`container`, `codec`) are constants of media_names.h and remain valid; all
/// other texts are the file's own, unchecked: make them safe with `printable()` before they reach a terminal.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/engine/media_error.h"
#include "meridian/export.h"
#include "meridian/media/media_corporation.h"
#include "meridian/media/rational.h"
#include "meridian/media/timecode_components.h"
#include "meridian/media/video_dimension.h"
#include "meridian/media/video_frame_rate.h"

namespace meridian::inline v0_2 {

/// A tag as the file has it. A key may occur more than once in a list.
struct MediaTag {
  std::string key;
  std::string value;

  friend bool operator==(const MediaTag&, const MediaTag&) = default;
};

/// Returns the value of the first tag with this key, ignoring the case of ASCII letters; absent if there is none. The
/// view ends with the tag.
[[nodiscard]] MERIDIAN_API std::optional<std::string_view> tagValue(const std::vector<MediaTag>& tags,
                                                                    std::string_view key) noexcept;

/// How the lines of a frame were scanned. The raw value is FFmpeg's text.
enum class FieldOrder : std::uint8_t {
  unknown,
  progressive,
  topFirst,
  bottomFirst,
  /// Top field coded first, bottom field displayed first.
  topCodedFirst,
  /// Bottom field coded first, top field displayed first.
  bottomCodedFirst,
};

template <>
struct EnumerationTable<FieldOrder> {
  static constexpr auto rows = std::to_array<EnumerationRow<FieldOrder>>({
      {FieldOrder::unknown, "unknown"},
      {FieldOrder::progressive, "progressive"},
      {FieldOrder::topFirst, "tt", "top field first"},
      {FieldOrder::bottomFirst, "bb", "bottom field first"},
      {FieldOrder::topCodedFirst, "tb", "bottom field first, top field coded first"},
      {FieldOrder::bottomCodedFirst, "bt", "top field first, bottom field coded first"},
  });
};

/// Returns true for the orders of interlaced video.
[[nodiscard]] constexpr bool isInterlaced(FieldOrder order) noexcept { return order > FieldOrder::progressive; }

/// How the samples of colour lie among those of luma.
enum class ChromaSubsampling : std::uint8_t {
  rgb,
  /// Luma alone.
  yuv400,
  yuv410,
  yuv411,
  yuv420,
  yuv422,
  yuv440,
  yuv444,
  palette,
  bayer,
  xyz,
};

template <>
struct EnumerationTable<ChromaSubsampling> {
  static constexpr auto rows = std::to_array<EnumerationRow<ChromaSubsampling>>({
      {ChromaSubsampling::rgb, "RGB"},
      {ChromaSubsampling::yuv400, "4:0:0"},
      {ChromaSubsampling::yuv410, "4:1:0"},
      {ChromaSubsampling::yuv411, "4:1:1"},
      {ChromaSubsampling::yuv420, "4:2:0"},
      {ChromaSubsampling::yuv422, "4:2:2"},
      {ChromaSubsampling::yuv440, "4:4:0"},
      {ChromaSubsampling::yuv444, "4:4:4"},
      {ChromaSubsampling::palette, "palette"},
      {ChromaSubsampling::bayer, "Bayer"},
      {ChromaSubsampling::xyz, "XYZ"},
  });
};

/// The range of code values.
enum class ColorRange : std::uint8_t { unknown, limited, full };

template <>
struct EnumerationTable<ColorRange> {
  static constexpr auto rows = std::to_array<EnumerationRow<ColorRange>>({
      {ColorRange::unknown, "unknown"},
      {ColorRange::limited, "limited"},
      {ColorRange::full, "full"},
  });
};

/// A code point of ITU-T H.273 (ISO/IEC 23091-2) for primaries, transfer characteristics or matrix coefficients, with
/// FFmpeg's name for it: {1, "bt709"}. 2 is "unspecified".
struct ColorCode {
  int number = 2;
  std::string name = "unknown";

  friend bool operator==(const ColorCode&, const ColorCode&) = default;
};

/// Where the colour tags of a stream are written.
enum class ColorTagSource : std::uint8_t { container, codec };

template <>
struct EnumerationTable<ColorTagSource> {
  static constexpr auto rows = std::to_array<EnumerationRow<ColorTagSource>>({
      {ColorTagSource::container, "container"},
      {ColorTagSource::codec, "codec"},
  });
};

/// What every stream of sound or images states.
struct StreamDescription {
  /// The place among all streams of the file, from 0.
  int index = 0;
  /// FFmpeg's name of the codec: "prores"; empty if FFmpeg does not know it.
  std::string codecName;
  /// FFmpeg's name of the codec's profile: "HQ"; empty if there is none.
  std::string profile;
  /// The container's code of the codec, four characters where it has such: "apch"; empty if it has none.
  std::string codecTag;
  /// True if this FFmpeg has a decoder for the codec.
  bool isDecodable = false;
  /// Bits per second.
  std::optional<std::int64_t> bitRate;
  /// Seconds, in lowest terms.
  std::optional<MediaRational> startTime;
  std::optional<MediaRational> duration;
  /// ISO 639 code as written; empty if there is none, or if it is "und".
  std::string language;
  std::vector<MediaTag> tags;

  friend bool operator==(const StreamDescription&, const StreamDescription&) = default;
};

/// Returns the nearest quarter turn to an angle in degrees: 0, 90, 180 or 270.
[[nodiscard]] constexpr int nearestQuarterTurn(int degrees) noexcept {
  const int positive = (degrees % 360 + 360) % 360;
  return (positive + 45) / 90 % 4 * 90;
}

/// A stream of images.
struct VideoStreamDescription : StreamDescription {
  /// The codec in the vocabulary of media: `SLVVideoCodecProRes422`.
  std::optional<std::string_view> codec;
  /// The value of "-vcodec" that encodes in this codec and profile: `SAVProRes422HQ`.
  std::optional<SAVTranscodeArgumentVideoCodecValue> format;
  /// The codec's level as the codec counts it, such as 41 for H.264's 4.1.
  std::optional<int> level;

  /// The size in pixels as stored: before the pixel aspect ratio and the rotation.
  int width = 0;
  int height = 0;
  /// The size as it should be shown, in square pixels: the stored height is kept and the width stretched by the pixel
  /// aspect ratio, then both are exchanged for a rotation of 90 or 270 degrees.
  int displayWidth = 0;
  int displayHeight = 0;
  /// Width over height of a pixel, in lowest terms; 1/1 if the file does not state it.
  MediaRational pixelAspectRatio{1, 1};
  /// By how many degrees, 0 to 359, players turn the image clockwise. 0 for image files: the orientation in their
  /// EXIF data is known only when they are decoded, as for stills.
  int rotation = 0;
  /// True if players mirror the image from left to right after they turn it.
  bool isMirrored = false;

  /// The rate of a constant rate, or the rate that a variable one is based on; one of the standard rates where it is
  /// within 0.005 of one.
  std::optional<VideoFrameRate> frameRate;
  /// The same as an exact ratio: 30000/1001 also where the file states 29.97.
  std::optional<MediaRational> exactFrameRate;
  /// Frames by duration, as the file states both.
  std::optional<MediaRational> averageFrameRate;
  /// True if the frames are not equally long. Only QuickTime and MP4 list each frame; elsewhere it shows in rates that
  /// differ, and a file that states one rate is believed.
  bool isVariable = false;
  /// The number of frames as the container states it, without those that an edit list of QuickTime or MP4 hides;
  /// absent where it would be an estimate.
  std::optional<std::int64_t> frameCount;

  FieldOrder fieldOrder = FieldOrder::unknown;
  /// FFmpeg's name of the format of decoded frames: "yuv422p10le"; empty if it is unknown.
  std::string pixelFormat;
  /// Bits of a sample of colour, of the deepest where they differ.
  std::optional<int> bitDepth;
  std::optional<ChromaSubsampling> chroma;
  bool hasAlpha = false;
  ColorRange range = ColorRange::unknown;
  ColorCode primaries;
  ColorCode transfer;
  ColorCode matrix;
  /// The container if it states all three codes as they are here; absent if none is specified.
  std::optional<ColorTagSource> colorSource;
  /// The value of "-c_space" with these primaries, transfer and matrix.
  std::optional<SAVTranscodeArgumentColorSpaceValue> colorSpace;
  /// True for an attached image, such as cover art; the stream has no video.
  bool isAttachedImage = false;

  /// Returns the output-size choice that equals the stored size: `VideoDimension::tenEightyP`, else a custom one.
  [[nodiscard]] constexpr VideoDimension videoDimension() const noexcept {
    const Size size{static_cast<double>(width), static_cast<double>(height)};
    return VideoDimension::fromStored(VideoSizingKind::pixels, size)
        .value_or(VideoDimension::custom(size.width, size.height));
  }

  friend bool operator==(const VideoStreamDescription&, const VideoStreamDescription&) = default;
};

/// A channel of a stream of sound.
struct AudioChannelDescription {
  /// The number of Core Audio's label, such as 1 for left; absent for a channel without a place.
  std::optional<int> label;
  /// FFmpeg's name: "FL"; empty for a channel without a place.
  std::string name;

  friend bool operator==(const AudioChannelDescription&, const AudioChannelDescription&) = default;
};

/// A stream of sound.
struct AudioStreamDescription : StreamDescription {
  /// The place among the streams of sound, from 0, as "-ac_omit_N" counts them.
  int track = 0;
  /// The value of "-acodec" of this codec: `SAVLpcmAudioFormatValue`.
  std::optional<SAVTranscodeArgumentAudioFormatValue> format;
  /// Samples per second of a channel.
  int sampleRate = 0;
  /// Bits of a sample; absent for a codec that does not keep samples, such as AAC.
  std::optional<int> bitsPerChannel;
  /// FFmpeg's name of the format of decoded samples: "s16"; empty if it is unknown.
  std::string sampleFormat;
  int channelCount = 0;
  /// One for each channel, in the order of the samples. Empty if the file does not place them.
  std::vector<AudioChannelDescription> channels;
  /// FFmpeg's name of the layout: "5.1(side)"; empty if the file does not place the channels.
  std::string layoutName;
  /// The layout's places as in a WAVE file: bit 0 is front left.
  std::optional<std::uint64_t> channelBitmap;
  /// The value of "-acl" of this layout: `SAVStereoAudioLayout`.
  std::optional<SAVTranscodeArgumentAudioChannelLayoutValue> channelLayout;
  /// Core Audio's tag of this layout: 101 << 16 | 2 for stereo.
  std::optional<std::uint32_t> channelLayoutTag;

  friend bool operator==(const AudioStreamDescription&, const AudioStreamDescription&) = default;
};

/// What a stream that is neither images nor sound holds.
enum class OtherStreamKind : std::uint8_t { unknown, timecode, data, subtitle, attachment };

template <>
struct EnumerationTable<OtherStreamKind> {
  static constexpr auto rows = std::to_array<EnumerationRow<OtherStreamKind>>({
      {OtherStreamKind::unknown, "unknown"},
      {OtherStreamKind::timecode, "timecode"},
      {OtherStreamKind::data, "data"},
      {OtherStreamKind::subtitle, "subtitle"},
      {OtherStreamKind::attachment, "attachment"},
  });
};

/// A stream that is neither images nor sound.
struct OtherStreamDescription : StreamDescription {
  OtherStreamKind kind = OtherStreamKind::unknown;

  friend bool operator==(const OtherStreamDescription&, const OtherStreamDescription&) = default;
};

/// Where a file's timecode was found. Timecode in the headers of images, such as DPX, is not read.
enum class MediaTimecodeSource : std::uint8_t {
  /// A QuickTime timecode track.
  tmcd,
  /// A stream of images: its tag, or the first coded image of MPEG-2, H.264 or H.265 in a stream without a place for
  /// tags.
  stream,
  /// A tag of the file.
  format,
  /// A track of real-time metadata.
  rtmd,
};

template <>
struct EnumerationTable<MediaTimecodeSource> {
  static constexpr auto rows = std::to_array<EnumerationRow<MediaTimecodeSource>>({
      {MediaTimecodeSource::tmcd, "tmcd", "timecode track"},
      {MediaTimecodeSource::stream, "stream", "video stream"},
      {MediaTimecodeSource::format, "format", "tag of the file"},
      {MediaTimecodeSource::rtmd, "rtmd", "real-time metadata"},
  });
};

/// A file's timecode. Whether it is drop frame is `start.isDropFrame`.
struct TimecodeDescription {
  /// The labels of the first and the last frame. The end is absent if the number of frames is, or if the frame has no
  /// label.
  TimecodeComponents start;
  std::optional<TimecodeComponents> end;
  /// The rate that the labels count at.
  VideoFrameRate rate;
  MediaTimecodeSource source = MediaTimecodeSource::tmcd;

  friend bool operator==(const TimecodeDescription&, const TimecodeDescription&) = default;
};

/// The greatest frame rate of a transcode, in frames per second. What FFmpeg takes for a faster one is mostly the time
/// base of a container.
inline constexpr double greatestFrameRate = 600;

/// Which file it is: equal for all names of a file on this machine.
struct MediaFileIdentity {
  std::uint64_t device = 0;
  std::uint64_t number = 0;

  friend bool operator==(const MediaFileIdentity&, const MediaFileIdentity&) = default;
};

/// What is in a media file, or in a directory of numbered images.
struct MediaDescription {
  /// The path as given.
  std::string path;
  MediaFileIdentity identity;
  /// Bytes; of a directory, of all its images.
  std::uint64_t size = 0;
  std::chrono::sys_seconds modificationTime{};

  /// The container in the vocabulary of media: `SLVMediaFileContainerMXF`.
  std::optional<std::string_view> container;
  /// The recording format of the card in the vocabulary of media, by where the file lies on it:
  /// `SLVMediaRecordingFormatP2` for a .mxf in CONTENTS/VIDEO; absent if the path tells none.
  std::optional<std::string_view> recordingFormat;
  /// FFmpeg's name of the format: "mov,mp4,m4a,3gp,3g2,mj2".
  std::string formatName;
  /// Seconds, in lowest terms. The duration is absent if it had to be guessed from the size, as of a raw AAC stream.
  std::optional<MediaRational> startTime;
  std::optional<MediaRational> duration;
  /// Bits per second of the whole file.
  std::optional<std::int64_t> bitRate;

  /// The streams in the file's order.
  std::vector<VideoStreamDescription> video;
  std::vector<AudioStreamDescription> audio;
  std::vector<OtherStreamDescription> others;

  /// Absent if the file has none.
  std::optional<TimecodeDescription> timecode;
  /// The reel's name as the first of these states it: the timecode track or another track that is neither images nor
  /// sound, the images, the sound, the file; empty if none does.
  std::string reelName;
  /// The maker and the model as written; empty if the file does not state them.
  std::string maker;
  std::string model;
  /// The maker among those that the suite knows, by `maker` or by a format that only one maker writes.
  std::optional<MediaCorporation> corporation;
  /// The date of creation as written: the camera's own with its zone, else the container's; empty if there is none.
  std::string creationDate;
  std::vector<MediaTag> tags;

  std::vector<MediaWarning> warnings;

  /// Returns the stream of images that the file is about: the first that is not an attached image; null if there is
  /// none.
  [[nodiscard]] const VideoStreamDescription* mainVideo() const noexcept {
    for (const VideoStreamDescription& stream : video) {
      if (!stream.isAttachedImage) return &stream;
    }
    return nullptr;
  }

  friend bool operator==(const MediaDescription&, const MediaDescription&) = default;
};

}  // namespace meridian::inline v0_2

/// \file
/// A transcode planned before any file is touched: what an argument vector, its sources and the installed FFmpeg come
/// to. For example:
///
///     const auto words = explain({"-in_0_0", "a.mov", "-out", "b.mov", "-vcodec", "h264"});
///     const auto plan = planTranscode(words, descriptions, encoderInventory(), surroundings);
///     if (!plan) return report(plan.error());  // every error at once
///     plan->video->encoder->name;              // "libx264"
///
/// transcode_plan_text.h describes a plan to a person, serialization/transcode_plan_json.h encodes it for machines.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/base/integer_arithmetic.h"
#include "meridian/cli/transcode_detail_values.h"
#include "meridian/cli/transcode_explanation.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/engine/channel_layouts.h"
#include "meridian/engine/color_spaces.h"
#include "meridian/engine/encoder_inventory.h"
#include "meridian/engine/media_description.h"
#include "meridian/engine/media_error.h"
#include "meridian/engine/output_container.h"
#include "meridian/engine/pixel_format.h"
#include "meridian/engine/transcode_error.h"
#include "meridian/export.h"
#include "meridian/lut/image_lut_options.h"
#include "meridian/media/rational.h"
#include "meridian/media/rgb_color.h"
#include "meridian/media/timecode_components.h"
#include "meridian/media/video_frame_rate.h"

namespace meridian::inline v0_2 {

/// What the file system says about the paths that are written to. The defaults are those of a new file in a directory
/// that can be written to.
struct OutputState {
  /// Something is at the path of the output.
  bool exists = false;
  bool isDirectory = false;
  /// A device, a FIFO or a socket is at the path, which no file may replace.
  bool isSpecial = false;
  /// The source that is the same file as the output, under whatever name; the output itself if it is an image of a
  /// directory that is a source. A LUT or watermark image counts as a source.
  std::optional<std::string> sameSource;
  /// The directory that the output is in.
  bool directoryExists = true;
  bool directoryIsWritable = true;
  /// The name is longer than the volume allows.
  bool nameIsTooLong = false;
  /// The path of "-work_dir" is a directory that can be written to.
  bool workDirectoryIsUsable = true;
  /// The path of "-progress_file" can be written to.
  bool progressFileIsWritable = true;
  /// The source, LUT, watermark image or output that is the same file as that of "-progress_file", likewise, also
  /// before either is there.
  std::optional<std::string> sameAsProgressFile;

  friend bool operator==(const OutputState&, const OutputState&) = default;
};

/// A size in pixels.
struct ImageSize {
  int width = 0;
  int height = 0;

  friend bool operator==(const ImageSize&, const ImageSize&) = default;
};

/// The image of a watermark, where it was found: the value of "-wmf_path" is lower-cased in reading, so that its path
/// may differ from it in case.
struct FoundWatermark {
  std::string path;
  ImageSize size;

  friend bool operator==(const FoundWatermark&, const FoundWatermark&) = default;
};

/// What was found out about everything that a plan needs but the sources.
struct TranscodeSurroundings {
  OutputState output;
  /// Why the LUT of "-clut" cannot be used, as a clause: "is not a LUT file". Absent if it can.
  std::optional<std::string> lutError;
  /// The image of "-wmf_path", or why it cannot be read, as a clause. Absent if the image was not
  /// looked at.
  std::optional<Expected<FoundWatermark, std::string>> watermark;
  /// A font for burnt-in text was found.
  bool hasFont = true;
  /// The kinds of devices that can be opened here: "vaapi", "cuda".
  std::vector<std::string> openDevices;
  /// The machine's offset from UTC at the time of creation of the first source.
  std::chrono::seconds utcOffset{0};
};

/// An image between two steps of a plan.
struct ImageForm {
  int width = 0;
  int height = 0;
  /// Width over height of a pixel.
  MediaRational pixelAspectRatio{1, 1};
  /// FFmpeg's name of the pixel format.
  std::string pixelFormat;
  /// Bits of a sample; 0 if the source does not state it.
  int bitDepth = 0;
  ChromaSubsampling chroma = ChromaSubsampling::yuv420;
  bool hasAlpha = false;
  ColorRange range = ColorRange::limited;
  ColorSpaceCodes color;
  bool isInterlaced = false;
  VideoFrameRate frameRate;

  friend bool operator==(const ImageForm&, const ImageForm&) = default;
};

// The steps that an image takes from the decoder to the encoder.

/// Makes one progressive frame of each frame of two fields, by the filter bwdif.
struct DeinterlaceStep {
  friend bool operator==(const DeinterlaceStep&, const DeinterlaceStep&) = default;
};

/// Drops and repeats frames to reach a constant rate. Each frame is shown from the nearest place of the output on,
/// until the next one is; of several frames for one place the nearest is shown.
struct RateStep {
  friend bool operator==(const RateStep&, const RateStep&) = default;
};

/// Mirrors the image from left to right if so stated, then turns it clockwise by quarter turns.
struct RotateStep {
  /// 90, 180, 270, or 0 for an image that is only mirrored.
  int degrees = 0;
  bool isMirrored = false;

  friend bool operator==(const RotateStep&, const RotateStep&) = default;
};

/// Scales to the size of the result, bicubic.
struct ScaleStep {
  friend bool operator==(const ScaleStep&, const ScaleStep&) = default;
};

/// Cuts the size of the result out of the image.
struct CropStep {
  /// The first column and line that stay.
  int x = 0;
  int y = 0;
  VideoCropAnchor anchor = VideoCropAnchor::center;

  friend bool operator==(const CropStep&, const CropStep&) = default;
};

/// Adds black bars up to the size of the result.
struct PadStep {
  /// The place of the image in the result.
  int x = 0;
  int y = 0;

  friend bool operator==(const PadStep&, const PadStep&) = default;
};

/// Converts the colours to the colour space of the result.
struct ColorStep {
  friend bool operator==(const ColorStep&, const ColorStep&) = default;
};

/// Converts to the pixel format and range of the result, and between Y'CbCr and R'G'B' by the matrix of its colour.
struct FormatStep {
  friend bool operator==(const FormatStep&, const FormatStep&) = default;
};

/// Applies a LUT to R'G'B' of full range.
struct LutStep {
  std::string path;
  LutInterpolation interpolation = LutInterpolation::tetrahedral;
  LutAxisOrder axisOrder = LutAxisOrder::redFastest;
  LutInputDomain domain = LutInputDomain::declared;
  LutRounding rounding = LutRounding::nearest;

  friend bool operator==(const LutStep&, const LutStep&) = default;
};

/// How a text is burnt in.
struct TextStyle {
  SAVTranscodeArgumentOverlayAnchorValue anchor = SAVAnchorBottomCenter;
  /// The height of the font and the distance from the edges, in pixels of the output.
  double fontSize = 0;
  int margin = 0;
  RgbColor fontColor{255, 255, 255};
  RgbColor boxColor{0, 0, 0};

  friend bool operator==(const TextStyle&, const TextStyle&) = default;
};

/// Burns the timecode of the plan into each frame.
struct TimecodeBurnStep {
  TextStyle style;

  friend bool operator==(const TimecodeBurnStep&, const TimecodeBurnStep&) = default;
};

/// Burns a text into each frame.
struct TextBurnStep {
  std::string text;
  TextStyle style;

  friend bool operator==(const TextBurnStep&, const TextBurnStep&) = default;
};

/// Lays an image over each frame.
struct WatermarkStep {
  std::string path;
  SAVTranscodeArgumentOverlayAnchorValue anchor = SAVAnchorBottomRight;
  /// The size in pixels of the output; 0 x 0 if the image was not looked at: its own size times
  /// the scale.
  ImageSize size;
  double scale = 1;
  /// The distance from the edges, in pixels of the output.
  int margin = 0;

  friend bool operator==(const WatermarkStep&, const WatermarkStep&) = default;
};

using VideoStep = std::variant<DeinterlaceStep, RateStep, RotateStep, ScaleStep, CropStep, PadStep, ColorStep,
                               FormatStep, LutStep, TimecodeBurnStep, TextBurnStep, WatermarkStep>;

/// A step and the image that it gives.
struct PlannedStep {
  VideoStep step;
  ImageForm result;

  friend bool operator==(const PlannedStep&, const PlannedStep&) = default;
};

/// An option and its value by FFmpeg's names, or a tag.
struct PlannedOption {
  std::string name;
  std::string value;

  friend bool operator==(const PlannedOption&, const PlannedOption&) = default;
};

/// One file of a clip.
struct PlannedPart {
  std::string flag;
  std::string path;
  std::optional<MediaRational> duration;
  std::optional<std::int64_t> frameCount;

  friend bool operator==(const PlannedPart&, const PlannedPart&) = default;
};

/// The parts of a group, which follow each other in time.
struct PlannedSource {
  std::int64_t group = 0;
  std::vector<PlannedPart> parts;
  /// True for the group whose video is used.
  bool givesImage = false;
  /// True if each part is one frame, or a directory of frames.
  bool isImageSequence = false;

  /// Returns the frames of all parts; absent if a part does not state its own.
  [[nodiscard]] std::optional<std::int64_t> frameCount() const noexcept {
    std::optional<std::int64_t> frames = 0;
    for (const PlannedPart& part : parts) {
      frames = frames && part.frameCount ? checkedSum(*frames, *part.frameCount) : std::nullopt;
    }
    return frames;
  }

  friend bool operator==(const PlannedSource&, const PlannedSource&) = default;
};

/// How the video is encoded.
struct PlannedVideoEncoder {
  SAVTranscodeArgumentVideoCodecValue codec = SAVAvcH264Codec;
  /// FFmpeg's name.
  std::string name;
  PixelFormat pixelFormat = PixelFormat::yuv420p;
  /// The four characters that name the codec in the file; empty for FFmpeg's own choice.
  std::string tag;
  std::vector<PlannedOption> options;
  /// Megabits a second; absent for constant quality and where the profile decides.
  std::optional<double> bitRate;
  /// The quantizer of constant quality, from 1, the best, to 31, for encoders that have no option for it; absent for
  /// every other.
  std::optional<int> quantizer;
  /// As written in "-vprofile"; empty if it is not set.
  std::string profile;
  /// True if fields stay fields, and their order.
  bool keepsFields = false;
  FieldOrder fieldOrder = FieldOrder::progressive;
  bool usesGpu = false;

  friend bool operator==(const PlannedVideoEncoder&, const PlannedVideoEncoder&) = default;
};

/// What becomes of the video.
struct PlannedVideo {
  /// The place among all streams of its file, from 0.
  int stream = 0;
  /// FFmpeg's name of the source's codec.
  std::string codecName;
  bool decodesOnGpu = false;
  ImageForm source;
  /// True if the source's colour space is assumed, because it states none.
  bool isColorAssumed = false;
  /// True if the source's frames last differently long, so that its rate is an average.
  bool isVariable = false;
  /// True if "-c_space" states what a LUT gives, so that nothing is converted to it.
  bool isColorStated = false;
  /// Empty if the video is copied.
  std::vector<PlannedStep> steps;
  /// Absent if the packets are copied as they are.
  std::optional<PlannedVideoEncoder> encoder;
  /// The CPU's encoder, for a GPU that turns out not to work; absent unless `encoder` uses one.
  std::optional<PlannedVideoEncoder> encoderWithoutGpu;
  /// The frames of the output; absent if the sources do not state theirs.
  std::optional<std::int64_t> frameCount;
  /// For video that is copied, the rotation that players apply, in degrees clockwise.
  int rotation = 0;

  [[nodiscard]] bool isCopied() const noexcept { return !encoder; }
  /// Returns the image that the encoder gets; the source's if the video is copied.
  [[nodiscard]] const ImageForm& output() const noexcept { return steps.empty() ? source : steps.back().result; }

  friend bool operator==(const PlannedVideo&, const PlannedVideo&) = default;
};

/// A track of a source that sounds in a track of the output.
struct AudioOrigin {
  std::int64_t group = 0;
  /// The place among all streams of its file, from 0.
  int stream = 0;
  /// The number that "-ac_omit_N" has for it, counted over all groups from 0.
  int track = 0;

  friend bool operator==(const AudioOrigin&, const AudioOrigin&) = default;
};

/// An audio track of the output.
struct PlannedAudioTrack {
  /// Several for a track of discrete channels, in their order.
  std::vector<AudioOrigin> origins;
  /// FFmpeg's name of the codec that is copied; empty if it is encoded.
  std::string copiedCodec;
  /// FFmpeg's names of the encoder and its sample format; empty if the track is copied.
  std::string encoder;
  std::string sampleFormat;
  /// Samples per second.
  std::int64_t sampleRate = 0;
  /// Those of the origin; the greatest of several.
  std::int64_t sourceSampleRate = 0;
  /// Bits of a sample; absent for a codec that does not keep samples.
  std::optional<std::int64_t> bits;
  std::int64_t channelCount = 0;
  /// The places of the origin's channels in their order, as stated or assumed; empty for discrete channels.
  std::vector<ChannelLabel> sourceChannels;
  /// The places of the channels in the order of their bits, as the encoder gets them; empty for discrete channels. As
  /// the source's if the track is copied.
  std::vector<ChannelLabel> channels;
  /// Core Audio's tag of these channels; absent if they have none.
  std::optional<std::uint32_t> layoutTag;
  /// Bits a second; absent for a codec whose samples decide it.
  std::optional<std::int64_t> bitRate;
  /// ISO 639; empty if the source does not state it.
  std::string language;

  [[nodiscard]] bool isCopied() const noexcept { return encoder.empty(); }

  friend bool operator==(const PlannedAudioTrack&, const PlannedAudioTrack&) = default;
};

/// The timecode of the output.
struct PlannedTimecode {
  TimecodeSource source = TimecodeSource::match;
  /// The label of the first frame.
  TimecodeComponents start;
  /// The rate of counting.
  VideoFrameRate rate;
  /// True if the source was to give it and has none, so that it begins at 0.
  bool isAssumed = false;
  /// True if the file stores it; it may also be burnt in.
  bool isInTrack = false;
  /// The labels of the first frames of the parts, where one does not continue those before it; absent for parts that
  /// do. Empty if all do.
  std::vector<std::optional<TimecodeComponents>> partStarts;

  friend bool operator==(const PlannedTimecode&, const PlannedTimecode&) = default;
};

/// The file that is written.
struct PlannedOutput {
  std::string path;
  OutputContainer container = OutputContainer::mov;
  /// Options of the container.
  std::vector<PlannedOption> options;
  /// Tags of the source that go along: date of creation, maker, model, reel.
  std::vector<PlannedOption> tags;
  /// An existing file is replaced when the new one is complete.
  bool replacesExisting = false;
  /// One that is there by the time that the output is complete is replaced as well.
  bool mayReplace = false;
  /// Where the unfinished file is kept; empty for the directory of the output.
  std::string workDirectory;
  /// Empty if progress is not asked for.
  std::string progressFile;
  std::optional<std::string> progressPrefix;

  friend bool operator==(const PlannedOutput&, const PlannedOutput&) = default;
};

/// What a transcode does.
struct TranscodePlan {
  /// In ascending order of their groups.
  std::vector<PlannedSource> sources;
  /// Absent if the output has no video.
  std::optional<PlannedVideo> video;
  std::vector<PlannedAudioTrack> audio;
  /// Absent if there is neither a track nor a burn-in.
  std::optional<PlannedTimecode> timecode;
  PlannedOutput output;
  std::vector<TranscodePlanWarning> warnings;

  friend bool operator==(const TranscodePlan&, const TranscodePlan&) = default;
};

/// Plans a transcode, or returns every reason why it cannot be carried out, none of which hides another; what only a
/// source that cannot be read would show is missing. Touches no file. `media` describes the input files, or says why
/// one cannot be described, in the order of `words.arguments.inputFiles()`; another number of them terminates the
/// process. Listing commands are ignored.
[[nodiscard]] MERIDIAN_API Expected<TranscodePlan, std::vector<TranscodePlanError>> planTranscode(
    const TranscodeExplanation& words, std::span<const Expected<MediaDescription, MediaError>> media,
    const EncoderInventory& inventory, const TranscodeSurroundings& surroundings);

/// Does the same for a store that an application has filled, as the transcoder reads its rendered vector. `media` is in
/// the order of `arguments.inputFiles()`; an error if the rendered vector has other input files, as where a path begins
/// with "-".
[[nodiscard]] MERIDIAN_API Expected<TranscodePlan, std::vector<TranscodePlanError>> planTranscode(
    const TranscodeCliArguments& arguments, std::span<const Expected<MediaDescription, MediaError>> media,
    const EncoderInventory& inventory, const TranscodeSurroundings& surroundings);

}  // namespace meridian::inline v0_2

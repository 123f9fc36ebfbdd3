/// \file
/// Decodes all of a clip once, and says what is in it. For example:
///
///     const auto media = describeMedia(Url::fromFilePath("/card/A001.mov"));
///     const auto deep = analyzeDeeply(*media);
///     deep->video->frameCount                   // counted, not stated
///     deep->video->black                        // from 0 s to 2.5 s
///     deep->audio[0].loudness->integrated       // -23.1 LUFS
///     for (const DecodeFault& fault : deep->faults) report(fault.seconds, fault.reason);
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"
#include "meridian/base/expected.h"
#include "meridian/base/function_ref.h"
#include "meridian/engine/media_description.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Why a clip is not analysed, or what is wrong with one that is.
enum class DeepAnalysisErrorCode : std::uint8_t { notRead, notDecodable, faulty, stopped };

template <>
struct EnumerationTable<DeepAnalysisErrorCode> {
  static constexpr auto rows = std::to_array<ErrorRow<DeepAnalysisErrorCode>>({
      {DeepAnalysisErrorCode::notRead, "notRead", "cannot be read", "check the volume that it is on"},
      {DeepAnalysisErrorCode::notDecodable, "notDecodable", "has neither images nor sound that can be decoded",
       "make a file of another codec with the maker's own program first"},
      {DeepAnalysisErrorCode::faulty, "faulty", "has places that cannot be decoded", "copy it again from the card"},
      {DeepAnalysisErrorCode::stopped, "stopped", "the analysis was stopped before it was finished"},
  });
};

/// Names the path in `place`. `detail` gives what FFmpeg said, or how many faults there are and the first of them.
using DeepAnalysisError = Error<DeepAnalysisErrorCode>;

/// A stretch of a clip, in seconds from its first image, or from its first sound if it has no images.
struct MediaInterval {
  double start = 0;
  double end = 0;

  friend bool operator==(const MediaInterval&, const MediaInterval&) = default;
};

/// A cut or another sudden change of the images.
struct SceneChange {
  /// The first image of the new scene, from 0, and when it is shown.
  std::int64_t frame = 0;
  double seconds = 0;
  /// How much the luma changes, in percent of its greatest change.
  double score = 0;

  friend bool operator==(const SceneChange&, const SceneChange&) = default;
};

/// A place that cannot be decoded, or only with repairs.
struct DecodeFault {
  /// Near the damage: where the packet, or what comes before it, is shown.
  double seconds = 0;
  /// The audio track from 0; absent for images and for the file as a whole.
  std::optional<std::size_t> track;
  /// What FFmpeg says of it.
  std::string reason;

  friend bool operator==(const DecodeFault&, const DecodeFault&) = default;
};

/// Images by the order in time of their lines.
struct FieldCounts {
  std::int64_t progressive = 0;
  std::int64_t topFirst = 0;
  std::int64_t bottomFirst = 0;
  /// Those without enough motion to tell.
  std::int64_t undetermined = 0;

  /// Returns the order of at least nine tenths of the images that tell one; `unknown` if there is none such.
  [[nodiscard]] constexpr FieldOrder seen() const noexcept {
    const std::int64_t told = progressive + topFirst + bottomFirst;
    const auto isMost = [told](std::int64_t count) { return told > 0 && count * 10 >= told * 9; };
    if (isMost(progressive)) return FieldOrder::progressive;
    if (isMost(topFirst)) return FieldOrder::topFirst;
    if (isMost(bottomFirst)) return FieldOrder::bottomFirst;
    return FieldOrder::unknown;
  }

  friend bool operator==(const FieldCounts&, const FieldCounts&) = default;
};

/// The code values of luma over all images; of R'G'B', of the luma that it is converted to.
struct LumaStatistics {
  int bitDepth = 8;
  ColorRange range = ColorRange::limited;
  int minimum = 0;
  int maximum = 0;
  double average = 0;
  /// The code values that a thousandth of the samples is below and above.
  int low = 0;
  int high = 0;
  /// The portions of the samples below black and above white of a limited range, from 0 to 1; 0 of the full range.
  double belowBlack = 0;
  double aboveWhite = 0;
  /// The number of samples in each 256th of the code values.
  std::array<std::uint64_t, 256> histogram{};

  friend bool operator==(const LumaStatistics&, const LumaStatistics&) = default;
};

/// An image of a filmstrip: shown upright, with square pixels.
struct FilmstripImage {
  double seconds = 0;
  int width = 0;
  int height = 0;
  /// Rows of red, green and blue, 8 bits each, without padding.
  std::vector<std::uint8_t> samples;

  friend bool operator==(const FilmstripImage&, const FilmstripImage&) = default;
};

/// What is in the images.
struct DeepVideoAnalysis {
  std::int64_t frameCount = 0;
  /// Until the last image ends.
  double seconds = 0;
  /// How long the image shown shortest and the one shown longest are shown; 0 without images.
  double shortestFrame = 0;
  double longestFrame = 0;
  /// True if the times of the images are not those of a constant rate, but for the rounding of the container. Never of
  /// a sequence, whose missing images are faults.
  bool isVariable = false;
  /// Where at least 98 % of the samples of luma are in the lowest tenth of their range, for 2 s or more.
  std::vector<MediaInterval> black;
  /// Where images differ from the first of them by at most a thousandth on average, for 2 s or more.
  std::vector<MediaInterval> frozen;
  /// Where the luma changes by 10 % or more, and by as much more than between the images before.
  std::vector<SceneChange> sceneChanges;
  /// Absent for images of a format that the detector does not read.
  std::optional<FieldCounts> fields;
  LumaStatistics luma;
  /// The MD5 of the decoded samples in the order of display, as "ffmpeg -f streamhash -hash md5" computes it of raw
  /// video in the same pixel format: 32 hexadecimal digits.
  std::string md5;
  /// In the order of time; empty unless asked for.
  std::vector<FilmstripImage> filmstrip;

  friend bool operator==(const DeepVideoAnalysis&, const DeepVideoAnalysis&) = default;
};

/// Loudness by EBU R 128 (ITU-R BS.1770-4).
struct Loudness {
  /// LUFS; absent if nothing is above the absolute gate of -70 LUFS.
  std::optional<double> integrated;
  /// LU.
  double range = 0;
  /// The greatest over 0.4 s and over 3 s, in LUFS; absent likewise.
  std::optional<double> greatestMomentary;
  std::optional<double> greatestShortTerm;
  /// The greatest between the samples, in dBTP, and of the samples, in dBFS; absent for digital silence.
  std::optional<double> truePeak;
  std::optional<double> samplePeak;

  friend bool operator==(const Loudness&, const Loudness&) = default;
};

/// Loudness at a time, in LUFS, at least -120.
struct LoudnessPoint {
  double seconds = 0;
  double momentary = 0;
  double shortTerm = 0;

  friend bool operator==(const LoudnessPoint&, const LoudnessPoint&) = default;
};

/// The least and the greatest sample of all channels in an equal part of a track, -1 to 1 at full scale.
struct WaveformPart {
  float least = 0;
  float greatest = 0;

  friend bool operator==(const WaveformPart&, const WaveformPart&) = default;
};

/// What is in an audio track.
struct DeepAudioAnalysis {
  /// The number of the track among those of the file, from 0.
  std::size_t track = 0;
  /// For each channel.
  std::int64_t sampleCount = 0;
  /// When the first sample is heard, and how long it is from there to the end of the last. Sound that is missing in
  /// between counts as silence.
  double start = 0;
  double seconds = 0;
  /// Where all samples of all channels are below -60 dBFS for 2 s or more.
  std::vector<MediaInterval> silent;
  /// Absent for sound whose rate or channels the meter does not take.
  std::optional<Loudness> loudness;
  /// Ten points a second.
  std::vector<LoudnessPoint> loudnessCurve;
  /// At most 4096 parts from the first sample on, each `secondsPerPart` long but for the last.
  std::vector<WaveformPart> waveform;
  double secondsPerPart = 0;
  /// The MD5 of the decoded samples, channels interleaved, as "ffmpeg -f streamhash -hash md5" computes it of PCM in
  /// the format that they are decoded to.
  std::string md5;

  friend bool operator==(const DeepAudioAnalysis&, const DeepAudioAnalysis&) = default;
};

/// A stream of images beside the main one, such as that of a second lens.
struct OtherVideoAnalysis {
  /// Its number in the file, from 0.
  int stream = 0;
  std::int64_t frameCount = 0;
  /// As that of the main images.
  std::string md5;

  friend bool operator==(const OtherVideoAnalysis&, const OtherVideoAnalysis&) = default;
};

/// What was found by decoding all of a clip.
struct DeepAnalysis {
  /// The rate that the times of a sequence of images without a rate are for; absent for others.
  std::optional<VideoFrameRate> assumedRate;
  /// Absent without images.
  std::optional<DeepVideoAnalysis> video;
  std::vector<DeepAudioAnalysis> audio;
  std::vector<OtherVideoAnalysis> otherVideo;
  /// In the order of time, at most 1000; `faultCount` counts all.
  std::vector<DecodeFault> faults;
  std::int64_t faultCount = 0;

  friend bool operator==(const DeepAnalysis&, const DeepAnalysis&) = default;
};

/// What a deep analysis keeps beside numbers.
struct DeepAnalysisOptions {
  /// The number and the greatest width and height of the images of the filmstrip; 0 for none.
  std::size_t filmstripImages = 0;
  int filmstripWidth = 320;
  int filmstripHeight = 180;
};

/// Is told from time to time which portion of the clip was analysed, from 0 to 1; 0 for as long as its length is
/// unknown.
using DeepAnalysisProgressBlock = FunctionRef<void(double portion)>;

/// Decodes all images and all sound of a file, or the images of a directory, once. Images beside the main ones are
/// counted and have an MD5; attached images, such as cover art, are left out. Damage is a fault in the
/// result, and so is an image that is missing in a sequence, or a change of size or format. Images of another size than
/// the first are counted; nothing else is found in them.
///
/// The images of a sequence, which has no rate of its own, count as 25 a second.
///
/// A stream that FFmpeg has no decoder for is a fault. Returns an error if that leaves none, or if the file cannot be
/// read. When the token asks for a stop, the error is `stopped`.
[[nodiscard]] MERIDIAN_API Expected<DeepAnalysis, DeepAnalysisError> analyzeDeeply(const MediaDescription& media,
                                                                                   const DeepAnalysisOptions& options,
                                                                                   DeepAnalysisProgressBlock progress,
                                                                                   const std::stop_token& stop = {});

/// Likewise, without options.
[[nodiscard]] MERIDIAN_API Expected<DeepAnalysis, DeepAnalysisError> analyzeDeeply(const MediaDescription& media);

/// Returns the faults as the error `faulty`; nothing without any.
[[nodiscard]] MERIDIAN_API std::optional<DeepAnalysisError> errorOfFaults(const DeepAnalysis& deep,
                                                                          const std::string& path);

}  // namespace meridian::inline v0_2

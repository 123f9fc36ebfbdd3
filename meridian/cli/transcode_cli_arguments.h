/// \file
/// The settings of one transcode, read from and rendered as an argument vector.
///
///     TranscodeCliArguments arguments({"-preset", "solvane_cloud", "-dims", "1920x1080"});
///     arguments.setVideoFrameRate(25.0F);
///     arguments.commandLine();  // "-dims", "1920x1080", "-file_format", "qt", ..., "-vr", "25.0"
///
/// transcode_properties.h reads and sets the typed properties by name, as text.
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/function_ref.h"
#include "meridian/base/text_dictionary.h"
#include "meridian/cli/argument_words.h"
#include "meridian/cli/cli_argument_store.h"
#include "meridian/cli/transcode_audio_detail.h"
#include "meridian/cli/transcode_flags.h"
#include "meridian/cli/transcode_timecode_detail.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/cli/transcode_video_detail.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

struct ReadFlag;
struct TranscodeExplanation;

/// Stores the settings of one transcode.
///
/// A store is built from an argument vector or a dictionary, read and edited, and rendered back into an argument
/// vector. Flags are stored lower-cased and trimmed. Building never fails: unknown flags are kept aside and reported.
///
/// Order: a rendered vector begins with the flags in the order kept from the original vector, if that was requested.
/// The remainder follows in the order in which the store got its flags: first those of the vector or dictionary in
/// their order, a repeated flag in its first place; then those that presets added, in the preset's order; then those
/// that were set later.
///
/// Copies are independent. A store has no lock. The texts that it returns as views are valid until it is changed.
class MERIDIAN_API TranscodeCliArguments final : public CliArgumentStore,
                                                 public MutableTranscodeVideoDetail,
                                                 public MutableTranscodeAudioDetail,
                                                 public MutableTranscodeTimecodeDetail {
 public:
  /// Input files, keyed by the numbers of their groups.
  using InputFileGroups = std::map<std::int64_t, std::vector<std::string>>;

  /// A marker by which an application starts itself in transcoding mode. It is not a flag of the vocabulary: a store
  /// rejects it.
  static constexpr std::string_view runInTranscodeModeFlag = "-isTranscoder";

  /// Returns every flag that a store knows.
  [[nodiscard]] static constexpr std::span<const std::string_view> allKnownCommandFlags() noexcept {
    return meridian::allKnownCommandFlags;
  }

  /// Returns the settings of the built-in presets.
  [[nodiscard]] static const TextDictionary& solvaneCloudPresetArguments();
  [[nodiscard]] static const TextDictionary& solvaneProRes4444XQPresetArguments();

  /// The three stored properties, in the form in which they are encoded.
  struct Stored {
    /// The valid entries: normalised flag to normalised value.
    TextDictionary flagValueLookup;
    /// The rejected entries; absent when nothing was rejected. Those of a vector are keyed by the normalised flag,
    /// those of a dictionary by the flag as given.
    std::optional<TextDictionary> invalidKeyValueLookup;
    /// The flags in the order of the original vector; absent unless that order is kept and there are flags.
    std::optional<std::vector<std::string>> orderedFlags;

    friend bool operator==(const Stored&, const Stored&) = default;
  };

  /// Creates an empty store.
  TranscodeCliArguments() = default;

  /// Reads an argument vector, without a program path. A word that begins with "-" is a flag, and the word after it its
  /// value unless that begins with "-" too. The last value of a repeated flag wins. A preset adds its settings where
  /// these were not given.
  explicit TranscodeCliArguments(const ArgumentWords& cliArgs, bool maintainOriginalOrdering = false);
  TranscodeCliArguments(std::initializer_list<std::string_view> cliArgs, bool maintainOriginalOrdering = false);
  /// Does not compile: see ArgumentWords.
  template <std::same_as<const char*> Text>
  TranscodeCliArguments(std::initializer_list<std::initializer_list<Text>> cliArgs,
                        bool maintainOriginalOrdering = false) = delete;
  /// Reads the parameters of `main` in the same way; `argv[0]`, the program path, is left out.
  TranscodeCliArguments(int argc, const char* const* argv, bool maintainOriginalOrdering = false);

  /// Returns the store of a dictionary: checks and normalises its entries in their order and expands its presets. If
  /// two flags differ only in case or white space, the later entry wins.
  [[nodiscard]] static TranscodeCliArguments fromArgumentLookup(const TextDictionary& argumentLookup);

  /// Returns a store of these properties as they are, without normalising them: the inverse of `stored()`.
  [[nodiscard]] static TranscodeCliArguments fromStored(Stored stored);
  [[nodiscard]] const Stored& stored() const noexcept { return stored_; }

  [[nodiscard]] const TextDictionary& flagValueLookup() const noexcept override { return stored_.flagValueLookup; }
  /// Replaces all valid entries, as given. The kept order and the rejected entries stay.
  void setFlagValueLookup(TextDictionary lookup) noexcept { stored_.flagValueLookup = std::move(lookup); }

  /// Returns whether the flag is stored. The flag is trimmed but not lower-cased: pass it in lower case, as the flag
  /// constants are.
  [[nodiscard]] bool hasArgumentFlag(std::string_view flag) const noexcept;
  /// Returns the flag's value, empty for a flag without one; absent when the trimmed flag is not stored.
  [[nodiscard]] std::optional<std::string_view> argumentFlagValue(std::string_view flag) const noexcept;
  /// Stores the value under the trimmed flag as it is, neither normalised nor checked; absent removes the flag.
  void setArgumentFlagValue(std::string_view flag, std::optional<std::string_view> value);

  /// Returns the flags of the rejected entries in the order of reading; absent when there are none.
  [[nodiscard]] std::optional<std::vector<std::string>> unknownFlags() const;
  /// Returns whether nothing was rejected.
  [[nodiscard]] bool allFlagsAreValid() const noexcept;
  /// Calls the block with each rejected flag and its value. The block must not change the store.
  void enumerateUnknownFlags(FunctionRef<void(std::string_view flag, std::string_view value)> unknownFlagFound) const;

  /// Returns the argument vector: the flags that are still stored in their kept order, then the remainder. Each flag
  /// and its value, even an empty one, are two elements.
  [[nodiscard]] std::vector<std::string> commandLine() const { return commandLineArguments(); }
  [[nodiscard]] std::vector<std::string> commandLineArguments() const override;

  /// Return or set the path of the output file ("-out").
  [[nodiscard]] std::optional<std::string_view> outputFile() const noexcept;
  void setOutputFile(std::optional<std::string_view> path);

  /// Return or set the format of the output file ("-file_format"); also absent for a text that is not a file format.
  [[nodiscard]] std::optional<SAVTranscodeArgumentFileFormatValue> outputFileFormat() const noexcept;
  void setOutputFileFormat(std::optional<SAVTranscodeArgumentFileFormatValue> format);

  /// Return or set the path of the file that progress is written to ("-progress_file").
  [[nodiscard]] std::optional<std::string_view> progressFile() const noexcept;
  void setProgressFile(std::optional<std::string_view> path);

  /// Return or set the prefix of the progress that is written ("-progress_prefix").
  [[nodiscard]] std::optional<std::string_view> progressOutputPrefix() const noexcept;
  void setProgressOutputPrefix(std::optional<std::string_view> prefix);

  /// Return or set the path of the work directory ("-work_dir").
  [[nodiscard]] std::optional<std::string_view> workDirectory() const noexcept;
  void setWorkDirectory(std::optional<std::string_view> path);

  /// Return or set whether an existing output file is replaced ("-overwrite"): true if the flag is stored, whatever its
  /// value.
  [[nodiscard]] bool shouldOverwrite() const noexcept;
  void setShouldOverwrite(bool overwrite);

  /// Calls the block once for each group of input files, in ascending order of the groups' numbers, with the group's
  /// paths in the order of their places, and its number. The block must not change the store.
  ///
  /// The flag of an input file is "-in_", the group's number, "_" and its place in the group, both in decimal:
  /// "-in_1_0" is the first file of group 1. Leading zeros are allowed, a group's number may be negative, and places
  /// may begin anywhere and have gaps. Of two flags for one place, such as "-in_0_1" and "-in_0_01", the earlier in the
  /// store comes first. Any other flag that begins with "-in" ("-in" itself, "-in_0", "-inx", numbers beyond 64 bits)
  /// is kept and rendered like every flag, but is not an input file.
  void enumerateInputFileGroups(
      FunctionRef<void(std::span<const std::string_view> paths, std::int64_t group)> didFindGroup) const;

  /// Returns whether a flag is that of an input file: "-in_", a group's number, "_" and a place.
  [[nodiscard]] static bool isInputFileFlag(std::string_view flag) noexcept;

  /// Returns the input files by group; absent when there are none.
  [[nodiscard]] std::optional<InputFileGroups> inputFileGroups() const;
  /// Removes every flag that begins with "-in", numbered or not, then stores the files of the groups. Absent or empty
  /// removes all inputs.
  void setInputFileGroups(const std::optional<InputFileGroups>& groups);

  /// Returns the paths of all groups, one group after the other; absent when there are none. Store the result before
  /// iterating over it: `for (auto& path : *arguments.inputFiles())` iterates over a destroyed temporary.
  [[nodiscard]] std::optional<std::vector<std::string>> inputFiles() const;
  /// Makes the paths the only group of input files, with the number 0; absent removes all inputs.
  void setInputFiles(const std::optional<std::vector<std::string>>& paths);

  /// Returns the first of the input files; absent when there are none.
  [[nodiscard]] std::optional<std::string_view> firstInputFile() const;

  // The typed settings store nothing of their own: a getter parses the text of one flag, and a setter replaces it.
  // Setting absent removes the flag. A text that is not valid is absent as a setting and stays in the store as it is.
  // transcode_property_list.h lists the flag and the kind of each setting.

  /// Returns whether there is video: "-vn" is not stored, whatever the other video flags say.
  [[nodiscard]] bool includeVideo() const noexcept { return !omitVideo(); }
  /// Return or set whether video is left out ("-vn").
  [[nodiscard]] bool omitVideo() const noexcept;
  void setOmitVideo(bool omit);

  [[nodiscard]] std::optional<SAVTranscodeArgumentVideoCodecValue> videoFormat() const override;
  void setVideoFormat(std::optional<SAVTranscodeArgumentVideoCodecValue> codec) override;
  [[nodiscard]] std::optional<float> videoFrameRate() const override;
  void setVideoFrameRate(std::optional<float> framesPerSecond) override;
  [[nodiscard]] std::optional<Size> videoDimensions() const override;
  void setVideoDimensions(const std::optional<Size>& size) override;
  [[nodiscard]] std::optional<float> videoBitRate() const override;
  void setVideoBitRate(std::optional<float> bitRate) override;
  [[nodiscard]] std::optional<std::int64_t> videoBitDepth() const override;
  void setVideoBitDepth(std::optional<std::int64_t> bitDepth) override;
  [[nodiscard]] bool prepareForWeb() const override;
  void setPrepareForWeb(bool prepare) override;
  [[nodiscard]] bool gpuDecode() const override;
  void setGpuDecode(bool decode) override;
  [[nodiscard]] bool gpuEncode() const override;
  void setGpuEncode(bool encode) override;
  [[nodiscard]] std::optional<std::int64_t> keyFrames() const override;
  void setKeyFrames(std::optional<std::int64_t> interval) override;
  [[nodiscard]] std::optional<Url> lutFile() const override;
  void setLutFile(const std::optional<Url>& file) override;
  [[nodiscard]] std::optional<SAVTranscodeArgumentAspectRatioValue> aspectScaling() const override;
  void setAspectScaling(std::optional<SAVTranscodeArgumentAspectRatioValue> scaling) override;
  [[nodiscard]] std::optional<VideoCropAnchor> videoCropAnchor() const override;
  void setVideoCropAnchor(std::optional<VideoCropAnchor> anchor) override;
  [[nodiscard]] std::optional<SAVTranscodeArgumentColorSpaceValue> colorSpace() const override;
  void setColorSpace(std::optional<SAVTranscodeArgumentColorSpaceValue> space) override;
  [[nodiscard]] std::optional<std::string_view> videoProfile() const override;
  void setVideoProfile(std::optional<std::string_view> profile) override;

  /// Returns `videoDimensions` in a shared box of its own; null when absent.
  [[nodiscard]] std::shared_ptr<const Size> dimensionsSizeValue() const;

  /// Copies all video settings from another holder, absent ones too.
  void updateFromVideoDetail(const TranscodeVideoDetail& detail);

  /// Returns whether there is audio: "-an" is not stored.
  [[nodiscard]] bool includeAudio() const noexcept { return !omitAudio(); }
  void setIncludeAudio(bool include) { setOmitAudio(!include); }

  /// Returns whether the source's audio is passed through unchanged: by "-acopy", or because "-acodec" is not one of
  /// "lpcm", "aac" and "apple_lossless". Copying is the default, deliberately also for an unknown codec.
  [[nodiscard]] bool copyAudio() const noexcept;
  /// Sets or removes "-acopy" alone; without a codec audio is copied all the same.
  void setCopyAudio(bool copy);

  [[nodiscard]] bool omitAudio() const override;
  void setOmitAudio(bool omit) override;
  [[nodiscard]] std::optional<SAVTranscodeArgumentAudioFormatValue> audioFormat() const override;
  void setAudioFormat(std::optional<SAVTranscodeArgumentAudioFormatValue> format) override;
  [[nodiscard]] std::optional<TranscodeAudioQuality> audioQuality() const override;
  void setAudioQuality(std::optional<TranscodeAudioQuality> quality) override;
  [[nodiscard]] std::optional<std::int64_t> sampleRate() const override;
  void setSampleRate(std::optional<std::int64_t> samplesPerSecond) override;
  [[nodiscard]] std::optional<std::int64_t> audioBitRate() const override;
  void setAudioBitRate(std::optional<std::int64_t> bitRate) override;
  [[nodiscard]] std::optional<std::int64_t> audioBitsPerChannel() const override;
  void setAudioBitsPerChannel(std::optional<std::int64_t> bits) override;
  [[nodiscard]] bool audioOutputIsDiscrete() const override;
  void setAudioOutputIsDiscrete(bool isDiscrete) override;
  // The layout and the number of channels deliberately share "-acl": setting one replaces the other, and setting either
  // to absent removes the flag, whichever of the two it holds.
  [[nodiscard]] std::optional<SAVTranscodeArgumentAudioChannelLayoutValue> channelLayout() const override;
  void setChannelLayout(std::optional<SAVTranscodeArgumentAudioChannelLayoutValue> layout) override;
  [[nodiscard]] std::optional<std::int64_t> channelLayoutTag() const override;
  void setChannelLayoutTag(std::optional<std::int64_t> tag) override;
  [[nodiscard]] std::optional<std::int64_t> outputChannels() const override;
  void setOutputChannels(std::optional<std::int64_t> channels) override;

  [[nodiscard]] std::optional<std::string_view> channelLayoutDescriptions() const;
  void setChannelLayoutDescriptions(std::optional<std::string_view> descriptions);
  [[nodiscard]] std::optional<std::int64_t> channelLayoutBitmap() const;
  void setChannelLayoutBitmap(std::optional<std::int64_t> bitmap);

  /// Calls the block once with each audio track to be left out, in ascending order. The flag of a track is "-ac_omit_"
  /// and its number from 0, in decimal, with an empty value: "-ac_omit_2" leaves out the third. Other flags that begin
  /// with "-ac_omit" leave out none. The block must not change the store.
  void enumerateIgnoredAudioFileTracks(FunctionRef<void(std::int64_t track)> shouldIgnore) const;
  /// Returns whether a flag is that of a track to be left out: "-ac_omit_" and a number.
  [[nodiscard]] static bool isIgnoredTrackFlag(std::string_view flag) noexcept;
  /// Leaves out these tracks and no others; ignores negative numbers. Removes every flag that begins with "-ac_omit".
  void setIgnoredAudioFileTracks(std::span<const std::int64_t> tracks);

  /// Copies all audio settings from another holder, absent ones too.
  void updateFromAudioDetail(const TranscodeAudioDetail& detail);

  /// Returns whether the output has timecode: a track, burnt in, or both. It has no flag of its own.
  [[nodiscard]] bool includeTimecode() const override;
  /// Sets timecode: true adds a track if there is neither a track nor a burn-in; false removes both.
  void setIncludeTimecode(bool include) override;

  /// Returns the source of the timecode: "-tc_custom" when its value is a timecode, else "-tc_creation", else
  /// "-tc_match".
  [[nodiscard]] std::optional<TimecodeSource> timecodeSource() const override;
  /// Removes the flags of the other sources. A custom source without a timecode gets 00:00:00:00.
  void setTimecodeSource(std::optional<TimecodeSource> source) override;
  /// Setting a timecode makes the source custom. A timecode that is not of proper form (minutes above 60) is stored,
  /// but is absent when read back.
  [[nodiscard]] std::optional<TimecodeComponents> timecode() const override;
  void setTimecode(const std::optional<TimecodeComponents>& timecode) override;
  [[nodiscard]] std::optional<float> timecodeFrameRate() const override;
  void setTimecodeFrameRate(std::optional<float> framesPerSecond) override;
  [[nodiscard]] bool timecodeIsDropFrame() const override;
  void setTimecodeIsDropFrame(bool isDropFrame) override;
  [[nodiscard]] bool addTimecodeTrack() const override;
  void setAddTimecodeTrack(bool add) override;
  [[nodiscard]] bool addTimecodeBurn() const override;
  void setAddTimecodeBurn(bool add) override;
  [[nodiscard]] std::optional<SAVTranscodeArgumentOverlayAnchorValue> timecodeBurnAnchor() const override;
  void setTimecodeBurnAnchor(std::optional<SAVTranscodeArgumentOverlayAnchorValue> anchor) override;
  [[nodiscard]] std::optional<std::int64_t> timecodeBurnFontSize() const override;
  void setTimecodeBurnFontSize(std::optional<std::int64_t> size) override;
  [[nodiscard]] std::optional<RgbColor> timecodeBurnFontColor() const override;
  void setTimecodeBurnFontColor(std::optional<RgbColor> color) override;
  [[nodiscard]] std::optional<RgbColor> timecodeBurnBoxColor() const override;
  void setTimecodeBurnBoxColor(std::optional<RgbColor> color) override;

  /// Copies all timecode settings from another holder, absent ones too.
  void updateFromTimecodeDetail(const TranscodeTimecodeDetail& detail);

  /// The image that is burnt in as a watermark, where and how large.
  [[nodiscard]] std::optional<Url> watermarkFile() const;
  void setWatermarkFile(const std::optional<Url>& file);
  [[nodiscard]] std::optional<SAVTranscodeArgumentOverlayAnchorValue> watermarkFileAnchor() const;
  void setWatermarkFileAnchor(std::optional<SAVTranscodeArgumentOverlayAnchorValue> anchor);
  [[nodiscard]] std::optional<float> watermarkFileScale() const;
  void setWatermarkFileScale(std::optional<float> scale);

  /// The text that is burnt in as a watermark.
  [[nodiscard]] bool addWatermarkText() const;
  void setAddWatermarkText(bool add);
  [[nodiscard]] std::optional<std::string_view> watermarkText() const;
  void setWatermarkText(std::optional<std::string_view> text);
  [[nodiscard]] std::optional<std::int64_t> watermarkTextFontSize() const;
  void setWatermarkTextFontSize(std::optional<std::int64_t> size);
  [[nodiscard]] std::optional<SAVTranscodeArgumentOverlayAnchorValue> watermarkTextAnchor() const;
  void setWatermarkTextAnchor(std::optional<SAVTranscodeArgumentOverlayAnchorValue> anchor);
  [[nodiscard]] std::optional<RgbColor> watermarkTextFontColor() const;
  void setWatermarkTextFontColor(std::optional<RgbColor> color);
  [[nodiscard]] std::optional<RgbColor> watermarkTextBoxColor() const;
  void setWatermarkTextBoxColor(std::optional<RgbColor> color);

  /// The colour settings of a camera look file.
  [[nodiscard]] std::optional<std::string_view> lookColorSpace() const;
  void setLookColorSpace(std::optional<std::string_view> space);
  [[nodiscard]] std::optional<std::string_view> lookWhitePoint() const;
  void setLookWhitePoint(std::optional<std::string_view> whitePoint);
  [[nodiscard]] std::optional<std::string_view> lookCurve() const;
  void setLookCurve(std::optional<std::string_view> curve);
  [[nodiscard]] std::optional<std::string_view> lookInvalidResolution() const;
  void setLookInvalidResolution(std::optional<std::string_view> resolution);

  /// Returns whether the command line asks the transcoder for this listing.
  [[nodiscard]] bool isRequested(SAVTranscodeCliCommand command) const noexcept;
  void setRequested(SAVTranscodeCliCommand command, bool isRequested);

  /// Returns whether the source has to be analysed before the transcode can be planned: there is video, its size is set
  /// ("-dims"), and the aspect scaling depends on the source's aspect ratio ("-aspect_scaling" is stored and is not
  /// "match").
  [[nodiscard]] bool sourceFileAnalysisRequired() const noexcept;

 private:
  friend MERIDIAN_API TranscodeExplanation explain(const ArgumentWords& words, bool maintainOriginalOrdering);

  /// Builds the store of a vector that has been read.
  [[nodiscard]] static TranscodeCliArguments fromReading(std::vector<ReadFlag> flags, bool maintainOriginalOrdering);

  Stored stored_;
};

}  // namespace meridian::inline v0_2

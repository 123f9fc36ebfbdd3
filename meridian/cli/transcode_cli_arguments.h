// The model of one transcoder command line.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/function_ref.h"
#include "meridian/base/text_dictionary.h"
#include "meridian/cli/cli_argument_store.h"
#include "meridian/cli/transcode_flags.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/export.h"

namespace meridian {

/// The settings of one transcode, as its command line says them.
///
/// A store is built from an argument vector or a dictionary, read and edited, and rendered back into an argument
/// vector. Flags are stored lower-cased and trimmed. Building never fails: what is not a known flag is kept aside and
/// reported.
///
/// Order: a rendered vector begins with the flags in the order kept from the original vector, when that was asked for;
/// the remainder follows in the order in which the store got its flags: first those of the vector or dictionary as they
/// stood there, a repeated flag where it first stood; then those that presets added, in the preset's own order; then
/// those that were set later.
///
/// A copy is a store of its own; share one by reference or pointer. A store has no lock. Texts that it hands out as
/// views are valid until it is changed.
class MERIDIAN_API TranscodeCliArguments final : public CliArgumentStore {
 public:
  /// The input files by the numbers of their groups.
  using InputFileGroups = std::map<std::int64_t, std::vector<std::string>>;

  /// A marker by which an application starts itself in transcoding mode. It is no flag of the vocabulary: a store that
  /// is given it rejects it.
  static constexpr std::string_view runInTranscodeModeFlag = "-isTranscoder";

  /// Every flag that a store knows.
  [[nodiscard]] static constexpr std::span<const std::string_view> allKnownCommandFlags() noexcept {
    return meridian::allKnownCommandFlags;
  }

  /// The settings of the built-in presets.
  [[nodiscard]] static const TextDictionary& solvaneCloudPresetArguments();
  [[nodiscard]] static const TextDictionary& solvaneProRes4444XQPresetArguments();

  /// The three stored properties, in the form in which they are encoded.
  struct Stored {
    /// The valid entries: normalised flag to normalised value.
    TextDictionary flagValueLookup;
    /// The rejected entries; absent when nothing was rejected. Those of a vector stand under the normalised flag, those
    /// of a dictionary under the flag as it was given there.
    std::optional<TextDictionary> invalidKeyValueLookup;
    /// The flags in the order of the original vector; absent unless that order was to be kept and there are flags.
    std::optional<std::vector<std::string>> orderedFlags;

    friend bool operator==(const Stored&, const Stored&) = default;
  };

  /// An empty store.
  TranscodeCliArguments() = default;

  /// Reads an argument vector, without a program path. A word that begins with "-" is a flag, and the word behind it
  /// its value unless that begins with "-" too; of repeated flags the last value stays. A preset is expanded into its
  /// settings, where these were not given.
  explicit TranscodeCliArguments(std::span<const std::string_view> cliArgs, bool maintainOriginalOrdering = false);
  explicit TranscodeCliArguments(std::span<const std::string> cliArgs, bool maintainOriginalOrdering = false);
  TranscodeCliArguments(std::initializer_list<std::string_view> cliArgs, bool maintainOriginalOrdering = false);

  /// Checks and normalises a ready dictionary and expands its presets. Entries are taken in the dictionary's order; of
  /// two whose flags differ only in case or blanks the later one stays.
  [[nodiscard]] static TranscodeCliArguments fromArgumentLookup(const TextDictionary& argumentLookup);

  /// A store of these properties as they are, with nothing normalised again: the inverse of `stored()`.
  [[nodiscard]] static TranscodeCliArguments fromStored(Stored stored);
  [[nodiscard]] const Stored& stored() const noexcept { return stored_; }

  [[nodiscard]] const TextDictionary& flagValueLookup() const noexcept override { return stored_.flagValueLookup; }
  /// Replaces all valid entries, as given. The order kept and the rejected entries stay.
  void setFlagValueLookup(TextDictionary lookup) noexcept { stored_.flagValueLookup = std::move(lookup); }

  /// Whether the flag is stored. The flag is trimmed but not lower-cased: pass it in lower case, as the flag constants
  /// are.
  [[nodiscard]] bool hasArgumentFlag(std::string_view flag) const noexcept;
  /// The flag's value, empty for a flag without one; absent when the flag, trimmed, is not stored.
  [[nodiscard]] std::optional<std::string_view> argumentFlagValue(std::string_view flag) const noexcept;
  /// Stores the value under the trimmed flag as it is, neither normalised nor checked; absent removes the flag.
  void setArgumentFlagValue(std::string_view flag, std::optional<std::string_view> value);

  /// The flags of the rejected entries, in the order in which they were met; absent when there are none.
  [[nodiscard]] std::optional<std::vector<std::string>> unknownFlags() const;
  /// Whether nothing was rejected.
  [[nodiscard]] bool allFlagsAreValid() const noexcept;
  /// Calls the block with each rejected flag and its value. The block must not change the store.
  void enumerateUnknownFlags(FunctionRef<void(std::string_view flag, std::string_view value)> unknownFlagFound) const;

  /// The argument vector: the flags in kept order as far as they are still stored, then the remainder; each with its
  /// value, even an empty one, as two elements.
  [[nodiscard]] std::vector<std::string> commandLine() const { return commandLineArguments(); }
  [[nodiscard]] std::vector<std::string> commandLineArguments() const override;

  /// "-out": the output file's path.
  [[nodiscard]] std::optional<std::string_view> outputFile() const noexcept;
  void setOutputFile(std::optional<std::string_view> path);

  /// "-file_format"; absent also for a text that is no file format.
  [[nodiscard]] std::optional<SAVTranscodeArgumentFileFormatValue> outputFileFormat() const noexcept;
  void setOutputFileFormat(std::optional<SAVTranscodeArgumentFileFormatValue> format);

  /// "-progress_file": the path of the file that progress is written to.
  [[nodiscard]] std::optional<std::string_view> progressFile() const noexcept;
  void setProgressFile(std::optional<std::string_view> path);

  /// "-progress_prefix": the prefix of the progress that is written.
  [[nodiscard]] std::optional<std::string_view> progressOutputPrefix() const noexcept;
  void setProgressOutputPrefix(std::optional<std::string_view> prefix);

  /// "-work_dir": the path of the work folder.
  [[nodiscard]] std::optional<std::string_view> workDirectory() const noexcept;
  void setWorkDirectory(std::optional<std::string_view> path);

  /// "-overwrite": true when the flag is stored, whatever its value.
  [[nodiscard]] bool shouldOverwrite() const noexcept;
  void setShouldOverwrite(bool overwrite);

  /// Calls the block once for each group of input files with the group's paths in the order of their places, and its
  /// number; groups ascend by number. The block must not change the store.
  ///
  /// An input file stands under "-in_", the group's number, "_" and its place in the group, both in decimal: "-in_1_0"
  /// is the first file of group 1. Leading zeros are read, a group's number may be negative, and places need not begin
  /// at 0 or be without gaps; of two flags for one place, such as "-in_0_1" and "-in_0_01", the earlier in the store
  /// comes first. Any other flag that begins with "-in" ("-in" itself, "-in_0", "-inx", numbers beyond 64 bits) is kept
  /// and rendered like every flag, but is no input file.
  void enumerateInputFileGroups(
      FunctionRef<void(std::span<const std::string_view> paths, std::int64_t group)> didFindGroup) const;

  /// Whether a flag is that of an input file: "-in_", a group's number, "_" and a place.
  [[nodiscard]] static bool isInputFileFlag(std::string_view flag) noexcept;

  /// The input files by group; absent when there are none.
  [[nodiscard]] std::optional<InputFileGroups> inputFileGroups() const;
  /// Removes every flag that begins with "-in", numbered or not, then stores the groups' files. Absent or empty leaves
  /// no inputs.
  void setInputFileGroups(const std::optional<InputFileGroups>& groups);

  /// The paths of all groups, one group after the other; absent when there are none. Keep the result in a variable to
  /// go through it: `for (auto& path : *arguments.inputFiles())` would go through one that is gone.
  [[nodiscard]] std::optional<std::vector<std::string>> inputFiles() const;
  /// Makes the paths the only group of input files, with the number 0; absent leaves no inputs.
  void setInputFiles(const std::optional<std::vector<std::string>>& paths);

  /// The first of the input files; absent when there are none.
  [[nodiscard]] std::optional<std::string_view> firstInputFile() const;

 private:
  Stored stored_;
};

}  // namespace meridian

// Output files made under names that nothing has: as free names, but of several processes each gets names of its own.
//
// A name is taken when anything has it, a link that leads nowhere too. A name that another process takes in the
// meantime is taken as well, and counting goes on. The files are empty and closed. Files that belong together are all
// made or none: what was made is removed again, unless the process or its memory ends on the way or
// somebody wrote to it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/export.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

enum class ClaimRefusalReason : std::uint8_t {
  noFileAddress,
  unusableName,
  nameTooLong,
  notMade,
  sameFile,
  notRemoved
};

template <>
struct EnumerationTable<ClaimRefusalReason> {
  static constexpr auto rows = std::to_array<EnumerationRow<ClaimRefusalReason>>({
      {ClaimRefusalReason::noFileAddress, "noFileAddress", "it is not the address of a file"},
      {ClaimRefusalReason::unusableName, "unusableName",
       "it names no file: a file's name is not empty, \".\" or \"..\", and holds neither a separator nor a NUL"},
      {ClaimRefusalReason::nameTooLong, "nameTooLong",
       "its name, with number and extension, or its whole path is too long for its volume"},
      {ClaimRefusalReason::notMade, "notMade", "it cannot be made"},
      {ClaimRefusalReason::sameFile, "sameFile", "its volume takes its name for that of another file of the set"},
      {ClaimRefusalReason::notRemoved, "notRemoved",
       "it was made for a set that did not come about, and cannot be removed"},
  });
};

/// Why no files were made.
struct ClaimRefusal {
  ClaimRefusalReason reason = ClaimRefusalReason::notMade;
  /// The file that it is about; a name that cannot be used; an address that is no file's.
  Url url;
  /// What the system said.
  std::error_code systemError;
  /// Files that were made and could not be removed again.
  std::vector<Url> leftBehind;

  /// The reason for a person, with the system's words: "it cannot be made: No such file or directory".
  [[nodiscard]] MERIDIAN_API std::string message() const;
};

/// A file that was made, and for which extension of a set; with none for a single name.
struct ClaimedFile {
  Url url;
  std::string extension;
};

/// What was made, or why nothing was. Of the two one is there, or neither where nothing was asked for.
struct FileClaim {
  std::vector<ClaimedFile> files;
  std::optional<ClaimRefusal> refusal;
};

/// Makes the file that `filePathAdjustedForCollision` names. A path with a separator at its end names a folder and is
/// refused.
[[nodiscard]] MERIDIAN_API FileClaim claimFile(const Url& path);

/// Makes a file of one name in each of the directories, in their order: the name that
/// `lastPathComponentAdjustedForCollision` gives. A folder that two directories lead to gets one file; without
/// directories none is made.
[[nodiscard]] MERIDIAN_API FileClaim
claimFileAmongstDirectories(std::string_view baseName, std::span<const Url> directories,
                            std::optional<std::string_view> pathExtension = std::nullopt);

/// Makes a file for each extension in each of the directories, by the names of
/// `consistentFilePathsAdjustedForCollisionAcrossDirectories`; in the order of the directories, within one of the
/// extensions. A folder that two directories lead to counts once, and so does a repeated extension. Where a volume
/// takes two of the names for one, as it may take "clip.mov" and "clip.MOV", nothing is made.
[[nodiscard]] MERIDIAN_API FileClaim claimConsistentFiles(std::span<const Url> directories, std::string_view fileName,
                                                          std::span<const std::string> extensions);

}  // namespace meridian::inline v0_2

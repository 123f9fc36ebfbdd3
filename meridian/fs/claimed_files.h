/// \file
/// Creates output files under unused names, so that several processes never get the same name. For example:
///
///     const auto files = claimFile(Url::fromFilePath("/out/clip.mov"));
///     if (!files) return report(files.error().message());
///     files->front().url.path();  // "/out/clip.mov", or "/out/clip 2.mov" if that name was in use
///
/// The files are empty and closed, with the permissions of any new file. A name is in use if anything has it, even a
/// dangling link; if another process takes the name in the meantime, the next number is tried. The files of a set are
/// all created or none: if one fails, those already created are removed, unless the process ends first; a file that has
/// content is kept.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"
#include "meridian/base/expected.h"
#include "meridian/export.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// Why files were not created.
enum class ClaimErrorCode : std::uint8_t { notAFileUrl, unusableName, nameTooLong, notCreated, sameFile, notRemoved };

template <>
struct EnumerationTable<ClaimErrorCode> {
  static constexpr auto rows = std::to_array<ErrorRow<ClaimErrorCode>>({
      {ClaimErrorCode::notAFileUrl, "notAFileUrl", "is not the URL of a file", "use a file URL"},
      {ClaimErrorCode::unusableName, "unusableName", "does not name a file",
       "use a name that is not empty, \".\" or \"..\", without separators and NUL bytes"},
      {ClaimErrorCode::nameTooLong, "nameTooLong", "is too long for its volume, as a name or as a path",
       "use a shorter name; it is not shortened to make room for a number"},
      {ClaimErrorCode::notCreated, "notCreated", "cannot be created",
       "check that its directory exists and is writable, and that the volume has space"},
      {ClaimErrorCode::sameFile, "sameFile", "is the same name as another of the set on this volume",
       "use extensions that differ in more than case"},
      {ClaimErrorCode::notRemoved, "notRemoved", "was created for a set that is not complete, and cannot be removed",
       "remove it by hand"},
  });
};

/// Says why no files were created. The place is the path, the name or the URL that the error is about.
struct ClaimError : Error<ClaimErrorCode> {
  /// Empty files that were created and could not be removed again.
  std::vector<Url> leftBehind{};

  /// Returns the whole error for a person, with the files left behind; safe for a terminal.
  [[nodiscard]] MERIDIAN_API std::string message() const;

  friend bool operator==(const ClaimError&, const ClaimError&) = default;
};

/// A file that was created under an unused name.
struct ClaimedFile {
  Url url;
  /// The extension that the file was asked for as part of a set; empty for a single name.
  std::string extension;
};

/// Creates the file that `filePathAdjustedForCollision` names. A path with a trailing separator names a directory and
/// is an error.
[[nodiscard]] MERIDIAN_API Expected<std::vector<ClaimedFile>, ClaimError> claimFile(const Url& path);

/// Creates a file in each of the directories, in their order, under the name that
/// `lastPathComponentAdjustedForCollision` returns. Directories that are the same, also through links, get one file.
/// Without directories nothing is created.
[[nodiscard]] MERIDIAN_API Expected<std::vector<ClaimedFile>, ClaimError> claimFileAmongstDirectories(
    std::string_view baseName, std::span<const Url> directories,
    std::optional<std::string_view> pathExtension = std::nullopt);

/// Creates a file for each extension in each of the directories, under the names of
/// `consistentFilePathsAdjustedForCollisionAcrossDirectories`: directory by directory, and in each in the order of the
/// extensions. Directories that are the same, also through links, count once, and so do repeated extensions. It is an
/// error if a volume gives two of the names to one file, as it may for "clip.mov" and "clip.MOV".
[[nodiscard]] MERIDIAN_API Expected<std::vector<ClaimedFile>, ClaimError> claimConsistentFiles(
    std::span<const Url> directories, std::string_view fileName, std::span<const std::string> extensions);

}  // namespace meridian::inline v0_2

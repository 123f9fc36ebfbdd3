/// \file
/// Finds unused names for output files: a number is added to a name until nothing has it. For example:
///
///     filePathAdjustedForCollision(Url::fromFilePath("/out/clip.mov"));
///     // "/out/clip.mov", or "/out/clip 2.mov" if that exists, or "/out/clip 3.mov"
///
/// The schemes differ deliberately: a space and a number for a path and for a name in several directories
/// ("clip 2.mov"), a hyphen and a number for a set of files ("clip-2.mov" and "clip-2.xml").
///
/// Nothing is created, so another process can take the name at any time; fs/claimed_files.h creates the file together
/// with its name. Each candidate costs one query and no directory is listed: time grows with the collisions.
///
/// Only the path of a URL is used, whether or not it is the URL of a file. These functions never fail. An item that the
/// query cannot see (in a directory that may not be searched, or with a name that the number made too long) does not
/// exist, and its name is unused.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "meridian/base/function_ref.h"
#include "meridian/export.h"
#include "meridian/platform/file_queries.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// Returns true if an item exists at the path.
using ExistenceQuery = FunctionRef<bool(const std::string& path)>;

/// The files of a set by their extensions, as the caller wrote them.
using UrlsByExtension = std::map<std::string, Url, std::less<>>;

/// Returns the URL itself if nothing exists at its path, otherwise a file URL with a number after the name:
/// "/out/clip.mov" gives "/out/clip 2.mov", then "/out/clip 3.mov"; "/out/README" gives "/out/README 2". A number that
/// the name already has is part of the name: "clip 2.mov" gives "clip 2 2.mov". The directory is that of
/// `Url::deletingLastPathComponent`, so "clip.mov" gives "./clip 2.mov".
[[nodiscard]] MERIDIAN_API Url filePathAdjustedForCollision(const Url& path, ExistenceQuery exists = pathExists);

/// Returns a name, such as "clip 2.mov", that exists in none of the directories. Without directories returns the base
/// name without the extension. An empty extension gives "name", then "name 2." and "name 3." with a dot; no extension
/// gives "name", then "name 2" and "name 3".
[[nodiscard]] MERIDIAN_API std::string lastPathComponentAdjustedForCollision(
    std::string_view baseName, std::span<const Url> amongstDirectories,
    std::optional<std::string_view> pathExtension = std::nullopt, ExistenceQuery exists = pathExists);

/// Returns a file for each extension, all with the same name and number: "clip.mov" and "clip.xml", or "clip-2.mov" and
/// "clip-2.xml" if one of those two exists. Extensions are used exactly as given; an empty one keeps its dot ("clip.").
/// Without extensions the map is empty.
[[nodiscard]] MERIDIAN_API UrlsByExtension
consistentFilePathsAdjustedForCollision(const Url& outputDirectory, std::string_view fileName,
                                        std::span<const std::string> extensions, ExistenceQuery exists = pathExists);

/// As above, with a number that is unused in all the directories. The map holds the files in the last directory; the
/// names are the same in all of them. Without directories the map is empty.
[[nodiscard]] MERIDIAN_API UrlsByExtension consistentFilePathsAdjustedForCollisionAcrossDirectories(
    std::span<const Url> directories, std::string_view fileName, std::span<const std::string> extensions,
    ExistenceQuery exists = pathExists);

}  // namespace meridian::inline v0_2

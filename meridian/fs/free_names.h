// Names for output files that no existing item has: a number is added until a name is free.
//
// The schemes differ on purpose: a space and a number for a path, and for a name in several directories ("clip 2.mov");
// a hyphen and a number for files that belong together ("clip-2.mov" and "clip-2.xml"). Nothing is made: another
// process can take the name in the next moment, where fs/claimed_files.h makes the file together with the name. No
// folder is listed; each name costs one query, so the time is in proportion to the collisions.
//
// Of any address its path counts, be it a file's or not. The operations never fail. Where the query cannot see an item
// (a folder that may not be searched, a name that the number made too long), it says that nothing exists, and the name
// counts as free.
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

/// Whether an item exists at a path.
using ExistenceQuery = FunctionRef<bool(const std::string& path)>;

/// The files of a set by the extensions that they were asked for.
using UrlsByExtension = std::map<std::string, Url, std::less<>>;

/// The URL itself when nothing exists at its path; else a file URL with a number behind the whole name: "/out/clip.mov"
/// gives "/out/clip 2.mov", then "/out/clip 3.mov"; "/out/README" gives "/out/README 2". On purpose "clip 2.mov" gives
/// "clip 2 2.mov". The folder is what `Url::deletingLastPathComponent` gives, so that "clip.mov" gives "./clip 2.mov".
[[nodiscard]] MERIDIAN_API Url filePathAdjustedForCollision(const Url& path, ExistenceQuery exists = pathExists);

/// A name, such as "clip 2.mov", that exists in none of the directories. Without directories the base name as it is,
/// and on purpose without the extension. An empty extension gives "name" first and "name 2.", "name 3." then, with the
/// point on purpose; without any they are "name 2", "name 3".
[[nodiscard]] MERIDIAN_API std::string lastPathComponentAdjustedForCollision(
    std::string_view baseName, std::span<const Url> amongstDirectories,
    std::optional<std::string_view> pathExtension = std::nullopt, ExistenceQuery exists = pathExists);

/// Files of one name in the directory, one for each extension, with a number that they share: "clip.mov" and
/// "clip.xml", or "clip-2.mov" and "clip-2.xml" as soon as one of the two exists. Extensions are taken exactly as they
/// are, an empty one with its point ("clip."); without extensions the map is empty.
[[nodiscard]] MERIDIAN_API UrlsByExtension
consistentFilePathsAdjustedForCollision(const Url& outputDirectory, std::string_view fileName,
                                        std::span<const std::string> extensions, ExistenceQuery exists = pathExists);

/// As before, with a number that is free in all the directories. The map holds the files of the last directory, as one
/// that is filled directory by directory does; the names are the same in all. Without directories it is empty.
[[nodiscard]] MERIDIAN_API UrlsByExtension consistentFilePathsAdjustedForCollisionAcrossDirectories(
    std::span<const Url> directories, std::string_view fileName, std::span<const std::string> extensions,
    ExistenceQuery exists = pathExists);

}  // namespace meridian::inline v0_2

/// \file
/// Create a file under a name that no item has yet. Of several processes that try, exactly one gets the name. For
/// example:
///
///     const auto identity = createExclusiveFile("/out/clip.mov");
///     if (!identity) return Unexpected(identity.error());
///     ...
///     removeEmptyFile("/out/clip.mov", *identity);
#pragma once

#include <string>
#include <system_error>

#include "meridian/base/expected.h"
#include "meridian/platform/file_identity.h"

namespace meridian::inline v0_2 {

/// Creates an empty file with the permissions of any new file, and returns its identity. The error is
/// `std::errc::file_exists` if any item has the name, even a dangling link.
[[nodiscard]] Expected<FileIdentity, std::error_code> createExclusiveFile(const std::string& path);

/// Removes the file at the path if it still has this identity and is still empty. Leaves any other item alone, without
/// an error. Not race-free: POSIX has no atomic check-and-unlink.
[[nodiscard]] std::error_code removeEmptyFile(const std::string& path, const FileIdentity& identity);

}  // namespace meridian::inline v0_2

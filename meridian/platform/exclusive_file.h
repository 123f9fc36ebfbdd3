// Making a file under a name that nothing has, so that of several processes exactly one gets the name.
#pragma once

#include <optional>
#include <string>
#include <system_error>

#include "meridian/platform/file_identity.h"

namespace meridian::inline v0_2 {

/// A file that was made, or why it was not.
struct ExclusiveFile {
  FileIdentity identity;
  std::error_code error;
};

/// Makes an empty file with the permissions of any new one. The error is std::errc::file_exists where anything has the
/// name already, a link that leads nowhere too.
[[nodiscard]] ExclusiveFile makeExclusiveFile(const std::string& path);

/// Removes what has this name when it is still that item, and empty. What else has the name, or was written to by
/// somebody meanwhile, stays, without an error; but what
/// takes the name in the moment between the look and the removal is removed, since the system has no call for both.
[[nodiscard]] std::error_code removeFile(const std::string& path, const FileIdentity& identity);

/// The item of this name, a link rather than what it leads to; absent when there is none or it cannot be asked for.
[[nodiscard]] std::optional<FileIdentity> fileIdentity(const std::string& path);

/// The item that a path leads to through all links, absent likewise.
[[nodiscard]] std::optional<FileIdentity> targetIdentity(const std::string& path);

}  // namespace meridian::inline v0_2

/// \file
/// A file that replaces another one only when it is complete. For example:
///
///     WholeFile file = createReplacement("/shots/a.dpx");
///     write(file.descriptor());
///     publishReplacement(file, "/shots/a.dpx");
#pragma once

#include <string>

#include "meridian/platform/whole_file.h"

namespace meridian::command {

/// Creates an unfinished file that replaces `path` when it is published. Where it has a hidden name, that is removed
/// unless the process is killed by SIGKILL. Throws CommandError if no file can be created there, or if `path` is
/// something other than a writable file.
[[nodiscard]] WholeFile createReplacement(const std::string& path, WholeFileOptions options = {});

/// Publishes the file. Throws CommandError if the disk is full or fails; `path` is then as it was.
void publishReplacement(WholeFile& file, const std::string& path);

}  // namespace meridian::command

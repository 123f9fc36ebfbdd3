// Loads the module of image files.
#pragma once

#include "tools/meridian/image_file.h"

namespace meridian::command {

/// Loads the module, once. Throws CommandError if it is not installed, cannot be loaded, or needs more address space
/// than the process may have.
[[nodiscard]] const ImageFileModule& imageFileModule();

/// Returns how many of the threads have room for their stacks within the limit of the address space, at least 1.
[[nodiscard]] unsigned affordableThreads(unsigned wanted) noexcept;

/// Calls `useThreads` of the module. Ends the process, with one line and the status `failed`, if the system refuses
/// them: OpenImageIO's pool crashes at the end of a process in which only some of its threads were started. Call it
/// before any file is created.
void startThreads(const ImageFileModule& module, unsigned threads);

}  // namespace meridian::command

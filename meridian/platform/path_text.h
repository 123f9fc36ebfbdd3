// Paths as text: what the platform calls a path's last component and its extension.
#pragma once

#include <string_view>

#include "meridian/export.h"

namespace meridian {

/// The part behind the last separator, separators at the end left aside: "/card/clip.mov" and "/card/clip.mov/" give
/// "clip.mov". Empty for an empty path and for one of separators alone.
[[nodiscard]] MERIDIAN_API std::string_view lastPathComponent(std::string_view path) noexcept;

/// The extension of the last component, without its dot: "mov" for "/card/clip.mov", "gz" for "a.tar.gz". Empty where
/// the only dot begins the name (".mov"), ends it ("clip.") or there is none.
[[nodiscard]] MERIDIAN_API std::string_view pathExtension(std::string_view path) noexcept;

}  // namespace meridian

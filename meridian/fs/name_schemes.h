/// \file
/// The three schemes that number output names, shared by fs/free_names.h and fs/claimed_files.h. For example:
///
///     const PathScheme scheme(Url::fromFilePath("/out/clip.mov"));
///     scheme.paths("");    // "/out/clip.mov"
///     scheme.paths(" 2");  // "/out/clip 2.mov"
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/function_ref.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2::detail {

/// A single path: "/out/clip.mov", "/out/clip 2.mov".
class PathScheme {
 public:
  static constexpr char mark = ' ';

  /// Keeps views into the path of the URL, which must outlive the scheme.
  explicit PathScheme(const Url& path);

  /// Returns the path with the suffix before its extension; the path as it is for an empty suffix.
  [[nodiscard]] std::vector<std::string> paths(std::string_view suffix) const;

 private:
  const std::string& path_;
  std::string_view directory_;
  std::string_view base_;
  std::string extensionPart_;
};

/// One name in several directories: "clip.mov", "clip 2.mov".
class NameScheme {
 public:
  static constexpr char mark = ' ';

  NameScheme(std::string_view baseName, std::span<const Url> directories, std::optional<std::string_view> extension)
      : baseName_(baseName), directories_(directories), extension_(extension) {}

  [[nodiscard]] std::string name(std::string_view suffix) const;
  [[nodiscard]] std::vector<std::string> paths(std::string_view suffix) const;

 private:
  std::string_view baseName_;
  std::span<const Url> directories_;
  std::optional<std::string_view> extension_;
};

/// A set of files, in one directory or several: "clip.mov" and "clip.xml", "clip-2.mov" and "clip-2.xml".
class SetScheme {
 public:
  static constexpr char mark = '-';

  SetScheme(std::span<const Url> directories, std::string_view fileName, std::span<const std::string> extensions);

  /// Returns the distinct extensions, in the order given.
  [[nodiscard]] std::span<const std::string> extensions() const noexcept { return extensions_; }
  [[nodiscard]] std::string name(std::string_view suffix, std::string_view extension) const;

  /// Returns the paths directory by directory, in each one for every extension.
  [[nodiscard]] std::vector<std::string> paths(std::string_view suffix) const;

 private:
  std::span<const Url> directories_;
  std::string_view fileName_;
  std::vector<std::string> extensions_;
};

/// Increments the number and returns the mark with it. Terminates the process if the number would overflow.
[[nodiscard]] std::string nextSuffix(char mark, std::int64_t& number);

/// Returns the first suffix whose paths are not taken: none, then the scheme's mark with 2, 3 and so on.
template <typename Scheme>
[[nodiscard]] std::string unusedSuffix(const Scheme& scheme,
                                       FunctionRef<bool(std::span<const std::string> paths)> areTaken) {
  std::string suffix;
  std::int64_t number = 1;
  while (areTaken(scheme.paths(suffix))) suffix = nextSuffix(Scheme::mark, number);
  return suffix;
}

}  // namespace meridian::inline v0_2::detail
